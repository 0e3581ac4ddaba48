// Makes the ready-made bit timings that the calculator offers (dev_b/timing_list.h reads them).
#pragma once

#include "dev_b/bit_timing.h"

#include <string>
#include <vector>

/// Register limits of a phase, TSEG1 with the synchronisation segment in it: the set that CAN FD controllers have
/// in common (nominal: prescaler of 9 bits, segments of 8 and 7 bits; data: 5, 5 and 4 bits).
struct bps_limits {
    uint32_t brp_max;
    uint32_t tseg1_min, tseg1_max;
    uint32_t tseg2_min, tseg2_max;
    uint32_t sjw_max;
};
inline constexpr std::array<bps_limits, 2> bps_limits_of = {{
    {512, 2, 256, 2, 128, 128}, // nominal
    {32, 1, 32, 1, 16, 16},     // data
}};

/// The sample point that candidates are sorted by, in thousandths of the bit. Nominal: the bit-timing table of CiA
/// 301 (87.5 % up to 500 kbit/s, 80 % at 800 kbit/s, 75 % at 1 Mbit/s). Data: 80 % up to 2 Mbit/s and 75 % above,
/// as CAN FD networks usually choose it.
uint32_t bps_recommended_permille(timing_phase phase, int32_t rate);

/// All candidates of a phase, divider and rate (kbit/s) as the lines of its file: those that give the rate exactly,
/// whose sample point, cut to two decimals, the calculator's check accepts and its filter finds. Closest to the
/// recommended sample point first, then finest time quantum, then shortest TSEG1. The jump width (fourth field) is
/// TSEG2, held to its limit.
std::vector<std::string> bps_list(timing_phase phase, uint32_t divider, int32_t rate);

/// Writes the 144 files (both channels alike) into `folder`, which must exist. RET_FAIL at the first that cannot be
/// written; a file is written whole or not at all.
ret_t bps_lists_write(const std::string& folder);
