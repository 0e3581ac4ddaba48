#include "app/home_page.h"

#include "app/model_switch.h"
#include "app/start_objects.h"
#include "app/ui_state.h"
#include "dev_a/pages/vkt510a_pages.h"
#include "dev_generic/pages/generic_pages.h"
#include "serial/port_list.h"
#include "tests/support/app_fixture.h"
#include "tests/support/user.h"
#include "toolkit/core/worker.h"

#include <chrono>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// The default configuration as a write frame: header, 60 bytes, and 0x32 xor all of them.
constexpr const char* default_frame =
    "F7 F8 01 3C "
    "01 08 01 00 08 00 00 00 00 08 "
    "FF FF FF FF "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "02 00 02 00 00 08 00 00 00 00 04 00 40 1A 0F 05 01 01 "
    "66";

class home_page : public app_test {};

struct start_state {
    const char* name;
    bool visible;
    bool enabled;
};

class home_page_start : public app_test, public testing::WithParamInterface<start_state> {};

TEST_P(home_page_start, widget_state) {
    widget* w = at(GetParam().name);
    ASSERT_NE(w, nullptr) << GetParam().name;
    EXPECT_EQ(widget_get_visible(w), GetParam().visible);
    EXPECT_EQ(widget_get_enable(w), GetParam().enabled);
}

INSTANTIATE_TEST_SUITE_P(
    widgets, home_page_start,
    testing::Values(start_state{"button", true, true}, start_state{"button2", true, false},
                    start_state{"button_read", true, false}, start_state{"button_write", true, false},
                    start_state{"button_default", true, true}, start_state{"progress_button", true, true},
                    start_state{"combo_box_ex_dev", true, true}, start_state{"combo_box_ex_serial", true, true},
                    start_state{"view10", true, true}, start_state{"code_mode", true, true},
                    start_state{"code_mode_vkt510a", false, false}, start_state{"code_mode_vkt610b", false, false},
                    start_state{"vkt510a_view_1", false, false}, start_state{"vkt610b_view_1", false, false},
                    start_state{"button_data_lock", false, false},
                    start_state{"button_serial_assistant", false, false}, start_state{"progress_bar", false, true},
                    start_state{"label2", false, true}, start_state{"label3", false, true},
                    start_state{"label4", false, true}, start_state{"hscroll_label", false, true},
                    start_state{"serial_grant", false, true}, start_state{"scroll_view_home", true, true},
                    start_state{"mledit", true, true}, start_state{"scroll_bar_d_home", false, true},
                    start_state{"scroll_bar_d_home_c", false, true}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(home_page, the_selector_offers_the_registered_models_in_their_order) {
    const std::vector<std::pair<int, std::string>> expected = {{3, "VKT510A"}, {1, "VKT531A"}, {6, "VKT530A"},
                                                               {2, "VKT610B"}, {4, "VKT630B"}, {5, "VKT631B"}};
    widget* selector = at("combo_box_ex_dev");
    ASSERT_EQ(combo_box_count_options(selector), static_cast<int>(expected.size()));
    for (const auto& [value, name] : expected) {
        widget_set_value_int(selector, value);
        EXPECT_EQ(widget_get_text_utf8(selector), name);
    }
    std::string all;
    for (const auto& row : expected) all += (all.empty() ? "" : "|") + row.second;
    EXPECT_EQ(user_does("expect home_page/combo_box_ex_dev options \"" + all + "\""), "");
}

TEST_F(home_page, starts_with_vkt531a) {
    EXPECT_EQ(text(home(), "combo_box_ex_dev"), "VKT531A");
    EXPECT_EQ(current_model(), "VKT531A");
    EXPECT_EQ(text(home(), "version_name"), "版本号：V2.0.1");
    EXPECT_EQ(text(home(), "state_word"), "未连接");
    EXPECT_EQ(widget_get_value_int(at("scroll_bar_d_home")), 0);
}

TEST_F(home_page, the_code_view_shows_the_default_frame) { EXPECT_EQ(text(home(), "mledit"), default_frame); }

TEST_F(home_page, the_first_page_is_filled) {
    EXPECT_EQ(widget_get_value_int(at("table_button_change")), 1);
    EXPECT_EQ(widget_get_value_int(widget_lookup(at("page_change"), "combo_box_ex")), 2);
    EXPECT_EQ(text(at("page_change"), "edit"), "40");
}

TEST_F(home_page, a_missing_window_is_refused) {
    EXPECT_EQ(home_page_init(nullptr, nullptr), RET_BAD_PARAMS);
    EXPECT_THAT(said(), HasSubstr("home_page_init:"));
    EXPECT_THAT(said(), HasSubstr("condition(win != NULL) failed!\n"));
}

TEST_F(home_page, the_log_folder_is_made_and_the_error_log_has_its_name) {
    EXPECT_TRUE(std::filesystem::is_directory(tree() / "log"));
    EXPECT_FALSE(std::filesystem::exists("authority"));
}

TEST_F(home_page, opened_again_it_makes_no_second_device_and_no_second_watcher) {
    dev_obj* before = device_of(generic_pages);
    const uint32_t threads = workers_running();
    const unsigned opened = start_objects_opened();
    ASSERT_EQ(navigator_to("home_page"), RET_OK);
    EXPECT_EQ(start_objects_opened(), opened + 1);
    EXPECT_EQ(workers_running(), threads);
    EXPECT_EQ(device_of(generic_pages), before);
}

TEST_F(home_page, opened_again_its_tabs_work) {
    pick("combo_box_ex_dev", "VKT510A");
    navigator_replace("home_page");
    settle();
    pick("combo_box_ex_dev", "VKT510A");
    click(home(), "vkt510a_tab_button_can");
    EXPECT_TRUE(visible("page_vkt510a_can"));
}

struct tab_case {
    const char* model;
    const char* button;
    const char* page;
};

class home_page_tab : public app_test, public testing::WithParamInterface<tab_case> {};

TEST_P(home_page_tab, shows_its_page_alone) {
    pick("combo_box_ex_dev", GetParam().model);
    const family_pages* pages = pages_of_model(GetParam().model);
    click(home(), pages->tabs[GetParam().button == std::string(pages->tabs[1].button) ? 0 : 1].button);
    click(home(), GetParam().button);
    for (const auto& tab : pages->tabs) {
        EXPECT_EQ(visible(tab.page), tab.page == std::string(GetParam().page)) << tab.page;
        EXPECT_EQ(widget_get_value_int(at(tab.button)) != 0, tab.button == std::string(GetParam().button));
    }
}

INSTANTIATE_TEST_SUITE_P(tabs, home_page_tab,
                         testing::Values(tab_case{"VKT530A", "table_button_change", "page_change"},
                                         tab_case{"VKT530A", "table_button_spi", "page_spi"},
                                         tab_case{"VKT530A", "table_button_uart", "page_uart"},
                                         tab_case{"VKT530A", "table_button_can", "page_can"},
                                         tab_case{"VKT510A", "vkt510a_tab_button_change", "page_vkt510a_change"},
                                         tab_case{"VKT510A", "vkt510a_tab_button_spi", "page_vkt510a_spi"},
                                         tab_case{"VKT510A", "vkt510a_tab_button_uart", "page_vkt510a_uart"},
                                         tab_case{"VKT510A", "vkt510a_tab_button_can", "page_vkt510a_can"},
                                         tab_case{"VKT631B", "vkt610b_tab_button_change", "page_vkt610b_change"},
                                         tab_case{"VKT631B", "vkt610b_tab_button_spi", "page_vkt610b_spi"},
                                         tab_case{"VKT631B", "vkt610b_tab_button_uart", "page_vkt610b_uart"},
                                         tab_case{"VKT631B", "vkt610b_tab_button_canfd", "page_vkt610b_canfd"}),
                         [](const auto& test) { return std::string(test.param.button); });

TEST_F(home_page, choosing_the_a_model_makes_its_object_once_and_shows_only_its_widgets) {
    EXPECT_EQ(device_of(vkt510a_pages), nullptr);
    pick("combo_box_ex_dev", "VKT510A");
    dev_obj* made = device_of(vkt510a_pages);
    ASSERT_NE(made, nullptr);
    EXPECT_STREQ(made->of.device, "VKT510A");
    EXPECT_EQ(current_model(), "VKT510A");
    EXPECT_THAT(said(), HasSubstr("开始初始化\n设备名称: VKT510A\n"));
    for (const char* name : {"vkt510a_view_1", "code_mode_vkt510a"})
        EXPECT_TRUE(visible(name) && enabled(name)) << name;
    for (const char* name : {"view10", "code_mode", "button_serial_assistant", "button_data_lock"})
        EXPECT_FALSE(visible(name)) << name;
    EXPECT_TRUE(visible("page_vkt510a_change"));

    pick("combo_box_ex_dev", "VKT530A");
    EXPECT_TRUE(visible("view10") && visible("code_mode"));
    EXPECT_FALSE(visible("vkt510a_view_1") || visible("code_mode_vkt510a"));
    said_clear();
    pick("combo_box_ex_dev", "VKT510A");
    EXPECT_EQ(device_of(vkt510a_pages), made);
    EXPECT_EQ(said(), "开始初始化\n");
}

TEST_F(home_page, the_code_view_follows_the_model) {
    pick("combo_box_ex_dev", "VKT510A");
    // Both families' defaults make the same image.
    EXPECT_EQ(text(home(), "mledit"), default_frame);
    widget_set_text_utf8(at("mledit"), "");
    pick("combo_box_ex_dev", "VKT531A");
    EXPECT_EQ(text(home(), "mledit"), default_frame);
}

TEST_F(home_page, the_code_switch_changes_the_form_only) {
    click(home(), "code_mode");
    EXPECT_THAT(text(home(), "mledit"), testing::StartsWith("{0xF7, 0xF8, 0x01, 0x3C, 0x01, 0x08, "));
    EXPECT_THAT(text(home(), "mledit"), testing::EndsWith("0x66}"));
    click(home(), "code_mode");
    EXPECT_EQ(text(home(), "mledit"), default_frame);
}

TEST_F(home_page, an_edit_shows_in_the_code_view) {
    pick("combo_box_ex", "自定义协议转换");
    // Byte 42 of the image, and the check byte with it.
    EXPECT_THAT(text(home(), "mledit"), HasSubstr(" 00 00 03 00 02 "));
    EXPECT_THAT(text(home(), "mledit"), testing::EndsWith(" 67"));
}

TEST_F(home_page, restore_defaults_shows_them_and_keeps_the_tab) {
    pick("combo_box_ex", "自定义协议转换");
    click(home(), "table_button_uart");
    click(home(), "button_default");
    EXPECT_TRUE(visible("page_uart"));
    EXPECT_THAT(text(home(), "mledit"), testing::StartsWith("  F7 F8 01 3C   01 08 "));
    click(home(), "table_button_change");
    EXPECT_EQ(text(at("page_change"), "combo_box_ex"), "透明带标识转换");
}

TEST_F(home_page, restore_encodes_before_it_shows_and_fills_the_page_on_screen) {
    click(home(), "table_button_uart");
    pick("page_uart/combo_box_ex_bps", "9600");
    tk_object_set_prop_uint8(device(generic_pages).props.get(), "spi_ff_time", 99); // not encoded
    click(home(), "button_default");
    EXPECT_EQ(text(at("page_uart"), "combo_box_ex_bps"), "115200");
    std::string digits = text(home(), "mledit"); // laid out in blocks
    std::erase(digits, ' ');
    std::string expected = default_frame;
    std::erase(expected, ' ');
    EXPECT_EQ(digits, expected);
}

TEST_F(home_page, choosing_a_model_fills_the_page_that_shows) {
    pick("combo_box_ex_dev", "VKT510A");
    pick("combo_box_ex_dev", "VKT531A");
    tk_object_set_prop_uint8(device(vkt510a_pages).props.get(), "change_mode_vkt510a", 3);
    pick("combo_box_ex_dev", "VKT510A");
    EXPECT_EQ(text(at("page_vkt510a_change"), "combo_box_ex_vkt510a"), "自定义协议转换");
    EXPECT_TRUE(enabled("edit_vkt510a"));
}

TEST_F(home_page, every_family_has_its_code_switch) {
    const std::tuple<const char*, const char*, const char*> switches[] = {
        {"VKT510A", "code_mode_vkt510a", "{0xF7, 0xF8, "},
        {"VKT610B", "code_mode_vkt610b", ": AC07"},
        {"VKT530A", "code_mode", "{0xF7, 0xF8, "},
    };
    for (const auto& [model, name, alternative] : switches) {
        pick("combo_box_ex_dev", model);
        const std::string before = text(home(), "mledit");
        EXPECT_THAT(before, Not(HasSubstr(alternative))) << model;
        click(home(), name);
        EXPECT_THAT(text(home(), "mledit"), HasSubstr(alternative)) << model;
        click(home(), name);
        EXPECT_EQ(text(home(), "mledit"), before) << model;
    }
}

TEST_F(home_page, a_text_that_is_no_model_changes_nothing_on_screen) {
    click(home(), "table_button_can");
    const std::string code = text(home(), "mledit");
    combo_box_append_option(at("combo_box_ex_dev"), 99, "VKT999A");
    said_clear();
    pick("combo_box_ex_dev", "VKT999A");
    EXPECT_EQ(said(), "开始初始化\n");
    EXPECT_EQ(current_model(), "VKT999A");
    EXPECT_EQ(current_device(), nullptr);
    for (const char* name : {"view10", "code_mode", "page_can"}) EXPECT_TRUE(visible(name)) << name;
    for (const char* name : {"vkt510a_view_1", "vkt610b_view_1", "code_mode_vkt510a", "code_mode_vkt610b"})
        EXPECT_FALSE(visible(name)) << name;
    EXPECT_EQ(text(home(), "mledit"), code);
}

// A family that cannot be shown: its device, or its page set, does not exist.
class broken_family : public app_test {
  protected:
    void SetUp() override {
        app_test::SetUp();
        usual_ = families();
    }
    void TearDown() override {
        device_forget(broken);
        families_use(usual_);
        std::filesystem::remove("authority");
        app_test::TearDown();
    }
    void use() {
        families_use(list_);
        said_clear();
    }
    family_descriptor of = *generic_pages.of;
    family_pages broken = generic_pages;

  private:
    const family_pages* const list_[1] = {&broken};
    family_pages_list usual_;
};

TEST_F(broken_family, without_a_device_is_named) {
    of.device = "no_such_device";
    broken.of = &of;
    use();
    EXPECT_EQ(model_switch(home()), RET_FAIL);
    EXPECT_EQ(said(), "开始初始化\ndev_vkt530a产品初始化失败\n");
    EXPECT_TRUE(visible("view10")); // what showed before shows still
}

TEST_F(broken_family, without_its_pages_is_named) {
    broken.page_set = "no_such_pages";
    use();
    EXPECT_EQ(model_switch(home()), RET_FAIL);
    EXPECT_EQ(said(), "开始初始化\n设备名称: VKT531A\ndev_vkt530a初始化按键列表失败\n");
}

TEST_F(broken_family, ends_the_init_with_1_and_nothing_is_probed) {
    std::filesystem::create_directory("authority"); // a probe would fail, and say so
    of.device = "no_such_device";
    broken.of = &of;
    use();
    EXPECT_EQ(static_cast<int>(home_page_init(home(), nullptr)), 1);
    settle();
    EXPECT_EQ(message(), nullptr);
}

TEST_F(home_page, a_probe_that_fails_is_said) {
    std::filesystem::create_directory("authority");
    answer_message();
    EXPECT_EQ(home_page_init(home(), nullptr), RET_OK);
    EXPECT_TRUE(wait([this] { return !message_seen.empty() && message() == nullptr; }));
    EXPECT_EQ(message_seen, "无权限，请使用管理员权限运行程序");
    std::filesystem::remove("authority");
}

TEST_F(broken_family, without_a_device_shows_nothing_of_its_own) {
    use();
    EXPECT_EQ(static_cast<int>(model_widgets_show(home(), broken)), 1);
    EXPECT_EQ(said(), "dev_info == NULL error ");
    EXPECT_TRUE(visible("view10")); // what showed before shows still
}

TEST_F(home_page, without_a_model_selector_there_is_no_model) {
    said_clear();
    EXPECT_EQ(model_switch(nullptr), RET_FAIL);
    EXPECT_EQ(said(), "开始初始化\n获取设备名称失败\n");
}

TEST_F(home_page, progress_button_opens_a_window_that_can_be_left) {
    click(home(), "progress_button");
    ASSERT_NE(progress(), nullptr);
    EXPECT_TRUE(widget_get_visible(widget_lookup(progress(), "ok")));
    press_ok();
    settle();
    EXPECT_EQ(progress(), nullptr);
}

TEST_F(home_page, copying_says_so_for_two_seconds) {
    const int width = widget_get_prop_int(at("button_copy"), "w", 0);
    const auto started = std::chrono::steady_clock::now();
    ASSERT_EQ(user_does("key Alt+Y\nwait home_page/button_copy text 已复制"), "");
    settle();
    EXPECT_EQ(widget_get_prop_int(at("button_copy"), "w", 0), width) << "nothing jumps";
    ASSERT_TRUE(wait([] { return text(home(), "button_copy") == "复制"; }));
    const auto took = std::chrono::steady_clock::now() - started;
    EXPECT_GE(took, std::chrono::milliseconds(2000));
    EXPECT_LT(took, std::chrono::milliseconds(4000));
    EXPECT_EQ(user_does("key Alt+Y\nwait home_page/button_copy text 已复制\nclick home_page/button_copy\n"
                        "expect home_page/button_copy text 已复制\nwait home_page/button_copy text 复制"),
              "");
}

TEST_F(home_page, a_long_port_name_stands_whole_in_the_tooltip) {
    const std::string usual = "串口号，可选可填，例如 COM7";
    ASSERT_EQ(user_does("type home_page/combo_box_ex_serial COM12\nkey Tab\n"
                        "expect home_page/combo_box_ex_serial tooltip \"" +
                        usual +
                        "\"\n"
                        "type home_page/combo_box_ex_serial /dev/serial/by-id/usb-converter-port0\nkey Tab\n"
                        "expect home_page/combo_box_ex_serial text /dev/serial/by-id/usb-converter-port0\n"
                        "expect home_page/combo_box_ex_serial tooltip \"/dev/serial/by-id/usb-converter-port0\\n" +
                        usual + "\""),
              "");
}

TEST_F(home_page, copy_button_is_there) { EXPECT_TRUE(enabled("button_copy")); }

// An edit of the CAN page stores when it is left; a shortcut leaves the focus in it.
class typed_before_a_shortcut : public app_test {
  protected:
    void type_identifier() {
        click(home(), "table_button_can");
        EXPECT_EQ(user_does("type home_page/page_can/edit_send 12345678"), "");
        ASSERT_TRUE(widget_get_focused(widget_lookup(at("page_can"), "edit_send")));
    }
    static std::string stored() {
        return tk_object_get_prop_str(device(generic_pages).props.get(), "can_sendf_flage", "?");
    }
};

TEST_F(typed_before_a_shortcut, copying_copies_it) {
    type_identifier();
    EXPECT_EQ(
        user_does(
            "key Alt+Y\nwait home_page/button_copy focused 1\ntype home_page/combo_box_ex_serial x\nkey Ctrl+V\n"
            "expect home_page/combo_box_ex_serial contains \" 08 12 34 56 78 04 \""),
        "");
}

TEST_F(typed_before_a_shortcut, the_code_switch_shows_it) {
    type_identifier();
    EXPECT_EQ(user_does("key Alt+L\nwait home_page/code_mode value 1\n"
                        "wait home_page/mledit contains \"0x12, 0x34 0x56, 0x78, \""),
              "");
    EXPECT_EQ(stored(), "12 34 56 78");
}

TEST_F(typed_before_a_shortcut, another_page_keeps_it) {
    type_identifier();
    EXPECT_EQ(user_does("key Alt+1\nwait home_page/page_change visible 1"), "");
    EXPECT_EQ(stored(), "12 34 56 78");
}

TEST_F(typed_before_a_shortcut, a_disconnect_stores_it) {
    connect();
    type_identifier();
    EXPECT_EQ(user_does("key Alt+D"), "");
    EXPECT_TRUE(wait([] { return !session_any_running() && ui_state_get() == ui_state::idle; }));
    EXPECT_EQ(stored(), "12 34 56 78");
}

TEST_F(typed_before_a_shortcut, a_write_sends_it) {
    connect();
    type_identifier();
    EXPECT_EQ(user_does("key Alt+W\nwait progress/label3 text 写配置完成 20000"), "");
    EXPECT_EQ(module->memory()[48], 0x12);
    EXPECT_EQ(module->memory()[51], 0x78);
    press_ok();
}

TEST_F(home_page, the_port_list_reaches_the_selector) {
    com::map_port("COM7", "/dev/null");
    com::map_port("COM12", "/dev/null");
    widget* ports = at("combo_box_ex_serial");
    click(home(), "combo_box_ex_serial");
    EXPECT_TRUE(wait(
        [ports] { return combo_box_has_option_text(ports, "COM7") && combo_box_has_option_text(ports, "COM12"); }));
    com::map_port("COM7", "");
    com::map_port("COM12", "");
}

TEST_F(home_page, a_refreshed_port_list_keeps_what_was_typed) {
    type("combo_box_ex_serial", "COM77");
    com::map_port("COM12", "/dev/null");
    port_watcher_start();
    EXPECT_TRUE(wait([] { return combo_box_has_option_text(at("combo_box_ex_serial"), "COM12"); }));
    EXPECT_EQ(text(home(), "combo_box_ex_serial"), "COM77");
    com::map_port("COM12", "");
}

TEST_F(home_page, a_port_list_that_changes_does_not_disturb_typing) {
    EXPECT_EQ(user_does("click home_page/combo_box_ex_serial\nkey C\nkey O\nkey M"), "");
    com::map_port("COM12", "/dev/null");
    port_watcher_start();
    EXPECT_TRUE(wait([] { return combo_box_has_option_text(at("combo_box_ex_serial"), "COM12"); }));
    EXPECT_EQ(user_does("key 7\nkey 7\nkey Tab"), "");
    EXPECT_EQ(text(home(), "combo_box_ex_serial"), "COM77");
    com::map_port("COM12", "");
}

#ifndef _WIN32 // names cannot be mapped there, and Wine's registry keeps a port that is gone
TEST_F(home_page, a_port_that_was_pulled_out_leaves_the_list) {
    com::map_port("COM12", "/dev/null");
    port_watcher_start();
    EXPECT_TRUE(wait([] { return combo_box_has_option_text(at("combo_box_ex_serial"), "COM12"); }));
    com::map_port("COM12", "");
    port_watcher_start();
    EXPECT_TRUE(wait([] { return !combo_box_has_option_text(at("combo_box_ex_serial"), "COM12"); }));
}
#endif

} // namespace
