// A text in a JSON file.
#pragma once

#include <string>

/// With its quotes; bytes that are no UTF-8 become U+FFFD. Any thread.
std::string json_quoted(const std::string& text);
