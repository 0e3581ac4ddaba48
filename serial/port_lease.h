// The port is owned: a com_port holds it open, a lease is the right to read and write. Whoever closes the port ends
// what is pending first and waits for the holder of the lease to let go.
#pragma once

#include "platform/com_port.h"
#include "serial/io_result.h"
#include "toolkit/core/result.h"
#include "toolkit/core/stop.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>

/// Waits and time-outs of a port, in milliseconds.
struct port_timing {
    uint32_t drain_wait_ms = 5000; ///< a read of the input drain is waited for at most this long
    /// interval, read multiplier, read constant, write multiplier, write constant
    COMMTIMEOUTS timeouts = {1000, 500, 1000, 500, 1000};
};
/// What every port that is opened from now on gets; tests shorten it. Not while a port is being opened.
port_timing& port_timing_get();

struct port_line; // one opening of a port

/// Sees what a lease moved over the line, on the thread that did; must not use the lease.
using port_observer = std::function<void(bool sent, std::span<const uint8_t> bytes)>;

/// An event for reads that follow each other, set when one ends and reset by the next. Belongs to one thread.
class port_event {
  public:
    port_event();
    ~port_event();
    port_event(const port_event&) = delete;
    port_event& operator=(const port_event&) = delete;
    /// False when the system had none to give.
    bool valid() const { return handle_ != INVALID_HANDLE_VALUE && handle_ != nullptr; }

  private:
    friend class port_lease;
    HANDLE handle_;
};

/// The exclusive right to read and write an open port; given back by the destructor. A lease belongs to one holder,
/// who may write on one thread while reading on another. Once the port is being closed, nothing reaches the system
/// any more; on an empty lease likewise.
class port_lease {
  public:
    port_lease() = default;
    ~port_lease() { give_back(); }
    port_lease(port_lease&& other) noexcept = default;
    port_lease& operator=(port_lease&& other) noexcept;

    explicit operator bool() const { return line_ != nullptr; }
    /// Lets the next one take the port; the lease is empty from then on.
    void give_back();
    /// Closes the port as com_port::close() does and gives the lease back. The handle is closed when it returns.
    void close_port();

    /// Writes all bytes; waits without limit. A stop of the calling worker and a close of the port end it with
    /// io_step::stopped; an empty lease fails as io_step::start with error 6. However it ends, nothing is pending.
    io_result write(std::span<const uint8_t> bytes);
    /// Reads up to `into.size()` bytes, as the port's time-outs end a read, and waits at most `wait_ms` (INFINITE:
    /// no limit). A read that ends with no byte is io_step::wait. Ends as write does; `into` holds only what a good
    /// read brought.
    io_result read(std::span<uint8_t> into, DWORD wait_ms);
    /// The same with an event of the caller's; a read that the port's time-outs end without a byte is a good one of
    /// 0 bytes.
    io_result read_with(const port_event& event, std::span<uint8_t> into, DWORD wait_ms);

    /// From now on `observer` (null: nobody) sees the bytes of every write and read, as many as were moved; a burst
    /// that is drained is not shown. Not while one of them is under way.
    void observe(port_observer observer) { observer_ = std::move(observer); }

    /// Clears the port's error state.
    void clear_errors() { static_cast<void>(waiting()); }
    /// How many bytes wait in the input queue, after clearing the error state; nothing, with the system's `error`
    /// if asked for, when the system cannot tell.
    std::optional<DWORD> waiting(DWORD* error = nullptr);
    /// Queue sizes, time-outs (the timing's), line settings (9600 baud, 8 data bits, no parity, two stop bits) and
    /// purge, in this order; their results are not looked at. `after`, if given, is called after each of the four
    /// with its number (0 to 3).
    void configure(const std::function<void(int)>& after = {});
    /// Swallows one pending burst of input. Its messages go to the console only.
    void drain();
    /// Drops what waits in both queues (or as the PURGE_ flags say). False, with the system's `error` if asked for,
    /// when the system refuses.
    bool purge(DWORD flags = PURGE_TXCLEAR | PURGE_RXCLEAR, DWORD* error = nullptr);
    /// The port's time-outs now; nothing when the system refuses.
    std::optional<COMMTIMEOUTS> timeouts();
    /// False when the system refuses; the time-outs stay as they were then.
    bool set_timeouts(const COMMTIMEOUTS& timeouts);

  private:
    friend class com_port;
    explicit port_lease(std::shared_ptr<port_line> line);
    bool usable() const;
    void show(bool sent, std::span<const uint8_t> bytes, const io_result& result) const;

    std::shared_ptr<port_line> line_;
    port_observer observer_;
};

/// The one owner of an open port.
class com_port {
  public:
    /// How long close waits for the holder of the lease.
    static constexpr uint32_t close_wait_ms = 500;

    com_port() = default;
    ~com_port() { close(); }
    com_port(const com_port&) = delete;
    com_port& operator=(const com_port&) = delete;

    /// Opens a device path ("\\.\COM7"), 101 times at most and without a pause; what was open before is closed
    /// first. RET_FAIL when that did not help, when the calling worker is asked to stop, or when close() was called
    /// meanwhile; `error`, if given, is the system's code then (2 missing, 5 taken or forbidden, ...), 995 for a
    /// stop and a close. Any thread, but not the holder of the lease.
    [[nodiscard]] ret_t open(const std::string& path, DWORD* error = nullptr);
    /// True from a good open to the beginning of a close. Any thread.
    bool is_open() const;
    /// Waits until the port is open, and was opened after its opening number `seen` (0: any; they count up from 1);
    /// the number of that opening. 0 when the calling worker is asked to stop. Any thread.
    [[nodiscard]] uint64_t wait_opened(uint64_t seen) const;
    /// Waits up to `wait_ms` (INFINITE: no limit) while another holder has the lease. Empty when the port is not
    /// open or is closed meanwhile, on time-out, and when the calling worker is asked to stop. Any thread.
    [[nodiscard]] port_lease take(uint32_t wait_ms);
    /// Refuses new takers, ends what is pending, waits up to close_wait_ms for the holder to let go, then closes
    /// the system's handle. A holder that does not let go in time closes it when it does. Nothing when none is
    /// open. Any thread, but not the holder of the lease: that one calls port_lease::close_port().
    void close();

  private:
    std::shared_ptr<port_line> line() const;

    mutable std::mutex lock_;
    mutable stop_condition opened_;
    std::shared_ptr<port_line> line_; ///< null when closed
    uint64_t opens_ = 0;              ///< good ones
    uint64_t closes_ = 0;             ///< so that an open that is overtaken by a close is dropped
};
