// The data page's settings: a file of texts under keys, rewritten at every change.
#pragma once

#include <cstddef>
#include <string>

/// In the working directory.
inline constexpr const char* setting_path = "./setting.json";
/// Bytes of a text that are read at most; the rest of a longer one is cut, between characters.
inline constexpr std::size_t setting_text_max = 499;

inline constexpr const char* setting_fifo_size = "fifo_size";
inline constexpr const char* setting_paused = "check_button_read_puase"; // as existing files have it

/// Reads the text of a key; a number or a truth value counts as its text. A file that cannot be loaded (there is
/// none, it is no JSON object, it is too large, see conf_json.h) is first replaced by one with the usual settings.
/// 0; -1 (and `text` untouched) when an argument is missing, the file cannot be loaded then either, or the key has
/// no text. Any thread; takes turns.
int setting_read(const char* path, const char* key, std::string* text);

/// Stores the text of a key where the key stands, else behind all others; what else the file holds stays. A file
/// that cannot be loaded is first replaced as above. 0; -1 when an argument is missing or the file cannot be
/// written. Any thread; takes turns.
int setting_write(const char* path, const char* key, const char* text);
