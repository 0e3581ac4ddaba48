// Fault plans of simulated modules, as text. Input: the text.
#include "fuzz/fuzz.h"
#include "sim/wire.h"

#include <algorithm>
#include <cctype>

using namespace sim;

namespace {

std::string plan_text(const fault_plan& plan) {
    std::string text = std::string(fault_name(plan.what)) + ":after=" + std::to_string(plan.after) +
                       ":times=" + (plan.times == 0xFFFFFFFF ? "ever" : std::to_string(plan.times));
    if (plan.argument >= 0) text += ":argument=" + std::to_string(plan.argument);
    text += ":bytes=";
    for (const uint8_t byte : plan.bytes) {
        constexpr const char* digits = "0123456789ABCDEF";
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}

bool same(const fault_plan& a, const fault_plan& b) {
    return a.what == b.what && a.after == b.after && a.times == b.times && a.argument == b.argument &&
           a.bytes == b.bytes;
}

/// Hex digits and nothing else stand in what was read as bytes.
void check_bytes(const std::string& text) {
    for (const std::string& part : fuzz_split(text, ':')) {
        if (part.rfind("bytes=", 0) != 0) continue;
        must(part.size() % 2 == 0 &&
                 std::all_of(part.begin() + 6, part.end(),
                             [](char c) { return std::isxdigit(static_cast<uint8_t>(c)) != 0; }),
             "bytes are pairs of hex digits");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::string text = fuzz_input(data, size).text();
    const fault_plan untouched{.what = fault::late, .after = 7, .times = 8, .argument = 9, .bytes = {10}};
    fault_plan plan = untouched;
    std::string why;
    if (!fault_parse(text, &plan, &why)) {
        must(same(plan, untouched) && !why.empty(), "what cannot be read is refused with a reason");
        return 0;
    }
    must(text.find('\0') == std::string::npos, "no plan has a zero byte");
    check_bytes(text);
    fault_plan again;
    must(fault_parse(plan_text(plan), &again) && same(plan, again), "a plan's own text reads as the plan");
    reply good = answer(tribe::generic, {request_kind::handshake, {}}, nullptr);
    const std::size_t most = std::max(good.data.size(), plan.bytes.size()) + 0x100000;
    spoil(tribe::generic, plan, &good);
    must(good.data.size() <= most, "noise is limited");
    return 0;
}
