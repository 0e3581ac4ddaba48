// Traffic frames. Input: flags, then the bytes of a chunk as a read brings it. How a chunk is judged is written
// down here anew, from the wire's description.
#include "serial/traffic_frame.h"

#include "fuzz/fuzz.h"
#include "sim/wire.h"

#include <algorithm>

namespace {

using chunk = std::span<const uint8_t>;

constexpr uint8_t with_check = 1, good_check = 2; ///< flags; the second: else no input would get past a check

uint32_t word(chunk at) { return at[0] | at[1] << 8 | at[2] << 16 | static_cast<uint32_t>(at[3]) << 24; }

uint16_t check_in(chunk frame) {
    const std::size_t n = frame.size();
    return static_cast<uint16_t>(frame[n - 2] | frame[n - 1] << 8);
}

uint16_t check_for(chunk frame) { return sim::crc_check(frame.data(), frame.size() - 2); }

std::size_t start_in(chunk bytes) {
    std::size_t at = 0;
    while (at < bytes.size() && (bytes[at] < 0xAA || bytes[at] > 0xAC)) at++;
    return at;
}

/// What a parse of `bytes` has to answer.
int judge(chunk bytes, bool check) {
    const chunk frame = bytes.subspan(start_in(bytes));
    if (frame.size() < 9) return -10;
    const std::size_t extra = check ? 7 : 5;
    if (frame[1] < extra) return -4;
    const std::size_t size = frame[1] + 4u;
    if (frame.size() < size) return -9;
    if (frame[2] != 3) return -6;
    if (check && check_in(frame.first(size)) != check_for(frame.first(size))) return -7;
    return frame[1] - extra > (frame[4] > 127 ? 64u : 8u) ? -8 : 0;
}

void check_good(chunk bytes, const traffic_parsed& found, bool check) {
    const chunk frame = bytes.subspan(found.skipped);
    must(found.skipped == start_in(bytes), "noise is what stands before the first start byte");
    must(found.advance == found.skipped + frame[1] + 4u && found.advance <= bytes.size(),
         "a frame uses up its bytes");
    must(found.channel == frame[3] && found.type == frame[4] && found.identifier == word(frame.subspan(5)),
         "the head is what stands there");
    must(found.data.data() == frame.data() + 9 && found.data.size() == frame[1] - (check ? 7u : 5u),
         "the data follow the head");
}

/// The frame to a module that carries the same, and back.
void check_built(const traffic_parsed& found, bool check) {
    traffic_request request{.channel = found.channel % 7u,
                            .identifier = found.identifier,
                            .format = found.extended(),
                            .protocol = found.fd(),
                            .length = static_cast<uint32_t>(found.data.size())};
    std::ranges::copy(found.data, request.data.begin());
    const traffic_wire wire = traffic_frame_build(request, check);
    must(wire.bytes().empty() == (request.channel > 4), "a channel that is there has a frame");
    if (wire.bytes().empty()) return;
    std::vector<uint8_t> back(wire.bytes().begin(), wire.bytes().end());
    traffic_parsed again;
    must(traffic_frame_parse(back, check, &again) == -6, "a frame to a module is none from it");
    must(!check || check_in(back) == check_for(back), "it ends in its check value");
    back[2] = 3;
    if (check) {
        const uint16_t crc = check_for(back);
        back[back.size() - 2] = static_cast<uint8_t>(crc & 0xFF);
        back[back.size() - 1] = static_cast<uint8_t>(crc >> 8);
    }
    must(traffic_frame_parse(back, check, &again) == 0 && again.advance == back.size(), "the other way it is one");
    must(again.channel == request.channel + 1 && again.identifier == request.identifier &&
             again.extended() == found.extended() && again.fd() == found.fd() &&
             std::ranges::equal(again.data, found.data),
         "it carries what it was given");
}

/// Makes the check value of the first frame good, as far as it is all there.
void mend(std::span<uint8_t> bytes) {
    const std::size_t at = start_in(bytes);
    if (bytes.size() < at + 9 || bytes[at + 1] < 7 || bytes.size() < at + bytes[at + 1] + 4u) return;
    const auto frame = bytes.subspan(at, bytes[at + 1] + 4u);
    const uint16_t crc = check_for(frame);
    frame[frame.size() - 2] = static_cast<uint8_t>(crc & 0xFF);
    frame[frame.size() - 1] = static_cast<uint8_t>(crc >> 8);
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzz_input in(data, size);
    const uint8_t flags = in.byte();
    const bool check = (flags & with_check) != 0;
    const auto given = in.rest();
    std::vector<uint8_t> bytes(given.begin(), given.end());
    for (std::span<uint8_t> rest = bytes; !rest.empty();) {
        if ((flags & good_check) != 0) mend(rest);
        traffic_parsed found;
        const int code = traffic_frame_parse(rest, check, &found);
        must(code == judge(rest, check), "a chunk is judged as the wire has it");
        must(found.skipped <= rest.size(), "noise is part of the chunk");
        if (code != 0) {
            must(found.advance == 0 && found.data.empty(), "without a frame nothing is used up");
            break;
        }
        check_good(rest, found, check);
        check_built(found, check);
        rest = rest.subspan(found.advance);
    }
    return 0;
}
