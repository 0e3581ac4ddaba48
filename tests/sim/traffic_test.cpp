// Transfer mode of a simulated B module.
#include "sim/module.h"
#include "tests/sim/frames.h"

#include <gmock/gmock.h>

#include <set>

using sim::traffic_error;
using sim::traffic_plan;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int patience_ms = 30000;

bytes frame(const traffic_plan& plan, uint64_t n) { return sim::traffic_frame(plan, n).frame; }

// ---- frames

TEST(SimTraffic, FramesOfEveryType) {
    traffic_plan plan{.channels = {1, 3, 5}, .types = {0x00, 0x88}, .shortest = 2, .longest = 2};
    EXPECT_EQ(frame(plan, 0), (bytes{0xAA, 0x07, 0x03, 0x01, 0x00, 0x00, 0, 0, 0, 0x00, 0x01}));
    EXPECT_EQ(frame(plan, 1), (bytes{0xAB, 0x07, 0x03, 0x03, 0x00, 0x01, 0, 0, 0, 0x01, 0x02}));
    EXPECT_EQ(frame(plan, 5), (bytes{0xAC, 0x07, 0x03, 0x05, 0x88, 0x05, 0, 0, 0, 0x05, 0x06}));
    EXPECT_EQ(frame(plan, 0x12345), (bytes{0xAA, 0x07, 0x03, 0x01, 0x88, 0x45, 0x23, 0x01, 0, 0x45, 0x46}));
}

TEST(SimTraffic, CountersAndChecks) {
    traffic_plan plan{.channels = {2}, .types = {0x80}, .shortest = 5, .longest = 5};
    plan.counter = sim::traffic_count::payload;
    EXPECT_EQ(frame(plan, 0x01020304),
              (bytes{0xAA, 0x0A, 0x03, 0x02, 0x80, 0x23, 0x01, 0, 0, 0x01, 0x02, 0x03, 0x04, 0x08}));
    plan = {.channels = {5}, .types = {0x88}, .shortest = 2, .longest = 2, .check = true};
    EXPECT_EQ(frame(plan, 0xFE), (bytes{0xAC, 0x09, 0x03, 0x05, 0x88, 0xFE, 0, 0, 0, 0xFE, 0xFF, 0x42, 0xD1}));
}

TEST(SimTraffic, LengthsGoAsFarAsTheTypeAllows) {
    std::set<std::size_t> can, fd;
    const traffic_plan plan{};
    for (uint64_t n = 0; n < 5000; n++) {
        const bytes one = frame(plan, n);
        ((one[4] & 0x80) != 0 ? fd : can).insert(one.size() - 9);
        EXPECT_EQ(one.size(), one[1] + 4u);
    }
    EXPECT_EQ(*can.rbegin(), 8u);
    EXPECT_EQ(can.size(), 9u);
    EXPECT_EQ(*fd.rbegin(), 64u);
    EXPECT_EQ(fd.size(), 65u);
}

TEST(SimTraffic, StandardIdentifiersWrap) {
    const traffic_plan plan{.channels = {1}, .types = {0x00}, .longest = 0};
    EXPECT_EQ(frame(plan, 0x801), (bytes{0xAA, 0x05, 0x03, 0x01, 0x00, 0x01, 0, 0, 0}));
}

TEST(SimTraffic, EveryErrorIsOfItsKind) {
    traffic_plan plan{.channels = {1}, .types = {0x00}, .shortest = 4, .longest = 4};
    plan.error_every = 1;
    const auto spoiled = [&plan](traffic_error error) {
        plan.errors = {error};
        const sim::traffic_note note = sim::traffic_frame(plan, 7);
        EXPECT_EQ(note.error, error);
        return note.frame;
    };
    const bytes good = {0xAA, 0x09, 0x03, 0x01, 0x00, 0x07, 0, 0, 0, 0x07, 0x08, 0x09, 0x0A};
    EXPECT_EQ(spoiled(traffic_error::none), good);
    EXPECT_EQ(spoiled(traffic_error::noise), (bytes{0x00, 0x11, 0x22, 0x33, 0x44} + good));
    EXPECT_EQ(spoiled(traffic_error::no_start), (bytes{0x55} + bytes(good.begin() + 1, good.end())));
    EXPECT_EQ(spoiled(traffic_error::cut), bytes(good.begin(), good.end() - 3));
    EXPECT_EQ(spoiled(traffic_error::short_length)[1], 0x04);
    EXPECT_EQ(spoiled(traffic_error::wrong_command)[2], 0x07);
    EXPECT_EQ(spoiled(traffic_error::bad_check), good) << "there is no check";
    EXPECT_EQ(spoiled(traffic_error::too_much_data).size(), 9u + 9u);
    plan.check = true;
    plan.types = {0x80};
    EXPECT_EQ(spoiled(traffic_error::too_much_data).size(), 9u + 65u + 2u);
    bytes bad = spoiled(traffic_error::bad_check);
    bad.back() = static_cast<uint8_t>(~bad.back());
    EXPECT_EQ(bad, spoiled(traffic_error::none));
}

TEST(SimTraffic, ErrorsComeInTurn) {
    traffic_plan plan{};
    plan.errors = {traffic_error::noise, traffic_error::cut};
    plan.error_every = 3;
    std::vector<traffic_error> all;
    for (uint64_t n = 0; n < 9; n++) all.push_back(sim::traffic_frame(plan, n).error);
    constexpr auto none = traffic_error::none;
    EXPECT_THAT(all, ElementsAre(none, none, traffic_error::noise, none, none, traffic_error::cut, none, none,
                                 traffic_error::noise));
}

TEST(SimTraffic, WhatAModuleTakesForAGoodFrame) {
    const bytes good = {0xAC, 0x07, 0x04, 0x04, 0x00, 0xFF, 0x07, 0x00, 0x00, 0x5A, 0x01};
    EXPECT_TRUE(sim::traffic_frame_is_good(good, false));
    EXPECT_FALSE(sim::traffic_frame_is_good(good, true));
    EXPECT_TRUE(sim::traffic_frame_is_good({0xAA, 0x07, 0x04, 0x01, 0x00, 0x01, 0, 0, 0, 0xD1, 0x8D}, true));
    for (std::size_t at : {0u, 1u, 2u, 3u, 4u}) {
        bytes wrong = good;
        wrong[at] = 0x06;
        EXPECT_FALSE(sim::traffic_frame_is_good(wrong, false)) << at;
    }
    EXPECT_FALSE(sim::traffic_frame_is_good({}, false));
    EXPECT_FALSE(sim::traffic_frame_is_good(bytes{0xAA, 0x0E, 0x04, 0x01, 0x00, 1, 0, 0, 0} + bytes(9, 0), false));
    EXPECT_TRUE(sim::traffic_frame_is_good(bytes{0xAA, 0x0E, 0x04, 0x01, 0x80, 1, 0, 0, 0} + bytes(9, 0), false));
}

// ---- plans

TEST(SimTraffic, APlanIsReadFromAText) {
    traffic_plan plan;
    ASSERT_TRUE(sim::traffic_parse("rate=8000:burst=8:count=100:first=5:channels=1,3:types=0,0x88:lengths=2-9:"
                                   "counter=payload:check=on:errors=noise,cut:error_every=10",
                                   &plan));
    EXPECT_EQ(plan.rate, 8000u);
    EXPECT_EQ(plan.burst, 8u);
    EXPECT_EQ(plan.count, 100u);
    EXPECT_EQ(plan.first, 5u);
    EXPECT_THAT(plan.channels, ElementsAre(1, 3));
    EXPECT_THAT(plan.types, ElementsAre(0, 0x88));
    EXPECT_EQ(plan.shortest, 2u);
    EXPECT_EQ(plan.longest, 9u);
    EXPECT_EQ(plan.counter, sim::traffic_count::payload);
    EXPECT_TRUE(plan.check);
    EXPECT_THAT(plan.errors, ElementsAre(traffic_error::noise, traffic_error::cut));
    EXPECT_EQ(plan.error_every, 10u);
    ASSERT_TRUE(sim::traffic_parse("lengths=8", &plan));
    EXPECT_EQ(plan.shortest, 8u);
    EXPECT_EQ(plan.longest, 8u);
    EXPECT_EQ(plan.rate, 0u) << "what is not named keeps its default";
}

TEST(SimTraffic, APlanThatCannotBeReadIsRefused) {
    for (const char* text : {"",
                             "rate",
                             "rate=",
                             "rate=x",
                             "rate=-1",
                             "rate=1000001",
                             "burst=0",
                             "channels=0",
                             "channels=6",
                             "channels=",
                             "types=1",
                             "types=",
                             "lengths=9-2",
                             "lengths=65",
                             "lengths=1-2-3",
                             "counter=both",
                             "check=1",
                             "errors=late",
                             "errors=",
                             "error_every=",
                             "Rate=1",
                             "rate=1:",
                             "rat=1",
                             "count=99999999999999999999"}) {
        traffic_plan plan{.rate = 77};
        std::string why;
        EXPECT_FALSE(sim::traffic_parse(text, &plan, &why)) << text;
        EXPECT_EQ(plan.rate, 77u);
        EXPECT_THAT(why, testing::StartsWith("cannot read "));
    }
}

// ---- in a module

struct module_and_port {
    std::unique_ptr<sim::module_t> module = sim::module_start(sim::model::vkt610b, "COM7");
    port_end port{"COM7"};
};

bytes all_of(const std::vector<sim::traffic_note>& notes) {
    bytes all;
    for (const sim::traffic_note& note : notes) all = all + note.frame;
    return all;
}

TEST(SimTraffic, IsSentInTransferModeAlone) {
    module_and_port with;
    with.module->set_traffic({.rate = 1000, .burst = 10, .count = 30, .longest = 8});
    ASSERT_TRUE(with.port.write(config_text));
    EXPECT_EQ(with.port.ask(read_all, 146), read_all_ok);
    EXPECT_EQ(with.module->count().traffic_sent, 0u);
    ASSERT_TRUE(with.port.write(transfer_text));
    ASSERT_TRUE(with.module->wait_traffic(30, 0, patience_ms));
    const auto notes = with.module->traffic_sent();
    ASSERT_EQ(notes.size(), 30u);
    const bytes all = all_of(notes);
    EXPECT_EQ(with.port.read(all.size(), patience_ms), all);
    EXPECT_EQ(notes[0].time_us, notes[9].time_us) << "a burst leaves at once";
    EXPECT_GE(notes[10].time_us - notes[0].time_us, 9000);
    EXPECT_GE(notes[29].time_us - notes[0].time_us, 19000);
    EXPECT_EQ(with.module->count().traffic_overrun, 0u);
}

TEST(SimTraffic, EndsWithConfig) {
    module_and_port with;
    with.module->set_traffic({.rate = 1000, .longest = 0});
    ASSERT_TRUE(with.port.write(transfer_text));
    ASSERT_TRUE(with.module->wait_traffic(5, 0, patience_ms));
    ASSERT_TRUE(with.port.write(config_text));
    // The next request has its reply behind whatever was sent before.
    ASSERT_TRUE(with.port.write(read_all));
    ASSERT_TRUE(with.module->wait_requests(1, patience_ms));
    const uint32_t sent = with.module->count().traffic_sent;
    const bytes all = all_of(with.module->traffic_sent()) + read_all_ok;
    EXPECT_EQ(with.port.read(all.size(), patience_ms), all);
    EXPECT_EQ(with.module->count().traffic_sent, sent);
}

TEST(SimTraffic, APlanCanChangeWhileItIsSent) {
    module_and_port with;
    ASSERT_TRUE(with.port.write(transfer_text));
    with.module->set_traffic({.rate = 1000000, .burst = 3, .count = 3, .longest = 0});
    ASSERT_TRUE(with.module->wait_traffic(3, 0, patience_ms));
    with.module->set_traffic({.rate = 1000000, .burst = 2, .count = 2, .first = 3, .longest = 0});
    ASSERT_TRUE(with.module->wait_traffic(5, 0, patience_ms));
    const auto notes = with.module->traffic_sent();
    for (uint8_t n = 0; n < 5; n++) EXPECT_EQ(notes[n].frame[5], n);
}

TEST(SimTraffic, ReceivedFramesAreKeptAndNotAnswered) {
    module_and_port with;
    const bytes one = {0xAB, 0x06, 0x04, 0x03, 0x00, 0xFF, 0x07, 0x00, 0x00, 0x5A};
    ASSERT_TRUE(with.port.write(one));
    ASSERT_TRUE(with.port.write(transfer_text + one + bytes{0x11, 0x22} + one));
    bytes foreign = one;
    foreign[4] = 0x01;
    ASSERT_TRUE(with.port.write(foreign + one + config_text));
    EXPECT_EQ(with.port.ask(read_all, 146), read_all_ok);
    EXPECT_EQ(with.module->count().traffic_received, 3u) << "before \"transfer\" it is none";
    EXPECT_EQ(with.module->count().unknown, 1u);
    const auto notes = with.module->traffic_received();
    ASSERT_EQ(notes.size(), 3u);
    for (const auto& note : notes) EXPECT_EQ(note.frame, one);
    EXPECT_GT(notes[0].time_us, 0);
    EXPECT_EQ(with.module->count().requests(), 1u);
}

TEST(SimTraffic, ReceivedFramesHaveACheckWhereThePlanHasOne) {
    module_and_port with;
    with.module->set_traffic({.check = true});
    const bytes good = {0xAA, 0x07, 0x04, 0x01, 0x00, 0x01, 0, 0, 0, 0xD1, 0x8D};
    const bytes bad = {0xAA, 0x07, 0x04, 0x01, 0x00, 0x01, 0, 0, 0, 0xD1, 0x8C};
    ASSERT_TRUE(with.port.write(transfer_text + bad + good));
    ASSERT_TRUE(with.module->wait_traffic(0, 1, patience_ms));
    EXPECT_EQ(with.module->count().unknown, 1u);
}

#ifndef _WIN32
// Under Wine what is not taken waits in the helper program.
TEST(SimTraffic, WhatALineDoesNotTakeIsLeftOutAndCounted) {
    module_and_port with;
    with.module->set_traffic({.rate = 100000, .burst = 100, .types = {0x80}, .shortest = 64});
    ASSERT_TRUE(with.port.write(transfer_text));
    for (const stopwatch watch; with.module->count().traffic_overrun == 0;) ASSERT_LT(watch.ms(), patience_ms);
    ASSERT_TRUE(with.port.write(config_text));
    bytes all, part;
    while (!(part = with.port.read(4096, 500)).empty()) all = all + part;
    const bytes noted = all_of(with.module->traffic_sent());
    ASSERT_GE(all.size(), noted.size());
    EXPECT_TRUE(std::equal(noted.begin(), noted.end(), all.begin())) << "what is noted came whole and in order";
}
#endif

TEST(SimTraffic, OtherModelsHaveNone) {
    const auto module = sim::module_start(sim::model::vkt531a, "COM7");
    ASSERT_NE(module, nullptr);
    port_end port("COM7");
    module->set_traffic({.rate = 1000});
    EXPECT_EQ(port.ask(transfer_text + handshake, 6), handshake_ok);
    EXPECT_EQ(module->count().traffic_sent, 0u);
    EXPECT_THAT(module->traffic_sent(), IsEmpty());
}

} // namespace
