// A family of one's own, without any window: its list, its device, a whole session.
#include "tests/sample_family/family.h"
#include "tests/sample_family/module.h"
#include "tests/support/session_fixture.h"

using testing::ElementsAre;

namespace {

constexpr const family_descriptor* families[] = {&sample_family}; // the one line outside the family

class sample_session : public session_test {
  protected:
    void SetUp() override {
        session_test::SetUp();
        model = "SAMPLE2";
        ASSERT_TRUE(peer.plugged_in());
        dev = dev_open(families, model.c_str(), reports());
        ASSERT_NE(dev, nullptr);
    }
    uint8_t value(const field& row) { return field_byte(row, props()); }

    sample_module peer{port_name};
};

TEST_F(sample_session, opens_with_its_defaults_encoded) {
    EXPECT_STREQ(dev->of.device, "SAMPLE1");
    EXPECT_EQ(dev->image, (std::vector<uint8_t>{1, 20, 0}));
    EXPECT_EQ(dev->of.code_text(*dev, {}, nullptr), "53 03 01 14 00 6B");
    EXPECT_EQ(dev->of.code_text(*dev, {.alternative = true}, nullptr), "0x53 0x03 0x01 0x14 0x00 0x6B");
}

TEST_F(sample_session, connects_reads_edits_writes_and_is_left) {
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_THAT(heard.events, ElementsAre("20/0 串口", "90/0 按键", "buttons", "100/0 连接成功", "finished"));
    heard = {};

    ASSERT_TRUE(run(session_kind::read));
    EXPECT_THAT(heard.events, ElementsAre("30/3 读", "image", "90/3 按键", "buttons", "100/3 读完成", "finished"));
    EXPECT_EQ(value(sample_field::speed), 0);
    EXPECT_EQ(value(sample_field::gain), 7);
    EXPECT_TRUE(tk_object_get_prop_bool(props(), "sample_on", false));

    tk_object_set_prop_uint8(props(), "sample_gain", 99);
    ASSERT_EQ(dev_encode(*dev, "sample_gain"), RET_OK);
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(peer.memory(), (std::array<uint8_t, 3>{0, 99, 1}));

    disconnect();
    const auto all_heard = [this] { return peer.heard().size() == 4; };
    EXPECT_TRUE(idle_run_until(all_heard, session_patience_ms));
    EXPECT_THAT(peer.heard(), ElementsAre(1, 2, 3, 4));
    EXPECT_FALSE(session().connected());
}

TEST_F(sample_session, restore_brings_the_defaults_back) {
    tk_object_set_prop_uint8(props(), "sample_gain", 99);
    dev_restore(*dev);
    EXPECT_EQ(value(sample_field::gain), 20);
    EXPECT_EQ(dev->image, (std::vector<uint8_t>{1, 20, 0}));
}

} // namespace
