// A folder of one's own for one test: tests run side by side, so a name made of the time or a counter is not
// enough.
#pragma once

#include <filesystem>
#include <random>
#include <string>

/// Names a folder below the system's temporary one that no other test uses; does not create it.
/// @param what the start of its name.
/// @thread any
inline std::filesystem::path scratch_folder(const std::string& what) {
    std::random_device random;
    return std::filesystem::temp_directory_path() /
           (what + "_" + std::to_string(random()) + std::to_string(random()));
}
