#include "sim/traffic_talk.h"

#include <algorithm>

namespace sim {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds look_again{10};    ///< in transfer mode: a plan may change at any time
constexpr milliseconds line_full_look{1}; ///< while the line takes no more
constexpr milliseconds lag_most{200};     ///< traffic that is later than this is left out
constexpr int bursts_at_once = 64;        ///< before the line is listened to again

int64_t microseconds_now() {
    const auto now = traffic_talk::clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

} // namespace

void traffic_talk::set_plan(const traffic_plan& plan) {
    const std::lock_guard<std::mutex> hold(lock_);
    plan_ = plan;
    if (transfer_) source_.start(plan_, clock::now());
}

bool traffic_talk::check() const {
    const std::lock_guard<std::mutex> hold(lock_);
    return plan_.check;
}

void traffic_talk::set_transfer(bool on) {
    const std::lock_guard<std::mutex> hold(lock_);
    transfer_ = on;
    source_.stop();
    if (on) source_.start(plan_, clock::now());
}

void traffic_talk::take(const std::vector<uint8_t>& frame) {
    const std::lock_guard<std::mutex> hold(lock_);
    received_.add({microseconds_now(), frame, traffic_error::none});
    changed_.notify_all();
}

traffic_talk::clock::time_point traffic_talk::due() const {
    const std::lock_guard<std::mutex> hold(lock_);
    if (!transfer_) return clock::time_point::max();
    if (!burst_.data.empty()) return clock::now() + line_full_look;
    return std::min(source_.due(), clock::now() + look_again);
}

bool traffic_talk::send(sim_line& line) {
    for (int bursts = 0; bursts < bursts_at_once && next_burst(); bursts++) {
        const int n = line.write_some(burst_.data.data() + burst_.sent, burst_.data.size() - burst_.sent);
        if (n < 0) return false;
        burst_.sent += static_cast<std::size_t>(n);
        if (burst_.sent < burst_.data.size()) return true;
        note_burst();
    }
    return true;
}

/// Makes the burst that is due unless one is still on its way; false when there is nothing to send.
bool traffic_talk::next_burst() {
    const std::lock_guard<std::mutex> hold(lock_);
    const clock::time_point now = clock::now();
    if (!source_.running()) burst_ = {};
    if (now - source_.due() > lag_most) overrun_ += static_cast<uint32_t>(source_.skip(now - lag_most));
    if (!burst_.data.empty()) return true;
    if (source_.due() > now) return false;
    burst_.notes = source_.burst(now);
    for (const traffic_note& note : burst_.notes)
        burst_.data.insert(burst_.data.end(), note.frame.begin(), note.frame.end());
    return true;
}

void traffic_talk::note_burst() {
    const std::lock_guard<std::mutex> hold(lock_);
    for (const traffic_note& note : burst_.notes) sent_.add(note);
    burst_ = {};
    changed_.notify_all();
}

std::vector<traffic_note> traffic_talk::notes(const traffic_log& log) const {
    const std::lock_guard<std::mutex> hold(lock_);
    std::vector<traffic_note> all;
    for (std::size_t i = 0; i < log.size(); i++) all.push_back(log.at(i));
    return all;
}

uint32_t traffic_talk::sent_count() const {
    const std::lock_guard<std::mutex> hold(lock_);
    return static_cast<uint32_t>(sent_.size());
}

uint32_t traffic_talk::received_count() const {
    const std::lock_guard<std::mutex> hold(lock_);
    return static_cast<uint32_t>(received_.size());
}

uint32_t traffic_talk::overrun() const {
    const std::lock_guard<std::mutex> hold(lock_);
    return overrun_;
}

bool traffic_talk::wait(uint32_t frames_sent, uint32_t frames_received, int timeout_ms) const {
    std::unique_lock<std::mutex> hold(lock_);
    return changed_.wait_for(hold, milliseconds(timeout_ms),
                             [&] { return sent_.size() >= frames_sent && received_.size() >= frames_received; });
}

} // namespace sim
