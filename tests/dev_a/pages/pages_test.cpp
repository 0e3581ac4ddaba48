#include "dev_a/pages/vkt510a_pages.h"

#include "f7/f7_exchanges.h"
#include "tests/support/home_stage.h"
#include "toolkit/core/text.h"

#include <set>

namespace {

class vkt510a_page : public home_stage {
  protected:
    void SetUp() override {
        home_stage::SetUp();
        choose(vkt510a_pages);
    }
    const std::vector<uint8_t>& image() const { return dev->image; }
    void expect_code() const { EXPECT_EQ(code(), f7_listing(f7_image_of(*dev), false)); }
};

// ---- what is accepted

struct edit_case {
    const char* page;
    uint32_t mode; ///< of the change page
    const char* line;
    const char* key;
    uint32_t value;
    std::size_t at;
};
const edit_case edit_cases[] = {
    {"page_vkt510a_change", 2, "pick @/combo_box_ex_vkt510a 自定义协议转换", "change_mode_vkt510a", 3, 42},
    {"page_vkt510a_change", 2, "pick @/combo_box_ex1_vkt510a \"仅 CAN 转 SPI/UART\"", "change_dir_vkt510a", 2, 43},
    {"page_vkt510a_change", 1, "click @/check_button_vkt510a", "change_can_c_vkt510a", 1, 45},
    {"page_vkt510a_change", 1, "click @/check_button1_vkt510a", "change_can_id_vkt510a", 1, 46},
    {"page_vkt510a_change", 2, "type @/spin_box_vkt510a 7", "change_can_star_vkt510a", 7, 53},
    {"page_vkt510a_change", 2, "type @/spin_box1_vkt510a 2", "change_can_len_vkt510a", 2, 52},
    {"page_vkt510a_spi", 2, "type @/spin_box_number_vkt510a 254", "spi_number_vkt510a", 254, 56},
    {"page_vkt510a_spi", 2, "type @/spin_box_time_vkt510a 100", "spi_time_vkt510a", 100, 57},
    {"page_vkt510a_uart", 2, "pick @/combo_box_ex_bps_vkt510a 921600", "uart_bps_vkt510a", 16, 0},
    {"page_vkt510a_uart", 2, "type @/spin_box_distance_vkt510a 16", "uart_distance_vkt510a", 16, 44},
    {"page_vkt510a_can", 2, "pick @/combo_box_ex_bps_vkt510a 1M", "can_bps_vkt510a", 15, 4},
    {"page_vkt510a_can", 2, "click @/check_button_vkt510a\npick @/combo_box_ex_rejector_vkt510a 仅标准帧滤波",
     "can_filtration_mode_vkt510a", 0, 9},
    {"page_vkt510a_can", 2, "click @/check_button_vkt510a", "can_filtration_en_vkt510a", 1, 8},
    {"page_vkt510a_can", 2, "pick @/combo_box_ex_Fkind_vkt510a 标准帧", "can_send_kind_vkt510a", 0, 47},
};

class vkt510a_edits : public vkt510a_page, public testing::WithParamInterface<edit_case> {};

TEST_P(vkt510a_edits, store_encode_and_refresh_the_code_view) {
    const edit_case& edit = GetParam();
    set("change_mode_vkt510a", edit.mode);
    show(edit.page);
    ASSERT_NE(image()[edit.at], edit.value);
    does(std::string(edit.line) + "\n");
    EXPECT_EQ(value(edit.key), edit.value);
    EXPECT_EQ(image()[edit.at], edit.value);
    EXPECT_EQ(console(), "");
    expect_code();
}
INSTANTIATE_TEST_SUITE_P(all, vkt510a_edits, testing::ValuesIn(edit_cases), [](const auto& one) {
    return std::string(one.param.key) + "_" + std::to_string(one.param.value);
});

TEST_F(vkt510a_page, option_lists_keep_their_order) {
    show("page_vkt510a_uart");
    does("expect @/combo_box_ex_bps_vkt510a options "
         "300|600|1200|2400|4800|9600|14400|19200|38400|57600|115200|128000|230400|256000|460800|921600\n"
         "expect @/combo_box_ex_check_vkt510a options 无校验\n"
         "expect @/combo_box_ex_control_vkt510a options 无\n");
    show("page_vkt510a_can");
    does("expect @/combo_box_ex_bps_vkt510a options "
         "5k|10k|20k|40k|50k|80k|100k|125k|200k|250k|400k|500k|666k|800k|1M\n"
         "expect @/combo_box_ex_rejector_vkt510a options 仅扩展帧滤波|仅标准帧滤波\n"
         "expect @/combo_box_ex_Fkind_vkt510a options 扩展帧|标准帧\n");
    show("page_vkt510a_change");
    does("expect @/combo_box_ex_vkt510a options 透明转换|透明带标识转换|自定义协议转换\n"
         "expect @/combo_box_ex1_vkt510a options \"双向|仅 SPI/UART 转 CAN|仅 CAN 转 SPI/UART\"\n");
    EXPECT_EQ(on_page("combo_box_ex2_vkt510a"), nullptr);
}

TEST_F(vkt510a_page, standard_frames_leave_the_length) {
    show("page_vkt510a_can");
    does("pick @/combo_box_ex_Fkind_vkt510a 标准帧\n");
    EXPECT_EQ(value("change_can_len_vkt510a"), 4U);
    EXPECT_EQ(console(), "");
}

// ---- what is refused

struct refused_case {
    const char* page;
    uint32_t mode;
    const char* name;
    const char* key;
    int32_t bound;
    const char* message;
    int32_t typed_before = -1; ///< what the digits before the last one gave; -1: the bound has one digit
};
const refused_case refused_cases[] = {
    {"page_vkt510a_can", 2, "combo_box_ex_bps_vkt510a", "can_bps_vkt510a", 16, "can_bps_vkt510a is error\n"},
    {"page_vkt510a_can", 2, "combo_box_ex_rejector_vkt510a", "can_filtration_mode_vkt510a", 16,
     "can_filtration_mode_vkt510a is error\n"},
    {"page_vkt510a_can", 2, "check_button_vkt510a", "can_filtration_en_vkt510a", 16,
     "can_filtration_en_vkt510a is error\n"},
    {"page_vkt510a_can", 2, "combo_box_ex_Fkind_vkt510a", "can_send_kind_vkt510a", 16,
     "can_send_kind_vkt510a is error\n"},
    {"page_vkt510a_change", 2, "combo_box_ex_vkt510a", "change_mode_vkt510a", 4, "mode_value_vkt510a is error\n"},
    {"page_vkt510a_change", 2, "combo_box_ex1_vkt510a", "change_dir_vkt510a", 3, "dir_value_vkt510a is error\n"},
    {"page_vkt510a_change", 1, "check_button_vkt510a", "change_can_c_vkt510a", 3, "can_c_value_vkt510a is error\n"},
    {"page_vkt510a_change", 1, "check_button1_vkt510a", "change_can_id_vkt510a", 3,
     "change_can_id_vkt510a is error\n"},
    {"page_vkt510a_change", 2, "spin_box_vkt510a", "change_can_star_vkt510a", 8,
     "change_can_star_vkt510a is error\n"},
    {"page_vkt510a_change", 2, "spin_box1_vkt510a", "change_can_len_vkt510a", 5,
     "change_can_len_vkt510a is error\n"},
    {"page_vkt510a_uart", 2, "combo_box_ex_bps_vkt510a", "uart_bps_vkt510a", 17, "uart_bps_vkt510a is error\n"},
    {"page_vkt510a_uart", 2, "spin_box_distance_vkt510a", "uart_distance_vkt510a", 17,
     "uart_distance_vkt510a is error\n", 1},
    {"page_vkt510a_spi", 2, "spin_box_number_vkt510a", "spi_number_vkt510a", 255, "box_number_value is error\n",
     25},
    {"page_vkt510a_spi", 2, "spin_box_time_vkt510a", "spi_time_vkt510a", 255, "box_time_value is error\n", 25},
};

TEST_F(vkt510a_page, every_row_has_its_bound_and_message) {
    const std::set<row_kind> numbers = {row_kind::choice, row_kind::check, row_kind::number};
    std::size_t bounded = 0;
    for (const page_table* table : vkt510a_pages.tables) {
        EXPECT_TRUE(table->rules.bounded) << table->name;
        for (const page_row& row : table->rows) {
            if (!numbers.contains(row.kind)) continue;
            for (const refused_case& refused : refused_cases) {
                if (std::string(table->name) != refused.page || std::string(row.name) != refused.name) continue;
                bounded++;
                EXPECT_STREQ(row.what->key, refused.key);
                EXPECT_EQ(field_highest(*row.what) + 1, static_cast<uint32_t>(refused.bound)) << row.name;
                const char* name = row.refused_as == nullptr ? row.what->key : row.refused_as;
                EXPECT_EQ(name + std::string(" is error\n"), refused.message);
            }
        }
    }
    EXPECT_EQ(bounded, std::size(refused_cases));
    for (const page_table* table : vkt510a_pages.tables)
        for (const page_row& row : table->rows)
            if (numbers.contains(row.kind)) bounded--;
    EXPECT_EQ(bounded, 0U);
}

class vkt510a_refusals : public vkt510a_page, public testing::WithParamInterface<refused_case> {};

TEST_P(vkt510a_refusals, leave_property_and_image_and_mark_the_field) {
    const refused_case& refused = GetParam();
    set("change_mode_vkt510a", refused.mode);
    set("can_filtration_en_vkt510a", 1);
    show(refused.page);
    const uint32_t before = value(refused.key);
    const std::vector<uint8_t> image_before = image();
    widget* field = on_page(refused.name);
    if (widget_type(field) == "combo_box") {
        combo_box_append_option(field, refused.bound, "beyond");
        combo_box_append_option(field, refused.bound - 1, "last good");
        does(std::string("pick @/") + refused.name + " beyond\n");
    } else {
        does(std::string("type @/") + refused.name + " " + std::to_string(refused.bound) + "\n");
    }
    EXPECT_THAT(console(), testing::EndsWith(refused.message));
    EXPECT_TRUE(widget_get_refused(field));
    if (widget_type(field) == "combo_box") {
        EXPECT_EQ(value(refused.key), before);
        EXPECT_EQ(image(), image_before);
        EXPECT_EQ(widget_get_value_int(field), refused.bound); // the refused selection stays on show
        does(std::string("pick @/") + refused.name + " \"last good\"\n");
    } else {
        const uint32_t kept = refused.typed_before < 0 ? before : static_cast<uint32_t>(refused.typed_before);
        EXPECT_EQ(value(refused.key), kept);
        EXPECT_EQ(shown(refused.name), std::to_string(refused.bound));
        // Left, it shows what is stored, and the mark says what was not taken; coming back changes neither.
        const std::string stored = std::to_string(kept);
        const std::string left = tk_format(
            "expect @/%s text %s\nexpect @/%s refused 1\nexpect @/%s tooltip \"未采用 "
            "%d：取值须小于 %d，实际保存的是 %s\"\n",
            refused.name, stored.c_str(), refused.name, refused.name, refused.bound, refused.bound, stored.c_str());
        does("key Tab\n" + left + "key Shift+Tab\nkey Tab\n" + left);
        EXPECT_EQ(value(refused.key), kept);
        does(std::string("type @/") + refused.name + " 3\nexpect @/" + refused.name + " refused 0\n");
        does(std::string("type @/") + refused.name + " " + std::to_string(refused.bound - 1) + "\n");
    }
    EXPECT_FALSE(widget_get_refused(field));
    EXPECT_EQ(value(refused.key), static_cast<uint32_t>(refused.bound - 1));
    expect_code();
}
/// A check box says 0 or 1 only: nothing a user can do reaches its bound.
std::vector<refused_case> reachable_cases() {
    std::vector<refused_case> rows;
    for (const refused_case& row : refused_cases)
        if (std::string(row.name).find("check_button") != 0) rows.push_back(row);
    return rows;
}
INSTANTIATE_TEST_SUITE_P(all, vkt510a_refusals, testing::ValuesIn(reachable_cases()),
                         [](const auto& one) { return std::string(one.param.key); });

TEST_F(vkt510a_page, uart_code_17_or_above_is_refused_and_the_image_keeps_the_previous_code) {
    show("page_vkt510a_uart");
    widget* rates = on_page("combo_box_ex_bps_vkt510a");
    for (int code : {17, 18, 19, 255}) {
        const std::string name = "code" + std::to_string(code);
        combo_box_append_option(rates, code, name.c_str());
        does("pick @/combo_box_ex_bps_vkt510a " + name + "\n");
        EXPECT_EQ(console(), "uart_bps_vkt510a is error\n");
        EXPECT_EQ(value("uart_bps_vkt510a"), 1U);
        EXPECT_EQ(image()[0], 1);
    }
    show("page_vkt510a_uart"); // shown again: the stored value, no mark
    EXPECT_EQ(shown("combo_box_ex_bps_vkt510a"), "115200");
    EXPECT_FALSE(widget_get_refused(rates));
}

TEST_F(vkt510a_page, a_spin_box_at_255_is_refused) {
    show("page_vkt510a_spi");
    does("type @/spin_box_number_vkt510a 25\n");
    does("append @/spin_box_number_vkt510a 5\n");
    EXPECT_EQ(console(), "box_number_value is error\n");
    EXPECT_EQ(value("spi_number_vkt510a"), 25U);
    EXPECT_EQ(image()[56], 25);
    EXPECT_EQ(shown("spin_box_number_vkt510a"), "255");
}

TEST_F(vkt510a_page, the_low_byte_is_taken_before_the_bound) {
    show("page_vkt510a_uart");
    does("type @/spin_box_distance_vkt510a 261\n"); // 2, 26 (refused), 261
    EXPECT_EQ(value("uart_distance_vkt510a"), 5U);
    EXPECT_EQ(image()[44], 5);
    EXPECT_EQ(console(), "uart_distance_vkt510a is error\n");
    EXPECT_TRUE(widget_get_refused(on_page("spin_box_distance_vkt510a"))); // what is shown is not what is stored
    does("type @/spin_box_distance_vkt510a 16\n");
    EXPECT_FALSE(widget_get_refused(on_page("spin_box_distance_vkt510a")));
    does("type @/spin_box_distance_vkt510a 261\n");
    show("page_vkt510a_uart");
    EXPECT_EQ(shown("spin_box_distance_vkt510a"), "5");
}

TEST_F(vkt510a_page, show_code_runs_after_a_refusal_too) {
    show("page_vkt510a_uart");
    combo_box_append_option(on_page("combo_box_ex_bps_vkt510a"), 17, "1M");
    set("spi_time_vkt510a", 99); // behind the page's back
    does("pick @/combo_box_ex_bps_vkt510a 1M\n");
    EXPECT_EQ(image()[57], 99);
    expect_code();
}

TEST_F(vkt510a_page, a_store_that_fails_says_so_and_shows_nothing_new) {
    show("page_vkt510a_can");
    const std::string before = code();
    refuse("can_bps_vkt510a");
    set("spi_time_vkt510a", 99);
    does("pick @/combo_box_ex_bps_vkt510a 5k\n");
    EXPECT_EQ(console(), "set can_bps_vkt510a failed!\n");
    EXPECT_EQ(code(), before);
}

// ---- enable rules

TEST_F(vkt510a_page, mode_2_enables_the_spin_boxes_and_disables_check_buttons_and_edits) {
    set("change_mode_vkt510a", 1);
    show("page_vkt510a_change");
    does("pick @/combo_box_ex_vkt510a 透明带标识转换\n");
    for (const char* name : {"spin_box_vkt510a", "spin_box1_vkt510a"}) EXPECT_TRUE(enabled(name)) << name;
    for (const char* name : {"check_button_vkt510a", "check_button1_vkt510a", "edit_vkt510a", "edit1_vkt510a"})
        EXPECT_FALSE(enabled(name)) << name;
}

TEST_F(vkt510a_page, the_stored_mode_decides_at_filling) {
    const char* groups[3][2] = {{"check_button_vkt510a", "check_button1_vkt510a"},
                                {"spin_box_vkt510a", "spin_box1_vkt510a"},
                                {"edit_vkt510a", "edit1_vkt510a"}};
    for (uint32_t mode : {1U, 2U, 3U, 7U}) {
        set("change_mode_vkt510a", mode);
        show("page_vkt510a_change");
        for (uint32_t group = 0; group < 3; group++)
            for (const char* name : groups[group]) EXPECT_EQ(enabled(name), group + 1 == mode) << mode << name;
    }
}

TEST_F(vkt510a_page, mode_rules_leave_the_can_pages_check_button_alone) {
    show("page_vkt510a_can");
    EXPECT_TRUE(enabled("check_button_vkt510a"));
    widget* can_check = on_page("check_button_vkt510a");
    show("page_vkt510a_change");
    does("pick @/combo_box_ex_vkt510a 自定义协议转换\n");
    show("page_vkt510a_can");
    EXPECT_TRUE(widget_get_enable(can_check));
}

TEST_F(vkt510a_page, filter_switch_enables_mask_codes_and_frame_type_together) {
    const char* names[] = {"edit_scherm_vkt510a", "edit_check0_vkt510a",          "edit_check1_vkt510a",
                           "edit_check2_vkt510a", "edit_check3_vkt510a",          "edit_check4_vkt510a",
                           "edit_check5_vkt510a", "combo_box_ex_rejector_vkt510a"};
    show("page_vkt510a_can");
    for (const char* name : names) EXPECT_FALSE(enabled(name)) << name;
    EXPECT_TRUE(enabled("edit_send_vkt510a"));
    does("click @/check_button_vkt510a\n");
    for (const char* name : names) EXPECT_TRUE(enabled(name)) << name;
    does("click @/check_button_vkt510a\n");
    for (const char* name : names) EXPECT_FALSE(enabled(name)) << name;
}

TEST_F(vkt510a_page, a_mode_that_cannot_be_stored_changes_nothing_else) {
    show("page_vkt510a_change");
    set("change_mode_vkt510a", 1); // behind the page's back: an enabling rule that ran would show it
    refuse("change_mode_vkt510a");
    does("pick @/combo_box_ex_vkt510a 自定义协议转换\n");
    EXPECT_EQ(console(), "set change_mode_vkt510a failed!\n");
    EXPECT_TRUE(enabled("spin_box_vkt510a"));
    EXPECT_FALSE(enabled("check_button_vkt510a"));
}

TEST_F(vkt510a_page, an_emptied_spin_box_is_read_by_its_value) {
    show("page_vkt510a_uart");
    does("type @/spin_box_distance_vkt510a \"\"\n");
    EXPECT_EQ(value("uart_distance_vkt510a"), 2U);
    EXPECT_EQ(image()[44], 2);
}

TEST_F(vkt510a_page, a_text_that_cannot_be_set_is_named) {
    show("page_vkt510a_can");
    widget* stubborn = on_page("combo_box_ex_bps_vkt510a"); // takes no text that is none of its options
    combo_box_append_option(stubborn, 99, "12G");
    widget_set_value_int(stubborn, 99);
    const struct {
        std::size_t table;
        const char* edit;
        event_type what;
        ret_t result;
        const char* message;
    } rows[] = {
        {3, "edit_scherm_vkt510a", event_type::value_changing, RET_FAIL, "set scherm0changing failed!"},
        {0, "edit_vkt510a", event_type::value_changing, RET_FAIL, "set f_vchanging failed!"},
        {0, "edit_vkt510a", event_type::focus, RET_FAIL, "set f_vfocus failed!"},
        {0, "edit_vkt510a", event_type::blur, RET_OK, "set f_vblur failed!"},
    };
    for (const auto& row : rows)
        for (const page_row& found : vkt510a_pages.tables[row.table]->rows) {
            if (std::string(found.name) != row.edit) continue;
            EXPECT_EQ(page_event(*vkt510a_pages.tables[row.table], found, page, *dev,
                                 {.type = row.what, .target = stubborn}),
                      row.result);
            EXPECT_EQ(console(), row.message);
        }
}

TEST_F(vkt510a_page, greying_the_edit_under_the_cursor_takes_what_was_typed) {
    set("change_mode_vkt510a", 3);
    show("page_vkt510a_change");
    does("type @/edit_vkt510a 5A\n");
    ASSERT_TRUE(widget_get_focused(on_page("edit_vkt510a")));
    // The mode changes while the edit keeps the focus, as a wheel over the selector could do.
    const page_table& change = *vkt510a_pages.tables[0];
    widget* mode = on_page("combo_box_ex_vkt510a");
    widget_set_value_int(mode, 1);
    page_event(change, change.rows[0], page, *dev, {.type = event_type::value_changed, .target = mode});
    EXPECT_FALSE(enabled("edit_vkt510a"));
    EXPECT_EQ(value("change_f_h_vkt510a"), 0x5AU); // what was typed is taken when the edit loses the focus
    EXPECT_EQ(image()[54], 0x5A);
}

// ---- hex edits

struct hex_case {
    const char* edit;
    const char* key;
    std::size_t at;
};
const hex_case hex_cases[] = {
    {"edit_scherm_vkt510a", "can_send_shield_vkt510a", 10}, {"edit_check0_vkt510a", "can_send_check0_vkt510a", 14},
    {"edit_check1_vkt510a", "can_send_check1_vkt510a", 18}, {"edit_check2_vkt510a", "can_send_check2_vkt510a", 26},
    {"edit_check3_vkt510a", "can_send_check3_vkt510a", 30}, {"edit_check4_vkt510a", "can_send_check4_vkt510a", 34},
    {"edit_check5_vkt510a", "can_send_check5_vkt510a", 38}, {"edit_send_vkt510a", "can_send_data_vkt510a", 48},
};

class vkt510a_hex_edits : public vkt510a_page, public testing::WithParamInterface<hex_case> {};

TEST_P(vkt510a_hex_edits, scan_store_and_show_again_when_left) {
    const hex_case& hex = GetParam();
    set("can_filtration_en_vkt510a", 1);
    set(hex.key, 0xCAFE);
    show("page_vkt510a_can");
    EXPECT_EQ(shown(hex.edit), "00 00 CA FE");
    does(std::string("click @/") + hex.edit + "\nexpect @/" + hex.edit + " text 0000CAFE\ntype @/" + hex.edit +
         " 12345678\nkey Tab\n");
    EXPECT_EQ(value(hex.key), 0x12345678U);
    EXPECT_EQ(shown(hex.edit), "12 34 56 78");
    const std::vector<uint8_t> now = image();
    EXPECT_THAT(
        std::vector<uint8_t>(now.begin() + static_cast<long>(hex.at), now.begin() + static_cast<long>(hex.at) + 4),
        testing::ElementsAre(0x12, 0x34, 0x56, 0x78));
    expect_code();
    EXPECT_EQ(console(), "");
    refuse(hex.key);
    does(std::string("type @/") + hex.edit + " 1\nkey Tab\n");
    EXPECT_EQ(console(), std::string("set ") + hex.key + " failed!");
    EXPECT_EQ(shown(hex.edit), "12 34 56 78");
}
INSTANTIATE_TEST_SUITE_P(all, vkt510a_hex_edits, testing::ValuesIn(hex_cases),
                         [](const auto& one) { return std::string(one.param.key); });

struct typed_case {
    const char* name;
    const char* typed;
    const char* kept; ///< while the edit has the focus
    uint32_t word;
};
const typed_case typed_cases[] = {
    {"digits", "FF", "FF", 0xFF},
    {"a_letter_at_the_end", "12G", "12", 0x12},
    {"letters_between", "1G2H3", "123", 0x123},
    {"blanks", "12 34 56 78", "12345678", 0x12345678},
    {"more_than_eight", "123456789A", "12345678", 0x12345678},
    {"both_cases", "abCDef", "abCDef", 0xABCDEF},
    {"letters_only", "xyz", "", 0},
    {"a_chinese_character", "型12", "12", 0x12},
    {"nothing", "", "", 0},
};

class vkt510a_typing : public vkt510a_page, public testing::WithParamInterface<typed_case> {};

TEST_P(vkt510a_typing, is_filtered_and_scanned) {
    const typed_case& typed = GetParam();
    set("can_send_data_vkt510a", 0x55);
    show("page_vkt510a_can");
    does(std::string("type @/edit_send_vkt510a \"") + typed.typed + "\"\nexpect @/edit_send_vkt510a text \"" +
         typed.kept + "\"\nkey Tab\n");
    EXPECT_EQ(value("can_send_data_vkt510a"), typed.word);
}
INSTANTIATE_TEST_SUITE_P(all, vkt510a_typing, testing::ValuesIn(typed_cases),
                         [](const auto& one) { return std::string(one.param.name); });

TEST_F(vkt510a_page, a_text_that_no_scan_takes_keeps_the_value) {
    set("can_send_data_vkt510a", 0x55);
    show("page_vkt510a_can");
    does("click @/edit_send_vkt510a\n");
    widget_set_text_utf8(on_page("edit_send_vkt510a"),
                         "zz"); // as pasted text that ends in a digit could stand there
    does("key Tab\n");
    EXPECT_EQ(value("can_send_data_vkt510a"), 0x55U);
    EXPECT_EQ(shown("edit_send_vkt510a"), "00 00 00 55");
}

TEST_F(vkt510a_page, a_page_filled_under_a_focused_edit_keeps_its_value_when_left) {
    set("can_send_data_vkt510a", 0x12345678);
    show("page_vkt510a_can");
    does("click @/edit_send_vkt510a\n");
    show("page_vkt510a_can"); // a read finished: the display form stands in the edit
    does("key Tab\n");
    EXPECT_EQ(value("can_send_data_vkt510a"), 0x12345678U);
}

TEST_F(vkt510a_page, an_edit_left_unchanged_stores_nothing) {
    set("change_mode_vkt510a", 3);
    set("can_send_data_vkt510a", 0x12345678);
    for (const auto& [name, edit, text, key] :
         {std::tuple{"page_vkt510a_can", "edit_send_vkt510a", "12 34 56 78", "can_send_data_vkt510a"},
          std::tuple{"page_vkt510a_change", "edit_vkt510a", "40", "change_f_h_vkt510a"}}) {
        show(name);
        refuse(key); // a store that is asked says so
        does(std::string("click @/") + edit + "\nkey Tab\n");
        EXPECT_EQ(shown(edit), text);
        EXPECT_EQ(console(), "");
    }
}

TEST_F(vkt510a_page, frame_head_and_end_are_scanned_when_left) {
    set("change_mode_vkt510a", 3);
    show("page_vkt510a_change");
    EXPECT_EQ(shown("edit_vkt510a"), "40");
    EXPECT_EQ(shown("edit1_vkt510a"), "1A");
    does("type @/edit_vkt510a 7e\nkey Tab\ntype @/edit1_vkt510a F\nkey Tab\n");
    EXPECT_EQ(value("change_f_h_vkt510a"), 0x7EU);
    EXPECT_EQ(value("change_f_e_vkt510a"), 0x0FU);
    EXPECT_EQ(shown("edit_vkt510a"), "7E");
    EXPECT_EQ(shown("edit1_vkt510a"), "0F");
    EXPECT_EQ(image()[54], 0x7E);
    EXPECT_EQ(image()[55], 0x0F);
    expect_code();
    EXPECT_EQ(console(), "");
}

TEST_F(vkt510a_page, frame_edits_name_what_failed) {
    set("change_mode_vkt510a", 3);
    show("page_vkt510a_change");
    does("type @/edit_vkt510a \"\"\nkey Tab\n");
    EXPECT_EQ(console(), "sscanf read f_v_value failed!");
    EXPECT_EQ(shown("edit_vkt510a"), "40");
    for (const auto& [edit, key] :
         {std::pair{"edit_vkt510a", "change_f_h_vkt510a"}, std::pair{"edit1_vkt510a", "change_f_e_vkt510a"}}) {
        refuse(key);
        does(std::string("type @/") + edit + " 77\nkey Tab\n");
        EXPECT_EQ(console(), std::string("set ") + key + " failed!");
        refuse(nullptr);
    }
}

TEST_F(vkt510a_page, edits_that_are_gone_name_what_failed) {
    struct lost_case {
        const char* page;
        std::set<std::string> edits;
        event_type what;
        const char* message;
    };
    const std::set<std::string> frame = {"edit_vkt510a", "edit1_vkt510a"};
    const std::set<std::string> words = {"edit_send_vkt510a",   "edit_scherm_vkt510a", "edit_check0_vkt510a",
                                         "edit_check1_vkt510a", "edit_check2_vkt510a", "edit_check3_vkt510a",
                                         "edit_check4_vkt510a", "edit_check5_vkt510a"};
    const lost_case lost[] = {
        {"page_vkt510a_change", frame, event_type::value_changing, "get f_vchanging failed!"},
        {"page_vkt510a_change", frame, event_type::focus, "set f_vfocus failed!"},
        {"page_vkt510a_change", frame, event_type::blur, "get f_vblur failed!"},
        {"page_vkt510a_can", words, event_type::value_changing, "get changing failed!"},
    };
    std::size_t named = 0;
    for (const page_table* table : vkt510a_pages.tables)
        for (const page_row& row : table->rows)
            for (const event_type what : {event_type::value_changing, event_type::value_changed, event_type::focus,
                                          event_type::blur, event_type::click}) {
                std::string message;
                for (const lost_case& one : lost)
                    if (one.what == what && one.page == std::string(table->name) && one.edits.contains(row.name))
                        message = one.message;
                EXPECT_EQ(page_event(*table, row, nullptr, *dev, {.type = what}), RET_BAD_PARAMS);
                EXPECT_EQ(console(), message) << table->name << " " << row.name;
                if (!message.empty()) named++;
            }
    EXPECT_EQ(named, 3 * frame.size() + words.size());
}

// ---- code view

TEST_F(vkt510a_page, defaults_show_the_documented_frame) {
    show("page_vkt510a_change");
    EXPECT_EQ(code(),
              "F7 F8 01 3C 01 08 01 00 08 00 00 00 00 08 FF FF FF FF 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
              "00 00 00 00 00 00 00 00 00 00 00 00 00 00 02 00 02 00 00 08 00 00 00 00 04 00 40 1A 0F 05 01 01 "
              "66");
}

} // namespace
