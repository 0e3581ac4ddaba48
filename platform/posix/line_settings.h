// The terminal driver's side of a serial line: raw mode, rate, format, queues. Every function takes an open
// terminal and returns false, with errno set, when the driver refuses.
#pragma once

#include "platform/posix/com_port_system.h"

#include <cstdint>

namespace posix_com {

/// Raw bytes, no echo, no flow control, modem lines ignored; the rate and format stay. Fails for what is no
/// terminal.
bool line_make_raw(int fd);
/// False also for a record that no driver takes (errno EINVAL).
bool line_apply(int fd, const DCB& state);
/// The termios bits (c_cflag) of the settings' format and flow control; settings that line_apply takes.
uint32_t line_control_bits(const DCB& state);
/// How long one character takes on the wire with these settings, in microseconds.
int64_t line_character_us(const DCB& state);

/// Bytes that wait to be read, and bytes that are not sent yet.
bool line_in_queue(int fd, DWORD* bytes);
bool line_out_queue(int fd, DWORD* bytes);
bool line_drop_input(int fd);
bool line_drop_output(int fd);

} // namespace posix_com
