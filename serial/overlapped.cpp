#include "serial/overlapped.h"

#include "serial/session.h"
#include "toolkit/core/date_time.h"

#include <algorithm>
#include <cstring>
#include <memory>

void owned_handle::close() {
    if (valid()) com::CloseHandle(handle_);
    handle_ = INVALID_HANDLE_VALUE;
}

HANDLE owned_handle::release() {
    HANDLE given = handle_;
    handle_ = INVALID_HANDLE_VALUE;
    return given;
}

HANDLE make_event() { return com::CreateEventA(nullptr, TRUE, FALSE, nullptr); }

bool port_lost_error(DWORD error) {
    constexpr std::array<DWORD, 7> lost = {
        21,   // not ready
        22,   // the device does not know the command: its driver is going away
        31,   // a device attached to the system is not functioning
        109,  // the pipe has ended
        433,  // no such device
        995,  // aborted: how some drivers end what was pending when the plug was pulled
        1167, // device not connected
    };
    return std::find(lost.begin(), lost.end(), error) != lost.end();
}

namespace {

constexpr DWORD error_pending = 997;
constexpr DWORD error_incomplete = 996;
constexpr DWORD error_timeout = 1460;

/// What the system writes to until the operation has ended.
struct pending {
    OVERLAPPED record{};
    std::array<uint8_t, io_read_max> bytes{};
};

enum class wait_end : uint8_t { signalled, failed, stopped };

// A stop request sets no handle of the system's, so long waits are taken in slices; the event itself ends a slice
// at once.
wait_end wait_event(HANDLE event, DWORD limit_ms) {
    const int64_t until = limit_ms == INFINITE ? INT64_MAX : time_now_ms() + limit_ms;
    for (;;) {
        const int64_t left = std::max<int64_t>(until - time_now_ms(), 0);
        const auto slice = static_cast<DWORD>(std::min<int64_t>(left, session_timing_get().stop_check_ms));
        const DWORD answer = com::WaitForSingleObject(event, slice);
        if (answer == WAIT_OBJECT_0) return wait_end::signalled;
        if (answer != WAIT_TIMEOUT) return wait_end::failed;
        if (tk_thread_should_stop()) return wait_end::stopped;
        if (left <= slice) return wait_end::failed;
    }
}

/// Cancels the operation and waits for its end; the record and its buffer are given up (never freed) in the one
/// case that the system does not say that it has ended.
void cancel_and_reap(HANDLE port, HANDLE event, std::unique_ptr<pending>& op) {
    com::CancelIoEx(port, &op->record);
    DWORD moved = 0;
    if (com::GetOverlappedResult(port, &op->record, &moved, TRUE)) return;
    if (com::WaitForSingleObject(event, 1000) == WAIT_OBJECT_0) return;
    static_cast<void>(op.release());
}

/// From a started operation to its result. `started` is what ReadFile or WriteFile answered.
io_result finish(HANDLE port, HANDLE event, BOOL started, DWORD wait_ms, std::unique_ptr<pending>& op) {
    const DWORD start_error = started ? 0 : com::GetLastError();
    if (!started && start_error != error_pending) return {io_step::start, start_error, 0};
    if (!started) {
        const wait_end end = wait_event(event, wait_ms);
        if (end != wait_end::signalled) {
            const DWORD error = end == wait_end::failed ? com::GetLastError() : 0;
            cancel_and_reap(port, event, op);
            return {end == wait_end::stopped ? io_step::stopped : io_step::wait, error, 0};
        }
    }
    DWORD moved = 0;
    if (!com::GetOverlappedResult(port, &op->record, &moved, FALSE)) {
        const DWORD error = com::GetLastError();
        if (error == error_incomplete) cancel_and_reap(port, event, op);
        return {io_step::result, error, 0};
    }
    return {io_step::done, 0, moved};
}

} // namespace

io_result port_write(HANDLE port, std::span<const uint8_t> bytes) {
    owned_handle event(make_event());
    if (!event.valid()) return {io_step::create_event, com::GetLastError(), 0};
    auto op = std::make_unique<pending>();
    const std::size_t size = std::min(bytes.size(), op->bytes.size());
    std::copy_n(bytes.begin(), size, op->bytes.begin());
    op->record.hEvent = event.get();
    const BOOL started = com::WriteFile(port, op->bytes.data(), static_cast<DWORD>(size), nullptr, &op->record);
    io_result result = finish(port, event.get(), started, INFINITE, op);
    if (result.ok() && result.bytes != bytes.size()) result.step = io_step::result;
    return result;
}

io_result port_read_with(HANDLE port, HANDLE event, std::span<uint8_t> into, DWORD wait_ms) {
    auto op = std::make_unique<pending>();
    const std::size_t size = std::min(into.size(), op->bytes.size());
    op->record.hEvent = event;
    const BOOL started = com::ReadFile(port, op->bytes.data(), static_cast<DWORD>(size), nullptr, &op->record);
    io_result result = finish(port, event, started, wait_ms, op);
    if (result.error == error_timeout) result.step = io_step::wait;
    if (!result.ok()) return result;
    if (result.bytes == 0) return {io_step::wait, 0, 0};
    std::copy_n(op->bytes.begin(), std::min<std::size_t>(result.bytes, size), into.begin());
    return result;
}

io_result port_read(HANDLE port, std::span<uint8_t> into, DWORD wait_ms) {
    owned_handle event(make_event());
    if (!event.valid()) return {io_step::create_event, com::GetLastError(), 0};
    return port_read_with(port, event.get(), into, wait_ms);
}
