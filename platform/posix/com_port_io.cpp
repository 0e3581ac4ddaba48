// Reading, writing, and what becomes of operations that pend.
#include "platform/posix/com_port_calls.h"
#include "platform/posix/io_thread.h"

namespace posix_com {
namespace {

void wait_for_end(const OVERLAPPED* record, std::unique_lock<std::mutex>& lock) {
    io_ended().wait(lock, [&] { return !record_pending(record); });
}

/// Stores the count and answers with TRUE, or with the error the operation ended with.
BOOL result_of(const OVERLAPPED* record, DWORD* done) {
    if (done != nullptr) *done = static_cast<DWORD>(record->InternalHigh);
    const DWORD error = record_error(record);
    return error == ERROR_SUCCESS ? TRUE : fail(error);
}

/// The operation's event, reset; false when the record names one that is not open.
bool take_event(operation* op) {
    if (op->record == nullptr || op->record->hEvent == nullptr) return true;
    const object named = handle_find(op->record->hEvent);
    op->done_event = named.signal;
    if (named.signal == nullptr || named.serial != nullptr) return false;
    op->done_event->reset();
    return true;
}

/// 0, or why the operation cannot begin.
DWORD objection(const port& p, const operation& op) {
    if (!(op.out != nullptr ? p.writable : p.readable)) return ERROR_ACCESS_DENIED;
    if (p.overlapped && op.record == nullptr) return ERROR_INVALID_PARAMETER;
    return p.lost ? ERROR_NOT_READY : ERROR_SUCCESS;
}

/// Starts a read or a write: it is complete at once, or pends (an overlapped handle) or is waited for.
BOOL start(HANDLE handle, operation op, DWORD* done) {
    if (done != nullptr) *done = 0;
    const std::shared_ptr<port> p = handle_port(handle);
    if (p == nullptr) return FALSE;
    std::unique_lock<std::mutex> lock(io_lock());
    if (const DWORD error = objection(*p, op); error != ERROR_SUCCESS) return fail(error);
    if (!take_event(&op)) return fail(ERROR_INVALID_HANDLE);
    OVERLAPPED own{};
    if (op.record == nullptr) op.record = &own;
    OVERLAPPED* const record = op.record;
    record_begin(record);
    p->signal->reset();
    operation_start_timers(p->timeouts, &op);
    std::deque<operation>& queue = op.out != nullptr ? p->writes : p->reads;
    const bool first = queue.empty();
    queue.push_back(std::move(op));
    if (first) port_advance(*p, io_clock::now(), true);
    if (!record_pending(record)) {
        // Only an operation that was pending sees the port vanish; for a new one it has not been there.
        return p->lost ? fail(ERROR_NOT_READY) : result_of(record, done);
    }
    io_thread_watch(p);
    if (p->overlapped) return fail(ERROR_IO_PENDING);
    wait_for_end(record, lock);
    return result_of(record, done);
}

} // namespace
} // namespace posix_com

using namespace posix_com;

BOOL ReadFile(HANDLE handle, void* bytes, DWORD size, DWORD* done, OVERLAPPED* record) {
    if (bytes == nullptr && size > 0) return fail(ERROR_NOACCESS);
    operation op;
    op.in = static_cast<uint8_t*>(bytes);
    op.record = record;
    op.size = size;
    return start(handle, std::move(op), done);
}

BOOL WriteFile(HANDLE handle, const void* bytes, DWORD size, DWORD* done, OVERLAPPED* record) {
    if (bytes == nullptr && size > 0) return fail(ERROR_NOACCESS);
    static const uint8_t nothing = 0;
    operation op;
    op.out = bytes != nullptr ? static_cast<const uint8_t*>(bytes) : &nothing;
    op.record = record;
    op.size = size;
    return start(handle, std::move(op), done);
}

BOOL GetOverlappedResult(HANDLE handle, OVERLAPPED* record, DWORD* done, BOOL wait) {
    if (record == nullptr) return fail(ERROR_INVALID_PARAMETER);
    std::unique_lock<std::mutex> lock(io_lock());
    if (record_pending(record)) {
        if (handle_find(handle).serial == nullptr) return fail(ERROR_INVALID_HANDLE);
        if (wait == FALSE) return fail(ERROR_IO_INCOMPLETE);
        wait_for_end(record, lock);
    }
    return result_of(record, done);
}

BOOL CancelIoEx(HANDLE handle, OVERLAPPED* record) {
    const std::shared_ptr<port> p = handle_port(handle);
    if (p == nullptr) return FALSE;
    const std::lock_guard<std::mutex> guard(io_lock());
    return port_cancel(*p, record, true, true) ? TRUE : fail(ERROR_NOT_FOUND);
}
