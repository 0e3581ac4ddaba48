// Requests out of a stream of bytes.
#include "sim/traffic.h"
#include "sim/wire.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace sim {

namespace {

/// One kind of request: the bytes it starts with; B's start byte is left out, as it may be AA or AC.
struct known_request {
    bool a, generic;
    request_kind kind;
    uint8_t command, length;
};
constexpr known_request xor_requests[] = {
    {true, true, request_kind::handshake, 0x02, 0x04},
    {true, false, request_kind::firmware, 0x04, 0x00},
    {true, true, request_kind::read, 0x03, 0x00},
    {true, true, request_kind::write, 0x01, 0x3C},
};
constexpr std::array<uint8_t, 4> handshake_key = {0x0A, 0x15, 0x12, 0x03};
constexpr std::string_view mode_texts[] = {{"config", 7}, {"transfer", 9}}; ///< with their zero byte
constexpr uint8_t b_length_max = 0x40;

bool b_start(uint8_t byte) { return byte == 0xAA || byte == 0xAC; }

} // namespace

const char* request_kind_name(request_kind kind) {
    static constexpr const char* names[] = {"handshake", "firmware", "read", "write", "mode", "traffic", "unknown"};
    return names[static_cast<std::size_t>(kind)];
}

void request_reader::feed(const uint8_t* data, std::size_t size) {
    waiting_.insert(waiting_.end(), data, data + size);
}

request_reader::match request_reader::match_text() const {
    for (const std::string_view text : mode_texts) {
        const std::size_t have = std::min(text.size(), waiting_.size());
        if (std::equal(text.begin(), text.begin() + have, waiting_.begin(),
                       [](char c, uint8_t b) { return static_cast<uint8_t>(c) == b; }))
            return {text.size(), have == text.size()};
    }
    return {};
}

/// Once four bytes are there.
bool request_reader::may_be_traffic() const {
    return transfer_ && waiting_[1] >= 5 && waiting_[2] == 0x04 && waiting_[3] >= 1 && waiting_[3] <= 5;
}

/// Whether a frame may start at the first waiting byte, and how long it is.
request_reader::match request_reader::match_frame() const {
    const std::size_t have = waiting_.size();
    if (of_ == tribe::b) {
        if (!b_start(waiting_[0]) && !(transfer_ && waiting_[0] == 0xAB)) return match_text();
        if (have < 4) return {4, false};
        if (may_be_traffic()) return {4u + waiting_[1], have >= 4u + waiting_[1]};
        if (!b_start(waiting_[0])) return {};
        if (waiting_[1] < 2 || waiting_[1] > b_length_max || waiting_[3] != 0xFF) return {};
        const std::size_t need = 2u + waiting_[1] + 2u;
        return {need, have >= need};
    }
    if (waiting_[0] != 0xF7 || (have > 1 && waiting_[1] != 0xF8)) return {};
    if (have < 4) return {4, false};
    const std::size_t need = 4u + waiting_[3] + 1u;
    return {need, have >= need};
}

bool request_reader::check_is_good(const bytes& frame) const {
    const std::size_t n = frame.size();
    if (of_ != tribe::b) return xor_check(frame.data(), n - 1) == frame[n - 1];
    const uint32_t sent = frame[n - 2] | (static_cast<uint32_t>(frame[n - 1]) << 8);
    return crc_check(frame.data(), n - 2) == sent;
}

request_kind request_reader::kind_of(const bytes& frame) const {
    if (of_ == tribe::b) {
        if (!b_start(frame[0]) && frame[0] != 0xAB) return request_kind::mode_text;
        if (frame[3] != 0xFF)
            return traffic_frame_is_good(frame, check_) ? request_kind::traffic : request_kind::unknown;
        if (!check_is_good(frame)) return request_kind::unknown;
        if (frame[1] == 0x02 && frame[2] == 0x05) return request_kind::read;
        return frame[1] == 0x07 && frame[2] == 0x02 ? request_kind::write : request_kind::unknown;
    }
    if (!check_is_good(frame)) return request_kind::unknown;
    for (const known_request& known : xor_requests) {
        if (known.command != frame[2] || known.length != frame[3]) continue;
        if (of_ == tribe::generic && !known.generic) break;
        if (known.kind == request_kind::handshake &&
            !std::equal(handshake_key.begin(), handshake_key.end(), frame.begin() + 4))
            break;
        return known.kind;
    }
    return request_kind::unknown;
}

bool request_reader::next(request* out) {
    while (!waiting_.empty()) {
        const match found = match_frame();
        if (found.need == 0) {
            waiting_.erase(waiting_.begin());
            continue;
        }
        if (!found.known) return false;
        const auto end = waiting_.begin() + static_cast<std::ptrdiff_t>(found.need);
        out->frame.assign(waiting_.begin(), end);
        out->kind = kind_of(out->frame);
        waiting_.erase(waiting_.begin(), end);
        return true;
    }
    return false;
}

void request_reader::give_up() {
    if (!waiting_.empty()) waiting_.erase(waiting_.begin());
}

} // namespace sim
