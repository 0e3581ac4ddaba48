// User-defined CAN FD bit timing: its arithmetic, what the calculator shows at opening, what it accepts and stores.
//
// The core clock of 200 MHz is divided by "divider" (stored as divider - 2). A bit of a phase lasts
// BRP * (TSEG1 + TSEG2) cycles of that clock; TSEG1 counts the synchronisation segment (ISO 11898-1 counts it
// apart). Seven registers hold the timing of both channels: channel 1 in their low half, channel 2 in their high
// half.
//
// No function here locks: those that read or write a store are called under the B device object's mutex.
#pragma once

#include "session/field.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

enum class timing_phase : uint8_t { nominal = 0, data = 1 };
inline constexpr std::array timing_phases = {timing_phase::nominal, timing_phase::data};
constexpr std::size_t timing_at(timing_phase phase) { return static_cast<std::size_t>(phase); }

/// Divider codes and the dividers they stand for.
inline constexpr std::array<choice_option, 4> timing_dividers = {{{0, "2"}, {2, "4"}, {3, "5"}, {6, "8"}}};
/// Rates of a phase in kbit/s; the position is the channel's rate index.
inline constexpr std::array<choice_option, 11> timing_nominal_rates = {{{40, "40K"},
                                                                        {50, "50K"},
                                                                        {80, "80K"},
                                                                        {100, "100K"},
                                                                        {125, "125K"},
                                                                        {200, "200K"},
                                                                        {250, "250K"},
                                                                        {400, "400K"},
                                                                        {500, "500K"},
                                                                        {800, "800K"},
                                                                        {1000, "1M"}}};
inline constexpr std::array<choice_option, 7> timing_data_rates = {
    {{400, "400K"}, {500, "500K"}, {800, "800K"}, {1000, "1M"}, {2000, "2M"}, {4000, "4M"}, {5000, "5M"}}};
constexpr std::span<const choice_option> timing_rates(timing_phase phase) {
    if (phase == timing_phase::nominal) return timing_nominal_rates;
    return timing_data_rates;
}
/// The rate index of a rate in kbit/s, -1 for a rate that the phase does not offer.
int timing_rate_index(timing_phase phase, int32_t kbit);

struct timing_values {
    uint32_t brp = 0;
    uint32_t tseg1 = 0;
    uint32_t tseg2 = 0;
    bool all_set() const { return brp != 0 && tseg1 != 0 && tseg2 != 0; }
};

/// Bit rate in kbit/s, truncated; 0 when any part of the divisor is 0. No operands overflow.
uint32_t timing_rate_kbit(uint64_t divider, const timing_values& values);
/// Sample point as a fraction of the bit, TSEG1 / (TSEG1 + TSEG2); 0 when both are 0.
double timing_fraction(const timing_values& values);

/// Decimal number at the start of `text` (leading blanks and a sign allowed), whatever the locale; 0 when there is
/// none or it is not finite.
double timing_number(const std::string& text);
/// `value` in hundredths, truncated to a whole number: 79.999 gives 7999.
double timing_hundredths(double value);
/// A sample point as the calculator shows it: two decimals, rounded ("80.00").
std::string timing_percent_text(double percent);

// ---- opening ----

/// A phase that the store's timing fills.
struct timing_loaded {
    int32_t divider_code = 0;
    timing_values values;
    int32_t rate = 0;         ///< kbit/s; 666 is loaded too, though no selector offers it
    std::string sample_point; ///< percent, two decimals
};
/// What the calculator shows when it opens. First the divider selectors take `divider_word` and the rate selectors
/// `rate`, then each phase in `loaded` takes over.
struct timing_opening {
    int32_t divider_word = 0; ///< the whole register, both channels' halves
    std::array<std::optional<int32_t>, 2> rate;
    std::array<std::optional<timing_loaded>, 2> loaded;
    /// What the channel's rate indexes stand for, kbit/s; nothing for an index of no rate.
    std::array<std::optional<int32_t>, 2> channel_rate;
    bool data_enabled = false; ///< the data phase exists: bus mode is not classic CAN
};
/// Reads the store for channel 1 or 2. Channel 1's divider is the whole register + 2, so its timing loads only
/// while channel 2's half is 0; channel 2's divider is its own half + 2.
timing_opening timing_open(const tk_object* props, int channel);

/// A channel's bus mode: 0 classic CAN, 1 CAN FD, 2 both; 1 when missing.
uint8_t timing_bus_mode(const tk_object* props, int channel);

// ---- check and store ----

/// What stands in the calculator when "ok" is pressed.
struct timing_form {
    int32_t divider_code = -1;              ///< -1: none chosen
    std::array<timing_values, 2> values;    ///< [phase]
    std::array<int32_t, 2> rate = {-1, -1}; ///< kbit/s; -1: none chosen
    std::array<double, 2> sample_point{};   ///< percent, as typed
    /// 0 when no divider is chosen.
    uint32_t divider() const { return divider_code < 0 ? 0 : static_cast<uint32_t>(divider_code) + 2; }
};

/// The phase gives exactly the chosen rate (in whole kbit/s), and its sample point is the typed one, cut to two
/// decimals, within a thousandth of a percent.
bool timing_phase_valid(uint32_t divider, const timing_values& values, int32_t rate, double sample_point);
/// What "ok" demands: a valid nominal phase and, unless the bus mode is 0, a valid data phase.
bool timing_valid(const timing_form& form, uint8_t bus_mode);

// Stores. A key that the store refuses is logged as "set KEY failed!\n" and gives RET_FAIL; the others are written.

/// Writes the channel's half of the divider code, the nominal values and, unless the bus mode is 0, the data
/// values. The other channel keeps its half.
ret_t timing_store(tk_object* props, int channel, const timing_form& form, uint8_t bus_mode);
/// Stores channel 1's form unchecked. It is meant to be blunt: the divider register becomes the bare code, each
/// other register (old OR 0xFF) AND the new 16 bits, so channel 2's halves are lost and so are high bits of channel
/// 1 that were not set before. With no divider chosen its register is left alone.
ret_t timing_store_forced(tk_object* props, const timing_form& form);
/// Stores the rate index of a chosen rate. RET_FAIL for a rate that the phase does not offer (nothing is stored).
ret_t timing_store_rate(tk_object* props, int channel, timing_phase phase, int32_t kbit);
