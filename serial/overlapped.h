// One overlapped operation at a time: events and ports that are let go on every path, a write, a read.
#pragma once

#include "platform/com_port.h"

#include <array>
#include <cstdint>
#include <span>

/// Owns a port or event handle.
class owned_handle {
  public:
    explicit owned_handle(HANDLE handle = INVALID_HANDLE_VALUE) : handle_(handle) {}
    ~owned_handle() { close(); }
    owned_handle(const owned_handle&) = delete;
    owned_handle& operator=(const owned_handle&) = delete;
    HANDLE get() const { return handle_; }
    bool valid() const { return handle_ != INVALID_HANDLE_VALUE && handle_ != nullptr; }
    /// Closes what it owns. From then on get() is INVALID_HANDLE_VALUE, never a number that the system may hand out
    /// again.
    void close();
    /// Gives the handle away.
    HANDLE release();

  private:
    HANDLE handle_;
};

/// A manual-reset, initially unsignalled event; not valid() when the system refuses.
HANDLE make_event();

/// Where an operation ended.
enum class io_step : uint8_t {
    done,
    create_event, ///< no event could be made
    start,        ///< ReadFile or WriteFile failed with another error than 997
    wait,         ///< the wait failed or took too long, or a read ended with no byte at all
    result,       ///< GetOverlappedResult failed, or a write stored less than it was given
    stopped,      ///< the calling thread was asked to stop
};

struct io_result {
    io_step step = io_step::done;
    DWORD error = 0; ///< the system's error code, 0 when there is none
    DWORD bytes = 0; ///< how many were moved
    bool ok() const { return step == io_step::done; }
};

inline constexpr std::size_t io_read_max = 256; ///< longest single read: one drain round, or any reply

/// Writes all bytes (at most io_read_max); waits without limit. Returns early when the calling toolkit thread is
/// asked to stop. Any thread that owns the port.
io_result port_write(HANDLE port, std::span<const uint8_t> bytes);

/// Reads up to `into.size()` bytes (at most io_read_max), as the port's time-outs end a read, and waits at most
/// `wait_ms`. A read that ends with no byte is io_step::wait. After a failed wait the operation has been cancelled
/// and has ended before this returns; `into` holds only what a good read brought. Any thread that owns the port.
io_result port_read(HANDLE port, std::span<uint8_t> into, DWORD wait_ms);

/// The same over an event of the caller's, which is left open; a handle that is no event fails as the system says.
io_result port_read_with(HANDLE port, HANDLE event, std::span<uint8_t> into, DWORD wait_ms);

/// True when `error` is one that systems answer once the device behind a port is gone.
bool port_lost_error(DWORD error);
