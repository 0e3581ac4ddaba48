// A JSON text as a tree that keeps what a profile must be told for: keys that stand twice, and the kind of a
// number. Inside of profile/.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

enum class json_kind : uint8_t { nothing, flag, natural, number, text, list, object };

struct json_node {
    json_kind kind = json_kind::nothing;
    uint64_t natural = 0;             ///< of a whole number without a sign; of a flag 0 or 1
    std::string text{};               ///< of a text
    std::string key{};                ///< in the object that it stands in
    std::vector<json_node> members{}; ///< of an object, in the file's order; those of a list are not kept
};

/// Nothing when it is no JSON text, or has more than 1000 values or four levels.
std::optional<json_node> json_tree(const std::string& text);
