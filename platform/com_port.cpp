// Each function asks the fault switch, then the system's function of the same name. Nothing here depends on the
// system.
#include "platform/com_port.h"
#include "platform/com_fault.h"
#ifndef _WIN32
#include "platform/posix/com_port_calls.h"
#endif

#include <atomic>
#include <cstring>
#include <mutex>
#include <set>

namespace com {
namespace {

/// The ports that are open, so that abort_all finds them. Never freed: threads that outlive main may still close
/// one.
struct open_ports {
    std::mutex lock;
    std::set<HANDLE> handles;
};
open_ports& ports() {
    static open_ports& p = *new open_ports;
    return p;
}
std::atomic<bool> aborted{false};

/// True when the fault switch says so; the last error is set then.
bool fails(call which) {
    DWORD error = 0;
    if (!fault_hits(which, &error)) return false;
    ::SetLastError(error);
    return true;
}

/// What has left the queue may be on its way still: a driver's own store, the far end of a pseudo-terminal.
/// Clearing an empty queue would take it away.
bool nothing_to_send(HANDLE port) {
    DWORD errors = 0;
    COMSTAT status{};
    return ::ClearCommError(port, &errors, &status) && status.cbOutQue == 0;
}

bool refuses(call which) {
    if (fails(which)) return true;
    if (!aborted) return false;
    ::SetLastError(ERROR_OPERATION_ABORTED);
    return true;
}

/// 1 when a record holds anything but rate, bits, parity and stop bits.
DWORD has_more(DCB state) {
    state.DCBlength = 0;
    state.BaudRate = 0;
    state.ByteSize = state.Parity = state.StopBits = 0;
    const DCB none{};
    return std::memcmp(&state, &none, sizeof none) != 0 ? 1 : 0;
}

/// What a started read or write returns. An abort may have come between its check and its start: then it ends here.
BOOL started(HANDLE port, OVERLAPPED* operation, BOOL result) {
    if (result || operation == nullptr || ::GetLastError() != ERROR_IO_PENDING) return result;
    if (aborted) ::CancelIoEx(port, operation);
    ::SetLastError(ERROR_IO_PENDING);
    return FALSE;
}

} // namespace

HANDLE CreateFileA(const char* path, DWORD access, DWORD share, void* security, DWORD disposition, DWORD flags,
                   HANDLE model) {
    tell_call("CreateFileA", {access, share, disposition, flags});
    if (fails(call::create_file)) return INVALID_HANDLE_VALUE;
    auto* attributes = static_cast<SECURITY_ATTRIBUTES*>(security);
    const HANDLE port = ::CreateFileA(path, access, share, attributes, disposition, flags, model);
    if (port == INVALID_HANDLE_VALUE) return port;
    const std::lock_guard<std::mutex> guard(ports().lock);
    ports().handles.insert(port);
    return port;
}

BOOL SetupComm(HANDLE port, DWORD in_queue, DWORD out_queue) {
    tell_call("SetupComm", {in_queue, out_queue});
    return fails(call::setup_comm) ? FALSE : ::SetupComm(port, in_queue, out_queue);
}

BOOL SetCommState(HANDLE port, DCB* state) {
    if (state != nullptr)
        tell_call("SetCommState",
                  {state->BaudRate, state->ByteSize, state->Parity, state->StopBits, has_more(*state)});
    return fails(call::set_comm_state) ? FALSE : ::SetCommState(port, state);
}

BOOL SetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts) {
    if (timeouts != nullptr)
        tell_call("SetCommTimeouts", {timeouts->ReadIntervalTimeout, timeouts->ReadTotalTimeoutMultiplier,
                                      timeouts->ReadTotalTimeoutConstant, timeouts->WriteTotalTimeoutMultiplier,
                                      timeouts->WriteTotalTimeoutConstant});
    return fails(call::set_comm_timeouts) ? FALSE : ::SetCommTimeouts(port, timeouts);
}

BOOL GetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts) {
    return fails(call::get_comm_timeouts) ? FALSE : ::GetCommTimeouts(port, timeouts);
}

BOOL PurgeComm(HANDLE port, DWORD flags) {
    tell_call("PurgeComm", {flags});
    if (fails(call::purge_comm)) return FALSE;
    if ((flags & PURGE_TXCLEAR) == 0 || !nothing_to_send(port)) return ::PurgeComm(port, flags);
    const DWORD others = flags & ~static_cast<DWORD>(PURGE_TXCLEAR);
    return others == 0 ? TRUE : ::PurgeComm(port, others);
}

BOOL ClearCommError(HANDLE port, DWORD* errors, COMSTAT* status) {
    tell_call("ClearCommError", {});
    return fails(call::clear_comm_error) ? FALSE : ::ClearCommError(port, errors, status);
}

BOOL ReadFile(HANDLE port, void* bytes, DWORD size, DWORD* done, OVERLAPPED* operation) {
    tell_call("ReadFile", {size});
    if (refuses(call::read_file)) return FALSE;
    return started(port, operation, ::ReadFile(port, bytes, size, done, operation));
}

BOOL WriteFile(HANDLE port, const void* bytes, DWORD size, DWORD* done, OVERLAPPED* operation) {
    tell_call("WriteFile", {size});
    if (refuses(call::write_file)) return FALSE;
    return started(port, operation, ::WriteFile(port, bytes, size, done, operation));
}

BOOL GetOverlappedResult(HANDLE port, OVERLAPPED* operation, DWORD* done, BOOL wait) {
    tell_call("GetOverlappedResult", {static_cast<DWORD>(wait)});
    return fails(call::get_overlapped_result) ? FALSE : ::GetOverlappedResult(port, operation, done, wait);
}

BOOL CancelIoEx(HANDLE port, OVERLAPPED* operation) {
    tell_call("CancelIoEx", {});
    return fails(call::cancel_io) ? FALSE : ::CancelIoEx(port, operation);
}

HANDLE CreateEventA(void* security, BOOL manual_reset, BOOL initial_state, const char* name) {
    tell_call("CreateEventA", {static_cast<DWORD>(manual_reset), static_cast<DWORD>(initial_state)});
    if (fails(call::create_event)) return nullptr;
    return ::CreateEventA(static_cast<SECURITY_ATTRIBUTES*>(security), manual_reset, initial_state, name);
}

BOOL SetEvent(HANDLE event) { return ::SetEvent(event); }
BOOL ResetEvent(HANDLE event) { return ::ResetEvent(event); }

DWORD WaitForSingleObject(HANDLE object, DWORD ms) {
    tell_call("WaitForSingleObject", {ms});
    DWORD error = 0;
    if (!fault_hits(call::wait_for_single_object, &error)) return ::WaitForSingleObject(object, ms);
    if (error == WAIT_TIMEOUT) return WAIT_TIMEOUT;
    ::SetLastError(error);
    return WAIT_FAILED;
}

BOOL CloseHandle(HANDLE handle) {
    {
        // Before it is closed: its number may be given out again at once. A driver may take its time to close.
        const std::lock_guard<std::mutex> guard(ports().lock);
        ports().handles.erase(handle);
    }
    return ::CloseHandle(handle);
}

DWORD GetLastError() { return ::GetLastError(); }
void SetLastError(DWORD error) { ::SetLastError(error); }

DWORD QueryDosDeviceA(const char* device, char* target, DWORD max) {
    tell_call("QueryDosDeviceA", {max});
    return fails(call::query_dos_device) ? 0 : ::QueryDosDeviceA(device, target, max);
}

void abort_all() {
    aborted = true;
    const std::lock_guard<std::mutex> guard(ports().lock);
    for (HANDLE port : ports().handles)
        if (!fails(call::cancel_io)) ::CancelIoEx(port, nullptr);
}

void resume_all() { aborted = false; }

} // namespace com
