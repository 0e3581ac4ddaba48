// The serial send assistant's transcript, and a line of its history. Input: how the bytes are cut into reads, then
// the bytes; the same bytes are read as a line as well. How frames are walked is written down here anew.
#include "assistant/frame_walk.h"
#include "assistant/sent_history.h"
#include "assistant/transcript.h"
#include "fuzz/fuzz.h"
#include "sim/wire.h"

#include <algorithm>

namespace {

using bytes = std::span<const uint8_t>;

struct walked {
    std::size_t at = 0, good = 0, bad = 0, noise = 0;
};

bool good_frame(bytes frame) {
    const std::size_t n = frame.size();
    if (n < 11 || frame[2] != 3) return false;
    const uint16_t check = static_cast<uint16_t>(frame[n - 2] | frame[n - 1] << 8);
    return check == sim::crc_check(frame.data(), n - 2) && n - 11 <= (frame[4] > 127 ? 64u : 8u);
}

/// Goes on over all that is there.
void walk(bytes all, walked* on) {
    while (true) {
        const std::size_t waits = all.size() - on->at;
        if (waits == 0 || waits == 76) return;
        const bytes rest = all.subspan(on->at);
        if (rest[0] != 0xAA && rest[0] != 0xAB && rest[0] != 0xAC) {
            on->at++;
            on->noise++;
        } else {
            if (waits == 1 || waits < rest[1] + 4u) return;
            (good_frame(rest.first(rest[1] + 4u)) ? on->good : on->bad)++;
            on->at += rest[1] + 4u;
        }
    }
}

void check_rows(const transcript& log, bytes all) {
    std::vector<uint8_t> shown;
    transcript_row row;
    std::size_t index = 0;
    for (; log.rows(index, std::span(&row, 1)) == 1; ++index)
        shown.insert(shown.end(), row.bytes().begin(), row.bytes().end());
    must(index == log.counts().rows, "there are as many rows as are counted");
    must(std::ranges::equal(shown, all), "the rows hold what was received");
}

void check_frames(const transcript& log) {
    transcript_frame frame;
    for (std::size_t i = 0; i < log.counts().frames; ++i) {
        must(log.frame(i, &frame), "a frame that is counted is there");
        must(frame.data().size() <= (frame.type > 127 ? 64u : 8u), "a frame has the data of its type");
    }
    must(!log.frame(log.counts().frames, &frame), "and no other");
}

/// A byte that goes on with a character is none of its own.
std::size_t characters_of(const std::string& text) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<uint8_t>(text[i]);
        if (i == 0 || byte < 0x80 || byte > 0xBF) ++count;
    }
    return count;
}

void check_line(const std::string& text) {
    assistant_form form;
    if (!sent_entry_read(text, &form)) return;
    assistant_form again;
    must(sent_entry_read(sent_entry_text(form), &again) && again == form, "what is read can be written and read");
    must(assistant_frame(form).size == 11 + std::min<std::size_t>(characters_of(form.data), 64),
         "and gives a frame");
    must(assistant_hint(form.data).empty() == form.data.empty(), "data have a hint");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzz_input input(data, size);
    const std::size_t cut = 1 + input.byte();
    const bytes all = input.rest();
    static transcript& log = *new transcript;
    log.clear();
    walked expected;
    for (std::size_t at = 0; at < all.size(); at += cut) {
        const bytes piece = all.subspan(at, std::min(cut, all.size() - at));
        log.received(piece, {});
        while (log.walk()) {
        }
        walk(all.first(at + piece.size()), &expected);
    }
    const transcript_counts now = log.counts();
    must(now.frames == expected.good && now.frames_bad == expected.bad && now.noise == expected.noise,
         "every byte ends in a frame, in a count, or waits");
    check_rows(log, all);
    check_frames(log);
    check_line(std::string(data, data + size));
    return 0;
}
