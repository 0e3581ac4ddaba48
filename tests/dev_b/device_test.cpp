// The codec as the sessions and the home page reach it: through the device.
#include "dev_b/family.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr const family_descriptor* families[] = {&vkt610b_family};

class BDevice : public testing::Test {
  protected:
    session_bytes read_request(bool ac) { return sent(session_kind::read, ac).at(0); }
    session_bytes write_frame(uint32_t r, bool ac) { return sent(session_kind::write, ac).at(r); }
    uint8_t byte(const char* key) { return tk_object_get_prop_uint8(props(), key, 9); }
    uint32_t word(const char* key) { return tk_object_get_prop_uint32(props(), key, 9); }
    tk_object* props() { return dev.props.get(); }

    const std::unique_ptr<dev_obj> made = dev_open(families, "VKT630B");
    dev_obj& dev = *made;

  private:
    std::vector<session_bytes> sent(session_kind kind, bool ac) {
        return dev_session_input(dev, kind, ac).requests;
    }
};

TEST_F(BDevice, ReadRequestBothForms) {
    EXPECT_EQ(read_request(false), (session_bytes{0xAA, 0x02, 0x05, 0xFF, 0x35, 0x46}));
    EXPECT_EQ(read_request(true), (session_bytes{0xAC, 0x02, 0x05, 0xFF, 0xAF, 0x0D}));
}

TEST_F(BDevice, AWriteWithoutAnyEditSendsTheStore) {
    EXPECT_EQ(write_frame(5, false),
              (session_bytes{0xAA, 0x07, 0x02, 0xFF, 0x05, 0x0A, 0x06, 0x1A, 0x00, 0x64, 0x74}));
    EXPECT_EQ(write_frame(33, true),
              (session_bytes{0xAC, 0x07, 0x02, 0xFF, 0x21, 0x02, 0x00, 0x02, 0x00, 0xAA, 0xF5}));
}

TEST_F(BDevice, ADeviceMadeAnewHasTablesOfItsOwn) {
    tk_object_set_prop_uint8(props(), "change_mode_vkt610b", 0);
    ASSERT_EQ(dev_encode(dev), RET_OK);
    ASSERT_EQ(write_frame(0, false)[5], 0);
    const auto other = dev_open(families, "VKT610B");
    EXPECT_EQ(dev_session_input(*other, session_kind::write, false).requests.at(0)[5], 1);
}

TEST_F(BDevice, EditsReachTheFramesByEncoding) {
    tk_object_set_prop_uint32(props(), "canfd1_scherm_vkt610b", 0x12345678);
    ASSERT_EQ(dev_encode(dev, "canfd1_scherm_vkt610b"), RET_OK);
    EXPECT_EQ(write_frame(7, false),
              (session_bytes{0xAA, 0x07, 0x02, 0xFF, 0x07, 0x78, 0x56, 0x34, 0x12, 0x8C, 0x08}));
}

TEST_F(BDevice, AnAcceptedImageReachesStoreTablesAndListing) {
    std::array<uint8_t, 140> image{};
    image[4] = 0x02;  // register 1: protocol 1, channel 0
    image[22] = 0x3F; // register 5: mode 3, filter 3, BRS, user timing
    image[23] = 0xF0; // bits without a key
    std::ranges::copy(std::array<uint8_t, 4>{1, 0x21, 0x18, 0x0A}, image.begin() + 136);
    dev_accept(dev, image);
    EXPECT_EQ(byte("change_protcol_vkt610b"), 1);
    EXPECT_EQ(byte("change_can_channel_vkt610b"), 0);
    EXPECT_EQ(byte("canfd1_mode_vkt610b"), 3);
    EXPECT_EQ(byte("canfd1_leach_mode_vkt610b"), 3);
    EXPECT_EQ(byte("canfd1_brs_do_button_vkt610b"), 1);
    EXPECT_EQ(word("version"), 0x0A182101u);
    const vkt610b_regs regs = vkt610b_regs_from_bytes(vkt610b_image_of(dev));
    EXPECT_EQ(regs[5], 0x003F0000u);
    EXPECT_EQ(regs[34], 0x0A182101u);
    EXPECT_NE(vkt610b_code_mode(dev, {.alternative = true}).find("寄存器 05 的配置指令: AC0702FF0500003F00"),
              std::string::npos);
    EXPECT_EQ(write_frame(1, false)[5], 2);
}

/// Codes of a UART rate and whether the monitor's board can carry data at it.
TEST_F(BDevice, TheMonitorRefusesTheRatesThatItsBoardCannotUse) {
    const auto refused = [this] { return dev.of.monitor_refusal(dev) != nullptr; };
    const auto set = [this](const char* key, uint8_t value) { tk_object_set_prop_uint8(props(), key, value); };
    for (uint8_t code = 0; code < 25; ++code) {
        const bool odd = code == 0 || code == 16 || code == 19 || code == 20 || code == 23;
        for (const char* key : {"uart1_bps_vkt610b", "uart2_bps_vkt610b"}) {
            set(key, code);
            EXPECT_EQ(refused(), odd) << key << " " << +code;
            set(key, 10);
        }
    }
    set("uart1_bps_vkt610b", 0);
    EXPECT_STREQ(dev.of.monitor_refusal(dev),
                 "评估板不支持300、1.5M、3M、3.5M、6M波特率收发数据，请更换波特率后重试");
    set("change_protcol_vkt610b", 2);
    EXPECT_FALSE(refused()) << "no UART is in use";
    set("change_protcol_vkt610b", 0);
    set("change_can_channel_vkt610b", 0);
    EXPECT_TRUE(refused());
    set("change_protcol_vkt610b", 1);
    EXPECT_FALSE(refused()) << "a pair that does not exist";
}

} // namespace
