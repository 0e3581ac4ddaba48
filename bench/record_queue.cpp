// The record queue: what a record costs, and whether a full queue of a million is as quick as one of five thousand.
#include "monitor/record_queue.h"
#include "platform/system.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

using steady = std::chrono::steady_clock;

constexpr std::size_t small = 5000, large = 1000000;
constexpr std::size_t chunk = 60; // records that a read brings
constexpr int rounds = 101;
constexpr int appends = 400; // chunks in one round

std::vector<traffic_record> chunk_of(uint8_t length) {
    std::vector<traffic_record> records(chunk);
    for (std::size_t i = 0; i < chunk; ++i) {
        records[i].identifier = static_cast<uint32_t>(i);
        records[i].length = length;
        records[i].data.fill(static_cast<uint8_t>(i));
    }
    return records;
}

void fill(record_queue* queue, uint8_t length) {
    const auto records = chunk_of(length);
    while (queue->size() < queue->capacity()) static_cast<void>(queue->append(records));
}

double append_ns(record_queue* queue) {
    static const auto records = chunk_of(8);
    const auto from = steady::now();
    for (int i = 0; i < appends; ++i) static_cast<void>(queue->append(records));
    return std::chrono::duration<double, std::nano>(steady::now() - from).count() / (appends * chunk);
}

double row_ns(record_queue* queue) {
    constexpr std::size_t looks = 20000;
    traffic_record record;
    const auto from = steady::now();
    for (std::size_t i = 0; i < looks; ++i) static_cast<void>(queue->row(i % 40 + queue->size() / 2, &record));
    return std::chrono::duration<double, std::nano>(steady::now() - from).count() / looks;
}

double median(std::vector<double> times) {
    std::nth_element(times.begin(), times.begin() + rounds / 2, times.end());
    return times[rounds / 2];
}

/// The two take turns, so that what disturbs one disturbs the other.
bool compare(const char* what, record_queue* a, record_queue* b, double (*measure)(record_queue*)) {
    constexpr double limit = 1.1;
    std::vector<double> of_a(rounds), of_b(rounds);
    for (int i = 0; i < rounds; ++i) {
        of_a[i] = measure(a);
        of_b[i] = measure(b);
    }
    const double ratio = median(of_b) / median(of_a);
    std::printf("%8.3fx (at most %.1fx) %s %s: %.1f ns of a million, %.1f ns of five thousand\n", ratio, limit,
                ratio <= limit ? "ok  " : "MISS", what, median(of_b), median(of_a));
    return ratio <= limit;
}

bool weigh(uint8_t length, double limit) {
    const int64_t before = platform_resident_kib();
    record_queue queue(large);
    fill(&queue, length);
    const double bytes = static_cast<double>(platform_resident_kib() - before) * 1024 / large;
    const bool held = bytes <= limit;
    std::printf("%8.3fx (of at most %.0f bytes) %s a record of %d data bytes: %.1f bytes\n", bytes / limit, limit,
                held ? "ok  " : "MISS", length, bytes);
    return held;
}

bool clear_in_time() {
    constexpr double limit_ms = 16;
    record_queue queue(large);
    fill(&queue, 8);
    const auto from = steady::now();
    queue.clear();
    const double ms = std::chrono::duration<double, std::milli>(steady::now() - from).count();
    std::printf("%8.3fx (of at most %.0f ms) %s clearing a million records: %.2f ms\n", ms / limit_ms, limit_ms,
                ms <= limit_ms ? "ok  " : "MISS", ms);
    return ms <= limit_ms;
}

} // namespace

int main() {
    bool good = weigh(8, 100);
    good = weigh(64, 160) && good;
    record_queue few(small), many(large);
    fill(&few, 8);
    fill(&many, 8);
    good = compare("appending to a full queue", &few, &many, append_ns) && good;
    good = compare("a row", &few, &many, row_ns) && good;
    good = clear_in_time() && good;
    return good ? 0 : 1;
}
