// Where the edited values stand, as the home page says it: through the program's own buttons, beside what the
// simulated module holds.
#include "app/edits.h"

#include "app/module_contents.h"
#include "app/paths.h"
#include "app/progress.h"
#include "app/settings.h"
#include "app/truth_line.h"
#include "dev_a/pages/vkt510a_pages.h"
#include "dev_b/pages/vkt610b_pages.h"
#include "dev_generic/pages/generic_pages.h"
#include "tests/support/app_fixture.h"
#include "tests/support/user.h"
#include "toolkit/core/idle.h"
#include "toolkit/table_view/table_view.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

struct edits : app_test {
    void SetUp() override {
        app_test::SetUp();
        settings_change([](settings& all) { all.check_after_write = false; });
        date_time_set_test_clock(&then);
    }
    void TearDown() override {
        date_time_set_test_clock(nullptr);
        settings_change([](settings& all) { all.check_after_write = false; });
        app_test::TearDown();
    }
    static std::string truth() { return text(home(), "truth_line"); }
    static std::string count() { return text(home(), "unwritten_count"); }
    static std::string title() { return window_manager_get_title(window_manager()); }
    static std::string code() { return text(home(), "mledit"); }
    /// What the script's failure says that it found.
    static std::string tooltip(const std::string& path) {
        return user_tries("expect home_page/" + path + " tooltip nothing\n");
    }
    std::string run_and_close(const char* button) {
        const std::string said = run(button);
        press_ok();
        return said;
    }
    static constexpr date_time_t then{.hour = 14, .minute = 32, .second = 9, .year = 2025, .month = 3, .day = 4};
};

TEST_F(edits, at_the_start_all_is_the_default_and_unread) {
    EXPECT_EQ(truth(), "默认值，尚未读取");
    EXPECT_EQ(user_does("expect home_page/truth_line state \"\""), "");
    EXPECT_EQ(count(), "");
    EXPECT_EQ(title(), "VKTCfgTools");
    EXPECT_EQ(text(home(), "tab_changes"), "改动");
    EXPECT_FALSE(enabled("button_undo"));
    EXPECT_FALSE(enabled("button_redo"));
    EXPECT_FALSE(enabled("button_check"));
    EXPECT_FALSE(enabled("button_all_back"));
    EXPECT_FALSE(enabled("button_all_default"));
    EXPECT_FALSE(enabled("button_copy_changes"));
}

TEST_F(edits, the_line_follows_connecting_reading_editing_writing_and_leaving) {
    connect("VKT531A");
    EXPECT_EQ(truth(), "默认值，尚未读取");
    pick("page_change/combo_box_ex", "透明转换");
    EXPECT_EQ(truth(), "1 项未写入，尚未读取");
    EXPECT_EQ(run_and_close("button_read"), "读配置完成");
    EXPECT_EQ(truth(), "与模块一致 14:32");
    EXPECT_EQ(title(), "VKTCfgTools");
    pick("page_change/combo_box_ex", "自定义协议转换");
    EXPECT_EQ(truth(), "1 项未写入");
    EXPECT_EQ(user_does("expect home_page/truth_line state warning"), "");
    EXPECT_EQ(count(), "未写入的改动 1 项");
    EXPECT_EQ(title(), "未写入的改动 1 项 - VKTCfgTools");
    EXPECT_TRUE(widget_get_marked(widget_lookup(at("page_change"), "combo_box_ex")));
    EXPECT_TRUE(widget_get_marked(at("table_button_change")));
    EXPECT_FALSE(widget_get_marked(at("table_button_can")));
    EXPECT_EQ(run_and_close("button_write"), "写配置完成");
    EXPECT_EQ(truth(), "与模块一致 14:32");
    EXPECT_EQ(user_does("expect home_page/truth_line state ok"), "");
    EXPECT_FALSE(widget_get_marked(widget_lookup(at("page_change"), "combo_box_ex")));
    EXPECT_FALSE(widget_get_marked(at("table_button_change")));
    click(home(), "button2");
    ASSERT_TRUE(wait([] { return enabled("button"); }));
    EXPECT_EQ(truth(), "1 项未写入，尚未读取") << "of the defaults";
}

TEST_F(edits, a_field_says_what_the_module_and_the_defaults_hold) {
    plug("VKT531A");
    std::vector<uint8_t> memory = module->memory();
    memory[42] = 1;
    module->set_memory(memory);
    run_and_close("button");
    const auto said = [] { return tooltip("page_change/combo_box_ex"); };
    EXPECT_THAT(said(), HasSubstr("默认: 透明带标识转换"));
    EXPECT_THAT(said(), Not(HasSubstr("模块中")));
    run_and_close("button_read");
    EXPECT_THAT(said(), HasSubstr("模块中: 透明转换  默认: 透明带标识转换"));
    click(home(), "button2");
    ASSERT_TRUE(wait([] { return enabled("button"); }));
    EXPECT_THAT(said(), Not(HasSubstr("模块中"))) << "the module was left";
}

TEST_F(edits, a_field_of_one_bit_says_its_default) {
    EXPECT_EQ(user_does("pick combo_box_ex_dev VKT610B\n"), "");
    EXPECT_THAT(tooltip("page_vkt610b_change/spin_box_3_vkt610b"), HasSubstr("默认: 2 路"));
    EXPECT_THAT(tooltip("page_vkt610b_change/change_label_4_2_vkt610b"), testing::Not(HasSubstr("默认")))
        << "the module's own version";
}

TEST_F(edits, another_model_is_another_module) {
    connect("VKT531A");
    run_and_close("button_read");
    ASSERT_TRUE(device(generic_pages).in_module);
    click(home(), "button2");
    ASSERT_TRUE(wait([] { return enabled("button"); }));
    EXPECT_FALSE(device(generic_pages).in_module);
    dev_module_holds(device(generic_pages), device(generic_pages).image);
    pick("combo_box_ex_dev", "VKT530A");
    EXPECT_FALSE(device(generic_pages).in_module);
}

TEST_F(edits, a_write_that_fails_leaves_nothing_known) {
    connect("VKT531A");
    run_and_close("button_read");
    module->plan({.what = sim::fault::silent, .times = 0xFFFFFFFF});
    EXPECT_NE(run_and_close("button_write"), "写配置完成");
    EXPECT_FALSE(device(generic_pages).in_module);
    EXPECT_EQ(truth(), "默认值，尚未读取");
}

TEST_F(edits, a_write_that_fails_without_an_error_log_leaves_nothing_known_all_the_same) {
    connect("VKT531A");
    run_and_close("button_read");
    const std::string usual = std::exchange(error_log_path(), "..");
    module->plan({.what = sim::fault::silent, .times = 0xFFFFFFFF});
    run("button_write");
    error_log_path() = usual;
    EXPECT_FALSE(device(generic_pages).in_module);
    EXPECT_EQ(truth(), "默认值，尚未读取");
}

TEST_F(edits, a_read_that_fails_leaves_what_was_known) {
    connect("VKT531A");
    run_and_close("button_read");
    module->plan({.what = sim::fault::silent, .times = 1});
    EXPECT_NE(run_and_close("button_read"), "读配置完成");
    EXPECT_TRUE(device(generic_pages).in_module);
    EXPECT_EQ(truth(), "与模块一致 14:32");
}

TEST_F(edits, taking_back_and_doing_again_by_the_keys_and_byte_for_byte) {
    const std::string start = code();
    pick("page_change/combo_box_ex", "透明转换");
    const std::string edited = code();
    click(home(), "button_default");
    const std::string restored = code();
    ASSERT_NE(start, edited);
    EXPECT_THAT(tooltip("button_undo"), HasSubstr("“恢复默认”"));
    EXPECT_EQ(user_does("key Ctrl+Z\nwait home_page/button_redo enabled 1\n"), "");
    ASSERT_TRUE(wait([&] { return code() == edited; })) << code();
    EXPECT_EQ(text(at("page_change"), "combo_box_ex"), "透明转换");
    EXPECT_THAT(tooltip("button_undo"), HasSubstr("“转换模式”"));
    EXPECT_EQ(user_does("key Ctrl+Z\nwait home_page/button_undo enabled 0\n"), "");
    EXPECT_EQ(code(), start);
    EXPECT_EQ(user_does("key Ctrl+Y\nwait home_page/button_undo enabled 1\nkey Ctrl+Y\n"
                        "wait home_page/button_redo enabled 0\n"),
              "");
    EXPECT_EQ(code(), restored) << "with the blanks of restored defaults";
    EXPECT_EQ(edits_redo(home()), RET_FAIL);
}

TEST_F(edits, the_list_takes_back_and_does_again_too) {
    const std::string start = code();
    pick("page_change/combo_box_ex", "透明转换");
    const std::string edited = code();
    click(home(), "tab_changes");
    EXPECT_TRUE(enabled("button_list_undo"));
    EXPECT_FALSE(enabled("button_list_redo"));
    EXPECT_THAT(tooltip("button_list_undo"), HasSubstr("撤销“转换模式”"));
    click(home(), "button_list_undo");
    ASSERT_TRUE(wait([&] { return code() == start; })) << code();
    EXPECT_FALSE(enabled("button_list_undo"));
    EXPECT_TRUE(enabled("button_list_redo"));
    EXPECT_THAT(tooltip("button_list_redo"), HasSubstr("重做“转换模式”"));
    click(home(), "button_list_redo");
    EXPECT_TRUE(wait([&] { return code() == edited; })) << code();
}

// Choosing another model of the family has shown the defaults without the blanks.
TEST_F(edits, an_edit_is_taken_back_to_the_code_as_it_was_shown_before_it) {
    pick("page_change/combo_box_ex", "透明转换");
    click(home(), "button_default");
    const std::string restored = code();
    pick("combo_box_ex_dev", "VKT530A");
    const std::string shown = code();
    ASSERT_NE(shown, restored);
    pick("page_change/combo_box_ex", "自定义协议转换");
    EXPECT_EQ(edits_undo(home()), RET_OK);
    settle();
    EXPECT_EQ(code(), shown);
}

// The field's own taking back of letters does not come first.
TEST_F(edits, the_keys_work_while_a_field_has_the_keyboard) {
    click(home(), "table_button_can");
    const std::string start = code();
    EXPECT_EQ(user_does("type home_page/page_can/edit_send 12345678\nkey Ctrl+Z\n"), "");
    EXPECT_EQ(code(), start) << "what was not stored yet has nothing to take back";
    EXPECT_EQ(user_does("type home_page/page_can/edit_send 12345678\nkey Tab\n"), "");
    ASSERT_NE(code(), start);
    EXPECT_EQ(user_does("type home_page/page_can/edit_send 87654321\nkey Ctrl+Z\n"), "");
    ASSERT_TRUE(wait([] { return enabled("button_redo"); }));
    EXPECT_THAT(code(), HasSubstr("12 34 56 78"));
}

TEST_F(edits, strokes_at_a_number_are_one_step) {
    pick("combo_box_ex_dev", "VKT610B");
    click(home(), "vkt610b_tab_button_spi");
    const std::string start = code();
    EXPECT_EQ(user_does("type home_page/page_vkt610b_spi/spin_box_number_vkt610b 42\nkey Tab\n"), "");
    ASSERT_NE(code(), start);
    EXPECT_EQ(edits_undo(home()), RET_OK);
    settle();
    EXPECT_EQ(code(), start);
    EXPECT_EQ(edits_undo(home()), RET_FAIL);
}

TEST_F(edits, the_list_has_what_a_write_would_change_and_leads_to_it) {
    plug("VKT531A");
    std::vector<uint8_t> memory = module->memory();
    memory[4] = 12; // CAN 500K
    module->set_memory(memory);
    run_and_close("button");
    run_and_close("button_read");
    click(home(), "table_button_can");
    pick("page_can/combo_box_ex_bps", "250K");
    EXPECT_EQ(text(home(), "tab_changes"), "改动 1");
    click(home(), "tab_changes");
    EXPECT_THAT(text(home(), "changes_note"), HasSubstr("与模块中的值相比，写入会改变 1 项"));
    widget* table = at("changes_table");
    ASSERT_TRUE(wait([&] { return table_client_get_rows(table) == 1; }));
    table_client_fill(table);
    EXPECT_EQ(text(table, "change_field"), "CAN · 波特率");
    EXPECT_EQ(text(table, "change_values"), "模块中: 500K bps　当前: 250K bps　默认: 125K bps");
    click(home(), "button_copy_changes");
    EXPECT_EQ(clip_board_get_text(), "CAN · 波特率\t模块中: 500K bps\t当前: 250K bps\t默认: 125K bps\n");

    click(home(), "table_button_change");
    EXPECT_EQ(user_does("click home_page/changes_table/change_row/change_field\nkey Enter\n"), "");
    EXPECT_TRUE(widget_get_focused(widget_lookup(at("page_can"), "combo_box_ex_bps")));
    EXPECT_TRUE(widget_get_visible(at("page_can")));

    click(table, "button_row_default");
    EXPECT_EQ(text(at("page_can"), "combo_box_ex_bps"), "125K");
    ASSERT_TRUE(wait([&] { return table_client_get_rows(table) == 1; }));
    click(table, "button_row_back");
    EXPECT_EQ(text(at("page_can"), "combo_box_ex_bps"), "500K");
    EXPECT_EQ(truth(), "与模块一致 14:32");
    EXPECT_EQ(edits_undo(home()), RET_OK);
    settle();
    EXPECT_EQ(text(at("page_can"), "combo_box_ex_bps"), "125K");
    click(home(), "button_all_back");
    EXPECT_EQ(text(at("page_can"), "combo_box_ex_bps"), "500K");
    EXPECT_THAT(tooltip("button_undo"), HasSubstr("“全部还原”"));
    click(home(), "button_all_default");
    EXPECT_EQ(text(at("page_can"), "combo_box_ex_bps"), "125K");
    EXPECT_THAT(tooltip("button_undo"), HasSubstr("“全部默认”"));
    EXPECT_FALSE(enabled("button_all_default"));
}

// The press stores what is being typed, and the rows move under the pointer.
TEST_F(edits, a_row_s_button_acts_on_the_field_that_was_pressed) {
    click(home(), "table_button_can");
    click(home(), "tab_changes");
    for (const char* button : {"button_row_back", "button_row_default"}) {
        click(at("page_can"), "check_button");
        ASSERT_TRUE(wait([] { return text(at("changes_table"), "change_field") == "CAN · 启用接收滤波"; }));
        EXPECT_EQ(user_does(std::string("type home_page/page_can/edit_send 12345678\n") +
                            "press home_page/changes_table/change_row[0]/" + button + " 150\n"),
                  "");
        click(home(), "button_copy_changes");
        EXPECT_EQ(clip_board_get_text(), "CAN · 帧标识\t当前: 12 34 56 78\t默认: 00 00 00 00\n") << button;
        click(home(), "button_all_default");
    }
}

TEST_F(edits, the_list_names_what_is_always_written_the_same_way) {
    plug("VKT531A");
    std::vector<uint8_t> memory = module->memory();
    memory[1] = 7; // data bits
    module->set_memory(memory);
    run_and_close("button");
    run_and_close("button_read");
    EXPECT_FALSE(enabled("button_all_default")) << "it would put nothing back";
    click(home(), "button_default");
    EXPECT_EQ(truth(), "与模块一致 14:32");
    EXPECT_THAT(text(home(), "changes_note"), EndsWith("\n写入时总是同一个值，不算改动：UART · 数据位"));
}

TEST_F(edits, the_line_leads_to_the_list) {
    click(home(), "truth_line");
    EXPECT_TRUE(visible("changes_table"));
    click(home(), "tab_code");
    EXPECT_FALSE(visible("changes_table"));
    EXPECT_TRUE(visible("mledit"));
}

TEST_F(edits, a_refused_input_comes_first_in_the_line_which_leads_to_it) {
    pick("combo_box_ex_dev", "VKT510A");
    click(home(), "vkt510a_tab_button_uart");
    EXPECT_EQ(user_does("type home_page/page_vkt510a_uart/spin_box_distance_vkt510a 999\nkey Tab\n"), "");
    EXPECT_EQ(truth(), "有 1 项输入未被接受");
    EXPECT_EQ(user_does("expect home_page/truth_line state failed"), "");
    click(home(), "vkt510a_tab_button_can");
    click(home(), "truth_line");
    EXPECT_TRUE(visible("page_vkt510a_uart"));
}

TEST_F(edits, the_line_leads_to_a_refused_number_with_its_reason_standing) {
    pick("combo_box_ex_dev", "VKT510A");
    click(home(), "vkt510a_tab_button_uart");
    widget* box = widget_lookup(at("page_vkt510a_uart"), "spin_box_distance_vkt510a");
    EXPECT_EQ(user_does("type home_page/page_vkt510a_uart/spin_box_distance_vkt510a 999\nkey Tab\n"), "");
    const std::string line = widget_get_refused_line(box);
    const std::string why = tooltip("page_vkt510a_uart/spin_box_distance_vkt510a");
    ASSERT_NE(line, "");
    click(home(), "vkt510a_tab_button_can");
    click(home(), "truth_line");
    EXPECT_TRUE(widget_get_focused(box));
    EXPECT_EQ(widget_get_refused_line(box), line);
    EXPECT_EQ(tooltip("page_vkt510a_uart/spin_box_distance_vkt510a"), why);
    EXPECT_EQ(truth(), "有 1 项输入未被接受");
    click(home(), "truth_line");
    EXPECT_EQ(widget_get_refused_line(box), line) << "once more";
    click(home(), "vkt510a_tab_button_can");
    click(home(), "vkt510a_tab_button_uart");
    EXPECT_FALSE(widget_get_refused(box)) << "by its tab";
}

TEST_F(edits, the_line_leads_to_a_refused_text_as_it_was_typed) {
    click(home(), "table_button_can");
    EXPECT_EQ(user_does("type home_page/page_can/edit_send xyz\nkey Tab\n"), "");
    widget* edit = widget_lookup(at("page_can"), "edit_send");
    const std::string typed = text(at("page_can"), "edit_send");
    const std::string line = widget_get_refused_line(edit);
    ASSERT_TRUE(widget_get_refused(edit)) << typed;
    click(home(), "table_button_change");
    click(home(), "truth_line");
    EXPECT_TRUE(widget_get_focused(edit));
    EXPECT_EQ(text(at("page_can"), "edit_send"), typed);
    EXPECT_EQ(widget_get_refused_line(edit), line);
    EXPECT_EQ(user_does("key Tab\n"), "");
    EXPECT_EQ(text(at("page_can"), "edit_send"), typed);
    EXPECT_EQ(truth(), "有 1 项输入未被接受");
}

TEST_F(edits, the_line_leads_to_what_has_come_in_a_refused_number_s_place) {
    pick("combo_box_ex_dev", "VKT510A");
    click(home(), "vkt510a_tab_button_uart");
    EXPECT_EQ(user_does("type home_page/page_vkt510a_uart/spin_box_distance_vkt510a 9\nkey Tab\n"
                        "type home_page/page_vkt510a_uart/spin_box_distance_vkt510a 999\nkey Tab\n"),
              "");
    EXPECT_EQ(text(at("page_vkt510a_uart"), "spin_box_distance_vkt510a"), "9");
    click(home(), "vkt510a_tab_button_can");
    click(home(), "button_default");
    click(home(), "truth_line");
    EXPECT_TRUE(visible("page_vkt510a_uart"));
    EXPECT_EQ(text(at("page_vkt510a_uart"), "spin_box_distance_vkt510a"), "2");
    EXPECT_EQ(truth(), "默认值，尚未读取");
}

TEST_F(edits, a_check_compares_and_touches_nothing) {
    connect("VKT510A");
    EXPECT_EQ(run_and_close("button_check"), "校验完成：一致");
    EXPECT_EQ(truth(), "与模块一致 14:32");
    pick("page_vkt510a_change/combo_box_ex_vkt510a", "透明转换");
    const std::string edited = code();
    EXPECT_EQ(run("button_check"), "校验完成：1 项不同");
    EXPECT_FALSE(visible("changes_table"));
    press_ok();
    EXPECT_EQ(code(), edited);
    EXPECT_TRUE(visible("changes_table"));
    EXPECT_EQ(module->count().reads, 2U);
    EXPECT_EQ(module->count().writes, 0U);
}

// Its buttons are there before its last report is taken.
TEST_F(edits, a_check_that_begins_before_a_write_s_end_is_taken_is_not_that_write_s) {
    settings_change([](settings& all) { all.check_after_write = true; });
    dev_obj& dev = device(generic_pages);
    const std::vector<uint8_t> written = dev.image;
    progress_open_for_run();
    module_session_began(dev, 1, session_kind::write, module_check::none);
    tk_object_set_prop_uint8(dev.props.get(), "uart_f_distance", 9);
    dev_encode(dev);
    const std::vector<uint8_t> edited = dev.image;
    module_session_began(dev, 2, session_kind::read, module_check::by_hand);
    EXPECT_FALSE(module_session_ended(home(), dev, 1));
    ASSERT_TRUE(dev.in_module);
    EXPECT_EQ(dev.in_module->bytes, written);
    EXPECT_FALSE(session_any_running()) << "no other check besides";
    EXPECT_EQ(text(progress(), "label3"), "");
    EXPECT_TRUE(module_reply(dev, 2, written));
    EXPECT_FALSE(module_session_ended(home(), dev, 2));
    EXPECT_EQ(text(progress(), "label3"), "校验完成：1 项不同");
    EXPECT_EQ(dev.image, edited);
}

TEST_F(edits, a_failure_of_one_session_is_not_the_next_one_s) {
    dev_obj& dev = device(generic_pages);
    module_session_began(dev, 1, session_kind::read, module_check::by_hand);
    module_session_began(dev, 2, session_kind::write, module_check::none);
    module_session_failed(dev, {.run = 1, .kind = session_kind::read, .log_line = "", .text = ""});
    module_session_failed(dev, {.run = 0, .kind = session_kind::write, .log_line = "", .text = ""});
    EXPECT_TRUE(module_reply(dev, 1, dev.image)) << "a check that failed takes nothing over";
    EXPECT_FALSE(module_reply(dev, 2, dev.image));
    dev_module_unknown(dev);
    EXPECT_FALSE(module_session_ended(home(), dev, 1));
    EXPECT_FALSE(dev.in_module);
    EXPECT_FALSE(module_session_ended(home(), dev, 2));
    EXPECT_TRUE(dev.in_module);
    dev_module_unknown(dev);
    EXPECT_FALSE(module_session_ended(home(), dev, 2));
    EXPECT_FALSE(dev.in_module) << "an end counts once";
}

TEST_F(edits, a_check_of_a_module_that_is_silent_fails_like_a_read) {
    connect("VKT531A");
    module->plan({.what = sim::fault::silent, .times = 1});
    EXPECT_THAT(run("button_check"), Not(StartsWith("校验完成")));
    EXPECT_EQ(text(progress(), "label"), "   连接失败");
    press_ok();
    EXPECT_EQ(run_and_close("button_read"), "读配置完成") << "is taken over again";
    EXPECT_EQ(run_and_close("button_check"), "校验完成：一致");
}

TEST_F(edits, a_check_after_writing_fails_with_the_names_of_what_differs) {
    settings_change([](settings& all) { all.check_after_write = true; });
    connect("VKT531A");
    click(home(), "button_write");
    ASSERT_TRUE(wait([] { return progress() != nullptr && text(progress(), "label3") == "校验完成：一致"; }));
    press_ok();
    EXPECT_EQ(module->count().writes, 1U);
    EXPECT_EQ(module->count().reads, 1U);
    // The reply after the acknowledgement says that byte 42 is 3; a frame has four bytes before it.
    module->plan({.what = sim::fault::patch, .after = 1, .times = 1, .argument = 46 * 256 + 3});
    pick("page_change/combo_box_ex", "透明转换");
    click(home(), "button_write");
    ASSERT_TRUE(
        wait([] { return progress() != nullptr && text(progress(), "label3") == "写入后校验不一致：转换模式"; }));
    EXPECT_EQ(text(progress(), "label"), "   连接失败");
    press_ok();
    EXPECT_EQ(truth(), "1 项未写入");
    EXPECT_EQ(buttons(), "drwf");
}

TEST_F(edits, a_check_after_writing_names_three_and_counts_the_rest) {
    dev_obj& dev = device(generic_pages);
    const char* keys[] = {"uart_f_distance", "change_len", "change_star", "spi_ff_time"};
    // In the order of the pages.
    const char* told[] = {"帧间隔", "标识长度、帧间隔", "起始位置、标识长度、帧间隔",
                          "起始位置、标识长度、帧时间 等 4 项"};
    const std::vector<uint8_t> defaults = dev.image;
    for (uint32_t run = 1; run <= std::size(keys); ++run) {
        tk_object_set_prop_uint8(dev.props.get(), keys[run - 1], 7);
        dev_encode(dev);
        module_session_began(dev, run, session_kind::read, module_check::after_write);
        module_reply(dev, run, defaults);
        const auto failure = module_session_ended(home(), dev, run);
        ASSERT_TRUE(failure);
        EXPECT_EQ(failure->text, std::string("写入后校验不一致：") + told[run - 1]);
    }
}

TEST_F(edits, what_nobody_has_noted_is_a_step_too) {
    dev_obj& dev = device(generic_pages);
    const auto change = [&dev](uint8_t value) {
        tk_object_set_prop_uint8(dev.props.get(), "uart_f_distance", value);
        dev_encode(dev);
    };
    const std::vector<uint8_t> before = dev.image;
    change(7);
    EXPECT_EQ(edits_undo(home()), RET_OK);
    EXPECT_EQ(dev.image, before);
    change(9);
    EXPECT_EQ(edits_redo(home()), RET_FAIL) << "what was taken back is not to be had any more";
    EXPECT_EQ(tk_object_get_prop_uint8(dev.props.get(), "uart_f_distance", 0), 9);
}

TEST_F(edits, without_a_model_nothing_is_shown) {
    pick("page_change/combo_box_ex", "透明转换");
    EXPECT_EQ(edits_undo(home()), RET_OK);
    const std::string model = current_model();
    set_current_model("none");
    settle(); // the step is shown later
    edits_show(home());
    EXPECT_EQ(edits_undo(home()), RET_FAIL);
    EXPECT_EQ(truth(), "1 项未写入，尚未读取") << "as it was";
    set_current_model(model);
    edits_show(home());
    EXPECT_EQ(truth(), "默认值，尚未读取");
}

TEST(truth_line, says_the_worst_first) {
    const family_descriptor* list[] = {generic_pages.of};
    const auto dev = dev_open(list, "VKT531A");
    EXPECT_EQ(truth_line_text(*dev, 0, 0), "默认值，尚未读取");
    EXPECT_EQ(truth_line_text(*dev, 3, 0), "3 项未写入，尚未读取");
    EXPECT_EQ(truth_line_text(*dev, 3, 2), "有 2 项输入未被接受");
    dev->in_module = module_image{dev->image, {.hour = 7, .minute = 5}};
    EXPECT_EQ(truth_line_text(*dev, 0, 0), "与模块一致 07:05");
    EXPECT_EQ(truth_line_text(*dev, 3, 0), "3 项未写入");
}

} // namespace
