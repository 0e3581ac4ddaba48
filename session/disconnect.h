// Leaving modules: on a worker, so that a blocked port never freezes the window.
#pragma once

#include "session/device_session.h"

class disconnector {
  public:
    /// Leaves all devices, one after the other (device_session::leave); `done` runs on the GUI thread when that has
    /// ended, well or not. RET_FAIL when one is under way already (nothing happens then), or when the worker cannot
    /// be started (the ports are closed on the spot then, and no module hears of it). The devices must live until
    /// `done`. GUI thread.
    ret_t start(std::vector<device_session*> devices, std::function<void(const session_progress&)> report,
                std::function<void()> done);
    /// Until `done` is about to run.
    bool running() const { return under_way_; }

  private:
    bool under_way_ = false;
    worker worker_;
};
