// One overlapped operation at a time, on a port's handle. Inside of port_lease; the rest of the program has no
// handles.
#pragma once

#include "platform/com_port.h"
#include "serial/io_result.h"
#include "toolkit/core/stop.h"

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

/// An open port as operations see it: `closing` ends them, as a stop of the calling worker does.
struct io_port {
    HANDLE handle = INVALID_HANDLE_VALUE;
    stop_token closing;
};

/// Writes all bytes and waits without limit. Whatever way it ends, nothing is pending any more. Any thread that
/// owns the port.
io_result overlapped_write(const io_port& port, std::span<const uint8_t> bytes);

/// Reads up to `into.size()` bytes, as the port's time-outs end a read, and waits at most `wait_ms` (INFINITE: no
/// limit). A read that ends with no byte is io_step::wait. Whatever way it ends, nothing is pending any more, and
/// `into` holds only what a good read brought. Any thread that owns the port.
io_result overlapped_read(const io_port& port, std::span<uint8_t> into, DWORD wait_ms);

/// The same over an event of the caller's, which is left open; a handle that is no event fails as the system says.
/// It ends as the system ended it: a time-out of the port's is a good read of 0 bytes, or a failed result of 1460.
io_result overlapped_read_with(const io_port& port, HANDLE event, std::span<uint8_t> into, DWORD wait_ms);
