// A family made up for the tests: one module with three values, in one folder. Frames: 'S', function, payload, sum
// of all bytes before it.
#pragma once

#include "session/dev_obj.h"

namespace sample_field {
inline constexpr choice_option speeds[] = {{0, "慢"}, {1, "快"}};
// clang-format off
inline constexpr field speed{.key = "sample_speed", .place = {0, 0, 8}, .number = 1,  .label = "速度", .highest = 1, .choices = speeds};
inline constexpr field gain {.key = "sample_gain",  .place = {1, 0, 8}, .number = 20, .label = "增益", .unit = "dB", .highest = 100};
inline constexpr field on   {.key = "sample_on",    .place = {2, 0, 8}, .form = value_form::flag, .number = 0, .label = "启用", .highest = 1};
// clang-format on
inline constexpr field rows[] = {speed, gain, on};
} // namespace sample_field

extern const family_descriptor sample_family;
