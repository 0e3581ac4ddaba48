// Texts as the system takes them (wide) and as the program keeps them (UTF-8).
#pragma once

#include <string>

/// Any thread.
std::wstring utf8_widen(const char* utf8);
/// Any thread.
std::string utf8_narrow(const wchar_t* wide);
