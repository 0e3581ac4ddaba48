#include "toolkit/core/conf_json.h"

#include "toolkit/core/fs.h"
#include "toolkit/core/log.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>

using json = nlohmann::ordered_json;

struct conf_json {
    std::string path;
    json values = json::object();
};

namespace {

constexpr int indent = 4;

/// The file's bytes, or why they cannot be had.
const char* read_file(const char* path, std::string* text) {
    if (fs_is_device(os_fs(), path)) return "is no file";
    const fs_file_ptr file(fs_open_file(os_fs(), path, "rb"));
    if (file == nullptr) return "cannot be opened";
    text->resize(conf_json_max_bytes + 1);
    std::size_t size = 0;
    int64_t got = 1;
    while (got > 0 && size < text->size()) {
        got = fs_file_read(file.get(), text->data() + size, text->size() - size);
        if (got > 0) size += static_cast<std::size_t>(got);
    }
    if (got < 0) return "cannot be read";
    text->resize(size);
    if (size == 0) return "is empty";
    return size > conf_json_max_bytes ? "is too large" : nullptr;
}

/// The parser takes time by the square of an object's keys, and writing goes as deep as the lists do; so both are
/// counted first. Works on any bytes.
bool within_limits(std::string_view text) {
    uint32_t keys = 0;
    uint32_t depth = 0;
    bool inside = false; // a string
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inside && c == '\\') ++i;
        if (c == '"') inside = !inside;
        if (inside) continue;
        if (c == ':' && ++keys > conf_json_max_keys) return false;
        if ((c == '{' || c == '[') && ++depth > conf_json_max_depth) return false;
        if ((c == '}' || c == ']') && depth > 0) --depth;
    }
    return true;
}

void log_refusal(const std::string& path, const char* why) { log_write(LOG_LEVEL_WARN, path + " " + why + "\n"); }

/// What keeps the file from being an object, null when nothing does.
const char* parse_file(const char* path, json* values) {
    std::string text;
    if (const char* why = read_file(path, &text)) return why;
    if (!within_limits(text)) return "has too many keys or levels";
    *values = json::parse(text, nullptr, false);
    if (values->is_discarded()) return "is no JSON text";
    return values->is_object() ? nullptr : "is no JSON object";
}

const json* find(const conf_json* conf, const char* key) {
    if (conf == nullptr || key == nullptr) return nullptr;
    const auto at = conf->values.find(key);
    return at == conf->values.end() ? nullptr : &*at;
}

/// The number that all of a text is.
std::optional<double> number_of(const std::string& text) {
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, failure] = std::from_chars(text.data(), end, number);
    if (failure != std::errc() || rest != end || !std::isfinite(number)) return std::nullopt;
    return number;
}

// Doubles hold every 32-bit number as it is.
std::optional<double> as_number(const json* value) {
    if (value == nullptr) return std::nullopt;
    if (value->is_boolean()) return value->get<bool>() ? 1.0 : 0.0;
    if (value->is_number()) return value->get<double>();
    return value->is_string() ? number_of(value->get_ref<const std::string&>()) : std::nullopt;
}

template <typename Whole>
Whole whole_number(const json* value, Whole fallback) {
    const std::optional<double> number = as_number(value);
    if (!number) return fallback;
    const double whole = std::trunc(*number);
    const bool fits = whole >= static_cast<double>(std::numeric_limits<Whole>::min()) &&
                      whole <= static_cast<double>(std::numeric_limits<Whole>::max());
    return fits ? static_cast<Whole>(whole) : fallback;
}

template <typename Value>
ret_t set(conf_json* conf, const char* key, Value&& value) {
    if (conf == nullptr || key == nullptr || *key == '\0') return RET_BAD_PARAMS;
    conf->values[key] = std::forward<Value>(value);
    return RET_OK;
}

} // namespace

void conf_json_release::operator()(conf_json* conf) const { delete conf; }

conf_json_ptr conf_json_create(const char* path) {
    conf_json_ptr conf(new conf_json);
    if (path != nullptr) conf->path = path;
    return conf;
}

conf_json_ptr conf_json_load_quietly(const char* path, const char** why) {
    conf_json_ptr conf = conf_json_create(path);
    const char* const refused = parse_file(conf->path.c_str(), &conf->values);
    if (why != nullptr) *why = refused;
    return refused == nullptr ? std::move(conf) : nullptr;
}

conf_json_ptr conf_json_load(const char* path) {
    const char* why = nullptr;
    conf_json_ptr conf = conf_json_load_quietly(path, &why);
    if (why != nullptr) log_refusal(path == nullptr ? "" : path, why);
    return conf;
}

bool conf_json_has(const conf_json* conf, const char* key) { return find(conf, key) != nullptr; }

bool conf_json_get_bool(const conf_json* conf, const char* key, bool fallback) {
    const json* const value = find(conf, key);
    if (value != nullptr && value->is_string()) {
        const auto& text = value->get_ref<const std::string&>();
        if (text == "true" || text == "1") return true;
        return text == "false" || text == "0" ? false : fallback;
    }
    const std::optional<double> number = as_number(value);
    return number ? *number != 0 : fallback;
}

int32_t conf_json_get_int(const conf_json* conf, const char* key, int32_t fallback) {
    return whole_number(find(conf, key), fallback);
}

uint32_t conf_json_get_uint(const conf_json* conf, const char* key, uint32_t fallback) {
    return whole_number(find(conf, key), fallback);
}

double conf_json_get_double(const conf_json* conf, const char* key, double fallback) {
    return as_number(find(conf, key)).value_or(fallback);
}

std::string conf_json_get_str(const conf_json* conf, const char* key, const char* fallback) {
    const json* const value = find(conf, key);
    if (value != nullptr && value->is_string()) return value->get<std::string>();
    if (value != nullptr && (value->is_number() || value->is_boolean())) return value->dump();
    return fallback != nullptr ? fallback : "";
}

ret_t conf_json_set_bool(conf_json* conf, const char* key, bool value) { return set(conf, key, value); }
ret_t conf_json_set_int(conf_json* conf, const char* key, int32_t value) { return set(conf, key, value); }
ret_t conf_json_set_uint(conf_json* conf, const char* key, uint32_t value) { return set(conf, key, value); }

ret_t conf_json_set_double(conf_json* conf, const char* key, double value) {
    return std::isfinite(value) ? set(conf, key, value) : RET_BAD_PARAMS;
}

ret_t conf_json_set_str(conf_json* conf, const char* key, const char* value) {
    return value != nullptr ? set(conf, key, value) : RET_BAD_PARAMS;
}

ret_t conf_json_save_as(const conf_json* conf, const char* path) {
    if (conf == nullptr) return RET_BAD_PARAMS;
    const std::string text = conf->values.dump(indent, ' ', false, json::error_handler_t::replace) + "\n";
    const std::string target = path != nullptr ? path : conf->path;
    if (text.size() <= conf_json_max_bytes && within_limits(text)) return fs_write_whole(target.c_str(), text);
    log_refusal(target, "would be too large");
    return RET_FAIL;
}
