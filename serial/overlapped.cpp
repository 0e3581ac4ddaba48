#include "serial/overlapped.h"

#include "toolkit/core/worker.h"

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

void owned_handle::close() {
    if (valid()) com::CloseHandle(handle_);
    handle_ = INVALID_HANDLE_VALUE;
}

HANDLE owned_handle::release() { return std::exchange(handle_, INVALID_HANDLE_VALUE); }

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
constexpr DWORD reap_wait_ms = 1000;

/// What the system writes to until the operation has ended.
struct pending {
    explicit pending(std::size_t size) : bytes(size) {}
    DWORD size() const { return static_cast<DWORD>(bytes.size()); }
    OVERLAPPED record{};
    std::vector<uint8_t> bytes;
};

bool stopping(const io_port& port) { return worker_should_stop() || port.closing.stop_requested(); }

/// What a stop does to an operation, on the thread that asks: it is cancelled, and its wait ends even where the
/// system does not end the operation.
struct abort_operation {
    HANDLE port;
    HANDLE event;
    OVERLAPPED* record;
    void operator()() const {
        com::CancelIoEx(port, record);
        com::SetEvent(event);
    }
};

/// Waits for the event, in one call; true when it was set. `error` is the thread's last error right after the wait.
bool wait_event(const io_port& port, HANDLE event, OVERLAPPED* record, DWORD limit_ms, DWORD* error) {
    const abort_operation abort{port.handle, event, record};
    const stop_callback on_stop(worker_stop_token(), abort);
    const stop_callback on_close(port.closing, abort);
    const DWORD answer = com::WaitForSingleObject(event, limit_ms);
    *error = com::GetLastError();
    return answer == WAIT_OBJECT_0;
}

/// Keeps for ever what the system may still write to.
void give_up(std::unique_ptr<pending> op) {
    static std::mutex& lock = *new std::mutex;
    static auto& given_up = *new std::vector<std::unique_ptr<pending>>;
    const std::lock_guard guard(lock);
    given_up.push_back(std::move(op));
}

/// Cancels the operation and waits for its end; the record and its buffer are given up (never freed) in the one
/// case that the system does not say that it has ended.
void cancel_and_reap(HANDLE port, HANDLE event, std::unique_ptr<pending>& op) {
    com::CancelIoEx(port, &op->record);
    com::ResetEvent(event); // a stop may have set it; from here on only the operation's end does
    DWORD moved = 0;
    if (com::GetOverlappedResult(port, &op->record, &moved, FALSE)) return;
    if (com::GetLastError() != error_incomplete) return;
    if (com::WaitForSingleObject(event, reap_wait_ms) == WAIT_OBJECT_0) return;
    give_up(std::move(op));
}

/// From a started operation to its result. `started` is what ReadFile or WriteFile answered.
io_result finish(const io_port& port, HANDLE event, BOOL started, DWORD wait_ms, std::unique_ptr<pending>& op) {
    DWORD error = started ? 0 : com::GetLastError();
    if (!started && error != error_pending) return {io_step::start, error, 0};
    if (!started && !wait_event(port, event, &op->record, wait_ms, &error)) {
        cancel_and_reap(port.handle, event, op);
        return {io_step::wait, error, 0};
    }
    DWORD moved = 0;
    if (com::GetOverlappedResult(port.handle, &op->record, &moved, FALSE)) return {io_step::done, 0, moved};
    error = com::GetLastError();
    if (error == error_incomplete) cancel_and_reap(port.handle, event, op);
    return {io_step::result, error, 0};
}

/// However an operation ended that did not end well: a stop has no error of its own.
io_result judge(const io_port& port, const io_result& result) {
    return !result.ok() && stopping(port) ? io_result{io_step::stopped, 0, 0} : result;
}

} // namespace

io_result overlapped_write(const io_port& port, std::span<const uint8_t> bytes) {
    if (stopping(port)) return {io_step::stopped, 0, 0};
    owned_handle event(make_event());
    if (!event.valid()) return {io_step::create_event, com::GetLastError(), 0};
    auto op = std::make_unique<pending>(bytes.size());
    std::ranges::copy(bytes, op->bytes.begin());
    op->record.hEvent = event.get();
    const BOOL started = com::WriteFile(port.handle, op->bytes.data(), op->size(), nullptr, &op->record);
    io_result result = finish(port, event.get(), started, INFINITE, op);
    if (result.ok() && result.bytes != bytes.size()) result.step = io_step::result;
    return judge(port, result);
}

io_result overlapped_read_with(const io_port& port, HANDLE event, std::span<uint8_t> into, DWORD wait_ms) {
    if (stopping(port)) return {io_step::stopped, 0, 0};
    auto op = std::make_unique<pending>(into.size());
    op->record.hEvent = event;
    const BOOL started = com::ReadFile(port.handle, op->bytes.data(), op->size(), nullptr, &op->record);
    const io_result result = finish(port, event, started, wait_ms, op);
    if (!result.ok()) return judge(port, result);
    std::copy_n(op->bytes.begin(), std::min<std::size_t>(result.bytes, into.size()), into.begin());
    return result;
}

io_result overlapped_read(const io_port& port, std::span<uint8_t> into, DWORD wait_ms) {
    owned_handle event(make_event());
    if (!event.valid()) return {io_step::create_event, com::GetLastError(), 0};
    io_result result = overlapped_read_with(port, event.get(), into, wait_ms);
    if (result.ok() && result.bytes == 0) return judge(port, {io_step::wait, 0, 0});
    if (result.error == error_timeout) result.step = io_step::wait;
    return result;
}
