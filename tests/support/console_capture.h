// What goes to the console while this object lives.
#pragma once

#include "toolkit/core/log.h"

#include <mutex>
#include <string>
#include <utility>

class console_capture {
  public:
    /// At this log level for as long as it lives.
    explicit console_capture(log_level_t level = log_get_log_level()) : level_(log_get_log_level()) {
        log_set_log_level(level);
        log_set_capture(
            [](const std::string& text, void* context) { static_cast<console_capture*>(context)->add(text); },
            this);
    }
    ~console_capture() {
        log_set_capture(nullptr, nullptr);
        log_set_log_level(level_);
    }
    console_capture(const console_capture&) = delete;
    console_capture& operator=(const console_capture&) = delete;
    std::string text() {
        const std::lock_guard hold(lock_);
        return text_;
    }
    /// The same, and begins anew.
    std::string take() {
        const std::lock_guard hold(lock_);
        return std::exchange(text_, {});
    }

  private:
    void add(const std::string& text) {
        const std::lock_guard hold(lock_);
        text_ += text;
    }
    const log_level_t level_; ///< before
    std::mutex lock_;
    std::string text_;
};
