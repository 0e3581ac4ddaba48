#include "platform/system.h"
#include "platform/windows/com_port_system.h"

#include <atomic>
#include <cstdio>
#include <io.h>
#include <objbase.h>
#define PSAPI_VERSION 2 // GetProcessMemoryInfo from kernel32 itself
#include <psapi.h>

namespace {

void (*interrupt_call)() = nullptr;
int interrupt_status = 0;
std::atomic<bool> interrupted{false};

// Runs on a thread of the system's own; for a console that is closed the process lives until it returns.
BOOL WINAPI on_console_event(DWORD /*event*/) {
    if (!interrupted.exchange(true)) {
        interrupt_call();
        Sleep(900);
    }
    platform_exit_now(interrupt_status);
}

std::string narrow(const std::wstring& wide) {
    const auto length = static_cast<int>(wide.size());
    std::string text(static_cast<std::size_t>(
                         WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr)),
                     '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, text.data(), static_cast<int>(text.size()), nullptr,
                        nullptr);
    return text;
}

} // namespace

void platform_on_interrupt(void (*call)(), int status) {
    interrupt_call = call;
    interrupt_status = status;
    SetConsoleCtrlHandler(on_console_event, TRUE);
}

bool platform_is_terminal(std::FILE* stream) { return _isatty(_fileno(stream)) != 0; }

std::string platform_program_folder() {
    std::wstring wide(32768, L'\0'); // the longest path there is
    wide.resize(GetModuleFileNameW(nullptr, wide.data(), static_cast<DWORD>(wide.size())));
    wide.resize(wide.find_last_of(L"\\/") == std::wstring::npos ? 0 : wide.find_last_of(L"\\/"));
    return narrow(wide);
}

std::string platform_settings_folder() {
    const auto named = [](const wchar_t* variable) {
        std::wstring value(32768, L'\0');
        value.resize(GetEnvironmentVariableW(variable, value.data(), static_cast<DWORD>(value.size())));
        return narrow(value);
    };
    if (std::string own = named(L"VKT_SETTINGS"); !own.empty()) return own;
    const std::string data = named(L"APPDATA");
    return data.empty() ? data : data + "\\VKTCfgTools";
}

void platform_com_init() {
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) return;
    // The process stays in the multithreaded apartment, and every thread in it that makes no other choice. This one
    // is let go again: the window library needs a single-threaded one on it, or nothing can be copied or pasted.
    CO_MTA_USAGE_COOKIE kept{};
    if (SUCCEEDED(CoIncrementMTAUsage(&kept))) CoUninitialize();
}

bool platform_open_console() {
    // A console that is there already does as well.
    if (AllocConsole() == FALSE && GetConsoleWindow() == nullptr) return false;
    return std::freopen("CONOUT$", "w+t", stdout) != nullptr;
}

bool platform_prefers_dark() {
    DWORD light = 1;
    DWORD size = sizeof light;
    const LSTATUS found =
        RegGetValueW(HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
                     L"AppsUseLightTheme", RRF_RT_REG_DWORD, nullptr, &light, &size);
    return found == ERROR_SUCCESS && light == 0;
}

void platform_debugger_output(const char* text) {
    if (text != nullptr) OutputDebugStringA(text);
}

void platform_exit_now(int status) {
    std::fflush(nullptr);
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
    for (;;) Sleep(INFINITE); // never reached: the call above does not come back
}

int64_t platform_cpu_ms() {
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    if (GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user) == FALSE) return 0;
    const auto ticks = [](const FILETIME& t) { // of 100 ns
        return static_cast<int64_t>((static_cast<uint64_t>(t.dwHighDateTime) << 32U) | t.dwLowDateTime);
    };
    return (ticks(kernel) + ticks(user)) / 10000;
}

int64_t platform_resident_kib() {
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof counters;
    if (GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters) == FALSE) return 0;
    return static_cast<int64_t>(counters.WorkingSetSize / 1024);
}
