// An open port and the operations that pend on it. Everything here is guarded by io_lock().
#pragma once

#include "platform/posix/com_port_system.h"
#include "platform/posix/handles.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>

namespace posix_com {

using io_clock = std::chrono::steady_clock;
using io_time = io_clock::time_point;
using io_ms = std::chrono::milliseconds;

/// A read or write from its call to its end. The record and the bytes are the caller's and are touched under
/// io_lock() only, never after the end.
struct operation {
    OVERLAPPED* record = nullptr;
    std::shared_ptr<event> done_event; ///< null when the caller gave none
    uint8_t* in = nullptr;
    const uint8_t* out = nullptr; ///< null for a read
    DWORD size = 0;
    DWORD moved = 0;                    ///< bytes read, or handed to the driver
    io_time total_end = io_time::max(); ///< total time-out, counted from the call
    io_time next_end = io_time::max();  ///< read: interval expiry; write: when to ask the driver's queue again
    io_ms interval{0};                  ///< 0: no interval timer
    bool any_at_call = false;           ///< bytes that wait at the call are enough
    bool nothing_at_call = false;       ///< no byte at the call is enough, too
    bool any_later = false;             ///< the first bytes to come are enough
};

struct port {
    int fd = -1;
    bool overlapped = false;
    bool readable = false;
    bool writable = false;
    bool lost = false;    ///< the device went away
    bool hung_up = false; ///< poll said so; what was received before is still read
    COMMTIMEOUTS timeouts{};
    int64_t character_us = 1042; ///< 9600 baud, ten bits
    std::shared_ptr<event> signal;
    std::deque<operation> reads; ///< the front one is being served, the others wait for their turn
    std::deque<operation> writes;

    port() = default;
    port(const port&) = delete;
    port& operator=(const port&) = delete;
    ~port();
};

std::mutex& io_lock();
/// Notified, with io_lock() held, whenever an operation has ended.
std::condition_variable& io_ended();

/// Sets up an operation's time-outs from the port's, counted from now.
void operation_start_timers(const COMMTIMEOUTS& timeouts, operation* op);

/// Moves what can be moved and ends the operations that are complete, timed out or lost. `at_call`: an operation of
/// this port is being started right now.
void port_advance(port& p, io_time now, bool at_call);
/// Ends pending operations with ERROR_OPERATION_ABORTED: those of `record`, or all of the chosen directions when it
/// is null. Returns whether there was one.
bool port_cancel(port& p, const OVERLAPPED* record, bool reads, bool writes);
/// Marks the port as gone and ends what pends with ERROR_BROKEN_PIPE.
void port_lose(port& p);
/// True while an operation pends.
bool port_busy(const port& p);
/// What poll should look for, and the earliest time at which something must be done without it.
short port_poll_events(const port& p);
io_time port_next_time(const port& p);

/// An operation's state is kept in its record: pending, or ended with an error (0: well).
void record_begin(OVERLAPPED* record);
bool record_pending(const OVERLAPPED* record);
DWORD record_error(const OVERLAPPED* record);

} // namespace posix_com
