// Replies of the generic and the A family. Input: exchange, flags, reply. What a reply has to be is written down
// here anew, from the wire's description.
#include "dev_a/family.h"
#include "dev_generic/family.h"
#include "f7/f7_exchanges.h"
#include "fuzz/reply_stage.h"
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
    {{&generic_family, session_kind::connect, 0, 6}, reply_form::handshake, 4, {0xF7, 0xF8, 0x02, 0x13}},
    {{&generic_family, session_kind::read, 0, 65}, reply_form::image, 64, {0xF7, 0xF8, 0x03, 0x3C}},
    {{&generic_family, session_kind::write, 0, 6}, reply_form::acknowledgement, 4, {0xF7, 0xF8, 0x01, 0x13}},
    {{&vkt510a_family, session_kind::connect, 0, 6}, reply_form::handshake, 4, {0xF7, 0xF8, 0x02, 0x13}},
    {{&vkt510a_family, session_kind::connect, 1, 11}, reply_form::firmware, 9, {0xF7, 0xF8, 0x04, 0x05}},
    {{&vkt510a_family, session_kind::read, 0, 65}, reply_form::image, 64, {0xF7, 0xF8, 0x03, 0x3C}},
    {{&vkt510a_family, session_kind::write, 0, 6}, reply_form::acknowledgement, 4, {0xF7, 0xF8, 0x01, 0x13}},
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

using image_copy = std::array<uint8_t, f7_image_size>;

void clear(image_copy& image, std::size_t from, std::size_t to) {
    std::fill(image.begin() + static_cast<std::ptrdiff_t>(from), image.begin() + static_cast<std::ptrdiff_t>(to),
              0);
}

/// The image that a write sends after a read has brought this one.
image_copy rewritten(const dev_obj& dev, image_copy image) {
    image[1] = 8;              // data bits
    image[2] = 1;              // stop bit
    image[3] = 0;              // no parity
    image[58] = image[59] = 1; // SPI polarity and phase
    if (&dev.of == &vkt510a_family) return image;
    for (const std::size_t flag : {5, 8, 45, 46}) image[flag] = image[flag] != 0;
    clear(image, 6, 8);   // spare
    clear(image, 18, 42); // codes 1 to 5 with the gap: not set, whatever the module holds
    clear(image, 48, 52); // send identifier
    return image;
}

void check_frame(const image_copy& image) {
    const f7_image_frame frame = f7_write_frame(image);
    sim::request_reader reader(sim::tribe::generic);
    reader.feed(frame.data(), frame.size());
    sim::request asked;
    must(reader.next(&asked) && asked.kind == sim::request_kind::write && !reader.partial(),
         "a module takes a write");
    must(std::equal(image.begin(), image.end(), asked.frame.begin() + 4), "a write carries the image");
    for (const bool list : {false, true})
        for (const auto blanks : {listing_blanks::show, listing_blanks::restore}) {
            const auto listed = listed_bytes(f7_listing(image, list, blanks));
            must(std::equal(frame.begin(), frame.end(), listed.begin(), listed.end()), "a listing shows the frame");
        }
}

image_copy image_of(const dev_obj& dev) {
    image_copy out{};
    std::copy(dev.image.begin(), dev.image.end(), out.begin());
    return out;
}

/// Every input finds the same store and image.
image_copy start_image(dev_obj& dev) {
    std::fill(dev.image.begin(), dev.image.end(), 0);
    dev_restore(dev);
    return image_of(dev);
}

/// `reported` is what the session said of a reply's image: good, it is taken over; bad, the old one is decoded
/// again.
void check_image(dev_obj& dev, const reply_bytes& reply, const session_bytes& reported, bool accepted,
                 const image_copy& before) {
    image_copy held = before;
    if (accepted) std::copy_n(reply.begin() + 4, held.size(), held.begin());
    must(reported.empty() != accepted, "only a good reply brings an image");
    dev_accept(dev, reported);
    must(image_of(dev) == (&dev.of == &vkt510a_family ? rewritten(dev, held) : held),
         "only a good reply changes the image");
    must(dev_encode(dev) == RET_OK, "it is encoded");
    const image_copy image = image_of(dev);
    must(image == rewritten(dev, held), "a write gives back what a read brought");
    check_frame(image);
    const std::vector<session_bytes> sent = dev_session_input(dev, session_kind::write, false).requests;
    const f7_image_frame frame = f7_write_frame(image);
    must(sent.size() == 1 && std::equal(frame.begin(), frame.end(), sent[0].begin(), sent[0].end()),
         "a write sends the frame that is shown");
    dev.of.decode(dev);
    dev.of.encode(dev);
    must(image_of(dev) == image, "what is written reads back the same");
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

dev_obj& device_of(const family_descriptor* of) {
    static const family_descriptor* const families[] = {&generic_family, &vkt510a_family};
    static const auto generic = dev_open(families, "VKT531A"), a = dev_open(families, "VKT510A");
    return of == &vkt510a_family ? *a : *generic;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static const bool ready = (reply_stage_init(), true);
    must(ready, "the stage is set");
    fuzz_input in(data, size);
    const f7_row& row = rows[in.below(std::size(rows))];
    const bool is_image = row.form == reply_form::image;
    const reply_bytes reply = reply_of(row, in);
    dev_obj& dev = device_of(row.staged.of);
    const image_copy before = start_image(dev);

    const staged_end got = reply_stage_play(row.staged, reply, {}, is_image);
    const verdict wanted = verdict_of(row, reply);
    must(got.end == wanted.end && got.logs.size() == wanted.failures, "a reply is judged as the wire has it");
    must(got.finished == (is_image && got.end == step_end::good), "a read that goes on comes to its end");
    must(got.images.size() == got.finished, "a read's image is decoded");
    if (got.finished != 0) check_image(dev, reply, got.images[0], wanted.failures == 0, before);
    if (row.form == reply_form::firmware) check_firmware_line(row, reply, got.end == step_end::good);
    return 0;
}
