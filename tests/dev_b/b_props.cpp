#include "dev_b/b_props.h"

#include "toolkit/core/log.h"

log_catcher::log_catcher() : level_(log_get_log_level()) {
    log_set_log_level(LOG_LEVEL_DEBUG);
    log_set_capture([](const std::string& text, void* into) { static_cast<std::string*>(into)->append(text); },
                    &text_);
}

log_catcher::~log_catcher() {
    log_set_capture(nullptr, nullptr);
    log_set_log_level(static_cast<log_level_t>(level_));
}
