// Named ways to spoil a reply.
#include "sim/wire.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace sim {

namespace {

struct fault_row {
    fault what;
    const char* name;
};
constexpr fault_row fault_rows[] = {
    {fault::none, "none"},
    {fault::silent, "silent"},
    {fault::empty, "empty"},
    {fault::bad_check, "bad_check"},
    {fault::cut_short, "cut_short"},
    {fault::wrong_header, "wrong_header"},
    {fault::refuse, "refuse"},
    {fault::slow, "slow"},
    {fault::late, "late"},
    {fault::junk_first, "junk_first"},
    {fault::hang_up, "hang_up"},
    {fault::hang_up_mid_reply, "hang_up_mid_reply"},
    {fault::nonzero_tail, "nonzero_tail"},
    {fault::no_tail, "no_tail"},
    {fault::patch, "patch"},
    {fault::patch_raw, "patch_raw"},
    {fault::extra, "extra"},
    {fault::raw, "raw"},
};

constexpr uint8_t foreign_command = 0x7E;

/// Noise that never looks like the start of a frame.
bytes noise(std::size_t size) {
    bytes made(size);
    uint32_t state = 0x2545F491;
    for (uint8_t& byte : made) {
        state = state * 1103515245u + 12345u;
        byte = static_cast<uint8_t>((state >> 16) & 0x7F);
    }
    return made;
}

void patch_byte(const fault_plan& plan, reply* r) {
    const uint32_t argument = static_cast<uint32_t>(plan.argument);
    if (plan.argument >= 0 && (argument >> 8) < r->data.size())
        r->data[argument >> 8] = static_cast<uint8_t>(argument & 0xFF);
}

std::vector<std::string> split(const std::string& text, char by) {
    std::vector<std::string> parts;
    std::size_t from = 0;
    for (std::size_t at; (at = text.find(by, from)) != std::string::npos; from = at + 1)
        parts.push_back(text.substr(from, at - from));
    parts.push_back(text.substr(from));
    return parts;
}

/// Noise in bytes, waits in milliseconds: enough for any test, and nothing overflows.
constexpr long long argument_most = 0xFFFFF;

bool is_digit(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }

/// A C number without blanks or a sign.
bool read_number(const std::string& text, long long most, long long* out) {
    if (text.empty() || !is_digit(text[0])) return false;
    char* end = nullptr;
    const long long value = std::strtoll(text.c_str(), &end, 0);
    if (end != text.c_str() + text.size() || value > most) return false;
    *out = value;
    return true;
}

bool read_hex(const std::string& text, bytes* out) {
    if (text.size() % 2 != 0 || !std::all_of(text.begin(), text.end(), is_digit)) return false;
    for (std::size_t i = 0; i < text.size(); i += 2)
        out->push_back(static_cast<uint8_t>(std::strtol(text.substr(i, 2).c_str(), nullptr, 16)));
    return true;
}

bool read_setting(const std::string& part, fault_plan* plan) {
    const std::size_t equals = part.find('=');
    if (equals == std::string::npos) return false;
    const std::string key = part.substr(0, equals), value = part.substr(equals + 1);
    long long number = 0;
    if (key == "bytes") return read_hex(value, &plan->bytes);
    if (key == "times" && value == "ever") {
        plan->times = 0xFFFFFFFFu;
        return true;
    }
    if (key == "after" && read_number(value, 0xFFFFFFFFLL, &number))
        plan->after = static_cast<uint32_t>(number);
    else if (key == "times" && read_number(value, 0xFFFFFFFFLL, &number))
        plan->times = static_cast<uint32_t>(number);
    else if (key == "argument" && read_number(value, argument_most, &number))
        plan->argument = static_cast<int32_t>(number);
    else
        return false;
    return true;
}

} // namespace

bool fault_from_name(const std::string& name, fault* out) {
    for (const fault_row& row : fault_rows)
        if (name == row.name) {
            *out = row.what;
            return true;
        }
    return false;
}

const char* fault_name(fault f) {
    for (const fault_row& row : fault_rows)
        if (f == row.what) return row.name;
    return "";
}

bool fault_parse(const std::string& text, fault_plan* out, std::string* why) {
    const std::vector<std::string> parts = split(text, ':');
    fault_plan plan;
    const auto refuse = [&](const std::string& what) {
        if (why != nullptr) *why = what;
        return false;
    };
    if (!fault_from_name(parts[0], &plan.what)) return refuse("no fault is called \"" + parts[0] + "\"");
    for (std::size_t i = 1; i < parts.size(); i++)
        if (!read_setting(parts[i], &plan)) return refuse("cannot read \"" + parts[i] + "\"");
    *out = plan;
    return true;
}

void spoil(tribe of, const fault_plan& plan, reply* r) {
    const auto argument = [&](uint32_t usual) {
        return plan.argument < 0 ? usual : static_cast<uint32_t>(plan.argument);
    };
    bytes& data = r->data;
    switch (plan.what) {
    case fault::none:
    case fault::silent: // these three are settled before a reply is made
    case fault::empty:
    case fault::refuse:
        break;
    case fault::bad_check: {
        uint8_t& check = data[of == tribe::b ? r->check_at + 1 : r->check_at];
        check = static_cast<uint8_t>(check ^ 0xFF);
        break;
    }
    case fault::cut_short:
        data.resize(std::min<std::size_t>(argument(static_cast<uint32_t>(data.size() - 1)), data.size()));
        break;
    case fault::wrong_header:
        data[2] = foreign_command;
        renew_check(of, r);
        break;
    case fault::slow:
        r->gap_us = argument(20) * 1000;
        break;
    case fault::late:
        r->delay_ms = argument(6000);
        break;
    case fault::junk_first: {
        const bytes junk = noise(argument(16));
        data.insert(data.begin(), junk.begin(), junk.end());
        break;
    }
    case fault::hang_up:
        data.clear();
        r->hang_up_after = true;
        break;
    case fault::hang_up_mid_reply:
        data.resize(data.size() / 2);
        r->hang_up_after = true;
        break;
    case fault::nonzero_tail:
        if (r->has_tail) data.back() = 0x01;
        break;
    case fault::no_tail:
        if (r->has_tail) data.pop_back();
        break;
    case fault::patch:
        patch_byte(plan, r);
        renew_check(of, r);
        break;
    case fault::patch_raw:
        patch_byte(plan, r);
        break;
    case fault::extra: {
        const bytes junk = noise(argument(1));
        data.insert(data.end(), junk.begin(), junk.end());
        break;
    }
    case fault::raw:
        data = plan.bytes;
        break;
    }
}

} // namespace sim
