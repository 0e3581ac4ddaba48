// Property objects of the B family for tests.
#pragma once

#include "config/defaults.h"
#include "toolkit/core/object.h"

#include <initializer_list>
#include <string>
#include <utility>

/// A store as it is when the device object was just made.
inline tk_object_ptr b_default_props() {
    tk_object_ptr props(object_default_create());
    defaults_write(family::b, props.get());
    return props;
}

/// A store that holds these values and nothing else.
inline tk_object_ptr b_props(std::initializer_list<std::pair<const char*, uint32_t>> values) {
    tk_object_ptr props(object_default_create());
    for (const auto& [key, value] : values) tk_object_set_prop_uint32(props.get(), key, value);
    return props;
}

inline uint32_t b_value(const tk_object_ptr& props, const char* key) {
    return tk_object_get_prop_uint32(props.get(), key, 0xDEADBEEF);
}

/// Collects what is logged while it lives.
class log_catcher {
  public:
    log_catcher();
    ~log_catcher();
    log_catcher(const log_catcher&) = delete;
    log_catcher& operator=(const log_catcher&) = delete;
    const std::string& text() const { return text_; }

  private:
    std::string text_;
    int level_;
};
