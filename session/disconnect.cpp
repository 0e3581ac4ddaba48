#include "session/disconnect.h"

#include "toolkit/core/idle.h"

ret_t disconnector::start(std::vector<device_session*> devices, std::function<void(const session_progress&)> report,
                          std::function<void()> done) {
    if (under_way_) return RET_FAIL;
    under_way_ = true;
    const auto ended = [this, done = std::move(done)] {
        static_cast<void>(worker_.join());
        under_way_ = false;
        if (done) done();
        return RET_OK;
    };
    const auto work = [devices, report = std::move(report), ended] {
        for (device_session* device : devices) device->leave(report);
        idle_queue(ended);
        return 0u;
    };
    if (worker_.start({.name = "mode_switch"}, work) == RET_OK) return RET_OK;
    for (device_session* device : devices) device->drop();
    under_way_ = false;
    return RET_FAIL;
}
