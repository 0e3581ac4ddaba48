// What is done with a port's handle besides reading and writing. Inside of port_lease.
#pragma once

#include "serial/overlapped.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

/// Opens a path for overlapped use, 101 times at most and without a pause. INVALID_HANDLE_VALUE when that did not
/// help or when the calling worker is asked to stop; `error` then holds the last attempt's error, 995 for a stop.
/// Any thread.
HANDLE port_handle_open(const std::string& path, DWORD* error);

/// Queue sizes, time-outs, line settings (9600 baud, 8 data bits, no parity, two stop bits) and purge, in this
/// order; their results are not looked at. `after`, if given, is called after each of the four with its number (0
/// to 3).
void port_handle_configure(HANDLE port, const COMMTIMEOUTS& timeouts, const std::function<void(int)>& after);

/// Swallows one pending burst of input, waiting at most `wait_ms` for a read. Its messages go to the console only.
void port_handle_drain(const io_port& port, DWORD wait_ms);

/// ClearCommError: the port's error state is cleared. How many bytes wait in the input queue; nothing, with
/// GetLastError, when the system cannot tell.
std::optional<DWORD> port_handle_waiting(HANDLE port);
