// Where the program finds and leaves its files, relative to the working directory.
#pragma once

#include <string>

inline constexpr const char* log_folder = "../log";

/// Root of layouts, styles, strings and images: "../res"; tests choose another. GUI thread.
std::string& resource_root();

/// Takes the start-up time into the error log's name, "../log/err-YEAR-MONTH-DAY-HOUR.txt". GUI thread.
void error_log_name_from_now();
/// The error log's path; tests choose another. GUI thread.
std::string& error_log_path();

/// Makes the log folder when it is missing. Any thread.
void log_folder_ensure();
