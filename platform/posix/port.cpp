#include "platform/posix/port.h"
#include "platform/posix/line_settings.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace posix_com {
namespace {

constexpr ULONG_PTR status_pending = 0x103;
constexpr ULONG_PTR status_error = 0xC0070000; // with the error code in the low half

enum class progress { waiting, moved, gone };

/// One attempt to read or write; interrupted ones are repeated.
template <class Move>
progress move_bytes(operation* op, Move move) {
    for (;;) {
        const ssize_t n = move();
        if (n > 0) {
            op->moved += static_cast<DWORD>(n);
            return progress::moved;
        }
        if (n < 0 && errno == EINTR) continue;
        return n < 0 && errno == EAGAIN ? progress::waiting : progress::gone;
    }
}

progress read_some(const port& p, operation* op) {
    return move_bytes(op, [&] { return read(p.fd, op->in + op->moved, op->size - op->moved); });
}

progress write_some(const port& p, operation* op) {
    return move_bytes(op, [&] { return write(p.fd, op->out + op->moved, op->size - op->moved); });
}

void end_operation(port& p, operation& op, DWORD error) {
    op.record->InternalHigh = op.moved;
    op.record->Internal = error == ERROR_SUCCESS ? 0 : status_error | error;
    if (op.done_event != nullptr) op.done_event->set();
    p.signal->set();
    io_ended().notify_all();
}

void end_front(port& p, std::deque<operation>& queue, DWORD error) {
    operation op = std::move(queue.front());
    queue.pop_front();
    end_operation(p, op, error);
}

/// What the driver took but did not send is dropped and does not count: the operation ends here.
void unsend(const port& p, operation* op) {
    DWORD left = 0;
    if (op->moved == 0 || !line_out_queue(p.fd, &left)) return;
    line_drop_output(p.fd);
    op->moved -= std::min(left, op->moved);
}

/// True when the front read has ended.
bool advance_read(port& p, io_time now, bool at_call) {
    operation& op = p.reads.front();
    while (op.moved < op.size) {
        const progress step = read_some(p, &op);
        if (step == progress::gone || (step == progress::waiting && p.hung_up)) {
            port_lose(p);
            return true;
        }
        if (step == progress::waiting) break;
        if (op.interval.count() > 0) op.next_end = now + op.interval;
    }
    const bool enough = op.moved > 0 && ((at_call && op.any_at_call) || op.any_later);
    const bool expired = now >= op.total_end || (op.moved > 0 && now >= op.next_end);
    if (op.moved < op.size && !enough && !expired && !op.nothing_at_call) return false;
    end_front(p, p.reads, ERROR_SUCCESS);
    return true;
}

/// True when the front write has ended. It ends when the last byte has left the driver's queue, so that a purge
/// after it takes nothing away.
bool advance_write(port& p, io_time now) {
    operation& op = p.writes.front();
    progress step = progress::moved;
    while (step == progress::moved && op.moved < op.size) step = write_some(p, &op);
    DWORD left = 0;
    if (step == progress::gone || p.hung_up || !line_out_queue(p.fd, &left)) {
        port_lose(p);
        return true;
    }
    const bool sent = op.moved == op.size && left == 0;
    if (!sent && now < op.total_end) {
        const auto queue_time = std::chrono::microseconds(std::max<int64_t>(1000, left * p.character_us));
        op.next_end = op.moved == op.size ? now + queue_time : io_time::max();
        return false;
    }
    if (!sent) unsend(p, &op);
    end_front(p, p.writes, ERROR_SUCCESS);
    return true;
}

bool cancel_in(port& p, std::deque<operation>& queue, const OVERLAPPED* record) {
    bool found = false;
    for (auto at = queue.begin(); at != queue.end();) {
        if (record != nullptr && at->record != record) {
            ++at;
            continue;
        }
        operation op = std::move(*at);
        at = queue.erase(at);
        if (op.out != nullptr) unsend(p, &op);
        end_operation(p, op, ERROR_OPERATION_ABORTED);
        found = true;
    }
    return found;
}

/// Nothing for a total time-out whose two values are 0.
io_time total_end(DWORD multiplier, DWORD constant, DWORD size) {
    if (multiplier == 0 && constant == 0) return io_time::max();
    const uint64_t ms = static_cast<uint64_t>(multiplier) * size + constant;
    return io_clock::now() + io_ms(std::min<uint64_t>(ms, 1000ULL * 86400 * 365 * 10));
}

} // namespace

port::~port() {
    if (fd >= 0) close(fd);
}

std::mutex& io_lock() {
    static std::mutex& lock = *new std::mutex;
    return lock;
}

std::condition_variable& io_ended() {
    static std::condition_variable& ended = *new std::condition_variable;
    return ended;
}

void operation_start_timers(const COMMTIMEOUTS& t, operation* op) {
    if (op->out != nullptr) {
        op->total_end = total_end(t.WriteTotalTimeoutMultiplier, t.WriteTotalTimeoutConstant, op->size);
        return;
    }
    const bool one_is_enough = t.ReadTotalTimeoutMultiplier == MAXDWORD;
    op->any_at_call = t.ReadIntervalTimeout == MAXDWORD;
    op->nothing_at_call = op->any_at_call && t.ReadTotalTimeoutMultiplier == 0 && t.ReadTotalTimeoutConstant == 0;
    op->any_later = op->any_at_call && one_is_enough;
    if (!op->any_at_call) op->interval = io_ms(t.ReadIntervalTimeout);
    op->total_end =
        total_end(op->any_later ? 0 : t.ReadTotalTimeoutMultiplier, t.ReadTotalTimeoutConstant, op->size);
}

void port_advance(port& p, io_time now, bool at_call) {
    while (!p.reads.empty() && advance_read(p, now, at_call)) {
    }
    while (!p.writes.empty() && advance_write(p, now)) {
    }
}

bool port_cancel(port& p, const OVERLAPPED* record, bool reads, bool writes) {
    const bool read_found = reads && cancel_in(p, p.reads, record);
    const bool write_found = writes && cancel_in(p, p.writes, record);
    return read_found || write_found;
}

void port_lose(port& p) {
    p.lost = true;
    while (!p.reads.empty()) end_front(p, p.reads, ERROR_BROKEN_PIPE);
    while (!p.writes.empty()) end_front(p, p.writes, ERROR_BROKEN_PIPE);
}

bool port_busy(const port& p) { return !p.reads.empty() || !p.writes.empty(); }

short port_poll_events(const port& p) {
    short events = 0;
    if (!p.reads.empty()) events |= POLLIN;
    if (!p.writes.empty() && p.writes.front().moved < p.writes.front().size) events |= POLLOUT;
    return events;
}

io_time port_next_time(const port& p) {
    io_time next = io_time::max();
    for (const auto* queue : {&p.reads, &p.writes})
        if (!queue->empty()) next = std::min({next, queue->front().total_end, queue->front().next_end});
    return next;
}

void record_begin(OVERLAPPED* record) {
    record->Internal = status_pending;
    record->InternalHigh = 0;
}

bool record_pending(const OVERLAPPED* record) { return record->Internal == status_pending; }

DWORD record_error(const OVERLAPPED* record) { return static_cast<DWORD>(record->Internal & 0xFFFF); }

} // namespace posix_com
