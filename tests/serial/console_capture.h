// What goes to the console while this object lives.
#pragma once

#include "toolkit/core/log.h"

#include <mutex>
#include <string>

class console_capture {
  public:
    console_capture() {
        log_set_capture(
            [](const std::string& text, void* context) { static_cast<console_capture*>(context)->add(text); },
            this);
    }
    ~console_capture() { log_set_capture(nullptr, nullptr); }
    console_capture(const console_capture&) = delete;
    console_capture& operator=(const console_capture&) = delete;
    std::string text() {
        const std::lock_guard hold(lock_);
        return text_;
    }

  private:
    void add(const std::string& text) {
        const std::lock_guard hold(lock_);
        text_ += text;
    }
    std::mutex lock_;
    std::string text_;
};
