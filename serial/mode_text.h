// The texts that switch a B module's mode.
#pragma once

#include "serial/port_lease.h"

#include <array>

// With their zero byte: that goes over the wire too.
inline constexpr std::array<uint8_t, 7> mode_text_config = {'c', 'o', 'n', 'f', 'i', 'g', 0};
inline constexpr std::array<uint8_t, 9> mode_text_transfer = {'t', 'r', 'a', 'n', 's', 'f', 'e', 'r', 0};

/// Modes of a B module, as the one-shot write numbers them.
inline constexpr uint8_t mode_config = 0;
inline constexpr uint8_t mode_transfer = 1;

/// The bytes for a mode; for any other mode the zero byte alone.
std::span<const uint8_t> mode_text(uint8_t mode);

/// Sends mode_text(mode) and waits for it without limit. Nothing is read back; failures are console lines only.
/// Any thread.
void mode_text_write(port_lease& port, uint8_t mode);
