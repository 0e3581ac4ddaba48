// Periodic sending without its timer: what changes from one frame to the next, and when a tick is left out.
#pragma once

#include "serial/traffic_frame.h"

#include <cstdint>
#include <span>
#include <string>

/// What a tick adds.
struct periodic_step {
    bool to_identifier = false;
    bool to_data = false;
    uint32_t identifier = 0;
    uint8_t data = 0;
};

/// Adds `step` to the data as one number with its most significant byte first. What a byte hands on to the one
/// before it is its sum less 255, not 1: 00 FF and a step of 10 (hex) give 10 0F. Modules' test benches count that
/// way. Any thread.
void periodic_add_data(std::span<uint8_t> data, uint8_t step);

/// Adds `step` to an identifier. One above 0x7FF (standard, format 0), or of 0x20000000 and more (extended, format
/// 1), becomes 0; others wrap at 32 bits. Any thread.
uint32_t periodic_add_identifier(uint32_t identifier, uint32_t step, uint32_t format);

/// Milliseconds from one tick to the next.
inline constexpr int32_t period_min_ms = 1, period_max_ms = 3600000;
/// The period that a text says, in decimal, held to these; what is no number counts as 0. Any thread.
uint32_t periodic_period_ms(const std::string& text);

/// The ticks of one run of periodic sending.
class periodic_sender {
  public:
    /// Begins anew with what was sent first.
    void start(const traffic_request& sent, const periodic_step& step);
    /// A tick: false, and nothing changes, while the send before it is not done. Else what is to be sent now stands
    /// in request().
    bool tick(bool done);
    const traffic_request& request() const { return request_; }
    /// Ticks since the start that were left out, and those that were not.
    uint64_t skipped() const { return skipped_; }
    uint64_t sent() const { return sent_; }

  private:
    traffic_request request_;
    periodic_step step_;
    uint64_t skipped_ = 0;
    uint64_t sent_ = 0;
};
