// What else differs between operating systems.
#pragma once

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

/// The program's own entry, called by the system's: receives the command line (without the program's name) as one
/// wide string and returns the process's exit status. The executable provides it.
int vkt_main(const std::wstring& command_line);

/// The entry of a program for the console, in place of vkt_main: its arguments (UTF-8) without the program's name.
int vkt_console_main(const std::vector<std::string>& arguments);

/// From now on `call` runs, on a thread of its own, when the user or the system asks the program to end (Ctrl+C, a
/// terminal that is closed, a termination signal); asked a second time, and after 900 ms in any case, the process
/// ends with `status`. Once, before any other thread is started.
void platform_on_interrupt(void (*call)(), int status);
/// True for a stream that a person looks at.
bool platform_is_terminal(std::FILE* stream);

/// The folder of the running program (UTF-8, without a slash at its end); empty when the system does not say. Any
/// thread.
std::string platform_program_folder();

/// Where this user's settings belong (UTF-8, without a slash at its end; the folder need not be there): what the
/// variable VKT_SETTINGS names, else "%APPDATA%\\VKTCfgTools" on Windows and "vktcfgtools" in $XDG_CONFIG_HOME or
/// ~/.config elsewhere. Empty when the system names none. Any thread.
std::string platform_settings_folder();

/// Initialises COM (multithreaded apartment) for the process. Called once, by the GUI thread, before any window is
/// there; that thread itself stays free to choose. Nothing elsewhere than on Windows.
void platform_com_init();

/// Gives the process a console and reopens standard output on it. On systems where standard output always exists,
/// nothing. Returns false when it failed.
bool platform_open_console();

/// The debugger sink: OutputDebugStringA, or standard error when VKT_DEBUGGER_LOG=1. Any thread.
void platform_debugger_output(const char* text);

/// Ends the process at once with `status`, after flushing the C library's streams: no destructors, no exit
/// handlers, so threads that still run touch nothing that was freed.
[[noreturn]] void platform_exit_now(int status);

/// Whether the user has asked the system for dark windows. False where only the desktop's palette says so.
bool platform_prefers_dark();

/// Total CPU time of the process in milliseconds, and its resident memory in KiB (0 where it cannot be told).
int64_t platform_cpu_ms();
int64_t platform_resident_kib();

/// The C library's fopen with a UTF-8 path; the file is not inherited by child processes. Null on failure. Any
/// thread.
std::FILE* platform_fopen(const char* utf8_path, const char* mode);

/// Gives the file `from` the name `to` in one step; a file of that name is replaced. Both are UTF-8 paths of the
/// same volume. False, and nothing changed, on failure. Any thread.
bool platform_replace_file(const char* from, const char* to);

/// Seconds since 1970-01-01 UTC as local date and time. False when it cannot be told. Any thread.
bool platform_local_time(std::time_t seconds, std::tm* local);
