// What a simulated module sends in transfer mode. Input: number of a frame, then the text of a plan. The program's
// parser and the module's description of the wire are two, and say the same.
#include "fuzz/fuzz.h"
#include "serial/traffic_frame.h"
#include "sim/traffic.h"

#include <algorithm>

using namespace sim;

namespace {

int code_of(traffic_error error, bool check) {
    switch (error) {
    case traffic_error::no_start:
        return traffic_no_start;
    case traffic_error::cut:
        return traffic_cut;
    case traffic_error::short_length:
        return traffic_length;
    case traffic_error::wrong_command:
        return traffic_command;
    case traffic_error::bad_check:
        return check ? traffic_check_failed : 0;
    case traffic_error::too_much_data:
        return traffic_data_too_long;
    default:
        return 0;
    }
}

void check_frame(const traffic_plan& plan, uint64_t n) {
    const traffic_note note = traffic_frame(plan, n);
    traffic_parsed found;
    const int code = traffic_frame_parse(note.frame, plan.check, &found);
    const int wanted = code_of(note.error, plan.check);
    // A short frame that lost its end may be shorter than a head.
    must(code == wanted || (wanted == traffic_cut && code == traffic_no_start),
         "a frame is spoiled as its plan says");
    if (code != 0) return;
    must(found.skipped == (note.error == traffic_error::noise ? 5u : 0u), "noise is five bytes");
    must(found.advance == note.frame.size(), "a good frame is whole");
    must(std::ranges::find(plan.channels, found.channel) != plan.channels.end() &&
             std::ranges::find(plan.types, found.type) != plan.types.end(),
         "channel and type are the plan's");
    must(found.identifier <= (found.extended() ? 0x1FFFFFFFu : 0x7FFu), "an identifier fits its type");
    must(found.data.size() <= plan.longest && (found.data.size() >= plan.shortest || !found.fd()),
         "a length is the plan's");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzz_input in(data, size);
    const uint64_t n = in.byte() * 257u;
    traffic_plan plan;
    plan.rate = 77;
    std::string why;
    if (!traffic_parse(in.text(), &plan, &why)) {
        must(plan.rate == 77 && !why.empty(), "a refused plan changes nothing and says why");
        return 0;
    }
    must(plan.burst >= 1 && plan.shortest <= plan.longest && plan.longest <= 64, "a plan is within its limits");
    must(!plan.channels.empty() && !plan.types.empty(), "there is always a channel and a type");
    for (uint64_t i = 0; i < 40; i++) check_frame(plan, n + i);
    return 0;
}
