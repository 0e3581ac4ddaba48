// A pseudo-terminal's master side with a wake-up: what a line on the host system stands on. Not for Windows.
#pragma once

#ifndef _WIN32

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <shared_mutex>
#include <string>

namespace sim {

class pty {
  public:
    /// Makes a pseudo-terminal in raw mode. Null when the system refuses; `why`, if given, says why.
    static std::unique_ptr<pty> open(std::string* why);
    ~pty();
    pty(const pty&) = delete;
    pty& operator=(const pty&) = delete;

    /// Waits up to `timeout_ms` (-1: for ever) for at least one byte; returns how many were read, 0 on time-out, -1
    /// when hung up. One thread reads, any thread may write or hang up meanwhile.
    int read(uint8_t* bytes, std::size_t size, int timeout_ms);
    /// Sends all bytes, waiting while the port's owner leaves them; false when hung up.
    bool write(const uint8_t* bytes, std::size_t size);
    /// Sends what fits in at once; returns how many bytes that was, -1 when hung up.
    int write_some(const uint8_t* bytes, std::size_t size);
    /// Closes the master: the port's owner sees a hang-up, and the device node is gone when this returns.
    void hang_up();
    /// Device node of the port side.
    const std::string& path() const { return path_; }

  private:
    pty() = default;
    bool wait(short what, int timeout_ms, short* got);

    int master_ = -1;
    int slave_ = -1; ///< held open, so that the master does not report a hang-up while nobody has the port open
    int wake_[2] = {-1, -1};
    std::atomic<bool> gone_{false};
    std::shared_mutex use_; ///< shared while the master is used, exclusive for closing it
    std::string path_;
};

} // namespace sim

#endif
