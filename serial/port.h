// The serial port of a session: from the text on the screen to an open, configured port; the input drain; the mode
// texts. The link to a module is 9600 baud, 8 data bits, no parity, two stop bits.
#pragma once

#include "config/models.h"
#include "platform/com_port.h"
#include "serial/overlapped.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

/// Device path of a port text (at most its first 100 bytes count). A text that begins with "C" is looked up among
/// the known port names; nothing when it is not one of them, or when the text is empty. Any other text is a path
/// itself, but not for the B family, which has no path then (an empty one, which never opens). Any thread.
std::optional<std::string> port_path(family of, const std::string& text);

/// Opens a path for overlapped use, 101 times at most and without a pause. INVALID_HANDLE_VALUE when that did not
/// help or when the calling toolkit thread is asked to stop. Any thread.
HANDLE port_open(const std::string& path);

/// Queue sizes, time-outs, line settings and purge, in this order; their results are not looked at. `after`, if
/// given, is called after each of the four with its number (0 to 3). Any thread that owns the port.
void port_configure(HANDLE port, const std::function<void(int)>& after = {});

/// Swallows one pending burst of input. Its messages go to the console only. Any thread that owns the port.
void port_drain(HANDLE port);

/// ClearCommError with nothing asked: the port's error state is cleared. Any thread that owns the port.
void port_clear_errors(HANDLE port);

/// Modes of a B module, as the one-shot write numbers them.
inline constexpr uint8_t mode_config = 0;
inline constexpr uint8_t mode_transfer = 1;

/// The bytes that switch a module's mode: "config" or "transfer" with their zero byte; for any other mode the zero
/// byte alone.
std::span<const uint8_t> mode_text(uint8_t mode);

/// Sends mode_text(mode) and waits for it without limit. Nothing is read back; failures are console lines only.
/// Any thread that owns the port.
void mode_text_write(HANDLE port, uint8_t mode);
