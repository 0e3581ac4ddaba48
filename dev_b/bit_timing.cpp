#include "dev_b/bit_timing.h"

#include "dev_b/fields.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace {

constexpr uint32_t clock_khz = 200000;
constexpr double sample_point_tolerance = 0.00001; // of the bit

namespace f = vkt610b_field;

/// A register of the timing and the value it holds.
struct timing_register {
    const field& what;
    uint32_t timing_values::*member;
};
using phase_registers = std::array<timing_register, 3>;
constexpr std::array<phase_registers, 2> registers = {{
    {{{f::nominal_brp, &timing_values::brp},
      {f::nominal_tseg1, &timing_values::tseg1},
      {f::nominal_tseg2, &timing_values::tseg2}}},
    {{{f::data_brp, &timing_values::brp},
      {f::data_tseg1, &timing_values::tseg1},
      {f::data_tseg2, &timing_values::tseg2}}},
}};

/// Rates that a stored timing may have to be loaded, in kbit/s.
constexpr std::array loadable_nominal = {40, 50, 80, 100, 125, 200, 250, 400, 500, 666, 800, 1000};
constexpr std::array loadable_data = {400, 500, 666, 800, 1000, 2000, 4000, 5000};

bool loadable(timing_phase phase, uint32_t rate) {
    const auto holds = [rate](const auto& list) {
        return std::any_of(list.begin(), list.end(), [rate](int r) { return static_cast<uint32_t>(r) == rate; });
    };
    return phase == timing_phase::nominal ? holds(loadable_nominal) : holds(loadable_data);
}

uint32_t half_of(uint32_t word, int channel) { return channel == 2 ? word >> 16 : word & 0xFFFF; }

uint32_t with_half(uint32_t word, int channel, uint32_t value) {
    if (channel == 2) return (word & 0xFFFF) | (value << 16);
    return (word & 0xFFFF0000) | (value & 0xFFFF);
}

uint32_t get(const tk_object* props, const field& what) { return tk_object_get_prop_uint32(props, what.key, 0); }

void set(tk_object* props, const field& what, uint32_t value, ret_t* result) {
    if (tk_object_set_prop_uint32(props, what.key, value) == RET_OK) return;
    log_write(LOG_LEVEL_ERROR, tk_format("set %s failed!\n", what.key));
    *result = RET_FAIL;
}

template <int N>
const field& rate_of_channel(timing_phase phase) {
    return phase == timing_phase::nominal ? f::canfd<N>::nominal_rate : f::canfd<N>::data_rate;
}
const field& rate_of(int channel, timing_phase phase) {
    return channel == 2 ? rate_of_channel<2>(phase) : rate_of_channel<1>(phase);
}

timing_values stored_values(const tk_object* props, int channel, timing_phase phase) {
    timing_values out;
    for (const auto& row : registers[timing_at(phase)]) out.*row.member = half_of(get(props, row.what), channel);
    return out;
}

} // namespace

int timing_rate_index(timing_phase phase, int32_t kbit) {
    const auto rates = timing_rates(phase);
    for (std::size_t i = 0; i < rates.size(); ++i)
        if (rates[i].value == kbit) return static_cast<int>(i);
    return -1;
}

uint32_t timing_rate_kbit(uint64_t divider, const timing_values& values) {
    const uint64_t quanta = static_cast<uint64_t>(values.tseg1) + values.tseg2;
    if (divider == 0 || values.brp == 0 || quanta == 0) return 0;
    // Dividing step by step truncates to the same number as dividing by the product, which can outgrow 64 bits.
    return static_cast<uint32_t>(clock_khz / divider / values.brp / quanta);
}

double timing_fraction(const timing_values& values) {
    const uint64_t quanta = static_cast<uint64_t>(values.tseg1) + values.tseg2;
    return quanta == 0 ? 0.0 : static_cast<double>(values.tseg1) / static_cast<double>(quanta);
}

double timing_number(const std::string& text) {
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end && (*at == ' ' || (*at >= '\t' && *at <= '\r'))) ++at;
    if (at != end && *at == '+') ++at;
    double value = 0;
    if (std::from_chars(at, end, value).ec != std::errc{} || !std::isfinite(value)) return 0;
    return value;
}

double timing_hundredths(double value) { return std::trunc(value * 100.0); }

std::string timing_percent_text(double percent) {
    std::array<char, 400> text{}; // the largest finite number takes 309 digits before the point
    const auto done = std::to_chars(text.data(), text.data() + text.size(), percent, std::chars_format::fixed, 2);
    return {text.data(), done.ptr};
}

uint8_t timing_bus_mode(const tk_object* props, int channel) {
    const field& mode = channel == 2 ? f::canfd<2>::bus_mode : f::canfd<1>::bus_mode;
    return tk_object_get_prop_uint8(props, mode.key, static_cast<uint8_t>(mode.fallback));
}

timing_opening timing_open(const tk_object* props, int channel) {
    timing_opening out;
    const uint32_t word = get(props, f::timing_divider);
    const uint64_t code = channel == 2 ? half_of(word, 2) : word;
    out.divider_word = static_cast<int32_t>(word);
    out.data_enabled = timing_bus_mode(props, channel) != 0;

    std::array<timing_values, 2> stored;
    for (const auto phase : timing_phases) stored[timing_at(phase)] = stored_values(props, channel, phase);
    const bool complete = stored[0].all_set() && stored[1].all_set();
    for (const auto phase : timing_phases) {
        const auto& values = stored[timing_at(phase)];
        const uint32_t index = get(props, rate_of(channel, phase));
        if (index < timing_rates(phase).size())
            out.channel_rate[timing_at(phase)] = timing_rates(phase)[index].value;
        const uint32_t rate = timing_rate_kbit(code + 2, values);
        if (values.brp != 0 && values.tseg1 + values.tseg2 != 0)
            out.rate[timing_at(phase)] = static_cast<int32_t>(rate);
        if (!complete || !loadable(phase, rate)) continue;
        out.loaded[timing_at(phase)] = timing_loaded{static_cast<int32_t>(code), values, static_cast<int32_t>(rate),
                                                     timing_percent_text(timing_fraction(values) * 100)};
    }
    return out;
}

bool timing_phase_valid(uint32_t divider, const timing_values& values, int32_t rate, double sample_point) {
    if (divider == 0 || !values.all_set() || rate <= 0) return false;
    if (timing_rate_kbit(divider, values) != static_cast<uint32_t>(rate)) return false;
    return std::fabs(timing_hundredths(sample_point) / 10000.0 - timing_fraction(values)) <= sample_point_tolerance;
}

bool timing_valid(const timing_form& form, uint8_t bus_mode) {
    return std::all_of(timing_phases.begin(), timing_phases.end(), [&](timing_phase phase) {
        const auto i = timing_at(phase);
        if (phase == timing_phase::data && bus_mode == 0) return true;
        return timing_phase_valid(form.divider(), form.values[i], form.rate[i], form.sample_point[i]);
    });
}

ret_t timing_store(tk_object* props, int channel, const timing_form& form, uint8_t bus_mode) {
    ret_t result = RET_OK;
    const auto put = [&](const field& what, uint32_t value) {
        set(props, what, with_half(get(props, what), channel, value), &result);
    };
    put(f::timing_divider, static_cast<uint32_t>(form.divider_code));
    for (const auto phase : timing_phases) {
        if (phase == timing_phase::data && bus_mode == 0) continue;
        for (const auto& row : registers[timing_at(phase)])
            put(row.what, form.values[timing_at(phase)].*row.member);
    }
    return result;
}

ret_t timing_store_forced(tk_object* props, const timing_form& form) {
    ret_t result = RET_OK;
    if (form.divider_code >= 0) set(props, f::timing_divider, static_cast<uint32_t>(form.divider_code), &result);
    for (const auto phase : timing_phases)
        for (const auto& row : registers[timing_at(phase)]) {
            const uint32_t value = form.values[timing_at(phase)].*row.member & 0xFFFF;
            set(props, row.what, (get(props, row.what) | 0xFF) & value, &result);
        }
    return result;
}

ret_t timing_store_rate(tk_object* props, int channel, timing_phase phase, int32_t kbit) {
    const int index = timing_rate_index(phase, kbit);
    if (index < 0) return RET_FAIL;
    const field& what = rate_of(channel, phase);
    if (tk_object_set_prop_uint8(props, what.key, static_cast<uint8_t>(index)) == RET_OK) return RET_OK;
    log_write(LOG_LEVEL_ERROR, tk_format("set %s failed!\n", what.key));
    return RET_FAIL;
}
