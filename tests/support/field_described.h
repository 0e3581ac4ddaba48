// What a person sees of a family: its fields and models, against tables that are typed in by hand.
#pragma once

#include "session/family.h"
#include "toolkit/core/text.h"

#include <gtest/gtest.h>

#include <utility>

/// "label [unit] LOWEST..HIGHEST+ABOVE VALUE=text|VALUE=text": what a field has nothing of is left out.
inline std::string field_described(const field& row) {
    std::string text = row.label;
    if (row.unit[0] != '\0') text += tk_format(" [%s]", row.unit);
    text += tk_format(" %X..%X", row.lowest, field_highest(row));
    if (row.shown_above != 0) text += tk_format("%+d", row.shown_above);
    char before = ' ';
    for (const choice_option& option : row.choices) {
        text += before + std::to_string(option.value) + "=" + option.text;
        before = '|';
    }
    return text;
}

/// Every row with a key, in order.
inline void expect_fields(field_rows rows, std::initializer_list<std::pair<const char*, const char*>> wanted) {
    auto next = wanted.begin();
    for (const field& row : rows) {
        if (row.key == nullptr) continue;
        ASSERT_NE(next, wanted.end()) << row.key;
        EXPECT_STREQ(row.key, next->first);
        EXPECT_EQ(field_described(row), next->second) << row.key;
        ++next;
    }
    EXPECT_EQ(next, wanted.end());
}

/// A family's models with the selector's values, in order.
inline void expect_models(std::span<const family_model> models,
                          std::initializer_list<std::pair<const char*, int>> wanted) {
    auto next = wanted.begin();
    for (const family_model& row : models) {
        ASSERT_NE(next, wanted.end()) << row.name;
        EXPECT_STREQ(row.name, next->first);
        EXPECT_EQ(row.selector_value, next->second) << row.name;
        ++next;
    }
    EXPECT_EQ(next, wanted.end());
}
