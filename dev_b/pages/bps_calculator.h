// The bit timing calculator: a dialog in which a channel's user-defined timing is chosen from ready-made candidates
// or typed, checked and stored. GUI thread only.
#pragma once

#include "session/dev_obj.h"

/// Opens the calculator of channel 1 or 2, filled from the store, and runs it until it closes. 0 when it stored a
/// valid timing or was left without storing (or could not be opened, which the log tells), 1 when a timing was
/// forced. A rate that was chosen in it stays chosen either way.
uint32_t bps_calculator_open(dev_obj& dev, int channel);
