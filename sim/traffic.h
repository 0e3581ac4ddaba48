// What a module of the B family says in transfer mode: CAN frames at a chosen rate and of a chosen mixture. Written
// from its own description of the wire.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace sim {

/// Ways to spoil a frame.
enum class traffic_error : uint8_t {
    none,
    noise,         ///< five foreign bytes before a good frame
    no_start,      ///< the start byte is another one, and so is every byte that looks like one
    cut,           ///< the last three bytes are missing
    short_length,  ///< a length of 4
    wrong_command, ///< a foreign command byte, the check made good
    bad_check,     ///< the last check byte is wrong; without a check the frame stays good
    too_much_data, ///< one data byte more than the type may have
};
const char* traffic_error_name(traffic_error error);

enum class traffic_count : uint8_t { none, identifier, payload };

/// 1 to 5, and the four frame types.
std::vector<uint8_t> traffic_every_channel();
std::vector<uint8_t> traffic_every_type();

struct traffic_plan {
    uint32_t rate = 0;  ///< frames a second; 0: none of its own
    uint32_t burst = 1; ///< frames that leave together
    uint64_t count = 0; ///< frames in all; 0: no end
    uint64_t first = 0; ///< number of the first frame
    std::vector<uint8_t> channels = traffic_every_channel();
    std::vector<uint8_t> types = traffic_every_type();
    uint32_t shortest = 0, longest = 64; ///< data bytes; a CAN frame has 8 at most
    traffic_count counter = traffic_count::identifier;
    bool check = false; ///< frames carry a CRC, both ways
    std::vector<traffic_error> errors{};
    uint32_t error_every = 0; ///< every so many frames one is spoiled, by the errors in turn; 0: none
};
/// Reads "rate=8000:burst=8:count=100:first=0:channels=1,3:types=0,8,128,136:lengths=0-64:counter=payload:check=on:
/// errors=noise,cut:error_every=10"; what is not named keeps its default. False (and `out` untouched) when it
/// cannot be read; `why`, if given, says why. Any thread.
bool traffic_parse(const std::string& text, traffic_plan* out, std::string* why = nullptr);

/// A frame that was sent or received.
struct traffic_note {
    int64_t time_us = 0;        ///< of the clock that never goes back
    std::vector<uint8_t> frame; ///< as it was on the line, noise before it included
    traffic_error error = traffic_error::none;
    bool operator==(const traffic_note&) const = default;
};

/// Frame number `n` of a plan, spoiled where the plan says so.
traffic_note traffic_frame(const traffic_plan& plan, uint64_t n);

/// Whether a frame to a module is a good one: its length, type, data length and, if it has one, its check.
bool traffic_frame_is_good(const std::vector<uint8_t>& frame, bool check);

/// Frames in order; they are kept close together, as there may be millions.
class traffic_log {
  public:
    void add(const traffic_note& note);
    std::size_t size() const { return entries_.size(); }
    traffic_note at(std::size_t index) const;

  private:
    struct entry {
        int64_t time_us;
        std::size_t from;
        uint8_t size;
        traffic_error error;
    };
    std::vector<entry> entries_;
    std::vector<uint8_t> bytes_;
};

/// Makes a plan's frames when they are due. One thread at a time.
class traffic_source {
  public:
    using clock = std::chrono::steady_clock;

    /// Begins the plan anew, the first burst at once.
    void start(const traffic_plan& plan, clock::time_point now);
    void stop() { running_ = false; }
    bool running() const { return running_; }
    /// When the next burst is due; clock::time_point::max() for never.
    clock::time_point due() const;
    /// The burst that is due.
    std::vector<traffic_note> burst(clock::time_point now);
    /// Bursts that cannot leave in time are left out: those before `now`. Returns their frames.
    uint64_t skip(clock::time_point now);

  private:
    uint64_t next_burst() const;

    traffic_plan plan_;
    bool running_ = false;
    clock::time_point from_;
    uint64_t planned_ = 0; ///< frames whose time has come
    uint64_t made_ = 0;    ///< of those, the ones that were made
};

} // namespace sim
