// Where every property stands in the registers, from a table typed in on its own.
#include "dev_b/b_props.h"
#include "dev_b/vkt610b_codec.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

struct place {
    const char* key;
    unsigned word, bit, width;
};

constexpr place places[] = {
    {"change_mode_vkt610b", 0, 0, 8},
    {"change_can_channel_vkt610b", 1, 0, 1},
    {"change_protcol_vkt610b", 1, 1, 2},
    {"uart1_bps_vkt610b", 2, 0, 8},
    {"uart2_bps_vkt610b", 3, 0, 8},
    {"spi_picture_vkt610b", 4, 0, 8},
    {"spi_time_vkt610b", 4, 8, 8},
    {"canfd1_speed_zc_vkt610b", 5, 0, 8},
    {"canfd1_speed_data_vkt610b", 5, 8, 8},
    {"canfd1_mode_vkt610b", 5, 16, 2},
    {"canfd1_leach_mode_vkt610b", 5, 18, 2},
    {"canfd1_brs_vkt610b", 5, 20, 1},
    {"canfd1_brs_do_button_vkt610b", 5, 21, 1},
    {"canfd2_speed_zc_vkt610b", 6, 0, 8},
    {"canfd2_speed_data_vkt610b", 6, 8, 8},
    {"canfd2_mode_vkt610b", 6, 16, 2},
    {"canfd2_leach_mode_vkt610b", 6, 18, 2},
    {"canfd2_brs_vkt610b", 6, 20, 1},
    {"canfd2_brs_do_button_vkt610b", 6, 21, 1},
    {"canfd1_scherm_vkt610b", 7, 0, 32},
    {"canfd1_check0_vkt610b", 8, 0, 32},
    {"canfd1_check1_vkt610b", 9, 0, 32},
    {"canfd1_check2_vkt610b", 10, 0, 32},
    {"canfd1_check3_vkt610b", 11, 0, 32},
    {"canfd1_scherm_e_vkt610b", 12, 0, 32},
    {"canfd1_check0_e_vkt610b", 13, 0, 32},
    {"canfd1_check1_e_vkt610b", 14, 0, 32},
    {"canfd1_check2_e_vkt610b", 15, 0, 32},
    {"canfd1_check3_e_vkt610b", 16, 0, 32},
    {"canfd2_scherm_vkt610b", 17, 0, 32},
    {"canfd2_check0_vkt610b", 18, 0, 32},
    {"canfd2_check1_vkt610b", 19, 0, 32},
    {"canfd2_check2_vkt610b", 20, 0, 32},
    {"canfd2_check3_vkt610b", 21, 0, 32},
    {"canfd2_scherm_e_vkt610b", 22, 0, 32},
    {"canfd2_check0_e_vkt610b", 23, 0, 32},
    {"canfd2_check1_e_vkt610b", 24, 0, 32},
    {"canfd2_check2_e_vkt610b", 25, 0, 32},
    {"canfd2_check3_e_vkt610b", 26, 0, 32},
    {"canfd_bps_do_div_vkt610b", 27, 0, 32},
    {"canfd_bps_do_brp_z_vkt610b", 28, 0, 32},
    {"canfd_bps_do_tseg1_z_vkt610b", 29, 0, 32},
    {"canfd_bps_do_tseg2_z_vkt610b", 30, 0, 32},
    {"canfd_bps_do_brp_c_vkt610b", 31, 0, 32},
    {"canfd_bps_do_tseg1_c_vkt610b", 32, 0, 32},
    {"canfd_bps_do_tseg2_c_vkt610b", 33, 0, 32},
    {"version", 34, 0, 32},
};

tk_object_ptr zero_props() {
    tk_object_ptr props(object_default_create());
    for (const auto& p : places) tk_object_set_prop_uint32(props.get(), p.key, 0);
    return props;
}

vkt610b_regs packed(const tk_object_ptr& props) { return vkt610b_props_to_regs(props.get()); }

bool named(unsigned word, unsigned bit) {
    for (const auto& p : places)
        if (p.word == word && bit >= p.bit && bit < p.bit + p.width) return true;
    return false;
}

class RegisterMapRow : public testing::TestWithParam<place> {};

TEST_P(RegisterMapRow, EachBitOfTheKeyIsOneBitOfTheImageAndComesBack) {
    const place p = GetParam();
    for (unsigned bit = 0; bit < p.width; ++bit) {
        const tk_object_ptr props = zero_props();
        tk_object_set_prop_uint32(props.get(), p.key, 1u << bit);
        vkt610b_regs expected{};
        expected[p.word] = 1u << (p.bit + bit);
        const vkt610b_regs regs = packed(props);
        ASSERT_EQ(regs, expected) << "bit " << bit;

        const tk_object_ptr back(object_default_create());
        vkt610b_regs_to_props(regs, back.get());
        for (const auto& q : places)
            ASSERT_EQ(b_value(back, q.key), q.key == p.key ? 1u << bit : 0u) << q.key << " bit " << bit;
    }
}
TEST_P(RegisterMapRow, TheWidestValueComesBack) {
    const place p = GetParam();
    const uint32_t widest = p.width == 32 ? 0xFFFFFFFFu : (1u << p.width) - 1;
    const tk_object_ptr props = zero_props();
    tk_object_set_prop_uint32(props.get(), p.key, widest);
    const tk_object_ptr back(object_default_create());
    vkt610b_regs_to_props(packed(props), back.get());
    EXPECT_EQ(b_value(back, p.key), widest);
}
TEST_P(RegisterMapRow, EveryValueOfItsWidthComesBackAmongFullNeighbours) {
    const place p = GetParam();
    const uint32_t count = p.width == 32 ? 1 : 1u << p.width;
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t value = p.width == 32 ? 0x9ABCDEF1 : i;
        const tk_object_ptr props(object_default_create());
        for (const auto& q : places)
            tk_object_set_prop_uint32(props.get(), q.key, q.width == 32 ? 0xFFFFFFFF : (1u << q.width) - 1);
        tk_object_set_prop_uint32(props.get(), p.key, value);
        const tk_object_ptr back(object_default_create());
        vkt610b_regs_to_props(packed(props), back.get());
        for (const auto& q : places)
            ASSERT_EQ(b_value(back, q.key), b_value(props, q.key)) << q.key << " beside " << value;
    }
}
INSTANTIATE_TEST_SUITE_P(AllKeys, RegisterMapRow, testing::ValuesIn(places),
                         [](const auto& row) { return std::string(row.param.key); });

TEST(RegisterMap, HasTheseKeysAndNoOthers) {
    std::vector<std::string> expected, found;
    for (const auto& p : places) expected.emplace_back(p.key);
    for (const auto& f : vkt610b_fields) found.emplace_back(f.key);
    EXPECT_THAT(found, testing::UnorderedElementsAreArray(expected));
}

TEST(RegisterMap, EveryKeyHasAStoreDefaultOfItsType) {
    for (const auto& p : places) {
        const field* row = field_find(vkt610b_fields, p.key);
        ASSERT_NE(row, nullptr) << p.key;
        EXPECT_EQ(row->form, p.width == 32 ? value_form::word : value_form::number) << p.key;
    }
}

TEST(RegisterMap, BitsThatNoKeyNamesAreSentAsZero) {
    for (unsigned word = 0; word < 35; ++word)
        for (unsigned bit = 0; bit < 32; ++bit) {
            vkt610b_regs in{};
            in[word] = 1u << bit;
            const tk_object_ptr props(object_default_create());
            vkt610b_regs_to_props(in, props.get());
            const vkt610b_regs expected = named(word, bit) ? in : vkt610b_regs{};
            ASSERT_EQ(packed(props), expected) << "register " << word << " bit " << bit;
        }
}

TEST(RegisterMap, EightBitKeysTakeTheLowByteOfTheirRegister) {
    vkt610b_regs regs{};
    regs[0] = 0x12345678;
    regs[2] = 0xFFFFFF05;
    const tk_object_ptr props(object_default_create());
    vkt610b_regs_to_props(regs, props.get());
    EXPECT_EQ(b_value(props, "change_mode_vkt610b"), 0x78u);
    EXPECT_EQ(b_value(props, "uart1_bps_vkt610b"), 0x05u);
}

TEST(RegisterMap, DefaultsOfTheStorePackAsTheModuleDocuments) {
    const vkt610b_regs expected = {
        0x00000001, 0x00000003, 0x0000000A, 0x0000000A, 0x00000909, 0x001A060A, 0x001A060A, 0, 0,
        0,          0,          0,          0,          0,          0,          0,          0, 0,
        0,          0,          0,          0,          0,          0,          0,          0, 0,
        0x00040004, 0x00010001, 0x00200020, 0x00080008, 0x00010001, 0x00060006, 0x00020002, 0};
    EXPECT_EQ(packed(b_default_props()), expected);
}

TEST(RegisterMap, AnEmptyStorePacksTheFallbacks) {
    const vkt610b_regs expected = {
        0x00000001, 0x00000006, 0x0000000F, 0x0000000F, 0x00000407, 0x0009060A, 0x0009060A, 0xFFFFFFFF, 0,
        0,          0,          0,          0xFFFFFFFF, 0,          0,          0,          0,          0xFFFFFFFF,
        0,          0,          0,          0,          0xFFFFFFFF, 0,          0,          0,          0,
        0,          0,          0,          0,          0,          0,          0,          0};
    EXPECT_EQ(packed(tk_object_ptr(object_default_create())), expected);
    EXPECT_EQ(packed(nullptr), expected);
}

TEST(RegisterMap, ValuesAreMaskedToEightBitsBeforeTheyAreShifted) {
    const tk_object_ptr props = zero_props();
    tk_object_set_prop_uint32(props.get(), "spi_picture_vkt610b", 0x1234);
    tk_object_set_prop_uint32(props.get(), "canfd1_speed_zc_vkt610b", 0x56789A);
    const auto regs = packed(props);
    EXPECT_EQ(regs[4], 0x00000034u);
    EXPECT_EQ(regs[5], 0x0000009Au);
}

TEST(RegisterMap, AModeOfFourOrMoreSpillsIntoTheFilterMode) {
    const tk_object_ptr props = zero_props();
    tk_object_set_prop_uint8(props.get(), "canfd2_mode_vkt610b", 5);
    EXPECT_EQ(packed(props)[6], 0x00050000u);
    tk_object_set_prop_uint8(props.get(), "canfd2_leach_mode_vkt610b", 1);
    EXPECT_EQ(packed(props)[6], 0x00050000u); // OR: the same bit again
}

TEST(RegisterMap, ChannelAndTwiceTheProtocolAreAdded) {
    const tk_object_ptr props = zero_props();
    tk_object_set_prop_uint8(props.get(), "change_can_channel_vkt610b", 3);
    tk_object_set_prop_uint8(props.get(), "change_protcol_vkt610b", 3);
    EXPECT_EQ(packed(props)[1], 9u);
}

TEST(RegisterMap, ReplyBytesAreLeastSignificantFirst) {
    std::array<uint8_t, 140> bytes{};
    bytes[0] = 0x01;
    bytes[20] = 0x0A; // register 5
    bytes[21] = 0x06;
    bytes[22] = 0x1A;
    bytes[28] = 0x78; // register 7
    bytes[29] = 0x56;
    bytes[30] = 0x34;
    bytes[31] = 0x92;
    bytes[139] = 0x0A; // register 34, month
    const vkt610b_regs regs = vkt610b_regs_from_bytes(bytes);
    vkt610b_regs expected{};
    expected[0] = 1;
    expected[5] = 0x001A060A;
    expected[7] = 0x92345678;
    expected[34] = 0x0A000000;
    EXPECT_EQ(regs, expected);
    std::array<uint8_t, 140> back{};
    back.fill(0xA5); // nothing of what was there may stay
    vkt610b_regs_to_bytes(regs, back);
    EXPECT_EQ(back, bytes);
}

} // namespace
