// A port opened for overlapped use with a simulated line at its far end.
#pragma once

#include "platform/com_port.h"
#include "sim/line.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

using bytes_t = std::vector<uint8_t>;

/// Longer than anything here may take on a busy machine, shorter than a person waits.
constexpr DWORD long_ms = 10000;

/// The names the tests may open. Under Wine each is registered, and reaches pty_host.
constexpr const char* port_name = "COM7";
constexpr const char* port_path = R"(\\.\COM7)";

HANDLE open_path(const char* path, DWORD flags = FILE_FLAG_OVERLAPPED);

/// Milliseconds since it was made.
class stopwatch {
  public:
    int64_t ms() const {
        return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_)
            .count();
    }

  private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// An event that is closed at the end.
class owned_event {
  public:
    explicit owned_event(bool manual_reset = true, bool initial = false)
        : handle_(com::CreateEventA(nullptr, manual_reset, initial, nullptr)) {}
    ~owned_event() { com::CloseHandle(handle_); }
    owned_event(const owned_event&) = delete;
    owned_event& operator=(const owned_event&) = delete;
    HANDLE handle() const { return handle_; }
    DWORD wait(DWORD ms = long_ms) const { return com::WaitForSingleObject(handle_, ms); }

  private:
    HANDLE handle_;
};

/// A read or write with its own event and buffer. It must have ended, or its port been closed, before it goes.
struct transfer {
    owned_event event;
    OVERLAPPED record{};
    bytes_t bytes;
    DWORD error = 0; ///< how the call or the operation failed; 0: well

    /// Starts it; an operation that completes at once and one that pends are both good.
    void read(HANDLE port, DWORD size);
    void write(HANDLE port, bytes_t what);
    /// Waits for the end; the bytes moved (for a read `bytes` holds just these). Sets `error`.
    DWORD finish(HANDLE port);
    bool pending_for(DWORD ms) const { return event.wait(ms) == WAIT_TIMEOUT; }
};

/// True for the errors that say that the port's device has gone.
bool says_lost(DWORD error);
/// An empty read time-out is a success without bytes on one system and error 1460 on the other.
bool says_nothing_came(const transfer& t, DWORD count);

class port_test : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    void set_timeouts(DWORD interval, DWORD multiplier, DWORD constant, DWORD write_multiplier = 0,
                      DWORD write_constant = 0);
    void send(const bytes_t& what) { ASSERT_TRUE(line->write(what.data(), what.size())); }
    /// Reads `size` bytes at the far end.
    bytes_t receive(std::size_t size);
    /// Waits until `size` bytes wait in the port's input queue.
    bool wait_in_queue(DWORD size);
    DWORD in_queue();

    std::unique_ptr<sim_line> line;
    HANDLE port = INVALID_HANDLE_VALUE;
};
