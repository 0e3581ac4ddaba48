// The default of every configuration value of the three property objects.
#pragma once

#include "config/models.h"
#include "toolkit/core/object.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

enum class prop_type : uint8_t { u8, u32, flag, text };

struct prop_default {
    const char* key; ///< "canfd#_..." stands for both channels: "canfd1_..." and "canfd2_..."
    prop_type type;
    uint32_t number = 0;
    const char* text = nullptr;
};

/// A family's rows.
std::span<const prop_default> defaults_of(family of);
/// The row of a key, null when the family has none.
const prop_default* default_find(family of, std::string_view key);
/// Number or text that a page shows when `key` is missing: the key's default; 0 or "" for an unknown key.
uint32_t default_number(family of, std::string_view key);
const char* default_text(family of, std::string_view key);
/// Writes every default of a family into `props`, except the key `except` (null: all). Any thread.
void defaults_write(family of, tk_object* props, const char* except = nullptr);
