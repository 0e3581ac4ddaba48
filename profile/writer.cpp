#include "profile/json_text.h"
#include "profile/profile.h"
#include "toolkit/core/fs.h"

namespace {

std::string value_json(const field& row, const field_value& value) {
    if (value_is_text(row)) return json_quoted(value.text);
    if (row.form == value_form::flag) return value.number != 0 ? "true" : "false";
    const std::string number = std::to_string(value.number);
    const std::string shown = value_shown(row, value);
    return shown == number ? number : "{\"value\": " + number + ", \"text\": " + json_quoted(shown) + "}";
}

} // namespace

std::string profile_text(const profile& from) {
    std::string text = "{\n    \"format\": " + std::to_string(profile_format) + ",\n";
    const std::pair<const char*, const std::string*> texts[] = {
        {"program", &from.program}, {"model", &from.model}, {"note", &from.note}};
    for (const auto& [key, value] : texts)
        text += std::string("    \"") + key + "\": " + json_quoted(*value) + ",\n";
    text += "    \"values\": {";
    const char* before = "\n";
    for (const profile_value& one : from.values) {
        text += std::string(before) + "        \"" + one.what->key + "\": " + value_json(*one.what, one.value);
        before = ",\n";
    }
    return text + "\n    }\n}\n";
}

ret_t profile_save(const profile& from, const std::string& path) {
    return fs_write_whole(path.c_str(), profile_text(from));
}
