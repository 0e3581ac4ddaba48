// The widgets of a bit timing calculator, and what stands in them. GUI thread only.
#pragma once

#include "dev_b/bit_timing.h"
#include "dev_b/timing_list.h"
#include "session/dev_obj.h"
#include "toolkit/ravel/widget.h"

#include <array>

/// Window of channel 1 or 2.
const char* bps_window_name(int channel);

/// A phase's widgets; the names of the two channels and phases differ in one letter.
struct bps_phase {
    widget* divider = nullptr;
    widget* rate = nullptr;
    widget* sample_point = nullptr;
    widget* brp = nullptr;
    widget* tseg1 = nullptr;
    widget* tseg2 = nullptr;
    widget* list = nullptr;
    widget* result = nullptr; ///< shows what the edits give
    widget* count = nullptr;  ///< shows how many candidates there are

    std::array<widget*, 4> edits() const { return {brp, tseg1, tseg2, sample_point}; }
};
bps_phase bps_phase_find(widget* dialog, int channel, timing_phase phase);

timing_edits bps_edits_read(const bps_phase& phase);
/// What "ok" looks at; the divider is the nominal phase's.
timing_form bps_form_read(widget* dialog, int channel);

/// Runs `work` on the store, encodes it and shows the code. Answers what `work` answers.
ret_t bps_change_store(dev_obj& dev, const std::function<ret_t(tk_object* props)>& work);
