// A traffic plan from a text.
#include "sim/traffic.h"

#include <cstdlib>
#include <iterator>

namespace sim {

namespace {

constexpr const char* error_names[] = {"none",         "noise",         "no_start",  "cut",
                                       "short_length", "wrong_command", "bad_check", "too_much_data"};
constexpr const char* count_names[] = {"none", "identifier", "payload"};

std::vector<std::string> split(const std::string& text, char by) {
    std::vector<std::string> parts;
    std::size_t from = 0;
    for (std::size_t at; (at = text.find(by, from)) != std::string::npos; from = at + 1)
        parts.push_back(text.substr(from, at - from));
    parts.push_back(text.substr(from));
    return parts;
}

/// A C number without blanks or a sign.
bool read_number(const std::string& text, uint64_t least, uint64_t most, uint64_t* out) {
    if (text.empty() || text[0] < '0' || text[0] > '9' || text.size() > 18) return false;
    char* end = nullptr;
    const uint64_t value = std::strtoull(text.c_str(), &end, 0);
    if (end != text.c_str() + text.size() || value < least || value > most) return false;
    *out = value;
    return true;
}

template <std::size_t N>
bool read_name(const std::string& text, const char* const (&names)[N], std::size_t* out) {
    for (std::size_t i = 0; i < N; i++)
        if (text == names[i]) {
            *out = i;
            return true;
        }
    return false;
}

bool read_u32(const std::string& text, uint32_t least, uint32_t most, uint32_t* out) {
    uint64_t value = 0;
    if (!read_number(text, least, most, &value)) return false;
    *out = static_cast<uint32_t>(value);
    return true;
}

bool read_bytes(const std::string& text, bool (*good)(uint64_t), std::vector<uint8_t>* out) {
    out->clear();
    for (const std::string& part : split(text, ',')) {
        uint64_t value = 0;
        if (!read_number(part, 0, 255, &value) || !good(value)) return false;
        out->push_back(static_cast<uint8_t>(value));
    }
    return true;
}

bool read_errors(const std::string& text, std::vector<traffic_error>* out) {
    out->clear();
    for (const std::string& part : split(text, ',')) {
        std::size_t which = 0;
        if (!read_name(part, error_names, &which)) return false;
        out->push_back(static_cast<traffic_error>(which));
    }
    return true;
}

constexpr uint32_t most_a_second = 1000000, most_at_once = 100000;
constexpr uint64_t most_frames = 1000000000000;

struct setting {
    const char* key;
    bool (*read)(const std::string& value, traffic_plan* plan);
};
constexpr setting settings[] = {
    {"rate", [](const std::string& v, traffic_plan* p) { return read_u32(v, 0, most_a_second, &p->rate); }},
    {"burst", [](const std::string& v, traffic_plan* p) { return read_u32(v, 1, most_at_once, &p->burst); }},
    {"count", [](const std::string& v, traffic_plan* p) { return read_number(v, 0, most_frames, &p->count); }},
    {"first", [](const std::string& v, traffic_plan* p) { return read_number(v, 0, most_frames, &p->first); }},
    {"channels",
     [](const std::string& v, traffic_plan* p) {
         return read_bytes(
             v, [](uint64_t n) { return n >= 1 && n <= 5; }, &p->channels);
     }},
    {"types",
     [](const std::string& v, traffic_plan* p) {
         return read_bytes(
             v, [](uint64_t n) { return n == 0 || n == 8 || n == 128 || n == 136; }, &p->types);
     }},
    {"lengths",
     [](const std::string& v, traffic_plan* p) {
         const auto ends = split(v, '-');
         return ends.size() <= 2 && read_u32(ends.front(), 0, 64, &p->shortest) &&
                read_u32(ends.back(), p->shortest, 64, &p->longest);
     }},
    {"counter",
     [](const std::string& v, traffic_plan* p) {
         std::size_t which = 0;
         const bool good = read_name(v, count_names, &which);
         p->counter = static_cast<traffic_count>(which);
         return good;
     }},
    {"check",
     [](const std::string& v, traffic_plan* p) {
         p->check = v == "on";
         return v == "on" || v == "off";
     }},
    {"errors", [](const std::string& v, traffic_plan* p) { return read_errors(v, &p->errors); }},
    {"error_every", [](const std::string& v, traffic_plan* p) { return read_u32(v, 0, 1000000, &p->error_every); }},
};

bool read_setting(const std::string& part, traffic_plan* plan) {
    const std::size_t equals = part.find('=');
    if (equals == std::string::npos) return false;
    for (const setting& one : settings)
        if (part.compare(0, equals, one.key) == 0) return one.read(part.substr(equals + 1), plan);
    return false;
}

} // namespace

std::vector<uint8_t> traffic_every_channel() { return {1, 2, 3, 4, 5}; }
std::vector<uint8_t> traffic_every_type() { return {0x00, 0x08, 0x80, 0x88}; }

const char* traffic_error_name(traffic_error error) { return error_names[static_cast<std::size_t>(error)]; }

bool traffic_parse(const std::string& text, traffic_plan* out, std::string* why) {
    traffic_plan plan;
    for (const std::string& part : split(text, ':'))
        if (!read_setting(part, &plan)) {
            if (why != nullptr) *why = "cannot read \"" + part + "\"";
            return false;
        }
    *out = plan;
    return true;
}

} // namespace sim
