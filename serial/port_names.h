// Port names as people type and pick them, and the device paths behind them.
#pragma once

#include "toolkit/core/object.h"

#include <cstdint>
#include <optional>
#include <string>

/// Device path of a port text (at most its first 100 bytes count; the blanks around it do not, and "com7" is COM7).
/// A text that begins with "C" is looked up among "COM0" to "COM499"; nothing when it is not one of them, or when
/// the text is empty. Any other text is a path itself where paths may be typed; where not, it has an empty one,
/// which never opens. Any thread.
std::optional<std::string> port_path(const std::string& text, bool typed_paths);

/// Whether `a` stands before `b` in a list: letters by the alphabet, numbers by their size. Any thread.
bool port_name_before(const std::string& a, const std::string& b);

/// Keeps the port list's line at a position (from 0), for the process's life. Any thread.
void port_list_line_set(uint32_t index, const std::string& line);
/// What was kept last for a position; empty for one that never had a line. Any thread.
std::string port_list_line(uint32_t index);
