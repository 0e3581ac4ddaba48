// The six models and their three families.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

enum class family : uint8_t { generic, a, b };
inline constexpr int family_count = 3;

struct model_row {
    const char* name;
    int selector_value; ///< value of the model's option in the home page's selector
    family of;
};

/// In the selector's order.
inline constexpr std::array<model_row, 6> models = {{
    {"VKT510A", 3, family::a},
    {"VKT531A", 1, family::generic},
    {"VKT530A", 6, family::generic},
    {"VKT610B", 2, family::b},
    {"VKT630B", 4, family::b},
    {"VKT631B", 5, family::b},
}};

/// The row of a model name, null for any other text.
constexpr const model_row* model_find(std::string_view name) {
    for (const auto& row : models)
        if (name == row.name) return &row;
    return nullptr;
}
