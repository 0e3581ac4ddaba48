// Stores of the B family for tests.
#pragma once

#include "dev_b/fields.h"

#include <initializer_list>
#include <string>
#include <utility>

/// A store as it is when the device object was just made.
inline tk_object_ptr b_default_props() {
    tk_object_ptr props(object_default_create());
    fields_set_defaults(vkt610b_fields, props.get());
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
