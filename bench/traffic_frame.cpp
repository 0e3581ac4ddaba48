// How fast the parser takes chunks of traffic frames apart, with and without their check values.
#include "serial/traffic_frame.h"
#include "serial/crc16_x25.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

constexpr std::size_t chunk_bytes = 1024; // what one read takes at most
constexpr int rounds = 21;
constexpr int passes = 4000; // over the chunk, in one round

struct measured {
    bool check;
    double least; // MB/s
    const char* what;
};
constexpr measured rows[] = {
    {false, 300, "traffic frames of 8 data bytes"},
    {true, 250, "the same with check values"},
};

std::vector<uint8_t> chunk_of(bool check) {
    std::vector<uint8_t> chunk;
    for (uint8_t n = 0;; ++n) {
        std::vector<uint8_t> frame = {0xAA, static_cast<uint8_t>(check ? 0x0F : 0x0D), 3, 1, 0, n, 1, 0, 0};
        for (int i = 0; i < 8; ++i) frame.push_back(static_cast<uint8_t>(n * 7 + i));
        if (check) {
            const uint16_t crc = crc16_x25(frame.data(), frame.size());
            frame.push_back(static_cast<uint8_t>(crc & 0xFF));
            frame.push_back(static_cast<uint8_t>(crc >> 8));
        }
        if (chunk.size() + frame.size() > chunk_bytes) return chunk;
        chunk.insert(chunk.end(), frame.begin(), frame.end());
    }
}

/// Frames in a chunk; what they hold is looked at, so that nothing is left out.
std::size_t parse_all(std::span<const uint8_t> rest, bool check, uint32_t* sum) {
    std::size_t frames = 0;
    traffic_parsed found;
    for (; traffic_frame_parse(rest, check, &found) == 0; rest = rest.subspan(found.advance), ++frames)
        *sum += found.identifier + static_cast<uint32_t>(found.data.size());
    return frames;
}

double round_mb_per_s(std::span<const uint8_t> chunk, bool check, uint32_t* sum) {
    const auto from = std::chrono::steady_clock::now();
    std::size_t frames = 0;
    for (int i = 0; i < passes; ++i) frames += parse_all(chunk, check, sum);
    const std::chrono::duration<double, std::micro> took = std::chrono::steady_clock::now() - from;
    const std::size_t frame_bytes = check ? 19 : 17;
    return static_cast<double>(frames * frame_bytes) / took.count();
}

} // namespace

int main() {
    bool good = true;
    uint32_t sum = 0;
    for (const measured& row : rows) {
        const std::vector<uint8_t> chunk = chunk_of(row.check);
        std::vector<double> speeds(rounds);
        for (double& speed : speeds) speed = round_mb_per_s(chunk, row.check, &sum);
        std::nth_element(speeds.begin(), speeds.begin() + rounds / 2, speeds.end());
        const double speed = speeds[rounds / 2];
        const bool held = speed >= row.least;
        good = good && held;
        std::printf("%8.3fx (of at least %.0f MB/s) %s %s: %.0f MB/s\n", speed / row.least, row.least,
                    held ? "ok  " : "MISS", row.what, speed);
    }
    return good && sum != 0 ? 0 : 1;
}
