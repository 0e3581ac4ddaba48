// Replies of the B family. Input: exchange, flags, register, reply. What a reply has to be, and which bits of it
// the program keeps, is written down here anew, from the wire's description.
#include "dev_b/bit_timing.h"
#include "dev_b/family.h"
#include "fuzz/reply_stage.h"
#include "sim/wire.h"

#include <algorithm>
#include <array>

namespace {

constexpr staged_exchange read_all = {&vkt610b_family, session_kind::read, 0, 146};
constexpr staged_exchange write_one = {&vkt610b_family, session_kind::write, 0, 7};
// Byte 0 of a reply may be anything.
constexpr std::array<uint8_t, 3> read_head = {0x8E, 0x05, 0xFF};
constexpr std::array<uint8_t, 4> write_head = {0x03, 0x02, 0xFF, 0x80};
constexpr uint8_t good_head = 1, good_check = 2; ///< flags: else no input would get past a check

using reply_bytes = std::array<uint8_t, 146>;

/// The bits of a register that have a meaning.
uint32_t meant_bits(std::size_t reg) {
    constexpr uint32_t first[] = {0xFF, 0x7, 0xFF, 0xFF, 0xFFFF, 0x3FFFFF, 0x3FFFFF};
    return reg < std::size(first) ? first[reg] : 0xFFFFFFFF;
}

uint16_t check_of(const reply_bytes& reply, std::size_t size) { return sim::crc_check(reply.data(), size - 2); }

reply_bytes reply_of(std::size_t size, std::span<const uint8_t> head, uint8_t flags, fuzz_input& in) {
    reply_bytes reply{};
    const auto given = in.bytes(size);
    std::copy(given.begin(), given.end(), reply.begin());
    if ((flags & good_head) != 0) std::copy(head.begin(), head.end(), reply.begin() + 1);
    if ((flags & good_check) == 0) return reply;
    const uint16_t crc = check_of(reply, size);
    reply[size - 2] = static_cast<uint8_t>(crc & 0xFF);
    reply[size - 1] = static_cast<uint8_t>(crc >> 8);
    return reply;
}

bool is_good(const reply_bytes& reply, std::size_t size, std::span<const uint8_t> head) {
    const uint32_t sent = reply[size - 2] | static_cast<uint32_t>(reply[size - 1]) << 8;
    return sent == check_of(reply, size) && std::equal(head.begin(), head.end(), reply.begin() + 1);
}

dev_obj& device() {
    static const family_descriptor* const families[] = {&vkt610b_family};
    static const auto dev = dev_open(families, "VKT610B");
    return *dev;
}
tk_object* props() { return device().props.get(); }
session_bytes write_frame(uint32_t r, bool ac) {
    return dev_session_input(device(), session_kind::write, ac).requests.at(r);
}

vkt610b_regs registers() { return vkt610b_regs_from_bytes(vkt610b_image_of(device())); }

/// All write frames of one table, taken by a module: its memory after that.
sim::bytes memory_after_writes(bool ac) {
    sim::bytes memory(140, 0);
    std::vector<uint8_t> all;
    for (uint32_t r = 0; r < 34; r++) {
        const session_bytes frame = write_frame(r, ac);
        sim::request_reader reader(sim::tribe::b);
        reader.feed(frame.data(), frame.size());
        sim::request asked;
        must(reader.next(&asked) && asked.kind == sim::request_kind::write && asked.frame[0] == (ac ? 0xAC : 0xAA),
             "a module takes a write frame");
        sim::answer(sim::tribe::b, asked, &memory);
        all.push_back(static_cast<uint8_t>(r));
        all.insert(all.end(), frame.begin(), frame.end());
    }
    must(listed_bytes(vkt610b_code_mode(device(), {.alternative = ac})) == all,
         "a listing shows the registers' numbers and frames");
    return memory;
}

/// Only the low half or the whole of a divider has a code; the calculator must open whatever the module sent.
void check_calculator(int channel) {
    const timing_opening open = timing_open(props(), channel);
    for (const timing_phase phase : timing_phases) {
        const auto& loaded = open.loaded[timing_at(phase)];
        if (!loaded) continue;
        must(loaded->values.all_set(), "a timing that is loaded is complete");
        must(loaded->rate == 666 || timing_rate_index(phase, loaded->rate) >= 0, "its rate is one of the list");
        const double shown = timing_number(loaded->sample_point);
        must(shown > 0 && shown <= 100 && loaded->sample_point.size() <= 6, "its sample point is a percentage");
    }
}

void check_accepted(const reply_bytes& reply) {
    vkt610b_regs regs{};
    for (std::size_t r = 0; r < regs.size(); r++) {
        for (std::size_t i = 0; i < 4; i++) regs[r] |= static_cast<uint32_t>(reply[4 + 4 * r + i]) << (8 * i);
        regs[r] &= meant_bits(r);
    }
    must(registers() == regs, "the registers are the reply's, less the bits without a meaning");
    must(vkt610b_props_to_regs(props()) == regs, "the store holds every register");
    for (const bool ac : {false, true}) {
        const sim::bytes memory = memory_after_writes(ac);
        for (std::size_t i = 0; i < 136; i++)
            must(memory[i] == static_cast<uint8_t>(regs[i / 4] >> (8 * (i % 4))),
                 "a write gives back what a read brought");
    }
    check_calculator(1);
    check_calculator(2);
    must(vkt610b_version_text(regs[34]).size() <= 24, "the version is a short text");
    const int entry = vkt610b_route_entry(static_cast<uint8_t>(regs[1] >> 1), static_cast<uint8_t>(regs[1] & 1));
    must(entry >= 0 && entry < 5, "the route is one of the list");
}

void check_read(uint8_t flags, fuzz_input& in) {
    const reply_bytes reply = reply_of(read_all.reply, read_head, flags, in);
    const vkt610b_regs before = registers();
    const staged_end got = reply_stage_play(read_all, reply, {}, true);
    const bool good = is_good(reply, read_all.reply, read_head);
    must(got.end == (good ? step_end::good : step_end::failed) && got.logs.size() == !good,
         "a reply is judged as the wire has it");
    must(got.images.size() == good && got.finished == good, "a good read comes to its end, no other does");
    for (const session_bytes& image : got.images) dev_accept(device(), image);
    if (good)
        check_accepted(reply);
    else
        must(registers() == before, "only a good reply changes the registers");
}

void check_write(uint8_t flags, uint32_t reg, fuzz_input& in) {
    const reply_bytes reply = reply_of(write_one.reply, write_head, flags, in);
    const staged_end got = reply_stage_play(write_one, reply, write_frame(reg, false), false);
    const bool good = is_good(reply, write_one.reply, write_head);
    must(got.end == (good ? step_end::good : step_end::failed) && got.logs.size() == !good,
         "an acknowledgement is judged as the wire has it");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static const bool ready = (reply_stage_init(), true);
    must(ready, "the stage is set");
    fuzz_input in(data, size);
    const bool write = in.below(2) == 1;
    const uint8_t flags = in.byte();
    const auto reg = static_cast<uint32_t>(in.below(34));
    if (write)
        check_write(flags, reg, in);
    else
        check_read(flags, in);
    return 0;
}
