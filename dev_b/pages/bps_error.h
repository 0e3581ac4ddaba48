// The question after a bit timing that does not give what was chosen. GUI thread only.
#pragma once

#include "session/dev_obj.h"

inline constexpr uint32_t bps_error_back = 0;   ///< the calculator stays
inline constexpr uint32_t bps_error_stored = 1; ///< the calculator closes too

/// Opens "bps_do_error" over the calculator and answers with one of the above. "canfd1_ok" stores what stands in
/// channel 1's calculator unchecked, whichever calculator asked; while that is not open, nothing is stored and the
/// log says so.
uint32_t bps_error_ask(dev_obj& dev);
