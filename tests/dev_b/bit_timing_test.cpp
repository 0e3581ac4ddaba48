// Arithmetic of the bit timing and what the calculator shows at opening.
#include "dev_b/b_props.h"
#include "dev_b/bit_timing.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr auto nominal = timing_at(timing_phase::nominal);
constexpr auto data = timing_at(timing_phase::data);

/// A store with one timing of channel 1 (nominal 500 kbit/s at 80 %, data 2 Mbit/s at 80 %), channel 2's halves 0.
tk_object_ptr channel_1_props() {
    return b_props({{"canfd_bps_do_div_vkt610b", 2},
                    {"canfd_bps_do_brp_z_vkt610b", 5},
                    {"canfd_bps_do_tseg1_z_vkt610b", 16},
                    {"canfd_bps_do_tseg2_z_vkt610b", 4},
                    {"canfd_bps_do_brp_c_vkt610b", 1},
                    {"canfd_bps_do_tseg1_c_vkt610b", 20},
                    {"canfd_bps_do_tseg2_c_vkt610b", 5}});
}

TEST(TimingRate, Divider4Brp1Tseg20And5GivesTwoMegabit) {
    EXPECT_EQ(timing_rate_kbit(4, {1, 20, 5}), 2000u);
    EXPECT_EQ(timing_percent_text(timing_fraction({1, 20, 5}) * 100), "80.00");
}
TEST(TimingRate, IsTruncated) {
    EXPECT_EQ(timing_rate_kbit(6, {1, 32, 8}), 833u);
    EXPECT_EQ(timing_rate_kbit(3, {1, 1, 1}), 33333u);
    EXPECT_EQ(timing_rate_kbit(1, {1, 1, 0}), 200000u) << "the clock's own";
}
TEST(TimingRate, IsZeroWhenAnyPartOfTheDivisorIs) {
    EXPECT_EQ(timing_rate_kbit(0, {1, 1, 1}), 0u);
    EXPECT_EQ(timing_rate_kbit(2, {0, 1, 1}), 0u);
    EXPECT_EQ(timing_rate_kbit(2, {1, 0, 0}), 0u);
    EXPECT_EQ(timing_fraction({1, 0, 0}), 0.0);
}
TEST(TimingRate, NeverOverflows) {
    constexpr uint32_t most = std::numeric_limits<uint32_t>::max();
    EXPECT_EQ(timing_rate_kbit(0xFFFFFFFFull + 2, {most, most, most}), 0u);
    EXPECT_EQ(timing_rate_kbit(2, {0x10000, 0x8000, 0x8000}), 0u); // 2^32 cycles: 0 in 32 bits
    EXPECT_EQ(timing_rate_kbit(1, {1, most, 1}), 0u);              // the segments' sum is 0 in 32 bits
    EXPECT_NEAR(timing_fraction({1, most, most}), 0.5, 1e-12);
}

TEST(TimingNumber, ReadsTheBeginningOfTheText) {
    EXPECT_DOUBLE_EQ(timing_number("79.999"), 79.999);
    EXPECT_DOUBLE_EQ(timing_number("  +80.5%"), 80.5);
    EXPECT_DOUBLE_EQ(timing_number("-3"), -3);
    for (const char* text : {"", " ", "abc", "nan", "inf", "-inf", "1e999", "%"})
        EXPECT_EQ(timing_number(text), 0.0) << text;
}
TEST(TimingNumber, HundredthsAreTruncated) {
    EXPECT_EQ(timing_hundredths(79.999), 7999.0);
    EXPECT_EQ(timing_hundredths(80.0), 8000.0);
    EXPECT_EQ(timing_hundredths(-1.239), -123.0);
}
TEST(TimingNumber, PercentTextIsRounded) {
    EXPECT_EQ(timing_percent_text(87.5), "87.50");
    EXPECT_EQ(timing_percent_text(200.0 / 3), "66.67");
    EXPECT_EQ(timing_percent_text(5), "5.00");
}

TEST(TimingOptions, DividersAndRates) {
    const auto text_of = [](auto options) {
        std::string out;
        for (const choice_option& o : options) out += std::to_string(o.value) + "=" + o.text + " ";
        return out;
    };
    EXPECT_EQ(text_of(timing_dividers), "0=2 2=4 3=5 6=8 ");
    EXPECT_EQ(text_of(timing_rates(timing_phase::nominal)),
              "40=40K 50=50K 80=80K 100=100K 125=125K 200=200K 250=250K 400=400K 500=500K 800=800K 1000=1M ");
    EXPECT_EQ(text_of(timing_rates(timing_phase::data)),
              "400=400K 500=500K 800=800K 1000=1M 2000=2M 4000=4M 5000=5M ");
}
TEST(TimingOptions, RateIndices) {
    EXPECT_EQ(timing_rate_index(timing_phase::nominal, 40), 0);
    EXPECT_EQ(timing_rate_index(timing_phase::nominal, 1000), 10);
    EXPECT_EQ(timing_rate_index(timing_phase::data, 400), 0);
    EXPECT_EQ(timing_rate_index(timing_phase::data, 5000), 6);
    for (const int kbit : {666, 2000, 0, -1}) EXPECT_EQ(timing_rate_index(timing_phase::nominal, kbit), -1) << kbit;
    for (const int kbit : {666, 40, 0, -1}) EXPECT_EQ(timing_rate_index(timing_phase::data, kbit), -1) << kbit;
}

TEST(TimingOpen, FreshStoreOpensEmpty) {
    const tk_object_ptr props = b_default_props();
    for (const int channel : {1, 2}) {
        const timing_opening open = timing_open(props.get(), channel);
        EXPECT_EQ(open.divider_word, 0x00040004);
        EXPECT_FALSE(open.loaded[nominal]) << "channel " << channel;
        EXPECT_FALSE(open.loaded[data]) << "channel " << channel;
        EXPECT_TRUE(open.data_enabled);
    }
    EXPECT_EQ(timing_open(props.get(), 1).rate[nominal], 0);   // divider 0x00040006: the whole word
    EXPECT_EQ(timing_open(props.get(), 2).rate[nominal], 833); // divider 6
    EXPECT_EQ(timing_open(props.get(), 2).rate[data], 4166);
}

TEST(TimingOpen, ChannelOneLoadsWhileChannelTwosHalfIsZero) {
    const tk_object_ptr props = channel_1_props();
    const timing_opening open = timing_open(props.get(), 1);
    EXPECT_EQ(open.divider_word, 2);
    EXPECT_EQ(open.rate[nominal], 500);
    EXPECT_EQ(open.rate[data], 2000);
    ASSERT_TRUE(open.loaded[nominal] && open.loaded[data]);
    EXPECT_EQ(open.loaded[nominal]->divider_code, 2);
    EXPECT_EQ(open.loaded[nominal]->values.brp, 5u);
    EXPECT_EQ(open.loaded[nominal]->values.tseg1, 16u);
    EXPECT_EQ(open.loaded[nominal]->values.tseg2, 4u);
    EXPECT_EQ(open.loaded[nominal]->rate, 500);
    EXPECT_EQ(open.loaded[nominal]->sample_point, "80.00");
    EXPECT_EQ(open.loaded[data]->values.tseg1, 20u);
    EXPECT_EQ(open.loaded[data]->rate, 2000);

    tk_object_set_prop_uint32(props.get(), "canfd_bps_do_div_vkt610b", 0x00020002);
    const timing_opening other = timing_open(props.get(), 1);
    EXPECT_FALSE(other.loaded[nominal] || other.loaded[data]);
    EXPECT_EQ(other.divider_word, 0x00020002);
    EXPECT_EQ(other.rate[nominal], 0);
}

TEST(TimingOpen, ChannelTwoReadsItsHalves) {
    const tk_object_ptr props = b_props({{"canfd_bps_do_div_vkt610b", 0x00020006},
                                         {"canfd_bps_do_brp_z_vkt610b", 0x00050001},
                                         {"canfd_bps_do_tseg1_z_vkt610b", 0x00100002},
                                         {"canfd_bps_do_tseg2_z_vkt610b", 0x00040003},
                                         {"canfd_bps_do_brp_c_vkt610b", 0x00010000},
                                         {"canfd_bps_do_tseg1_c_vkt610b", 0x00140005},
                                         {"canfd_bps_do_tseg2_c_vkt610b", 0x00050006}});
    const timing_opening open = timing_open(props.get(), 2);
    EXPECT_EQ(open.divider_word, 0x00020006);
    ASSERT_TRUE(open.loaded[nominal] && open.loaded[data]);
    EXPECT_EQ(open.loaded[nominal]->divider_code, 2);
    EXPECT_EQ(open.loaded[nominal]->rate, 500);
    EXPECT_EQ(open.loaded[data]->rate, 2000);
}

TEST(TimingOpen, AnyPhaseValueOfZeroLoadsNothing) {
    for (const char* key :
         {"canfd_bps_do_brp_z_vkt610b", "canfd_bps_do_tseg1_z_vkt610b", "canfd_bps_do_tseg2_z_vkt610b",
          "canfd_bps_do_brp_c_vkt610b", "canfd_bps_do_tseg1_c_vkt610b", "canfd_bps_do_tseg2_c_vkt610b"}) {
        const tk_object_ptr props = channel_1_props();
        tk_object_set_prop_uint32(props.get(), key, 0x00010000); // channel 2's half does not count
        const timing_opening open = timing_open(props.get(), 1);
        EXPECT_FALSE(open.loaded[nominal]) << key;
        EXPECT_FALSE(open.loaded[data]) << key;
    }
}

TEST(TimingOpen, RateSelectorIsLeftAloneWhenThereAreNoCycles) {
    const tk_object_ptr props = channel_1_props();
    tk_object_set_prop_uint32(props.get(), "canfd_bps_do_brp_z_vkt610b", 0);
    const timing_opening open = timing_open(props.get(), 1);
    EXPECT_FALSE(open.rate[nominal]);
    EXPECT_EQ(open.rate[data], 2000);
}

TEST(TimingOpen, OneSegmentAloneStillGivesTheSelectorARate) {
    const tk_object_ptr props = channel_1_props();
    tk_object_set_prop_uint32(props.get(), "canfd_bps_do_tseg2_c_vkt610b", 0);
    EXPECT_EQ(timing_open(props.get(), 1).rate[data], 2500);
}

TEST(TimingOpen, APhaseWithAForeignRateStaysEmptyTheOtherLoads) {
    const tk_object_ptr props = channel_1_props();
    tk_object_set_prop_uint32(props.get(), "canfd_bps_do_brp_z_vkt610b", 7);
    const timing_opening open = timing_open(props.get(), 1);
    EXPECT_EQ(open.rate[nominal], 357);
    EXPECT_FALSE(open.loaded[nominal]);
    EXPECT_TRUE(open.loaded[data]);
}

// 200 MHz by 5 is 40 MHz.
struct stored_rate {
    int32_t kbit;
    timing_values values;
    bool nominal, data; ///< whether a phase loads with it
};
const stored_rate stored_rates[] = {
    {39, {205, 4, 1}, false, false}, {40, {200, 3, 2}, true, false}, {50, {160, 4, 1}, true, false},
    {80, {100, 4, 1}, true, false},  {100, {80, 4, 1}, true, false}, {125, {64, 4, 1}, true, false},
    {200, {40, 4, 1}, true, false},  {250, {32, 4, 1}, true, false}, {300, {19, 4, 3}, false, false},
    {400, {20, 4, 1}, true, true},   {500, {16, 4, 1}, true, true},  {666, {12, 4, 1}, true, true},
    {800, {10, 4, 1}, true, true},   {1000, {8, 4, 1}, true, true},  {2000, {4, 4, 1}, false, true},
    {3333, {4, 2, 1}, false, false}, {4000, {2, 4, 1}, false, true}, {5000, {2, 3, 1}, false, true},
    {8000, {1, 4, 1}, false, false},
};

TEST(TimingOpen, EachPhaseLoadsWithItsOwnRates) {
    for (const stored_rate& row : stored_rates) {
        const tk_object_ptr props = b_props({{"canfd_bps_do_div_vkt610b", 3},
                                             {"canfd_bps_do_brp_z_vkt610b", row.values.brp},
                                             {"canfd_bps_do_tseg1_z_vkt610b", row.values.tseg1},
                                             {"canfd_bps_do_tseg2_z_vkt610b", row.values.tseg2},
                                             {"canfd_bps_do_brp_c_vkt610b", row.values.brp},
                                             {"canfd_bps_do_tseg1_c_vkt610b", row.values.tseg1},
                                             {"canfd_bps_do_tseg2_c_vkt610b", row.values.tseg2}});
        const timing_opening open = timing_open(props.get(), 1);
        EXPECT_EQ(open.rate[nominal], row.kbit);
        EXPECT_EQ(open.loaded[nominal].has_value(), row.nominal) << row.kbit;
        EXPECT_EQ(open.loaded[data].has_value(), row.data) << row.kbit;
    }
}

TEST(TimingOpen, SixHundredSixtySixIsLoadedThoughNoSelectorOffersIt) {
    const tk_object_ptr props = channel_1_props();
    tk_object_set_prop_uint32(props.get(), "canfd_bps_do_brp_z_vkt610b", 3);
    tk_object_set_prop_uint32(props.get(), "canfd_bps_do_tseg1_z_vkt610b", 20);
    tk_object_set_prop_uint32(props.get(), "canfd_bps_do_tseg2_z_vkt610b", 5);
    const timing_opening open = timing_open(props.get(), 1);
    ASSERT_TRUE(open.loaded[nominal]);
    EXPECT_EQ(open.loaded[nominal]->rate, 666);
}

TEST(TimingOpen, WordsAtTheTopOfTheRangeDoNotWrap) {
    for (const uint32_t word : {0xFFFFFFFEu, 0xFFFFFFFFu}) {
        const tk_object_ptr props = channel_1_props();
        tk_object_set_prop_uint32(props.get(), "canfd_bps_do_div_vkt610b", word);
        const timing_opening open = timing_open(props.get(), 1);
        EXPECT_EQ(open.rate[nominal], 0);
        EXPECT_FALSE(open.loaded[nominal]);
    }
}

TEST(TimingOpen, DataPhaseIsOffInClassicCan) {
    const tk_object_ptr props = b_props({{"canfd1_mode_vkt610b", 0}, {"canfd2_mode_vkt610b", 2}});
    EXPECT_FALSE(timing_open(props.get(), 1).data_enabled);
    EXPECT_TRUE(timing_open(props.get(), 2).data_enabled);
    EXPECT_TRUE(timing_open(b_props({}).get(), 1).data_enabled); // a missing mode is CAN FD
    const tk_object_ptr other = b_props({{"canfd1_mode_vkt610b", 2}, {"canfd2_mode_vkt610b", 0}});
    EXPECT_TRUE(timing_open(other.get(), 1).data_enabled);
    EXPECT_FALSE(timing_open(other.get(), 2).data_enabled);
}

} // namespace
