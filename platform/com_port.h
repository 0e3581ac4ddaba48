// The COM-port interface with overlapped I/O, the same on every system.
//
// The types (HANDLE, DWORD, OVERLAPPED, DCB, COMMTIMEOUTS, COMSTAT, ...) and constants are the operating system's
// on Windows and platform/posix's elsewhere. The program calls the functions through this namespace: each call
// first asks the fault switch, then goes to the system. Every function may be called from any thread; a handle may
// be used by several threads at once as on Windows. Results, GetLastError codes and time-out rules are those of
// Windows.
#pragma once

#ifdef _WIN32
#include "platform/windows/com_port_system.h"
#else
#include "platform/posix/com_port_system.h"
#endif

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace com {

/// Opens a port. `path` is "COM7", "\\.\COM7" or, elsewhere than on Windows, the path of a device node too.
/// INVALID_HANDLE_VALUE on failure, with GetLastError 2 (no such port), 5 (taken, forbidden, or not a port), or
/// other.
HANDLE CreateFileA(const char* path, DWORD access, DWORD share, void* security, DWORD disposition, DWORD flags,
                   HANDLE model);
BOOL SetupComm(HANDLE port, DWORD in_queue, DWORD out_queue);
BOOL SetCommState(HANDLE port, DCB* state);
BOOL SetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts);
BOOL GetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts);
/// An empty output queue is left alone, so that what has just left it arrives.
BOOL PurgeComm(HANDLE port, DWORD flags);
/// Clears the port's error state and fills in how many bytes wait in the queues.
BOOL ClearCommError(HANDLE port, DWORD* errors, COMSTAT* status);
BOOL ReadFile(HANDLE port, void* bytes, DWORD size, DWORD* done, OVERLAPPED* operation);
BOOL WriteFile(HANDLE port, const void* bytes, DWORD size, DWORD* done, OVERLAPPED* operation);
BOOL GetOverlappedResult(HANDLE port, OVERLAPPED* operation, DWORD* done, BOOL wait);
/// Cancels one pending operation of a handle (any thread's), or all of them when `operation` is null.
BOOL CancelIoEx(HANDLE port, OVERLAPPED* operation);
HANDLE CreateEventA(void* security, BOOL manual_reset, BOOL initial_state, const char* name);
BOOL SetEvent(HANDLE event);
BOOL ResetEvent(HANDLE event);
DWORD WaitForSingleObject(HANDLE object, DWORD ms);
BOOL CloseHandle(HANDLE handle);
/// The calling thread's last error code.
DWORD GetLastError();
void SetLastError(DWORD error);
/// With `device` null: all device names, each zero-ended, the list ended by an empty name. Returns the bytes
/// stored, or 0 with GetLastError (122 when `max` is too small).
DWORD QueryDosDeviceA(const char* device, char* target, DWORD max);

// ---- fault switch ----

enum class call : uint8_t {
    create_file,
    setup_comm,
    set_comm_state,
    set_comm_timeouts,
    get_comm_timeouts,
    purge_comm,
    clear_comm_error,
    read_file,
    write_file,
    get_overlapped_result,
    create_event,
    wait_for_single_object,
    query_dos_device,
    cancel_io, ///< abort_all's too
    count_
};

/// As a fault's error: the call hangs, as in a driver that is stuck, and nothing but the end of the process ends
/// it.
constexpr DWORD never_returns = 0xFFFFFFFF;

/// From now on the call numbered `skip` (from 0) and the `times` - 1 after it fail with `error` instead of reaching
/// the system; a wait returns WAIT_FAILED, or WAIT_TIMEOUT when `error` is 258. Faults add up until fault_clear.
/// Any thread.
void fault_set(call which, uint32_t skip, uint32_t times, DWORD error);
/// Removes all faults and sets the counters to 0.
void fault_clear();
/// How often a function was called since fault_clear, failed calls included.
uint32_t call_count(call which);
/// Reads faults as "WriteFile:SKIP:TIMES:ERROR;CreateEventA:0:1:8;CreateFileA:0:1:hang"; false (and none set) when
/// it cannot be read. The program does this at start-up with the environment variable VKT_COM_FAULT.
bool fault_parse(const char* text);

/// Test aid: `watcher` hears of each call before it is made (and before a fault is asked for), with the numbers
/// that it is made with: "SetupComm 1024 1024", "SetCommState 9600 8 0 2 0" (the last: 1 when anything else in the
/// record is set), "ReadFile 256". Empty: nobody hears. It is called on the calling thread and may make calls
/// itself. Any thread.
void watch_calls(std::function<void(const std::string& call)> watcher);

/// Cancels what is pending on every open port and refuses new reads and writes with ERROR_OPERATION_ABORTED (995):
/// the last thing before the process ends, so that no worker waits for a port. `resume_all` undoes it (tests).
void abort_all();
void resume_all();

// ---- names ----

/// Maps a name ("COM7") to a device node for the rest of the process, before VKT_COM_PORTS and the fixed rule. An
/// empty path removes the mapping. Does nothing on Windows. Any thread.
void map_port(const std::string& name, const std::string& path);

/// Whether there is a port of that name, or of that path as CreateFileA takes it, now; opens nothing. Any thread.
bool port_present(const std::string& name);

/// What the system says about the device of a port ("FTDI FT232R USB UART A6007XYZ"); empty when it says nothing.
/// Any thread.
std::string describe_port(const std::string& name);

/// What stands behind CreateFileA's error 5.
enum class denial : uint8_t {
    taken,     ///< another program has it open
    forbidden, ///< the user may not open it
    no_port,   ///< there is something else of that name
};
/// For a path as CreateFileA takes it. On Windows, where 5 is how a port in use answers, always `taken`. Any
/// thread.
denial why_denied(const std::string& path);

} // namespace com
