// The argument vector as the one wide command line that Windows programs receive.
#pragma once

#include <string>

/// Joins the arguments (UTF-8, whatever the locale; without the program's name) with blanks. One that is empty or
/// holds blanks is put into double quotes unless it begins with one itself. Bytes that are no UTF-8 become U+FFFD.
std::wstring command_line_join(int count, const char* const* arguments);
