// The system's notices of ports that come, go, or change their rights.
#pragma once

#include <cstdint>
#include <memory>

namespace com {

/// Gathers notices from its construction on: none is lost between two waits. Where the system gives none, waits
/// end by wake() and by time-out only.
class port_watch {
  public:
    enum class end : uint8_t { noticed, woken, timed_out };

    port_watch();
    ~port_watch();
    port_watch(const port_watch&) = delete;
    port_watch& operator=(const port_watch&) = delete;

    /// Waits up to `ms` milliseconds (0xFFFFFFFF: for ever) for a notice. One thread at a time.
    end wait(uint32_t ms);
    /// Ends the wait under way, or else the next one. Any thread.
    void wake();

  private:
    struct inner;
    const std::unique_ptr<inner> inner_;
};

} // namespace com
