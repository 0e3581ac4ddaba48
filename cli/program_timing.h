// Waits of a run that goes on with every module that is plugged in.
#pragma once

#include <cstdint>

/// In milliseconds; tests shorten them.
struct program_timing {
    uint32_t look_ms = 250;           ///< how often is looked at which ports are there
    uint32_t settle_ms = 500;         ///< from a port's coming to the connect: the module starts up meanwhile
    uint32_t open_patience_ms = 2000; ///< so long the system may take to let a new port be opened
};
program_timing& program_timing_get();
