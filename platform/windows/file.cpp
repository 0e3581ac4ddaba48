#include "platform/system.h"

#include <windows.h>

namespace {

std::wstring widen(const char* utf8) {
    const int size = MultiByteToWideChar(CP_UTF8, 0, utf8, -1, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(size > 0 ? size : 1), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8, -1, wide.data(), size);
    wide.pop_back(); // the end that the system counts in
    return wide;
}

} // namespace

std::FILE* platform_fopen(const char* utf8_path, const char* mode) {
    return _wfopen(widen(utf8_path).c_str(), (widen(mode) + L"N").c_str());
}

bool platform_replace_file(const char* from, const char* to) {
    const std::wstring source = widen(from);
    const std::wstring target = widen(to);
    // A reader that has the file open for a moment makes the call fail: try for about 200 ms.
    for (int attempt = 0; attempt < 20; attempt++) {
        if (MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING) != 0) return true;
        const DWORD error = GetLastError();
        if (error != ERROR_ACCESS_DENIED && error != ERROR_SHARING_VIOLATION) return false;
        const DWORD attributes = GetFileAttributesW(target.c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return false;
        Sleep(10);
    }
    return false;
}

bool platform_local_time(std::time_t seconds, std::tm* local) { return localtime_s(local, &seconds) == 0; }
