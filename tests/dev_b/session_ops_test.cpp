// The codec as the sessions and the device object reach it.
#include "config/dev_obj.h"
#include "dev_b/b_props.h"
#include "dev_b/vkt610b_session_ops.h"
#include "serial/b_ops.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

class SessionOps : public testing::Test {
  protected:
    void SetUp() override {
        vkt610b_session_ops_register();
        before_ = dev_get(family::b);
        dev_set(family::b, dev_open("VKT630B"));
    }
    void TearDown() override {
        dev_obj* dev = dev_get(family::b);
        dev_set(family::b, before_);
        tk_object_unref(dev->props);
        tk_mutex_destroy(dev->mutex);
        delete dev;
        vkt610b_state_get() = {};
    }
    static dev_obj& dev() { return *dev_get(family::b); }
    static const b_session_ops& ops() { return b_session_ops_get(); }

  private:
    dev_obj* before_ = nullptr;
};

TEST_F(SessionOps, ReadRequestBothForms) {
    EXPECT_EQ(ops().read_request(false), (b_read_request{0xAA, 0x02, 0x05, 0xFF, 0x35, 0x46}));
    EXPECT_EQ(ops().read_request(true), (b_read_request{0xAC, 0x02, 0x05, 0xFF, 0xAF, 0x0D}));
}

TEST_F(SessionOps, AWriteWithoutAnyEditSendsTheStore) {
    const tk_lock hold(dev().mutex);
    EXPECT_EQ(ops().write_frame(5, false),
              (b_write_frame{0xAA, 0x07, 0x02, 0xFF, 0x05, 0x0A, 0x06, 0x1A, 0x00, 0x64, 0x74}));
    EXPECT_EQ(ops().write_frame(33, true),
              (b_write_frame{0xAC, 0x07, 0x02, 0xFF, 0x21, 0x02, 0x00, 0x02, 0x00, 0xAA, 0xF5}));
}

TEST_F(SessionOps, ANewDeviceObjectReplacesTheTables) {
    {
        const tk_lock hold(dev().mutex);
        ASSERT_EQ(ops().write_frame(0, false)[5], 1);
    }
    dev_obj* old = dev_get(family::b);
    dev_obj* other = dev_open("VKT610B");
    tk_object_set_prop_uint8(other->props, "change_mode_vkt610b", 0);
    dev_set(family::b, other);
    {
        const tk_lock hold(other->mutex);
        EXPECT_EQ(ops().write_frame(0, false)[5], 0);
    }
    tk_object_unref(old->props);
    tk_mutex_destroy(old->mutex);
    delete old;
}

TEST_F(SessionOps, EditsReachTheFramesByEncoding) {
    const tk_lock hold(dev().mutex);
    tk_object_set_prop_uint32(dev().props, "canfd1_scherm_vkt610b", 0x12345678);
    ASSERT_EQ(vkt610b_encode(nullptr), RET_OK);
    EXPECT_EQ(ops().write_frame(7, false),
              (b_write_frame{0xAA, 0x07, 0x02, 0xFF, 0x07, 0x78, 0x56, 0x34, 0x12, 0x8C, 0x08}));
}

TEST_F(SessionOps, AnAcceptedImageReachesStoreTablesAndListing) {
    std::array<uint8_t, 140> image{};
    image[4] = 0x02;  // register 1: protocol 1, channel 0
    image[22] = 0x3F; // register 5: mode 3, filter 3, BRS, user timing
    image[23] = 0xF0; // bits without a key
    for (int i = 0; i < 4; ++i)
        image[static_cast<std::size_t>(136 + i)] =
            std::array<uint8_t, 4>{1, 0x21, 0x18, 0x0A}[static_cast<std::size_t>(i)];
    const tk_lock hold(dev().mutex);
    ops().accept_image(image);
    EXPECT_EQ(tk_object_get_prop_uint8(dev().props, "change_protcol_vkt610b", 9), 1);
    EXPECT_EQ(tk_object_get_prop_uint8(dev().props, "change_can_channel_vkt610b", 9), 0);
    EXPECT_EQ(tk_object_get_prop_uint8(dev().props, "canfd1_mode_vkt610b", 9), 3);
    EXPECT_EQ(tk_object_get_prop_uint8(dev().props, "canfd1_leach_mode_vkt610b", 9), 3);
    EXPECT_EQ(tk_object_get_prop_uint8(dev().props, "canfd1_brs_do_button_vkt610b", 9), 1);
    EXPECT_EQ(tk_object_get_prop_uint32(dev().props, "version", 9), 0x0A182101u);
    const vkt610b_state& state = vkt610b_state_get();
    EXPECT_EQ(state.regs[5], 0x003F0000u);
    EXPECT_EQ(state.regs[34], 0x0A182101u);
    EXPECT_NE(state.listing[1].find("寄存器 05 的配置指令: AC0702FF0500003F00"), std::string::npos);
    EXPECT_EQ(ops().write_frame(1, false)[5], 2);
}

TEST_F(SessionOps, EditsAndAReadAtTheSameTimeKeepTheTablesWhole) {
    std::array<uint8_t, 140> ones{};
    ones.fill(0xFF);
    std::thread reader([&] {
        for (int i = 0; i < 200; ++i) {
            const tk_lock hold(dev().mutex);
            ops().accept_image(ones);
        }
    });
    int torn = 0;
    for (int i = 0; i < 200; ++i) {
        const tk_lock hold(dev().mutex);
        tk_object_set_prop_uint32(dev().props, "canfd1_scherm_vkt610b", 0);
        vkt610b_encode(nullptr);
        const auto frame = ops().write_frame(7, false);
        if (frame != b_write_frame{0xAA, 0x07, 0x02, 0xFF, 0x07, 0, 0, 0, 0, 0x7A, 0x00}) ++torn;
    }
    reader.join();
    EXPECT_EQ(torn, 0);
}

TEST(SessionOpsWithoutDevice, EncodeAndDecodeSaySo) {
    dev_obj* before = dev_get(family::b);
    dev_set(family::b, nullptr);
    EXPECT_EQ(vkt610b_encode(nullptr), RET_FAIL);
    EXPECT_EQ(vkt610b_decode(nullptr), RET_FAIL);
    dev_set(family::b, before);
}

} // namespace
