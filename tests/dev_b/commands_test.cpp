// Register write commands, their listing, the read request and the version text, against bytes typed in by hand.
#include "dev_b/b_props.h"
#include "dev_b/vkt610b_codec.h"
#include "serial/crc16_x25.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

namespace {

/// The 34 commands of a store that was just made.
constexpr const char* default_aa[34] = {
    "AA0702FF00010000001D2C", "AA0702FF01030000002F1E", "AA0702FF020A00000080FA", "AA0702FF030A000000C4F1",
    "AA0702FF0409090000CB78", "AA0702FF050A061A006474", "AA0702FF060A061A00A869", "AA0702FF07000000007A00",
    "AA0702FF0800000000866A", "AA0702FF0900000000C261", "AA0702FF0A000000000E7C", "AA0702FF0B000000004A77",
    "AA0702FF0C000000009647", "AA0702FF0D00000000D24C", "AA0702FF0E000000001E51", "AA0702FF0F000000005A5A",
    "AA0702FF1000000000E684", "AA0702FF1100000000A28F", "AA0702FF12000000006E92", "AA0702FF13000000002A99",
    "AA0702FF1400000000F6A9", "AA0702FF1500000000B2A2", "AA0702FF16000000007EBF", "AA0702FF17000000003AB4",
    "AA0702FF1800000000C6DE", "AA0702FF190000000082D5", "AA0702FF1A000000004EC8", "AA0702FF1B0400040086D6",
    "AA0702FF1C01000100B5F6", "AA0702FF1D20002000F254", "AA0702FF1E0800080046CE", "AA0702FF1F0100010079EB",
    "AA0702FF20060006007D4F", "AA0702FF2102000200B551",
};

constexpr const char* default_ac[34] = {
    "AC0702FF00010000000288", "AC0702FF010300000030BA", "AC0702FF020A0000009F5E", "AC0702FF030A000000DB55",
    "AC0702FF0409090000D4DC", "AC0702FF050A061A007BD0", "AC0702FF060A061A00B7CD", "AC0702FF070000000065A4",
    "AC0702FF080000000099CE", "AC0702FF0900000000DDC5", "AC0702FF0A0000000011D8", "AC0702FF0B0000000055D3",
    "AC0702FF0C0000000089E3", "AC0702FF0D00000000CDE8", "AC0702FF0E0000000001F5", "AC0702FF0F0000000045FE",
    "AC0702FF1000000000F920", "AC0702FF1100000000BD2B", "AC0702FF12000000007136", "AC0702FF1300000000353D",
    "AC0702FF1400000000E90D", "AC0702FF1500000000AD06", "AC0702FF1600000000611B", "AC0702FF17000000002510",
    "AC0702FF1800000000D97A", "AC0702FF19000000009D71", "AC0702FF1A00000000516C", "AC0702FF1B040004009972",
    "AC0702FF1C01000100AA52", "AC0702FF1D20002000EDF0", "AC0702FF1E08000800596A", "AC0702FF1F01000100664F",
    "AC0702FF200600060062EB", "AC0702FF2102000200AAF5",
};

std::vector<uint8_t> bytes_of(const char* hex) {
    std::vector<uint8_t> out;
    unsigned byte = 0;
    for (; std::sscanf(hex, "%2x", &byte) == 1; hex += 2) out.push_back(static_cast<uint8_t>(byte));
    return out;
}

template <std::size_t N>
std::vector<uint8_t> vec(const std::array<uint8_t, N>& bytes) {
    return {bytes.begin(), bytes.end()};
}

std::string listing_of(const char* const (&commands)[34]) {
    std::string out;
    for (unsigned r = 0; r < 34; ++r) {
        std::array<char, 80> line{};
        std::snprintf(line.data(), line.size(), "寄存器 %02X 的配置指令: %s\n", r, commands[r]);
        out += line.data();
    }
    return out;
}

/// Both command tables of a store, and their listings.
struct tables {
    std::array<std::array<vkt610b_command, 34>, 2> commands;
    std::array<std::string, 2> listing;
};
tables tables_of(const tk_object_ptr& props) {
    std::array<uint8_t, 140> image{};
    vkt610b_regs_to_bytes(vkt610b_props_to_regs(props.get()), image);
    tables out{};
    for (const auto form : {vkt610b_form::aa, vkt610b_form::ac}) {
        const auto f = static_cast<std::size_t>(form);
        out.commands[f] = vkt610b_write_commands(image, form);
        out.listing[f] = vkt610b_listing(image, form);
    }
    return out;
}

TEST(Crc16X25, HasTheStandardCheckValue) {
    const std::string digits = "123456789";
    const std::vector<uint8_t> bytes(digits.begin(), digits.end());
    EXPECT_EQ(crc16_x25(bytes.data(), bytes.size()), 0x906E);
}

TEST(Commands, RegisterZeroWithValueOne) {
    EXPECT_EQ(vec(vkt610b_write_command(vkt610b_form::aa, 0, 1)), bytes_of("AA0702FF00010000001D2C"));
    EXPECT_EQ(vec(vkt610b_write_command(vkt610b_form::ac, 0, 1)), bytes_of("AC0702FF00010000000288"));
}

TEST(Commands, ValueGoesLeastSignificantByteFirst) {
    EXPECT_EQ(vec(vkt610b_write_command(vkt610b_form::aa, 7, 0x12345678)), bytes_of("AA0702FF07785634128C08"));
    EXPECT_EQ(vec(vkt610b_write_command(vkt610b_form::ac, 33, 0xFFFFFFFF)), bytes_of("AC0702FF21FFFFFFFFF50C"));
}

TEST(Commands, BothTablesOfAFreshStore) {
    const tables state = tables_of(b_default_props());
    for (std::size_t r = 0; r < 34; ++r) {
        EXPECT_EQ(vec(state.commands[0][r]), bytes_of(default_aa[r])) << "register " << r;
        EXPECT_EQ(vec(state.commands[1][r]), bytes_of(default_ac[r])) << "register " << r;
    }
}

TEST(Commands, TheTwoFormsDifferInFirstByteAndChecksumOnly) {
    const tables state = tables_of(b_default_props());
    for (std::size_t r = 0; r < 34; ++r) {
        const auto aa = vec(state.commands[0][r]);
        const auto ac = vec(state.commands[1][r]);
        EXPECT_EQ(aa[0], 0xAA);
        EXPECT_EQ(ac[0], 0xAC);
        EXPECT_TRUE(std::equal(aa.begin() + 1, aa.begin() + 9, ac.begin() + 1)) << "register " << r;
    }
}

TEST(Commands, TheAlternativeFormIsAc) {
    EXPECT_EQ(vkt610b_form_of(false), vkt610b_form::aa);
    EXPECT_EQ(vkt610b_form_of(true), vkt610b_form::ac);
}

TEST(Commands, ACommandCanBePutIntoTheOtherForm) {
    for (std::size_t r = 0; r < 34; ++r) {
        EXPECT_EQ(vec(vkt610b_command_in(vkt610b_form::aa, bytes_of(default_ac[r]))), bytes_of(default_aa[r]));
        EXPECT_EQ(vec(vkt610b_command_in(vkt610b_form::ac, bytes_of(default_ac[r]))), bytes_of(default_ac[r]));
    }
}

TEST(Commands, ACheckIsTheCrcOfAllBytesBeforeIt) {
    auto frame = bytes_of("AA0702FF07785634128C08");
    EXPECT_TRUE(vkt610b_check_is_good(frame));
    for (std::size_t i = 0; i < frame.size(); ++i) {
        frame[i] ^= 0x10;
        EXPECT_FALSE(vkt610b_check_is_good(frame)) << i;
        frame[i] ^= 0x10;
    }
    EXPECT_FALSE(vkt610b_check_is_good({}));
    EXPECT_FALSE(vkt610b_check_is_good(bytes_of("00")));
}

TEST(Listing, LineOfRegisterZero) {
    EXPECT_EQ(vkt610b_listing_line(vkt610b_write_command(vkt610b_form::aa, 0, 1)),
              "寄存器 00 的配置指令: AA0702FF00010000001D2C\n");
}

TEST(Listing, BothTextsOfAFreshStore) {
    const tables state = tables_of(b_default_props());
    EXPECT_EQ(state.listing[0], listing_of(default_aa));
    EXPECT_EQ(state.listing[1], listing_of(default_ac));
}

TEST(Listing, FollowsTheStore) {
    const tk_object_ptr props = b_default_props();
    ASSERT_NE(tables_of(props).listing[0].find("AA0702FF0103000000"), std::string::npos);
    tk_object_set_prop_uint8(props.get(), "change_can_channel_vkt610b", 0);
    const tables state = tables_of(props);
    EXPECT_EQ(std::count(state.listing[0].begin(), state.listing[0].end(), '\n'), 34);
    EXPECT_NE(state.listing[0].find("寄存器 01 的配置指令: AA0702FF0102000000"), std::string::npos);
    EXPECT_EQ(state.listing[0].find("AA0702FF0103000000"), std::string::npos);
}

TEST(Listing, ChoosingBothUartsAndBothChannelsGivesThree) {
    const tk_object_ptr props = b_default_props();
    tk_object_set_prop_uint8(props.get(), "change_protcol_vkt610b", vkt610b_routes[2].protocol);
    tk_object_set_prop_uint8(props.get(), "change_can_channel_vkt610b", vkt610b_routes[2].channel);
    const tables state = tables_of(props);
    EXPECT_NE(state.listing[0].find("寄存器 01 的配置指令: AA0702FF0103000000"), std::string::npos);
}

TEST(ReadRequest, BothForms) {
    EXPECT_EQ(vec(vkt610b_read_request(vkt610b_form::aa)), bytes_of("AA0205FF3546"));
    EXPECT_EQ(vec(vkt610b_read_request(vkt610b_form::ac)), bytes_of("AC0205FFAF0D"));
}

TEST(VersionText, LowNibbleOfTheSecondByteComesFirst) {
    EXPECT_EQ(vkt610b_version_text(0x0A182101), "V1.1.2 24年10月");
    EXPECT_EQ(vkt610b_version_text(0), "V0.0.0 0年0月");
    EXPECT_EQ(vkt610b_version_text(0xFFFFFFFF), "V255.15.15 255年255月");
}

TEST(Routes, PairsInListOrder) {
    EXPECT_EQ(vkt610b_route_entry(0, 0), 0);
    EXPECT_EQ(vkt610b_route_entry(0, 1), 1);
    EXPECT_EQ(vkt610b_route_entry(1, 1), 2);
    EXPECT_EQ(vkt610b_route_entry(2, 0), 3);
    EXPECT_EQ(vkt610b_route_entry(2, 1), 4);
    EXPECT_STREQ(vkt610b_routes[0].text, "UART1转CANFD1");
    EXPECT_STREQ(vkt610b_routes[1].text, "UART1转CANFD1和CANFD2");
    EXPECT_STREQ(vkt610b_routes[2].text, "UART1和UART2转CANFD1和CANFD2");
    EXPECT_STREQ(vkt610b_routes[3].text, "SPI转CANFD1");
    EXPECT_STREQ(vkt610b_routes[4].text, "SPI转CANFD1和CANFD2");
}

TEST(Routes, PairsWithoutAnEntryShowTheFirst) {
    EXPECT_EQ(vkt610b_route_entry(1, 0), 0);
    EXPECT_EQ(vkt610b_route_entry(3, 0), 0);
    EXPECT_EQ(vkt610b_route_entry(3, 1), 0);
    EXPECT_EQ(vkt610b_route_entry(2, 2), 0);
    EXPECT_EQ(vkt610b_route_entry(255, 255), 0);
}

} // namespace
