#include "sim/traffic.h"

#include "sim/wire.h"

#include <algorithm>
#include <cstring>

namespace sim {

namespace {

constexpr uint8_t channel_starts[] = {0xAA, 0xAA, 0xAB, 0xAC, 0xAC};
constexpr std::size_t head = 9; ///< up to the identifier's last byte
constexpr uint8_t from_module = 0x03, to_module = 0x04, foreign_command = 0x07;
constexpr uint8_t no_start_byte = 0x55;
constexpr uint32_t fixed_identifier = 0x123;

bool fd(uint8_t type) { return type == 0x80 || type == 0x88; }
bool extended(uint8_t type) { return type == 0x08 || type == 0x88; }
bool known_type(uint8_t type) { return type == 0x00 || extended(type) || fd(type); }
uint32_t data_most(uint8_t type) { return fd(type) ? 64 : 8; }

template <typename T>
T in_turn(const std::vector<T>& all, uint64_t n) {
    return all[n % all.size()];
}

uint8_t low(uint64_t number) { return static_cast<uint8_t>(number & 0xFF); }

/// The error of frame n.
traffic_error error_of(const traffic_plan& plan, uint64_t n) {
    if (plan.errors.empty() || plan.error_every == 0 || (n + 1) % plan.error_every != 0) return traffic_error::none;
    return in_turn(plan.errors, (n + 1) / plan.error_every - 1);
}

bytes data_of(const traffic_plan& plan, uint64_t n, uint32_t size) {
    bytes data(size);
    for (uint32_t i = 0; i < size; i++) data[i] = low(n + i);
    if (plan.counter != traffic_count::payload) return data;
    for (uint32_t i = 0; i < std::min<uint32_t>(size, 4); i++) data[i] = low(n >> (8 * (3 - i)));
    return data;
}

void put_check(bytes* frame) {
    const uint16_t crc = crc_check(frame->data(), frame->size() - 2);
    (*frame)[frame->size() - 2] = low(crc);
    (*frame)[frame->size() - 1] = low(crc >> 8);
}

void spoil(const traffic_plan& plan, traffic_error error, bytes* frame) {
    switch (error) {
    case traffic_error::noise:
        frame->insert(frame->begin(), {0x00, 0x11, 0x22, 0x33, 0x44});
        break;
    case traffic_error::no_start:
        for (uint8_t& byte : *frame)
            if (byte >= 0xAA && byte <= 0xAC) byte = no_start_byte;
        break;
    case traffic_error::cut:
        frame->resize(frame->size() - 3);
        break;
    case traffic_error::short_length:
        (*frame)[1] = 4;
        break;
    case traffic_error::wrong_command:
        (*frame)[2] = foreign_command;
        if (plan.check) put_check(frame);
        break;
    case traffic_error::bad_check:
        if (plan.check) frame->back() = low(~frame->back());
        break;
    default:
        break;
    }
}

} // namespace

traffic_note traffic_frame(const traffic_plan& plan, uint64_t n) {
    const traffic_error error = error_of(plan, n);
    const uint8_t channel = in_turn(plan.channels, n);
    const uint8_t type = in_turn(plan.types, n / plan.channels.size());
    const uint32_t most = std::min(plan.longest, data_most(type)), least = std::min(plan.shortest, most);
    uint32_t size = least + static_cast<uint32_t>(n % (most - least + 1));
    if (error == traffic_error::too_much_data) size = data_most(type) + 1;
    uint64_t id = plan.counter == traffic_count::identifier ? n : fixed_identifier;
    id &= extended(type) ? 0x1FFFFFFF : 0x7FF;

    const std::size_t after_length = head - 4 + size + (plan.check ? 2u : 0u);
    bytes frame = {channel_starts[channel - 1],
                   low(after_length),
                   from_module,
                   channel,
                   type,
                   low(id),
                   low(id >> 8),
                   low(id >> 16),
                   low(id >> 24)};
    const bytes data = data_of(plan, n, size);
    frame.insert(frame.end(), data.begin(), data.end());
    if (plan.check) {
        frame.resize(frame.size() + 2);
        put_check(&frame);
    }
    spoil(plan, error, &frame);
    return {0, std::move(frame), error};
}

bool traffic_frame_is_good(const bytes& frame, bool check) {
    const std::size_t extra = check ? 2 : 0;
    if (frame.size() < head + extra || frame.size() != frame[1] + 4u || frame[2] != to_module) return false;
    if (frame[3] < 1 || frame[3] > 5 || frame[0] != channel_starts[frame[3] - 1] || !known_type(frame[4]))
        return false;
    if (frame.size() - head - extra > data_most(frame[4])) return false;
    const std::size_t n = frame.size();
    return !check || crc_check(frame.data(), n - 2) == (frame[n - 2] | frame[n - 1] << 8);
}

// ---- log ----

void traffic_log::add(const traffic_note& note) {
    entries_.push_back({note.time_us, bytes_.size(), low(note.frame.size()), note.error});
    bytes_.insert(bytes_.end(), note.frame.begin(), note.frame.end());
}

traffic_note traffic_log::at(std::size_t index) const {
    const entry& e = entries_[index];
    const auto from = bytes_.begin() + static_cast<std::ptrdiff_t>(e.from);
    return {e.time_us, bytes(from, from + e.size), e.error};
}

// ---- source ----

void traffic_source::start(const traffic_plan& plan, clock::time_point now) {
    plan_ = plan;
    from_ = now;
    planned_ = made_ = 0;
    running_ = plan.rate > 0;
}

uint64_t traffic_source::next_burst() const {
    const uint64_t left = plan_.count == 0 ? plan_.burst : plan_.count - std::min(plan_.count, planned_);
    return std::min<uint64_t>(plan_.burst, left);
}

traffic_source::clock::time_point traffic_source::due() const {
    if (!running_ || next_burst() == 0) return clock::time_point::max();
    const auto whole = std::chrono::seconds(planned_ / plan_.rate);
    const auto part = std::chrono::nanoseconds(planned_ % plan_.rate * 1000000000 / plan_.rate);
    return from_ + whole + part;
}

std::vector<traffic_note> traffic_source::burst(clock::time_point now) {
    std::vector<traffic_note> notes;
    const int64_t us = std::chrono::duration_cast<std::chrono::microseconds>(now.time_since_epoch()).count();
    const uint64_t frames = next_burst();
    for (uint64_t i = 0; i < frames; i++) {
        notes.push_back(traffic_frame(plan_, plan_.first + made_++));
        notes.back().time_us = us;
    }
    planned_ += frames;
    return notes;
}

uint64_t traffic_source::skip(clock::time_point now) {
    uint64_t frames = 0;
    while (due() < now) {
        frames += next_burst();
        planned_ += next_burst();
    }
    return frames;
}

} // namespace sim
