#include "app/data_monitor.h"

#include "dev_b/pages/vkt610b_pages.h"
#include "tests/support/app_fixture.h"

namespace {

class data_monitor : public app_test {
  protected:
    static std::string top() { return widget_name(window_manager_get_top_window(window_manager())); }
    static void set(const char* key, uint8_t value) {
        tk_object_set_prop_uint8(device(vkt610b_pages).props.get(), key, value);
    }
};

TEST_F(data_monitor, a_port_that_was_lost_on_its_page_is_lost_on_the_home_page_too) {
    const std::string before = text(home(), "state_word");
    data_monitor_left(false);
    EXPECT_EQ(text(home(), "state_word"), before);
    data_monitor_left(true);
    EXPECT_EQ(text(home(), "state_word"), "连接已断开");
    EXPECT_EQ(buttons(), "drwf") << "as after a session that found it lost";
}

TEST_F(data_monitor, what_the_module_holds_is_not_known_once_its_port_was_lost) {
    pick("combo_box_ex_dev", "VKT610B");
    dev_obj& dev = device(vkt610b_pages);
    dev_module_holds(dev, dev.image);
    data_monitor_left(false);
    EXPECT_TRUE(dev.in_module);
    set("change_mode_vkt610b", 2);
    static_cast<void>(dev_encode(dev));
    data_monitor_left(true);
    EXPECT_FALSE(dev.in_module);
    EXPECT_EQ(text(home(), "truth_line"), "1 项未写入，尚未读取");
}

TEST_F(data_monitor, the_button_shows_for_this_family_only) {
    EXPECT_FALSE(visible("button_data"));
    pick("combo_box_ex_dev", "VKT610B");
    EXPECT_TRUE(visible("button_data"));
    pick("combo_box_ex_dev", "VKT531A");
    EXPECT_FALSE(visible("button_data"));
}

TEST_F(data_monitor, one_object_serves_all_three_models) {
    pick("combo_box_ex_dev", "VKT630B");
    dev_obj* made = device_of(vkt610b_pages);
    ASSERT_NE(made, nullptr);
    EXPECT_STREQ(made->of.device, "VKT610B");
    EXPECT_EQ(current_model(), "VKT630B");
    EXPECT_TRUE(visible("code_mode_vkt610b"));
    pick("combo_box_ex_dev", "VKT631B");
    EXPECT_EQ(device_of(vkt610b_pages), made);
}

TEST_F(data_monitor, it_needs_a_connection) {
    pick("combo_box_ex_dev", "VKT610B");
    answer_message();
    click(home(), "button_data");
    EXPECT_EQ(message_seen, "请先连接设备");
}

TEST_F(data_monitor, without_a_request_ok_goes_home) {
    connect("VKT610B");
    EXPECT_EQ(top(), "home_page");
    EXPECT_EQ(run("button_read"), "读配置完成");
    press_ok();
    EXPECT_EQ(top(), "home_page");
}

TEST_F(data_monitor, disconnect_tells_the_module_to_leave_configuration_mode) {
    connect("VKT610B");
    EXPECT_EQ(run("button2"), "现在设备为传输模式");
    EXPECT_EQ(text(progress(), "label"), "   模式转换结束");
    EXPECT_EQ(module->mode(), "transfer");
    press_ok();
    EXPECT_EQ(buttons(), "cfmp");
    EXPECT_FALSE(device(vkt610b_pages).session.port_open());
    EXPECT_FALSE(device(vkt610b_pages).session.connected());
}

struct rate_case {
    const char* name;
    uint8_t protocol, channel, uart1, uart2;
    bool opens;
};

class data_monitor_rates : public data_monitor, public testing::WithParamInterface<rate_case> {};

TEST_P(data_monitor_rates, decide_whether_the_data_page_opens) {
    const auto& row = GetParam();
    connect("VKT610B");
    EXPECT_EQ(run("button_data"), "读配置完成");
    EXPECT_EQ(text(progress(), "label"), "   读取配置结束");
    set("change_protcol_vkt610b", row.protocol);
    set("change_can_channel_vkt610b", row.channel);
    set("uart1_bps_vkt610b", row.uart1);
    set("uart2_bps_vkt610b", row.uart2);
    if (row.opens) {
        press_ok();
        settle();
        EXPECT_EQ(top(), "data_page");
        EXPECT_EQ(progress(), nullptr);
        return;
    }
    answer_message();
    press_ok();
    settle();
    EXPECT_EQ(message_seen, "评估板不支持300、1.5M、3M、3.5M、6M波特率收发数据，请更换波特率后重试");
    EXPECT_EQ(top(), "progress");
    press_ok(); // the request was taken back
    settle();
    EXPECT_EQ(top(), "home_page");
}

INSTANTIATE_TEST_SUITE_P(
    rates, data_monitor_rates,
    testing::Values(rate_case{"good_rates", 0, 0, 9, 9, true}, rate_case{"uart1_300", 0, 0, 0, 9, false},
                    rate_case{"uart1_1_5M", 0, 0, 16, 9, false}, rate_case{"uart1_3M", 0, 1, 19, 9, false},
                    rate_case{"uart1_3_5M", 1, 1, 20, 9, false}, rate_case{"uart1_6M", 1, 1, 23, 9, false},
                    rate_case{"uart2_counts_when_only_uart1_is_used", 0, 0, 9, 23, false},
                    rate_case{"neighbour_15", 0, 0, 15, 15, true}, rate_case{"neighbour_17", 0, 0, 17, 18, true},
                    rate_case{"neighbour_21", 0, 0, 21, 22, true},
                    rate_case{"spi_is_not_checked", 2, 0, 16, 16, true},
                    rate_case{"protocol_1_channel_0_is_not_checked", 1, 0, 16, 16, true},
                    rate_case{"channel_2_is_not_checked", 0, 2, 16, 16, true}),
    [](const auto& test) { return std::string(test.param.name); });

} // namespace
