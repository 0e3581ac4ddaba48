#include "serial/port_lease.h"

#include "serial/port_calls.h"
#include "toolkit/core/worker.h"

#include <algorithm>
#include <utility>

namespace {

constexpr DWORD error_invalid_handle = 6;
constexpr DWORD error_aborted = 995;
constexpr DWORD error_timeout = 1460;

} // namespace

// `handle` changes only while nobody holds the lease, or by its holder.
struct port_line {
    port_line(HANDLE port, const port_timing& t) : handle(port), timing(t) {}

    std::mutex lock;
    stop_condition changed;
    stop_source closing;
    owned_handle handle;
    const port_timing timing;
    bool held = false;
    bool left_to_holder = false; ///< who closed it could not wait: whoever lets go closes the handle

    io_port io() const { return {handle.get(), closing.get_token()}; }
    bool take(uint32_t wait_ms);
    void let_go(bool close_first);
    void close();
};

bool port_line::take(uint32_t wait_ms) {
    const stop_token stop = worker_stop_token();
    std::unique_lock guard(lock);
    const auto settled = [this] { return !held || closing.stop_requested(); };
    changed.wait(guard, stop, wait_ms, settled);
    if (held || closing.stop_requested() || stop.stop_requested()) return false;
    held = true;
    return true;
}

// The handle is closed before the port counts as free, so that who waits for that can open it again.
void port_line::let_go(bool close_first) {
    std::unique_lock guard(lock);
    if (close_first || left_to_holder) {
        guard.unlock(); // a driver may take long to close
        handle.close();
        guard.lock();
    }
    held = false;
    changed.notify_all();
}

void port_line::close() {
    closing.request_stop();
    std::unique_lock guard(lock);
    changed.notify_all();
    left_to_holder = !changed.wait(guard, {}, com_port::close_wait_ms, [this] { return !held; });
    if (left_to_holder) return;
    guard.unlock(); // nobody can take it any more
    handle.close();
}

port_timing& port_timing_get() {
    static port_timing& timing = *new port_timing; // workers may outlive the main function
    return timing;
}

port_event::port_event() : handle_(make_event()) {}

port_event::~port_event() {
    if (valid()) com::CloseHandle(handle_);
}

// ---- lease ----

port_lease::port_lease(std::shared_ptr<port_line> line) : line_(std::move(line)) {}

port_lease& port_lease::operator=(port_lease&& other) noexcept {
    if (this == &other) return *this;
    give_back();
    line_ = std::move(other.line_);
    observer_ = std::exchange(other.observer_, nullptr);
    return *this;
}

void port_lease::give_back() {
    if (const auto line = std::exchange(line_, nullptr)) line->let_go(false);
}

void port_lease::close_port() {
    const auto line = std::exchange(line_, nullptr);
    if (line == nullptr) return;
    line->closing.request_stop();
    line->let_go(true);
}

bool port_lease::usable() const { return line_ != nullptr && !line_->closing.stop_requested(); }

io_result port_lease::write(std::span<const uint8_t> bytes) {
    if (line_ == nullptr) return {io_step::start, error_invalid_handle, 0};
    const io_result result = overlapped_write(line_->io(), bytes);
    show(true, bytes, result);
    return result;
}

io_result port_lease::read(std::span<uint8_t> into, DWORD wait_ms) {
    if (line_ == nullptr) return {io_step::start, error_invalid_handle, 0};
    const io_result result = overlapped_read(line_->io(), into, wait_ms);
    show(false, into, result);
    return result;
}

void port_lease::show(bool sent, std::span<const uint8_t> bytes, const io_result& result) const {
    if (observer_ && result.bytes != 0)
        observer_(sent, bytes.first(std::min<std::size_t>(result.bytes, bytes.size())));
}

io_result port_lease::read_with(const port_event& event, std::span<uint8_t> into, DWORD wait_ms) {
    if (line_ == nullptr) return {io_step::start, error_invalid_handle, 0};
    const io_result result = overlapped_read_with(line_->io(), event.handle_, into, wait_ms);
    // How some systems say that the port's time-outs ended it.
    return result.step == io_step::result && result.error == error_timeout ? io_result{} : result;
}

std::optional<DWORD> port_lease::waiting(DWORD* error) {
    if (!usable()) return std::nullopt;
    const std::optional<DWORD> bytes = port_handle_waiting(line_->handle.get());
    if (!bytes && error != nullptr) *error = com::GetLastError();
    return bytes;
}

void port_lease::configure(const std::function<void(int)>& after) {
    if (usable()) port_handle_configure(line_->handle.get(), line_->timing.timeouts, after);
}

void port_lease::drain() {
    if (usable()) port_handle_drain(line_->io(), line_->timing.drain_wait_ms);
}

bool port_lease::purge(DWORD flags, DWORD* error) {
    if (!usable()) return false;
    const bool done = com::PurgeComm(line_->handle.get(), flags) != 0;
    if (!done && error != nullptr) *error = com::GetLastError();
    return done;
}

std::optional<COMMTIMEOUTS> port_lease::timeouts() {
    COMMTIMEOUTS now{};
    if (!usable() || !com::GetCommTimeouts(line_->handle.get(), &now)) return std::nullopt;
    return now;
}

bool port_lease::set_timeouts(const COMMTIMEOUTS& timeouts) {
    COMMTIMEOUTS wanted = timeouts;
    return usable() && com::SetCommTimeouts(line_->handle.get(), &wanted);
}

// ---- owner ----

ret_t com_port::open(const std::string& path, DWORD* error) {
    close();
    uint64_t closes = 0;
    {
        const std::lock_guard guard(lock_);
        closes = closes_;
    }
    DWORD why = 0;
    owned_handle opened(port_handle_open(path, &why));
    if (opened.valid()) {
        const std::lock_guard guard(lock_);
        if (closes_ == closes && line_ == nullptr) {
            line_ = std::make_shared<port_line>(opened.release(), port_timing_get());
            opens_++;
            opened_.notify_all();
            return RET_OK;
        }
        why = error_aborted;
    }
    if (error != nullptr) *error = why;
    return RET_FAIL;
}

std::shared_ptr<port_line> com_port::line() const {
    const std::lock_guard guard(lock_);
    return line_;
}

bool com_port::is_open() const {
    const auto now = line();
    return now != nullptr && !now->closing.stop_requested();
}

uint64_t com_port::wait_opened(uint64_t seen) const {
    std::unique_lock guard(lock_);
    const auto ready = [&] { return opens_ > seen && line_ != nullptr && !line_->closing.stop_requested(); };
    return opened_.wait(guard, worker_stop_token(), wait_for_ever, ready) ? opens_ : 0;
}

port_lease com_port::take(uint32_t wait_ms) {
    auto now = line();
    return now != nullptr && now->take(wait_ms) ? port_lease(std::move(now)) : port_lease();
}

void com_port::close() {
    std::shared_ptr<port_line> closed;
    {
        const std::lock_guard guard(lock_);
        closed.swap(line_);
        closes_++;
    }
    if (closed != nullptr) closed->close();
}
