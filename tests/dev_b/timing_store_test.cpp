// What the calculator accepts, and what each of its stores writes.
#include "dev_b/b_props.h"
#include "dev_b/bit_timing.h"
#include "tests/support/console_capture.h"

#include <gtest/gtest.h>

namespace {

constexpr auto nominal = timing_at(timing_phase::nominal);
constexpr auto data = timing_at(timing_phase::data);

/// Divider 4, nominal 500 kbit/s and data 2 Mbit/s, both with the sample point at 80 %.
timing_form good_form() {
    timing_form form;
    form.divider_code = 2;
    form.values = {timing_values{5, 16, 4}, timing_values{1, 20, 5}};
    form.rate = {500, 2000};
    form.sample_point = {80.0, 80.0};
    return form;
}

constexpr const char* phase_keys[] = {"canfd_bps_do_brp_z_vkt610b",   "canfd_bps_do_tseg1_z_vkt610b",
                                      "canfd_bps_do_tseg2_z_vkt610b", "canfd_bps_do_brp_c_vkt610b",
                                      "canfd_bps_do_tseg1_c_vkt610b", "canfd_bps_do_tseg2_c_vkt610b"};

std::vector<uint32_t> stored(const tk_object_ptr& props) {
    std::vector<uint32_t> out = {b_value(props, "canfd_bps_do_div_vkt610b")};
    for (const char* key : phase_keys) out.push_back(b_value(props, key));
    return out;
}

/// The seven keys, all with the same word.
tk_object_ptr filled_props(uint32_t word) {
    tk_object_ptr props = b_props({{"canfd_bps_do_div_vkt610b", word}});
    for (const char* key : phase_keys) tk_object_set_prop_uint32(props.get(), key, word);
    return props;
}

TEST(TimingValid, AGoodFormPassesInEveryBusMode) {
    for (const uint8_t mode : {uint8_t{0}, uint8_t{1}, uint8_t{2}}) EXPECT_TRUE(timing_valid(good_form(), mode));
}

struct spoiled {
    const char* name;
    void (*spoil)(timing_form&);
    bool nominal_only; ///< the nominal phase stays good
};
constexpr spoiled spoiled_forms[] = {
    {"NoDivider", [](timing_form& f) { f.divider_code = -1; }, false},
    {"NominalBrpZero", [](timing_form& f) { f.values[nominal].brp = 0; }, false},
    {"NominalTseg1Zero", [](timing_form& f) { f.values[nominal].tseg1 = 0; }, false},
    {"NominalTseg2Zero", [](timing_form& f) { f.values[nominal].tseg2 = 0; }, false},
    {"NominalRateOther", [](timing_form& f) { f.rate[nominal] = 400; }, false},
    {"NominalRateNone", [](timing_form& f) { f.rate[nominal] = -1; }, false},
    {"NominalSamplePointOff", [](timing_form& f) { f.sample_point[nominal] = 80.01; }, false},
    {"NominalSamplePointCut", [](timing_form& f) { f.sample_point[nominal] = 79.999; }, false},
    {"NominalSamplePointEmpty", [](timing_form& f) { f.sample_point[nominal] = 0; }, false},
    {"NominalNegative",
     [](timing_form& f) {
         f.values[nominal] = {5, static_cast<uint32_t>(-16), 36};
     },
     false},
    {"DataBrpZero", [](timing_form& f) { f.values[data].brp = 0; }, true},
    {"DataTseg1Zero", [](timing_form& f) { f.values[data].tseg1 = 0; }, true},
    {"DataTseg2Zero", [](timing_form& f) { f.values[data].tseg2 = 0; }, true},
    {"DataRateOther", [](timing_form& f) { f.rate[data] = 4000; }, true},
    {"DataRateNone", [](timing_form& f) { f.rate[data] = -1; }, true},
    {"DataSamplePointOff", [](timing_form& f) { f.sample_point[data] = 79.99; }, true},
    {"DataHuge",
     [](timing_form& f) {
         f.values[data] = {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
     },
     true},
};

class TimingSpoiled : public testing::TestWithParam<spoiled> {};
TEST_P(TimingSpoiled, IsRefusedUnlessClassicCanDoesNotLookAtIt) {
    timing_form form = good_form();
    GetParam().spoil(form);
    EXPECT_FALSE(timing_valid(form, 1));
    EXPECT_FALSE(timing_valid(form, 2));
    EXPECT_EQ(timing_valid(form, 0), GetParam().nominal_only);
}
INSTANTIATE_TEST_SUITE_P(Fields, TimingSpoiled, testing::ValuesIn(spoiled_forms),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(TimingValid, SamplePointMayBeTypedLonger) {
    timing_form form = good_form();
    form.sample_point[nominal] = 80.009;
    EXPECT_TRUE(timing_valid(form, 1));
}

TEST(TimingValid, SamplePointThatTwoDecimalsCannotSayIsRefused) {
    EXPECT_FALSE(timing_phase_valid(5, {1, 66, 33}, 404, 66.66)); // it is 66.6667
    EXPECT_FALSE(timing_phase_valid(5, {1, 66, 33}, 404, 66.67));
    EXPECT_TRUE(timing_phase_valid(5, {1, 66, 34}, 400, 66.0));
}

TEST(TimingValid, TruncatedRateIsEnough) {
    EXPECT_TRUE(timing_phase_valid(8, {3, 12, 4}, 520, 75)); // 520.83: whole kbit/s are compared
    EXPECT_FALSE(timing_phase_valid(8, {3, 12, 4}, 521, 75));
}

TEST(TimingStore, ChannelOneKeepsChannelTwosHalves) {
    const tk_object_ptr props = filled_props(0xABCD1234);
    EXPECT_EQ(timing_store(props.get(), 1, good_form(), 1), RET_OK);
    EXPECT_EQ(stored(props), (std::vector<uint32_t>{0xABCD0002, 0xABCD0005, 0xABCD0010, 0xABCD0004, 0xABCD0001,
                                                    0xABCD0014, 0xABCD0005}));
}
TEST(TimingStore, ChannelTwoKeepsChannelOnesHalves) {
    const tk_object_ptr props = filled_props(0xABCD1234);
    EXPECT_EQ(timing_store(props.get(), 2, good_form(), 2), RET_OK);
    EXPECT_EQ(stored(props), (std::vector<uint32_t>{0x00021234, 0x00051234, 0x00101234, 0x00041234, 0x00011234,
                                                    0x00141234, 0x00051234}));
}
TEST(TimingStore, ClassicCanLeavesTheDataKeysAlone) {
    timing_form form = good_form();
    form.values[data] = {};
    ASSERT_TRUE(timing_valid(form, 0));
    const tk_object_ptr props = filled_props(0xABCD1234);
    EXPECT_EQ(timing_store(props.get(), 1, form, 0), RET_OK);
    EXPECT_EQ(stored(props), (std::vector<uint32_t>{0xABCD0002, 0xABCD0005, 0xABCD0010, 0xABCD0004, 0xABCD1234,
                                                    0xABCD1234, 0xABCD1234}));
}
TEST(TimingStore, AKeyThatIsRefusedIsNamedAndTheOthersAreWritten) {
    const tk_object_ptr props = filled_props(0);
    tk_object_refuse(props.get(), "canfd_bps_do_tseg1_z_vkt610b");
    console_capture log(LOG_LEVEL_DEBUG);
    EXPECT_EQ(timing_store(props.get(), 1, good_form(), 1), RET_FAIL);
    EXPECT_EQ(log.text(), "set canfd_bps_do_tseg1_z_vkt610b failed!\n");
    EXPECT_EQ(stored(props), (std::vector<uint32_t>{2, 5, 0, 4, 1, 20, 5}));
}

TEST(TimingForced, DividerIsReplacedAndOtherHalvesAreCleared) {
    const tk_object_ptr props = filled_props(0x00040004);
    EXPECT_EQ(timing_store_forced(props.get(), good_form()), RET_OK);
    EXPECT_EQ(stored(props), (std::vector<uint32_t>{2, 5, 16, 4, 1, 20, 5}));
}
TEST(TimingForced, KeepsOnlyWhatOldWithLowByteSetAndNewShare) {
    timing_form form = good_form();
    form.values[nominal] = {0x1FF, 0x3300, 0x10180}; // the last is cut to 16 bits
    form.values[data] = {0xFFFF, 0, 0x0F0F};
    const tk_object_ptr props = b_props({{"canfd_bps_do_div_vkt610b", 0x00060006},
                                         {phase_keys[0], 0x00010000},
                                         {phase_keys[1], 0xFFFF1100},
                                         {phase_keys[2], 0x00010100},
                                         {phase_keys[3], 0x12345678},
                                         {phase_keys[4], 0xFFFFFFFF},
                                         {phase_keys[5], 0x00000500}});
    EXPECT_EQ(timing_store_forced(props.get(), form), RET_OK);
    EXPECT_EQ(stored(props), (std::vector<uint32_t>{2, 0xFF, 0x1100, 0x0180, 0x56FF, 0, 0x050F}));
}
TEST(TimingForced, WithoutAChosenDividerItsRegisterStays) {
    timing_form form = good_form();
    form.divider_code = -1;
    const tk_object_ptr props = filled_props(0x00030003);
    EXPECT_EQ(timing_store_forced(props.get(), form), RET_OK);
    EXPECT_EQ(b_value(props, "canfd_bps_do_div_vkt610b"), 0x00030003u);
    EXPECT_EQ(b_value(props, phase_keys[0]), 5u);
}

TEST(TimingRateStore, WritesTheIndexOfItsChannelAndPhase) {
    const tk_object_ptr props = b_default_props();
    EXPECT_EQ(timing_store_rate(props.get(), 1, timing_phase::nominal, 125), RET_OK);
    EXPECT_EQ(timing_store_rate(props.get(), 2, timing_phase::data, 2000), RET_OK);
    EXPECT_EQ(b_value(props, "canfd1_speed_zc_vkt610b"), 4u);
    EXPECT_EQ(b_value(props, "canfd2_speed_zc_vkt610b"), 10u);
    EXPECT_EQ(b_value(props, "canfd1_speed_data_vkt610b"), 6u);
    EXPECT_EQ(b_value(props, "canfd2_speed_data_vkt610b"), 4u);
}
TEST(TimingRateStore, ARateThatIsNotOfferedStoresNothing) {
    const tk_object_ptr props = b_default_props();
    EXPECT_EQ(timing_store_rate(props.get(), 1, timing_phase::nominal, 666), RET_FAIL);
    EXPECT_EQ(timing_store_rate(props.get(), 1, timing_phase::nominal, -1), RET_FAIL);
    EXPECT_EQ(b_value(props, "canfd1_speed_zc_vkt610b"), 10u);
}
TEST(TimingRateStore, ARefusedKeyIsNamed) {
    const tk_object_ptr props = b_default_props();
    tk_object_refuse(props.get(), "canfd2_speed_data_vkt610b");
    console_capture log(LOG_LEVEL_DEBUG);
    EXPECT_EQ(timing_store_rate(props.get(), 2, timing_phase::data, 400), RET_FAIL);
    EXPECT_EQ(log.text(), "set canfd2_speed_data_vkt610b failed!\n");
}

} // namespace
