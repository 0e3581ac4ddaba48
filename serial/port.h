// The serial port of a session: from the text on the screen to an open, configured port; the input drain; the mode
// texts. The link to a module is 9600 baud, 8 data bits, no parity, two stop bits.
#pragma once

#include "config/models.h"
#include "platform/com_port.h"
#include "serial/overlapped.h"
#include "serial/port_lease.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

/// As port_path of port_names.h; the B family takes no typed paths.
std::optional<std::string> port_path(family of, const std::string& text);

// ---- the port by its handle: for sessions that do not hold a lease yet; each is as its namesake in port_lease.h
// ----

HANDLE port_open(const std::string& path);
void port_configure(HANDLE port, const std::function<void(int)>& after = {});
void port_drain(HANDLE port);
void port_clear_errors(HANDLE port);
io_result port_write(HANDLE port, std::span<const uint8_t> bytes);
io_result port_read(HANDLE port, std::span<uint8_t> into, DWORD wait_ms);

// ---- modes ----

/// Modes of a B module, as the one-shot write numbers them.
inline constexpr uint8_t mode_config = 0;
inline constexpr uint8_t mode_transfer = 1;

/// The bytes that switch a module's mode: "config" or "transfer" with their zero byte; for any other mode the zero
/// byte alone.
std::span<const uint8_t> mode_text(uint8_t mode);

/// Sends mode_text(mode) and waits for it without limit. Nothing is read back; failures are console lines only.
/// Any thread that owns the port.
void mode_text_write(HANDLE port, uint8_t mode);
void mode_text_write(port_lease& port, uint8_t mode);
