#include "fields/rule_text.h"

#include <string_view>
#include <vector>

namespace {

constexpr std::string_view on_word = "启用";

bool holds(const enable_rule& rule, int32_t value) {
    return rule.value == switched_on ? value != 0 : value == rule.value || value == rule.or_value;
}

/// Texts of the field's choices with which the rule holds, or does not.
std::vector<std::string> choices_where(const enable_rule& rule, bool held) {
    std::vector<std::string> texts;
    for (const choice_option& choice : rule.what->choices)
        if (holds(rule, choice.value) == held) texts.emplace_back(choice.text);
    return texts;
}

/// A blank between letters and what follows, as everywhere in the window.
std::string with_end(const std::string& text, const char* end) {
    const bool ends_with_letter = !text.empty() && static_cast<unsigned char>(text.back()) < 0x80;
    return text + (ends_with_letter ? " " : "") + end;
}

} // namespace

std::string rule_text(const enable_rule& rule) {
    if (rule.what == nullptr) return {};
    const std::vector<std::string> held = choices_where(rule, true);
    const std::vector<std::string> others = choices_where(rule, false);
    if (held.size() > 1 && others.size() == 1) return with_end(others[0], "时无效");
    std::string when;
    for (const std::string& text : held) when += (when.empty() ? "" : "或") + text;
    if (rule.what->choices.empty()) {
        const std::string_view label = rule.what->label;
        when = (label.starts_with(on_word) ? "" : std::string(on_word)) + std::string(label);
    }
    return with_end("仅" + when, "时有效");
}
