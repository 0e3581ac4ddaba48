#include "platform/system.h"
#include "platform/windows/utf8.h"

#include <windows.h>

std::FILE* platform_fopen(const char* utf8_path, const char* mode) {
    return _wfopen(utf8_widen(utf8_path).c_str(), (utf8_widen(mode) + L"N").c_str());
}

bool platform_replace_file(const char* from, const char* to) {
    const std::wstring source = utf8_widen(from);
    const std::wstring target = utf8_widen(to);
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
