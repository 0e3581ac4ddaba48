// Replies of the generic and the A family. Input: exchange, flags, reply. What a reply has to be is written down
// here anew, from the wire's description.
#include "config/cfg_image.h"
#include "config/defaults.h"
#include "config/dev_obj.h"
#include "dev_a/vkt510a_codec.h"
#include "fuzz/reply_stage.h"
#include "serial/session_texts.h"
#include "sim/wire.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/text.h"

#include <algorithm>
#include <array>

namespace {

enum class reply_form : uint8_t { handshake, firmware, image, acknowledgement };
struct f7_row {
    staged_exchange staged;
    reply_form form;
    std::size_t check_at;
    std::array<uint8_t, 4> head;
};
constexpr f7_row rows[] = {
    {{family::generic, session_kind::connect, 0, 6}, reply_form::handshake, 4, {0xF7, 0xF8, 0x02, 0x13}},
    {{family::generic, session_kind::read, 0, 65}, reply_form::image, 64, {0xF7, 0xF8, 0x03, 0x3C}},
    {{family::generic, session_kind::write, 0, 6}, reply_form::acknowledgement, 4, {0xF7, 0xF8, 0x01, 0x13}},
    {{family::a, session_kind::connect, 0, 6}, reply_form::handshake, 4, {0xF7, 0xF8, 0x02, 0x13}},
    {{family::a, session_kind::connect, 1, 11}, reply_form::firmware, 9, {0xF7, 0xF8, 0x04, 0x05}},
    {{family::a, session_kind::read, 0, 65}, reply_form::image, 64, {0xF7, 0xF8, 0x03, 0x3C}},
    {{family::a, session_kind::write, 0, 6}, reply_form::acknowledgement, 4, {0xF7, 0xF8, 0x01, 0x13}},
};
// Flags: else no input would get past a check.
constexpr uint8_t good_head = 1, good_check = 2;

using reply_bytes = std::array<uint8_t, 66>; ///< the longest, and the zero behind it

reply_bytes reply_of(const f7_row& row, fuzz_input& in) {
    reply_bytes reply{};
    const uint8_t flags = in.byte();
    const auto given = in.bytes(row.staged.reply);
    std::copy(given.begin(), given.end(), reply.begin());
    if ((flags & good_head) != 0) std::copy(row.head.begin(), row.head.end(), reply.begin());
    if ((flags & good_check) == 0) return reply;
    reply[row.check_at] = sim::xor_check(reply.data(), row.check_at);
    reply[row.check_at + 1] = 0;
    return reply;
}

/// How many failures are reported and how the exchange ends.
struct verdict {
    std::size_t failures;
    step_end end;
};
verdict verdict_of(const f7_row& row, const reply_bytes& reply) {
    constexpr verdict good{0, step_end::good}, over{1, step_end::failed}, goes_on{1, step_end::good};
    const bool check =
        sim::xor_check(reply.data(), row.check_at) == reply[row.check_at] && reply[row.check_at + 1] == 0;
    const bool head = std::equal(row.head.begin(), row.head.end(), reply.begin());
    const bool frame = std::equal(row.head.begin(), row.head.begin() + 3, reply.begin());
    if (!check) return over;
    switch (row.form) {
    case reply_form::handshake:
        return head ? good : over;
    case reply_form::firmware:
        return good;
    case reply_form::image:
        return head ? good : goes_on;
    case reply_form::acknowledgement:
        return head ? good : frame ? over : goes_on;
    }
    return over;
}

void clear(image_bytes& image, std::size_t from, std::size_t to) {
    std::fill(image.begin() + static_cast<std::ptrdiff_t>(from), image.begin() + static_cast<std::ptrdiff_t>(to),
              0);
}

/// The image that a write sends after a read has brought this one.
image_bytes rewritten(family of, image_bytes image) {
    image[1] = 8;              // data bits
    image[2] = 1;              // stop bit
    image[3] = 0;              // no parity
    image[58] = image[59] = 1; // SPI polarity and phase
    if (of == family::a) return image;
    for (const std::size_t flag : {5, 8, 45, 46}) image[flag] = image[flag] != 0;
    clear(image, 6, 8);   // spare
    clear(image, 18, 42); // codes 1 to 5 with the gap: not set, whatever the module holds
    clear(image, 48, 52); // send identifier
    return image;
}

void check_frame(const image_bytes& image) {
    const image_frame_bytes frame = image_frame(image);
    sim::request_reader reader(sim::tribe::generic);
    reader.feed(frame.data(), frame.size());
    sim::request asked;
    must(reader.next(&asked) && asked.kind == sim::request_kind::write && !reader.partial(),
         "a module takes a write");
    must(std::equal(image.begin(), image.end(), asked.frame.begin() + 4), "a write carries the image");
    for (const bool list : {false, true})
        for (const auto blanks : {listing_blanks::show, listing_blanks::restore}) {
            const auto listed = listed_bytes(image_listing(image, list, blanks));
            must(std::equal(frame.begin(), frame.end(), listed.begin(), listed.end()), "a listing shows the frame");
        }
}

void encode(family of) {
    if (of == family::a)
        vkt510a_encode(nullptr);
    else
        cfg_image_from_props();
}

/// Every input finds the same store and image.
image_bytes start_image(family of) {
    cfg_image_set(of, {});
    defaults_write(of, of == family::a ? dev_get(family::a)->props : config_store());
    encode(of);
    return cfg_image_get(of);
}

void check_image(family of, const reply_bytes& reply, bool accepted, const image_bytes& before) {
    image_bytes sent = before;
    if (accepted) std::copy_n(reply.begin() + 4, sent.size(), sent.begin());
    must(cfg_image_get(of) == sent, "only a good reply changes the image");
    encode(of);
    const image_bytes image = cfg_image_get(of);
    must(image == rewritten(of, sent), "a write gives back what a read brought");
    check_frame(image);
    if (of == family::a)
        vkt510a_decode(nullptr);
    else
        cfg_image_to_props();
    encode(of);
    must(cfg_image_get(of) == image, "what is written reads back the same");
}

/// The log's line about the firmware: of a good frame with the family's own head only.
void check_firmware_line(const f7_row& row, const reply_bytes& r, bool good) {
    idle_dispatch();
    std::string line;
    fs_read_all("log.txt", &line);
    fs_remove_file(os_fs(), "log.txt");
    const bool ours = good && std::equal(row.head.begin(), row.head.end(), r.begin());
    must(line == (ours ? tk_format("VKT510A, %02X-%02X-%02X, %02X-%02X\r\n", r[6], r[7], r[8], r[4], r[5]) : ""),
         "the log names the firmware");
}

void init() {
    reply_stage_init();
    vkt510a_codec_register();
    dev_set(family::a, dev_open("VKT510A"));
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static const bool ready = (init(), true);
    must(ready, "the stage is set");
    fuzz_input in(data, size);
    const f7_row& row = rows[in.below(std::size(rows))];
    const bool is_image = row.form == reply_form::image;
    const reply_bytes reply = reply_of(row, in);
    const image_bytes before = start_image(row.staged.of);

    const staged_end got = reply_stage_play(row.staged, reply, 0, is_image);
    const verdict wanted = verdict_of(row, reply);
    must(got.end == wanted.end && got.logs.size() == wanted.failures, "a reply is judged as the wire has it");
    must(got.finished == (is_image && got.end == step_end::good), "a read that goes on comes to its end");
    must(got.image_changes == got.finished, "the code view follows a read");
    if (is_image) check_image(row.staged.of, reply, wanted.failures == 0, before);
    if (row.form == reply_form::firmware) check_firmware_line(row, reply, got.end == step_end::good);
    return 0;
}
