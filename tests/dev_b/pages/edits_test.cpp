// What is accepted, refused and shown on the pages.
#include "tests/dev_b/pages/b_page.h"
#include "tests/support/pattern.h"

#include <algorithm>

namespace {

// ---- what is accepted

struct edit_case {
    const char* page;
    const char* line;
    const char* key;
    uint32_t value;
    int reg;
    const char* listed;
};
const edit_case edit_cases[] = {
    {"page_vkt610b_change", "pick @/combo_box_ex_1_vkt610b 自定义转换", "change_mode_vkt610b", 0, 0, "00000000"},
    {"page_vkt610b_change", "type @/spin_box_3_vkt610b 1", "change_can_channel_vkt610b", 0, 1, "02000000"},
    {"page_vkt610b_uart_1", "pick @/combo_box_ex_bps_1_vkt610b 7M", "uart1_bps_vkt610b", 24, 2, "18000000"},
    {"page_vkt610b_uart_2", "pick @/combo_box_ex_bps_2_vkt610b 300", "uart2_bps_vkt610b", 0, 3, "00000000"},
    {"page_vkt610b_spi", "type @/spin_box_number_vkt610b 100", "spi_picture_vkt610b", 99, 4, "63090000"},
    {"page_vkt610b_spi", "type @/spin_box_time_vkt610b 256", "spi_time_vkt610b", 255, 4, "09FF0000"},
    {"page_vkt610b_canfd_1", "pick @/combo_box_ex_bps_vkt610b_canfd1 40k", "canfd1_speed_zc_vkt610b", 0, 5,
     "00061A00"},
    {"page_vkt610b_canfd_1", "pick @/combo_box_ex_rejector_vkt610b_canfd1 2M", "canfd1_speed_data_vkt610b", 4, 5,
     "0A041A00"},
    {"page_vkt610b_canfd_1", "pick @/combo_box_ex_mode_vkt610b_canfd1 \"CAN FD模式\"", "canfd1_mode_vkt610b", 1, 5,
     "0A061900"},
    {"page_vkt610b_canfd_1", "pick @/combo_box_ex_reject_mode_vkt610b_canfd1 扩展帧滤波",
     "canfd1_leach_mode_vkt610b", 1, 5, "0A061600"},
    {"page_vkt610b_canfd_1", "click @/check_button_vkt610b_canfd1", "canfd1_brs_vkt610b", 0, 5, "0A060A00"},
    {"page_vkt610b_canfd_1", "click @/bps_do_button_vkt610b_canfd1", "canfd1_brs_do_button_vkt610b", 1, 5,
     "0A063A00"},
    {"page_vkt610b_canfd_2", "pick @/combo_box_ex_bps_vkt610b_canfd2 500k", "canfd2_speed_zc_vkt610b", 8, 6,
     "08061A00"},
    {"page_vkt610b_canfd_2", "pick @/combo_box_ex_rejector_vkt610b_canfd2 400k", "canfd2_speed_data_vkt610b", 0, 6,
     "0A001A00"},
    {"page_vkt610b_canfd_2", "click @/check_button_vkt610b_canfd2", "canfd2_brs_vkt610b", 0, 6, "0A060A00"},
    {"page_vkt610b_canfd_2", "click @/bps_do_button_vkt610b_canfd2", "canfd2_brs_do_button_vkt610b", 1, 6,
     "0A063A00"},
};

class b_edits : public b_page, public testing::WithParamInterface<edit_case> {};

TEST_P(b_edits, store_and_refresh_the_listing) {
    const edit_case& edit = GetParam();
    show(edit.page);
    ASSERT_NE(listed(edit.reg), edit.listed);
    does(std::string(edit.line) + "\n");
    EXPECT_EQ(value(edit.key), edit.value);
    EXPECT_EQ(listed(edit.reg), edit.listed);
    EXPECT_EQ(console(), "");
}

TEST_P(b_edits, end_there_when_the_store_refuses) {
    const edit_case& edit = GetParam();
    show(edit.page);
    const std::string before = code();
    const uint32_t kept = value(edit.key);
    set("canfd1_check0_vkt610b", 0x55); // behind the page's back: a refreshed listing would show it
    refuse(edit.key);
    does(std::string(edit.line) + "\n");
    std::string name = edit.key; // the two SPI boxes are named by their widgets
    if (name == "spi_picture_vkt610b") name = "spin_box_number_vkt610b";
    if (name == "spi_time_vkt610b") name = "spin_box_time_vkt610b";
    EXPECT_THAT(console(), FitsPattern("(set " + name + " failed!\n)+")); // a line for every digit
    EXPECT_EQ(value(edit.key), kept);
    EXPECT_EQ(code(), before);
}
INSTANTIATE_TEST_SUITE_P(all, b_edits, testing::ValuesIn(edit_cases), [](const auto& one) {
    return std::string(one.param.key) + "_" + std::to_string(one.param.value);
});

// ---- what is refused

struct refused_case {
    const char* page;
    const char* name;
    const char* key;
    int shown_bound; ///< the first value on show that is refused
    const char* message;
    int shown_before = -1; ///< what the digits before the last one gave; -1: the bound has one digit
};
const refused_case refused_cases[] = {
    {"page_vkt610b_change", "combo_box_ex_1_vkt610b", "change_mode_vkt610b", 2, "mode_value is error\n"},
    {"page_vkt610b_change", "spin_box_3_vkt610b", "change_can_channel_vkt610b", 3, "changal_value is error\n"},
    {"page_vkt610b_change", "combo_box_ex_2_vkt610b", "change_protcol_vkt610b", 5, ""},
    {"page_vkt610b_uart_1", "combo_box_ex_bps_1_vkt610b", "uart1_bps_vkt610b", 25, "uart1bps_value is error\n"},
    {"page_vkt610b_uart_2", "combo_box_ex_bps_2_vkt610b", "uart2_bps_vkt610b", 25, "uart2bps_value is error\n"},
    {"page_vkt610b_spi", "spin_box_number_vkt610b", "spi_picture_vkt610b", 101, "box_number_value is error\n", 10},
    {"page_vkt610b_spi", "spin_box_time_vkt610b", "spi_time_vkt610b", 257, "box_time_value is error\n", 25},
    {"page_vkt610b_canfd_1", "combo_box_ex_bps_vkt610b_canfd1", "canfd1_speed_zc_vkt610b", 12,
     "canfd1_bps_zc_value is error\n"},
    {"page_vkt610b_canfd_1", "combo_box_ex_rejector_vkt610b_canfd1", "canfd1_speed_data_vkt610b", 8,
     "canfd1_bps_data_value is error\n"},
    {"page_vkt610b_canfd_1", "combo_box_ex_mode_vkt610b_canfd1", "canfd1_mode_vkt610b", 3,
     "canfd1_mode_work_value is error\n"},
    {"page_vkt610b_canfd_1", "combo_box_ex_reject_mode_vkt610b_canfd1", "canfd1_leach_mode_vkt610b", 3,
     "canfd1_reject_mode_work_value is error\n"},
    {"page_vkt610b_canfd_2", "combo_box_ex_bps_vkt610b_canfd2", "canfd2_speed_zc_vkt610b", 12,
     "canfd2_bps_zc_value is error\n"},
    {"page_vkt610b_canfd_2", "combo_box_ex_rejector_vkt610b_canfd2", "canfd2_speed_data_vkt610b", 8,
     "canfd2_bps_data_value is error\n"},
    {"page_vkt610b_canfd_2", "combo_box_ex_mode_vkt610b_canfd2", "canfd2_mode_vkt610b", 3,
     "canfd2_mode_work_value is error\n"},
    {"page_vkt610b_canfd_2", "combo_box_ex_reject_mode_vkt610b_canfd2", "canfd2_leach_mode_vkt610b", 3,
     "canfd2_reject_mode_work_value is error\n"},
};

/// A check box says 0 or 1 only: nothing a user can do reaches its bound.
const refused_case check_cases[] = {
    {"page_vkt610b_canfd_1", "check_button_vkt610b_canfd1", "canfd1_brs_vkt610b", 2,
     "canfd1_ac_button_value is error\n"},
    {"page_vkt610b_canfd_1", "bps_do_button_vkt610b_canfd1", "canfd1_brs_do_button_vkt610b", 2,
     "canfd1_brs_do_button_vkt610b is error\n"},
    {"page_vkt610b_canfd_2", "check_button_vkt610b_canfd2", "canfd2_brs_vkt610b", 2,
     "canfd2_ac_button_value is error\n"},
    {"page_vkt610b_canfd_2", "bps_do_button_vkt610b_canfd2", "canfd2_brs_do_button_vkt610b", 2,
     "canfd2_brs_do_button_vkt610b is error\n"},
};

TEST_F(b_page, every_row_of_a_number_has_its_bound_and_message) {
    std::vector<refused_case> expected(std::begin(refused_cases), std::end(refused_cases));
    expected.insert(expected.end(), std::begin(check_cases), std::end(check_cases));
    std::size_t bounded = 0;
    for (const page_table* table : vkt610b_pages.tables) {
        EXPECT_TRUE(table->rules.bounded && table->rules.whole_values) << table->name;
        for (const page_row& row : table->rows) {
            if (row.kind != row_kind::choice && row.kind != row_kind::check && row.kind != row_kind::number)
                continue;
            const auto found = std::ranges::find_if(expected, [&](const refused_case& one) {
                return std::string(one.page) == table->name && std::string(one.name) == row.name;
            });
            ASSERT_NE(found, expected.end()) << row.name;
            bounded++;
            EXPECT_STREQ(row.what->key, found->key);
            EXPECT_EQ(static_cast<int>(field_highest(*row.what)) + 1 + row.what->shown_above, found->shown_bound)
                << row.name;
            const char* name = row.refused_as == nullptr ? row.what->key : row.refused_as;
            EXPECT_EQ(name + std::string(" is error\n"), found->message);
        }
    }
    EXPECT_EQ(bounded, expected.size() - 1) << "the route says nothing";
}

class b_refusals : public b_page, public testing::WithParamInterface<refused_case> {};

TEST_P(b_refusals, keep_the_store_say_so_and_mark_the_field) {
    const refused_case& row = GetParam();
    show(row.page);
    widget* field = on_page(row.name);
    const uint32_t before = value(row.key);
    set("canfd1_check0_vkt610b", 0x7F); // behind the page's back
    if (widget_type(field) == "combo_box") {
        combo_box_append_option(field, row.shown_bound, "too far");
        combo_box_append_option(field, row.shown_bound - 1, "last good");
        does(std::string("pick @/") + row.name + " \"too far\"\n");
        EXPECT_EQ(value(row.key), before);
    } else {
        // Digit by digit; what the first digits give is stored.
        does(std::string("type @/") + row.name + " " + std::to_string(row.shown_bound) + "\n");
        EXPECT_EQ(value(row.key), row.shown_before < 0 ? before : static_cast<uint32_t>(row.shown_before - 1));
    }
    EXPECT_EQ(console(), row.message);
    EXPECT_TRUE(widget_get_refused(field));
    EXPECT_EQ(widget_get_value_int(field), row.shown_bound); // what was refused stays on show
    EXPECT_EQ(listed(8), "7F000000");                        // the listing is refreshed all the same
    if (widget_type(field) == "spin_box") {
        // Left, it shows what is stored, and the mark says what was not taken.
        const std::string stored = std::to_string(value(row.key) + 1);
        does(tk_format("key Tab\nexpect @/%s text %s\nexpect @/%s refused 1\nexpect @/%s tooltip \"未采用 "
                       "%d：取值须小于 %d，实际保存的是 %s\"\n",
                       row.name, stored.c_str(), row.name, row.name, row.shown_bound, row.shown_bound,
                       stored.c_str()));
    }
    if (widget_type(field) == "combo_box")
        does(std::string("pick @/") + row.name + " \"last good\"\n");
    else
        does(std::string("type @/") + row.name + " 1\ntype @/" + row.name + " " +
             std::to_string(row.shown_bound - 1) + "\n");
    EXPECT_FALSE(widget_get_refused(field));
    EXPECT_EQ(console(), "");
}
INSTANTIATE_TEST_SUITE_P(all, b_refusals, testing::ValuesIn(refused_cases),
                         [](const auto& one) { return std::string(one.param.key); });

TEST_F(b_page, setting_the_channel_spin_box_to_3_stores_nothing) {
    show("page_vkt610b_change");
    EXPECT_EQ(shown("spin_box_3_vkt610b"), "2");
    does("type @/spin_box_3_vkt610b 3\n");
    EXPECT_EQ(console(), "changal_value is error\n");
    EXPECT_EQ(value("change_can_channel_vkt610b"), 1U);
    does("type @/spin_box_3_vkt610b 0\nexpect @/spin_box_3_vkt610b tooltip \"未采用：取值须大于 0\"\nkey Tab\n"
         "expect @/spin_box_3_vkt610b tooltip \"未采用 0：取值须大于 0，实际保存的是 2\"\n");
    EXPECT_EQ(console(), "changal_value is error\n");
    EXPECT_EQ(value("change_can_channel_vkt610b"), 1U);
}

TEST_F(b_page, spi_values_below_the_range_are_held_to_0_and_above_it_refused_as_a_whole) {
    show("page_vkt610b_spi");
    does("type @/spin_box_number_vkt610b 0\ntype @/spin_box_time_vkt610b 0\n");
    EXPECT_EQ(value("spi_picture_vkt610b"), 0U);
    EXPECT_EQ(value("spi_time_vkt610b"), 0U);
    EXPECT_EQ(listed(4), "00000000");
    EXPECT_EQ(console(), "");
    EXPECT_TRUE(widget_get_refused(on_page("spin_box_time_vkt610b"))); // shows 0, stands for 1
    does("key Tab\nexpect @/spin_box_time_vkt610b text 1\n"
         "expect @/spin_box_time_vkt610b tooltip \"未采用 0：实际保存的是 1\"\n");
    does("type @/spin_box_time_vkt610b 300\n"); // 3, 30; the low byte of 299 is not taken
    EXPECT_EQ(value("spi_time_vkt610b"), 29U);
    EXPECT_EQ(console(), "box_time_value is error\n");
    does("key Tab\nexpect @/spin_box_time_vkt610b text 30\nexpect @/spin_box_time_vkt610b refused 1\n");
    show("page_vkt610b_spi"); // shown again: the stored value, no mark
    EXPECT_EQ(shown("spin_box_time_vkt610b"), "30");
    EXPECT_FALSE(widget_get_refused(on_page("spin_box_time_vkt610b")));
}

// ---- route

TEST_F(b_page, each_route_stores_its_pair) {
    const std::tuple<const char*, uint32_t, uint32_t, const char*> routes[] = {
        {"UART1转CANFD1", 0, 0, "00000000"},
        {"UART1转CANFD1和CANFD2", 0, 1, "01000000"},
        {"UART1和UART2转CANFD1和CANFD2", 1, 1, "03000000"},
        {"SPI转CANFD1", 2, 0, "04000000"},
        {"SPI转CANFD1和CANFD2", 2, 1, "05000000"},
    };
    show("page_vkt610b_change");
    for (const auto& [text, protocol, channel, bytes] : routes) {
        does(std::string("pick @/combo_box_ex_2_vkt610b ") + text + "\n");
        EXPECT_EQ(value("change_protcol_vkt610b"), protocol);
        EXPECT_EQ(value("change_can_channel_vkt610b"), channel);
        EXPECT_EQ(shown("spin_box_3_vkt610b"), std::to_string(channel + 1));
        EXPECT_EQ(listed(1), bytes);
    }
    EXPECT_EQ(console(), "");
}

TEST_F(b_page, the_channel_spin_box_refreshes_the_route) {
    set("change_protcol_vkt610b", 2);
    show("page_vkt610b_change");
    EXPECT_EQ(shown("combo_box_ex_2_vkt610b"), "SPI转CANFD1和CANFD2");
    does("type @/spin_box_3_vkt610b 1\n");
    EXPECT_EQ(shown("combo_box_ex_2_vkt610b"), "SPI转CANFD1");
}

TEST_F(b_page, a_pair_without_a_route_shows_the_first) {
    set("change_protcol_vkt610b", 1);
    set("change_can_channel_vkt610b", 0);
    show("page_vkt610b_change");
    EXPECT_EQ(shown("combo_box_ex_2_vkt610b"), "UART1转CANFD1");
    set("change_protcol_vkt610b", 3);
    show("page_vkt610b_change");
    EXPECT_EQ(shown("combo_box_ex_2_vkt610b"), "UART1转CANFD1");
    EXPECT_EQ(value("change_protcol_vkt610b"), 3U);
}

TEST_F(b_page, a_route_that_cannot_be_stored_is_named) {
    show("page_vkt610b_change");
    refuse("change_protcol_vkt610b");
    does("pick @/combo_box_ex_2_vkt610b SPI转CANFD1\n");
    EXPECT_EQ(console(), "set change_protcol_vkt610b failed!\n");
    refuse(nullptr);
    refuse("change_can_channel_vkt610b");
    does("pick @/combo_box_ex_2_vkt610b UART1转CANFD1\n");
    EXPECT_EQ(console(), "set change_can_channel_vkt610b failed!\n");
}

// ---- what is shown

TEST_F(b_page, the_defaults_are_shown) {
    show("page_vkt610b_change");
    EXPECT_EQ(shown("combo_box_ex_1_vkt610b"), "自定义带校验转换");
    EXPECT_EQ(shown("combo_box_ex_2_vkt610b"), "UART1和UART2转CANFD1和CANFD2");
    EXPECT_EQ(shown("spin_box_3_vkt610b"), "2");
    EXPECT_EQ(shown("change_label_4_2_vkt610b"), "—");
    show("page_vkt610b_spi");
    EXPECT_EQ(shown("spin_box_number_vkt610b"), "10");
    EXPECT_EQ(shown("spin_box_time_vkt610b"), "10");
    show("page_vkt610b_uart_2");
    EXPECT_EQ(shown("combo_box_ex_bps_2_vkt610b"), "115.2k");
    show("page_vkt610b_canfd_1");
    EXPECT_EQ(shown("combo_box_ex_bps_vkt610b_canfd1"), "1M");
    EXPECT_EQ(shown("combo_box_ex_rejector_vkt610b_canfd1"), "5M");
    EXPECT_EQ(shown("combo_box_ex_mode_vkt610b_canfd1"), "CAN+CAN FD 模式");
    EXPECT_EQ(shown("edit_check7_vkt610b_canfd1"), "00000000");
    EXPECT_EQ(listed(1), "03000000");
    EXPECT_EQ(listed(5), "0A061A00");
    EXPECT_EQ(listed(33), "02000200");
}

TEST_F(b_page, missing_keys_show_their_fallbacks) {
    for (const field& row : dev->of.fields) tk_object_remove_prop(dev->props.get(), row.key);
    show("page_vkt610b_change");
    EXPECT_EQ(shown("combo_box_ex_1_vkt610b"), "自定义带校验转换");
    show("page_vkt610b_uart_1");
    EXPECT_EQ(shown("combo_box_ex_bps_1_vkt610b"), "1M");
    show("page_vkt610b_spi");
    EXPECT_EQ(shown("spin_box_number_vkt610b"), "1");
    EXPECT_EQ(shown("spin_box_time_vkt610b"), "1");
    show("page_vkt610b_canfd_2");
    EXPECT_TRUE(enabled("check_button_vkt610b_canfd2"));
    EXPECT_EQ(shown("combo_box_ex_mode_vkt610b_canfd2"), "CAN FD模式");
}

TEST_F(b_page, the_version_of_a_reply_is_shown) {
    set("version", 0x0A182101);
    show("page_vkt610b_change");
    EXPECT_EQ(shown("change_label_4_2_vkt610b"), "V1.1.2 24年10月");
}

TEST_F(b_page, inner_tabs_show_and_fill_their_page) {
    show("page_vkt610b_uart_1");
    set("uart2_bps_vkt610b", 5);
    does("click tab_button_uart2\nexpect @ visible 0\nexpect page_vkt610b_uart_2 visible 1\n"
         "expect combo_box_ex_bps_2_vkt610b text 9.6k\n"
         "click tab_button_uart1\nexpect @ visible 1\n");
    show("page_vkt610b_canfd_1");
    set("canfd2_speed_zc_vkt610b", 3);
    does("click tab_button_canfd2\nexpect page_vkt610b_canfd_2 visible 1\n"
         "expect combo_box_ex_bps_vkt610b_canfd2 text 100k\n");
    // The tab stays where it is when the page is filled again.
    ASSERT_EQ(vkt610b_pages.tabs[3].init(widget_lookup(home, "page_vkt610b_canfd"), *dev), RET_OK);
    does("expect page_vkt610b_canfd_2 visible 1\n");
}

} // namespace
