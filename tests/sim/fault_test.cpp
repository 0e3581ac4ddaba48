#include "sim/module.h"
#include "tests/sim/frames.h"

#include <gmock/gmock.h>

using testing::IsEmpty;

namespace {

using sim::fault;

/// One fault on one request: what the port then reads.
struct Case {
    const char* name;
    sim::model model;
    sim::fault_plan plan;
    bytes request, reply;
};

constexpr auto generic = sim::model::vkt531a;
constexpr auto a = sim::model::vkt510a;
constexpr auto b = sim::model::vkt610b;

bytes with(bytes frame, std::size_t at, uint8_t value) {
    frame[at] = value;
    return frame;
}
bytes first(bytes frame, std::size_t size) {
    frame.resize(size);
    return frame;
}

sim::fault_plan spoil(fault what, int32_t argument = -1) {
    sim::fault_plan plan;
    plan.what = what;
    plan.argument = argument;
    return plan;
}
sim::fault_plan reply_of(const bytes& raw) {
    sim::fault_plan plan = spoil(fault::raw);
    plan.bytes = raw;
    return plan;
}

const Case cases[] = {
    {"silent", generic, spoil(fault::silent), handshake, {}},
    {"empty", generic, spoil(fault::empty), handshake, {}},
    {"bad_check_handshake", generic, spoil(fault::bad_check), handshake, {0xF7, 0xF8, 0x02, 0x13, 0xE1, 0x00}},
    {"bad_check_firmware", a, spoil(fault::bad_check), firmware, with(firmware_ok, 9, 0xD4)},
    {"bad_check_read", generic, spoil(fault::bad_check), read_image, with(read_image_ok, 64, 0x9B)},
    {"bad_check_write", generic, spoil(fault::bad_check), write_image, {0xF7, 0xF8, 0x01, 0x13, 0xE2, 0x00}},
    {"bad_check_b_read", b, spoil(fault::bad_check), read_all, with(read_all_ok, 145, 0xF5)},
    {"bad_check_b_write", b, spoil(fault::bad_check), write_r0, {0xAA, 0x03, 0x02, 0xFF, 0x80, 0xA6, 0x7D}},
    {"cut_short", generic, spoil(fault::cut_short), handshake, {0xF7, 0xF8, 0x02, 0x13, 0x1E}},
    {"cut_short_to", a, spoil(fault::cut_short, 10), firmware, first(firmware_ok, 10)},
    {"cut_short_to_nothing", a, spoil(fault::cut_short, 0), firmware, {}},
    {"cut_short_b", b, spoil(fault::cut_short), read_all, first(read_all_ok, 145)},
    {"wrong_header", generic, spoil(fault::wrong_header), handshake, {0xF7, 0xF8, 0x7E, 0x13, 0x62, 0x00}},
    {"wrong_header_read", generic, spoil(fault::wrong_header), read_image,
     with(with(read_image_ok, 2, 0x7E), 64, 0x19)},
    {"wrong_header_b", b, spoil(fault::wrong_header), write_r0, {0xAA, 0x03, 0x7E, 0xFF, 0x80, 0xDD, 0xA7}},
    {"wrong_header_b_read", b, spoil(fault::wrong_header), read_all,
     with(with(with(read_all_ok, 2, 0x7E), 144, 0xEB), 145, 0x22)},
    {"refuse_handshake", generic, spoil(fault::refuse), handshake, {0xF7, 0xF8, 0x02, 0x12, 0x1F, 0x00}},
    {"refuse_write", a, spoil(fault::refuse), write_image, {0xF7, 0xF8, 0x01, 0x12, 0x1C, 0x00}},
    {"refuse_read", a, spoil(fault::refuse), read_image, {0xF7, 0xF8, 0x03, 0x12, 0x1E, 0x00}},
    {"refuse_b", b, spoil(fault::refuse), write_r0, write_no},
    {"refuse_b_read", b, spoil(fault::refuse), read_all, {0xAA, 0x03, 0x05, 0xFF, 0x00, 0xAB, 0x8A}},
    {"nonzero_tail", generic, spoil(fault::nonzero_tail), handshake, {0xF7, 0xF8, 0x02, 0x13, 0x1E, 0x01}},
    {"nonzero_tail_firmware", a, spoil(fault::nonzero_tail), firmware, with(firmware_ok, 10, 0x01)},
    {"no_tail", generic, spoil(fault::no_tail), write_image, {0xF7, 0xF8, 0x01, 0x13, 0x1D}},
    {"no_tail_firmware", a, spoil(fault::no_tail), firmware, first(firmware_ok, 10)},
    {"patch", generic, spoil(fault::patch, 0x0311), handshake, {0xF7, 0xF8, 0x02, 0x11, 0x1C, 0x00}},
    {"patch_b", b, spoil(fault::patch, 0x0400), write_r0, write_no},
    {"patch_raw", b, spoil(fault::patch_raw, 0x0400), write_r0, with(write_ok, 4, 0x00)},
    {"patch_first_byte_to_zero", generic, spoil(fault::patch_raw, 0), handshake, with(handshake_ok, 0, 0x00)},
    {"patch_beyond_the_end", generic, spoil(fault::patch_raw, 0x7F00), handshake, handshake_ok},
    {"raw",
     generic,
     reply_of({0xF7, 0xF8, 0x02, 0x12, 0x0F, 0x00}),
     handshake,
     {0xF7, 0xF8, 0x02, 0x12, 0x0F, 0x00}},
    {"late_a_little", generic, spoil(fault::late, 50), handshake, handshake_ok},
    {"slow", generic, spoil(fault::slow, 5), handshake, handshake_ok},
};

class SimFault : public testing::TestWithParam<Case> {};

TEST_P(SimFault, SpoilsOneReplyAndNoMore) {
    const Case& c = GetParam();
    const auto module = sim::module_start(c.model, "COM7");
    ASSERT_NE(module, nullptr);
    module->plan(c.plan);
    port_end port("COM7");
    EXPECT_EQ(port.ask(c.request, c.reply.size() + 8, c.reply.empty() ? 200 : 3000), c.reply);
    EXPECT_FALSE(port.lost());
    EXPECT_EQ(module->count().requests(), 1u);
    EXPECT_EQ(module->count().unknown, 0u);
    // The next one is good again.
    if (c.model == b)
        EXPECT_EQ(port.ask(write_r0, 7), write_ok);
    else
        EXPECT_EQ(port.ask(handshake, 6), handshake_ok);
    EXPECT_EQ(module->count().requests(), 2u);
}
INSTANTIATE_TEST_SUITE_P(Each, SimFault, testing::ValuesIn(cases),
                         [](const auto& one) { return std::string(one.param.name); });

TEST(SimFaultPlan, AfterAndTimes) {
    const auto module = sim::module_start(generic, "COM7");
    module->plan({.what = fault::no_tail, .after = 2, .times = 2});
    port_end port("COM7");
    std::vector<std::size_t> sizes;
    for (int i = 0; i < 6; i++) sizes.push_back(port.ask(handshake, 7, 3000).size());
    EXPECT_THAT(sizes, testing::ElementsAre(6, 6, 5, 5, 6, 6));
}

TEST(SimFaultPlan, ForEverUntilTheNextPlan) {
    const auto module = sim::module_start(generic, "COM7");
    module->plan({.what = fault::no_tail, .times = 0xFFFFFFFFu});
    port_end port("COM7");
    for (int i = 0; i < 4; i++) EXPECT_EQ(port.ask(handshake, 7).size(), 5u);
    module->plan({});
    EXPECT_EQ(port.ask(handshake, 7).size(), 6u);
}

TEST(SimFaultPlan, SilenceAndRefusalLeaveTheMemoryAlone) {
    for (const auto& [what, stored] : {std::pair{fault::silent, false}, std::pair{fault::refuse, false},
                                       std::pair{fault::empty, true}, std::pair{fault::bad_check, true}}) {
        const auto module = sim::module_start(generic, "COM7");
        module->set_memory(bytes(60, 0x11));
        module->plan({.what = what});
        port_end port("COM7");
        ASSERT_TRUE(port.write(write_image));
        ASSERT_TRUE(module->wait_requests(1, 5000));
        EXPECT_EQ(module->memory(), stored ? default_image : bytes(60, 0x11)) << sim::fault_name(what);
    }
}

TEST(SimFaultPlan, JunkComesBeforeTheReply) {
    const auto module = sim::module_start(generic, "COM7");
    module->plan({.what = fault::junk_first});
    port_end port("COM7");
    const bytes reply = port.ask(handshake, 30);
    ASSERT_EQ(reply.size(), 22u);
    EXPECT_EQ(bytes(reply.begin() + 16, reply.end()), handshake_ok);
}

TEST(SimFaultPlan, ExtraComesBehindTheReply) {
    const auto module = sim::module_start(b, "COM7");
    module->plan({.what = fault::extra, .argument = 3});
    port_end port("COM7");
    const bytes reply = port.ask(read_all, 160);
    ASSERT_EQ(reply.size(), 149u);
    EXPECT_EQ(bytes(reply.begin(), reply.begin() + 146), read_all_ok);
}

TEST(SimFaultPlan, SlowSendsByteByByte) {
    const auto module = sim::module_start(generic, "COM7");
    module->plan({.what = fault::slow, .argument = 40});
    port_end port("COM7");
    const stopwatch watch;
    EXPECT_EQ(port.ask(handshake, 6), handshake_ok);
    EXPECT_GE(watch.ms(), 200); // five gaps
}

TEST(SimFaultPlan, ALateReplyComesBehindTheNextOne) {
    const auto module = sim::module_start(a, "COM7");
    module->plan({.what = fault::late, .argument = 400});
    port_end port("COM7");
    ASSERT_TRUE(port.write(handshake));
    ASSERT_TRUE(module->wait_requests(1, 5000));
    EXPECT_EQ(port.ask(firmware, 11), firmware_ok);
    EXPECT_EQ(port.read(6), handshake_ok);
}

TEST(SimFaultPlan, HangUpInsteadOfTheReply) {
    const auto module = sim::module_start(generic, "COM7");
    module->plan({.what = fault::hang_up, .after = 1});
    port_end port("COM7");
    EXPECT_EQ(port.ask(handshake, 6), handshake_ok);
    EXPECT_THAT(port.ask(read_image, 65, 5000), IsEmpty());
    EXPECT_TRUE(port.lost());
    EXPECT_EQ(module->count().reads, 1u);
}

TEST(SimFaultPlan, HangUpInTheMiddleOfTheReply) {
    const auto module = sim::module_start(generic, "COM7");
    module->plan({fault::hang_up_mid_reply});
    port_end port("COM7");
    EXPECT_LE(port.ask(read_image, 65, 5000).size(), 32u);
    EXPECT_THAT(port.read(65, 5000), IsEmpty());
    EXPECT_TRUE(port.lost());
}

TEST(SimFaultText, ReadsAllParts) {
    sim::fault_plan plan;
    ASSERT_TRUE(sim::fault_parse("patch:after=1:times=ever:argument=0x0312", &plan));
    EXPECT_EQ(plan.what, fault::patch);
    EXPECT_EQ(plan.after, 1u);
    EXPECT_EQ(plan.times, 0xFFFFFFFFu);
    EXPECT_EQ(plan.argument, 0x0312);
    ASSERT_TRUE(sim::fault_parse("raw:bytes=F7f800:times=3", &plan));
    EXPECT_EQ(plan.bytes, (bytes{0xF7, 0xF8, 0x00}));
    EXPECT_EQ(plan.times, 3u);
    EXPECT_EQ(plan.after, 0u);
    EXPECT_EQ(plan.argument, -1);
}

TEST(SimFaultText, RefusesWhatItCannotRead) {
    for (const char* text :
         {"", "sulky", "late:", "late:after", "late:after=", "late:after=-1", "late:after=1x", "late:when=1",
          "late:argument=0x100000", "late:after= 1", "raw:bytes=F", "raw:bytes=G0", "raw:bytes= 1", "raw:bytes=\t1",
          "raw:bytes=-1", "raw:bytes=-0", "raw:bytes=0x"}) {
        sim::fault_plan plan;
        std::string why;
        EXPECT_FALSE(sim::fault_parse(text, &plan, &why)) << text;
        EXPECT_FALSE(why.empty()) << text;
        EXPECT_EQ(plan.what, fault::none) << text;
    }
}

TEST(SimFaultText, RefusesZeroBytes) {
    sim::fault_plan plan;
    EXPECT_FALSE(sim::fault_parse(std::string("late:after=1\0", 13), &plan));
    EXPECT_FALSE(sim::fault_parse(std::string("raw:bytes=1\0", 12), &plan));
}

TEST(SimFaultText, NamesAreThoseOfScripts) {
    const std::pair<const char*, fault> names[] = {
        {"none", fault::none},
        {"silent", fault::silent},
        {"empty", fault::empty},
        {"bad_check", fault::bad_check},
        {"cut_short", fault::cut_short},
        {"wrong_header", fault::wrong_header},
        {"refuse", fault::refuse},
        {"slow", fault::slow},
        {"late", fault::late},
        {"junk_first", fault::junk_first},
        {"hang_up", fault::hang_up},
        {"hang_up_mid_reply", fault::hang_up_mid_reply},
        {"nonzero_tail", fault::nonzero_tail},
        {"no_tail", fault::no_tail},
        {"patch", fault::patch},
        {"patch_raw", fault::patch_raw},
        {"extra", fault::extra},
        {"raw", fault::raw},
    };
    for (const auto& [name, what] : names) EXPECT_STREQ(sim::fault_name(what), name);
}

TEST(SimFaultText, NamesGoBothWays) {
    uint32_t named = 0;
    for (uint32_t i = 0; i <= static_cast<uint32_t>(fault::raw); i++) {
        fault back = fault::none;
        const fault f = static_cast<fault>(i);
        EXPECT_TRUE(sim::fault_from_name(sim::fault_name(f), &back)) << i;
        EXPECT_EQ(back, f);
        named++;
    }
    EXPECT_EQ(named, 18u);
}

} // namespace
