#include "tools/make_bps_lists/bps_lists.h"

#include "dev_b/timing_list.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/text.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr uint32_t clock_khz = 200000;

uint64_t quanta_of(const timing_values& values) { return static_cast<uint64_t>(values.tseg1) + values.tseg2; }

/// The sample point in percent, cut to two decimals.
std::string sample_point_text(const timing_values& values) {
    const auto hundredths = static_cast<unsigned>(values.tseg1 * 10000ull / quanta_of(values));
    return tk_format("%u.%02u", hundredths / 100, hundredths % 100);
}

/// Whether the calculator takes the timing with the sample point as its list shows it.
bool usable(uint32_t divider, const timing_values& values, int32_t rate, const std::string& sample_point) {
    const double shown = timing_number(sample_point);
    return timing_hundredths(shown) / 100.0 == shown && timing_phase_valid(divider, values, rate, shown);
}

std::vector<timing_values> exact_timings(timing_phase phase, uint32_t divider, int32_t rate) {
    const bps_limits& limits = bps_limits_of[timing_at(phase)];
    const uint32_t step = divider * static_cast<uint32_t>(rate);
    std::vector<timing_values> out;
    if (clock_khz % step != 0) return out;
    const uint32_t cycles = clock_khz / step;
    for (uint32_t brp = 1; brp <= std::min(limits.brp_max, cycles); ++brp) {
        if (cycles % brp != 0) continue;
        const uint32_t quanta = cycles / brp;
        for (uint32_t tseg1 = limits.tseg1_min; tseg1 <= limits.tseg1_max && tseg1 < quanta; ++tseg1) {
            const uint32_t tseg2 = quanta - tseg1;
            if (tseg2 >= limits.tseg2_min && tseg2 <= limits.tseg2_max) out.push_back({brp, tseg1, tseg2});
        }
    }
    return out;
}

/// Orders by distance from the recommended sample point; distances are compared as fractions, without rounding.
struct closer {
    int64_t permille;
    int64_t distance(const timing_values& v) const {
        return std::llabs(1000LL * v.tseg1 - permille * static_cast<int64_t>(quanta_of(v)));
    }
    bool operator()(const timing_values& a, const timing_values& b) const {
        const int64_t left = distance(a) * static_cast<int64_t>(quanta_of(b));
        const int64_t right = distance(b) * static_cast<int64_t>(quanta_of(a));
        if (left != right) return left < right;
        return a.brp != b.brp ? a.brp < b.brp : a.tseg1 < b.tseg1;
    }
};

} // namespace

uint32_t bps_recommended_permille(timing_phase phase, int32_t rate) {
    if (phase == timing_phase::data) return rate <= 2000 ? 800 : 750;
    if (rate <= 500) return 875;
    return rate <= 800 ? 800 : 750;
}

std::vector<std::string> bps_list(timing_phase phase, uint32_t divider, int32_t rate) {
    auto timings = exact_timings(phase, divider, rate);
    std::sort(timings.begin(), timings.end(), closer{bps_recommended_permille(phase, rate)});
    std::vector<std::string> lines;
    for (const auto& values : timings) {
        const std::string sample_point = sample_point_text(values);
        if (!usable(divider, values, rate, sample_point)) continue;
        const uint32_t sjw = std::min(values.tseg2, bps_limits_of[timing_at(phase)].sjw_max);
        lines.push_back(
            tk_format("%u-%u-%u-%u-%s", values.brp, values.tseg1, values.tseg2, sjw, sample_point.c_str()));
    }
    return lines;
}

ret_t bps_lists_write(const std::string& folder) {
    for (const auto phase : timing_phases)
        for (const auto& divider : timing_dividers)
            for (const auto& rate : timing_rates(phase)) {
                const auto number = static_cast<uint32_t>(divider.value) + 2;
                std::string text;
                for (const auto& line : bps_list(phase, number, rate.value)) text += line + '\n';
                for (const int channel : {1, 2}) {
                    const auto path = timing_list_path(folder, channel, phase, number, rate.value);
                    if (fs_write_whole(path.c_str(), text) != RET_OK) return RET_FAIL;
                }
            }
    return RET_OK;
}
