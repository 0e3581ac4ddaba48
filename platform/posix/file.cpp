#include "platform/system.h"

#include <string>

std::FILE* platform_fopen(const char* utf8_path, const char* mode) {
    return std::fopen(utf8_path, (std::string(mode) + "e").c_str());
}

bool platform_replace_file(const char* from, const char* to) { return std::rename(from, to) == 0; }

bool platform_local_time(std::time_t seconds, std::tm* local) { return localtime_r(&seconds, local) != nullptr; }
