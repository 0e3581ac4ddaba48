#include "assistant/frame_walk.h"

walk_step walk_look(std::span<const uint8_t> bytes, std::size_t waiting) {
    constexpr std::size_t beside_length = 4;
    if (bytes.empty() || waiting == walk_left_alone) return {};
    if (bytes[0] < 0xAA || bytes[0] > 0xAC) return {.advance = 1};
    if (bytes.size() < 2) return {};
    const std::size_t size = bytes[1] + beside_length;
    if (bytes.size() < size) return {};
    walk_step step{.advance = size, .frame = true};
    step.good = traffic_frame_parse(bytes.first(size), true, &step.parsed) == 0 && step.parsed.skipped == 0;
    return step;
}
