// A module's traffic on its line: what is due is sent, what went out and came in is kept.
#pragma once

#include "sim/line.h"
#include "sim/traffic.h"

#include <condition_variable>
#include <mutex>

namespace sim {

/// due(), send() and line_is_new() belong to the module's thread; the others may be called by any.
class traffic_talk {
  public:
    using clock = traffic_source::clock;

    void set_plan(const traffic_plan& plan);
    bool check() const;
    /// Transfer mode begins or ends.
    void set_transfer(bool on);
    void take(const std::vector<uint8_t>& frame);

    /// When send() should be called next.
    clock::time_point due() const;
    /// Sends the traffic that is due. What the line does not take at once stays, and what becomes due meanwhile is
    /// left out, as a real line's is. False when the line is gone.
    bool send(sim_line& line);
    void line_is_new() { burst_ = {}; }

    std::vector<traffic_note> sent() const { return notes(sent_); }
    std::vector<traffic_note> received() const { return notes(received_); }
    uint32_t sent_count() const;
    uint32_t received_count() const;
    uint32_t overrun() const; ///< frames that were left out
    /// Until so many frames were sent and received; false on time-out.
    bool wait(uint32_t frames_sent, uint32_t frames_received, int timeout_ms) const;

  private:
    struct outgoing {
        std::vector<traffic_note> notes;
        std::vector<uint8_t> data;
        std::size_t sent = 0;
    };
    bool next_burst();
    void note_burst();
    std::vector<traffic_note> notes(const traffic_log& log) const;

    mutable std::mutex lock_; ///< over everything up to the next blank line
    mutable std::condition_variable changed_;
    traffic_plan plan_;
    bool transfer_ = false;
    traffic_source source_;
    traffic_log sent_, received_;
    uint32_t overrun_ = 0;

    outgoing burst_; ///< on its way; the module's thread's
};

} // namespace sim
