#include "fuzz/reply_stage.h"

#include "toolkit/core/date_time.h"
#include "toolkit/core/idle.h"

#include <algorithm>

namespace {

constexpr std::size_t log_limit = 400; ///< a whole reply of 65 bytes in hex, and the words around it

/// One line or a few: nothing in it but what a log can show.
bool printable(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c == '\n' || (c >= ' ' && c < 0x7F); });
}

session_reports reports_into(staged_end* out) {
    return {
        .progress =
            [](const session_progress& p) {
                must(p.percent <= 100 && !p.text.empty(), "progress is a percentage with a text");
            },
        .failed =
            [out](const session_failure& failure) {
                must(failure.log_line.size() <= log_limit && printable(failure.log_line),
                     "a failure's log text is short and printable");
                out->logs.push_back(failure.log_line);
                out->texts.push_back(failure.text);
            },
        .image = [out](uint32_t, const session_bytes& image) { out->images.push_back(image); },
        .connected = {},
        .finished = [out](uint32_t) { out->finished++; },
    };
}

} // namespace

void reply_stage_init() {
    static const date_time_t fixed_time = {
        .hour = 13, .minute = 5, .second = 9, .year = 2025, .month = 9, .day = 29};
    date_time_set_test_clock(&fixed_time);
    idle_set_gui_thread();
    session_log_path() = "log.txt";
}

staged_end reply_stage_play(const staged_exchange& staged, std::span<const uint8_t> reply,
                            std::span<const uint8_t> request, bool finish) {
    const session_script* script = script_find(staged.of->scripts, staged.kind);
    must(script != nullptr, "the session exists");
    std::size_t at = 0;
    for (std::size_t nth = staged.nth; at < script->steps.size(); at++) {
        const exchange* with = script->steps[at].with;
        if (with != nullptr && with->reply != 0 && nth-- == 0) break;
    }
    must(at < script->steps.size(), "the session has the exchange");
    const exchange& with = *script->steps[at].with;
    must(with.reply == staged.reply, "as many bytes are read as the reply has");

    staged_end out;
    session_state state;
    session_run run(*staged.of, *script, 1, {.port_text = "COM7", .model = staged.of->device, .requests = {}},
                    state, {}, reports_into(&out));
    run.request = request;
    std::copy_n(reply.begin(), std::min(reply.size(), staged.reply), run.reply.begin());
    out.end = run.check_reply(with);
    for (; finish && out.end == step_end::good && at < script->steps.size(); at++)
        if (script->steps[at].act != nullptr) out.end = script->steps[at].act(run);
    return out;
}

std::vector<uint8_t> listed_bytes(const std::string& listing) {
    std::vector<uint8_t> bytes;
    const auto digit = [&](std::size_t i) {
        const char c = i < listing.size() ? listing[i] : ' ';
        return c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
    };
    for (std::size_t i = 0; i < listing.size();) {
        if (listing.compare(i, 2, "0x") == 0) i += 2;
        if (digit(i) >= 0 && digit(i + 1) >= 0) {
            bytes.push_back(static_cast<uint8_t>(digit(i) * 16 + digit(i + 1)));
            i += 2;
        } else {
            i++;
        }
    }
    return bytes;
}
