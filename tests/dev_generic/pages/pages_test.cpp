#include "dev_generic/pages/generic_pages.h"

#include "dev_generic/family.h"
#include "f7/f7_exchanges.h"
#include "tests/support/home_stage.h"
#include "tests/support/pattern.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/ravel.h"

using testing::HasSubstr;

namespace {

class generic_page : public home_stage {
  protected:
    void SetUp() override {
        home_stage::SetUp();
        log_set_log_level(LOG_LEVEL_DEBUG);
        choose(generic_pages);
    }
    const std::vector<uint8_t>& image() const { return dev->image; }
    /// The code view shows the image as it stands.
    void expect_code() const { EXPECT_EQ(code(), f7_listing(f7_image_of(*dev), false)); }
};

// ---- choices and numbers

struct edit_case {
    const char* page;
    const char* line; ///< what the user does
    const char* key;
    uint32_t value;
    std::size_t at;
    uint8_t byte;
};
const edit_case edit_cases[] = {
    {"page_change", "pick @/combo_box_ex 自定义协议转换", "change_mode", 3, 42, 3},
    {"page_change", "pick @/combo_box_ex 透明转换", "change_mode", 1, 42, 1},
    {"page_change", "pick @/combo_box_ex1 \"仅 SPI/UART 转 CAN\"", "change_dir", 1, 43, 1},
    {"page_change", "pick @/combo_box_ex1 \"仅 CAN 转 SPI/UART\"", "change_dir", 2, 43, 2},
    {"page_change", "pick @/combo_box_ex 透明转换\nclick @/check_button", "change_can_serial", 1, 45, 1},
    {"page_change", "pick @/combo_box_ex 透明转换\nclick @/check_button1", "change_id_serial", 1, 46, 1},
    {"page_change", "type @/spin_box 5", "change_star", 5, 53, 5},
    {"page_change", "type @/spin_box1 2", "change_len", 2, 52, 2},
    {"page_spi", "type @/spin_box_number 200", "spi_ff_fnum", 200, 56, 200},
    {"page_spi", "type @/spin_box_time 255", "spi_ff_time", 255, 57, 255},
    {"page_spi", "type @/spin_box_time 7\nkey Up", "spi_ff_time", 8, 57, 8},
    {"page_uart", "pick @/combo_box_ex_bps 300", "uart_baud_rate", 11, 0, 11},
    {"page_uart", "pick @/combo_box_ex_bps 128000", "uart_baud_rate", 12, 0, 12},
    {"page_uart", "pick @/combo_box_ex_bps 2M", "uart_baud_rate", 19, 0, 19},
    {"page_uart", "type @/spin_box_distance 100", "uart_f_distance", 100, 44, 100},
    {"page_can", "pick @/combo_box_ex_bps 25K", "can_baud_rate", 16, 4, 16},
    {"page_can", "pick @/combo_box_ex_bps 1M", "can_baud_rate", 15, 4, 15},
    {"page_can", "click @/check_button\npick @/combo_box_ex_rejector 仅标准滤波", "can_filtration", 0, 9, 0},
    {"page_can", "click @/check_button", "can_check", 1, 8, 1},
    {"page_can", "pick @/combo_box_ex_Fkind 标准帧", "can_sendf_kind", 0, 47, 0},
};

class generic_edits : public generic_page, public testing::WithParamInterface<edit_case> {};

TEST_P(generic_edits, store_key_and_byte_and_refresh_the_code_view) {
    const edit_case& edit = GetParam();
    show(edit.page);
    ASSERT_NE(image()[edit.at], edit.byte);
    does(std::string(edit.line) + "\n");
    EXPECT_EQ(value(edit.key), edit.value);
    EXPECT_EQ(image()[edit.at], edit.byte);
    expect_code();
}
INSTANTIATE_TEST_SUITE_P(all, generic_edits, testing::ValuesIn(edit_cases), [](const auto& one) {
    return std::string(one.param.key) + "_" + std::to_string(one.param.value);
});

TEST_F(generic_page, show_the_store_when_they_are_filled) {
    set("uart_baud_rate", 9);
    set("uart_f_distance", 33);
    show("page_uart");
    EXPECT_EQ(shown("combo_box_ex_bps"), "1200");
    EXPECT_EQ(shown("combo_box_ex_check"), "无校验");
    EXPECT_EQ(shown("combo_box_ex_control"), "无");
    EXPECT_EQ(shown("spin_box_distance"), "33");
    show("page_spi");
    EXPECT_EQ(shown("combo_box_ex_bit_send"), "MSB");
    EXPECT_EQ(shown("spin_box_number"), "15");
    EXPECT_EQ(shown("spin_box_time"), "5");
    EXPECT_EQ(shown("label1"), locale_info_tr("SPI_F"));
    show("page_change");
    EXPECT_EQ(shown("combo_box_ex"), "透明带标识转换");
    EXPECT_EQ(shown("combo_box_ex1"), "双向");
    EXPECT_EQ(shown("combo_box_ex2"), "否");
    EXPECT_EQ(shown("edit"), "40");
    EXPECT_EQ(shown("edit1"), "1A");
    show("page_can");
    EXPECT_EQ(shown("combo_box_ex_bps"), "125K");
    EXPECT_EQ(shown("combo_box_ex_rejector"), "仅扩展滤波");
    EXPECT_EQ(shown("combo_box_ex_Fkind"), "扩展帧");
    EXPECT_EQ(shown("edit_scherm"), "FF FF FF FF");
    EXPECT_EQ(shown("edit_send"), "00 00 00 00");
}

TEST_F(generic_page, show_the_defaults_for_missing_keys) {
    for (const char* key : {"uart_baud_rate", "uart_f_distance"}) tk_object_remove_prop(dev->props.get(), key);
    show("page_uart");
    EXPECT_EQ(shown("combo_box_ex_bps"), "115200");
    EXPECT_EQ(shown("spin_box_distance"), "2");
}

TEST_F(generic_page, a_code_that_no_option_has_shows_nothing) {
    set("uart_baud_rate", 77);
    show("page_uart");
    EXPECT_EQ(shown("combo_box_ex_bps"), "");
    EXPECT_EQ(value("uart_baud_rate"), 77U);
}

TEST_F(generic_page, option_lists_keep_their_order) {
    show("page_uart");
    does("expect @/combo_box_ex_bps options "
         "300|600|1200|2400|4800|9600|14400|19200|38400|57600|115200|128000|230400|256000|460800|921600|1M|1.5M|"
         "2M\n");
    show("page_can");
    does("expect @/combo_box_ex_bps options "
         "5K|10K|20K|25K|40K|50K|80K|100K|125K|200K|250K|400K|500K|666K|800K|1M\n"
         "expect @/combo_box_ex_rejector options 仅标准滤波|仅扩展滤波\n"
         "expect @/combo_box_ex_Fkind options 标准帧|扩展帧\n");
    show("page_change");
    does("expect @/combo_box_ex options 透明转换|透明带标识转换|自定义协议转换\n"
         "expect @/combo_box_ex1 options \"双向|仅 SPI/UART 转 CAN|仅 CAN 转 SPI/UART\"\n"
         "expect @/combo_box_ex2 options 否|是\n");
}

TEST_F(generic_page, showing_a_page_again_registers_no_second_handler) {
    show("page_can");
    show("page_can");
    does("pick @/combo_box_ex_Fkind 标准帧\n"); // one line for one change
    EXPECT_EQ(console(), "1231546548789\n");
}

TEST_F(generic_page, a_spin_box_that_cannot_be_read_says_so_and_stores_nothing) {
    const std::pair<const char*, std::pair<const char*, const char*>> names[] = {
        {"spin_box", {"on_can_start_value_changed", "can_start"}},
        {"spin_box1", {"on_can_len_value_changed", "can_len"}},
        {"spin_box_number", {"on_spi_ffn_value_changing", "spi_ffn"}},
        {"spin_box_time", {"on_spi_fft_value_changing", "spi_fft"}},
        {"spin_box_distance", {"on_uart_distance_value_changing", "uart_distance"}},
    };
    const std::vector<uint8_t> before = image();
    std::size_t seen = 0;
    for (const page_table* table : generic_pages.tables)
        for (const page_row& row : table->rows)
            for (const auto& [name, line] : names) {
                if (std::string(name) != row.name) continue;
                seen++;
                EXPECT_EQ(page_event(*table, row, nullptr, *dev, {.type = event_type::value_changing}),
                          RET_BAD_PARAMS);
                const std::string said = console();
                EXPECT_THAT(said, HasSubstr(std::string(line.first) + ":"));
                EXPECT_THAT(said, HasSubstr(std::string(" condition(widget_get_text_utf8(") + line.second +
                                            ", data, sizeof(data)) == RET_OK) failed!\n"));
            }
    EXPECT_EQ(seen, std::size(names));
    EXPECT_EQ(image(), before);
}

// ---- change page

TEST_F(generic_page, mode_decides_what_is_enabled_at_a_change) {
    show("page_change");
    const char* groups[3][2] = {{"check_button", "check_button1"}, {"spin_box", "spin_box1"}, {"edit", "edit1"}};
    const char* modes[3] = {"透明转换", "透明带标识转换", "自定义协议转换"};
    for (int mode : {0, 2, 1}) {
        does(std::string("pick @/combo_box_ex ") + modes[mode] + "\n");
        for (int group = 0; group < 3; group++)
            for (const char* name : groups[group]) EXPECT_EQ(enabled(name), group == mode) << modes[mode] << name;
    }
}

TEST_F(generic_page, a_mode_that_cannot_be_stored_changes_nothing_else) {
    show("page_change");
    set("change_mode", 1); // behind the page's back: an enabling rule that ran would show it
    refuse("change_mode");
    does("pick @/combo_box_ex 自定义协议转换\n");
    EXPECT_EQ(console(), "set change_mode failed!\n");
    EXPECT_TRUE(enabled("spin_box"));
    EXPECT_FALSE(enabled("check_button"));
}

TEST_F(generic_page, an_emptied_spin_box_is_read_by_its_text) {
    show("page_uart");
    does("type @/spin_box_distance \"\"\n");
    EXPECT_EQ(value("uart_f_distance"), 0U);
    EXPECT_EQ(image()[44], 0);
}

TEST_F(generic_page, mode_decides_what_is_enabled_at_filling) {
    set("change_mode", 1);
    show("page_change");
    EXPECT_TRUE(enabled("check_button"));
    EXPECT_FALSE(enabled("spin_box"));
    EXPECT_FALSE(enabled("edit"));
    set("change_mode", 9);
    show("page_change");
    for (const char* name : {"check_button", "check_button1", "spin_box", "spin_box1", "edit", "edit1"})
        EXPECT_FALSE(enabled(name)) << name;
}

TEST_F(generic_page, err_check_stores_the_text_and_1_for_yes_only) {
    show("page_change");
    does("pick @/combo_box_ex2 是\n");
    EXPECT_EQ(text("change_err_check"), "是");
    EXPECT_EQ(image()[5], 1);
    expect_code();
    does("pick @/combo_box_ex2 否\n");
    EXPECT_EQ(text("change_err_check"), "否");
    EXPECT_EQ(image()[5], 0);
    tk_object_set_prop_str(dev->props.get(), "change_err_check", "是");
    show("page_change");
    EXPECT_EQ(shown("combo_box_ex2"), "是");
}

TEST_F(generic_page, frame_head_and_end_take_two_digits) {
    set("change_mode", 3);
    show("page_change");
    does("type @/edit 7e\nkey Tab\ntype @/edit1 F\nkey Tab\n");
    EXPECT_EQ(text("change_fh"), "7e");
    EXPECT_EQ(image()[54], 0x7E);
    EXPECT_EQ(text("change_fe"), "F");
    EXPECT_EQ(image()[55], 0x0F);
    expect_code();
    does("click @/edit\nexpect @/edit text 7E\n"); // the byte, whatever the text was
    does("type @/edit zz\nkey Enter\nexpect @/edit refused 1\n"
         "expect @/edit tooltip \"不是十六进制数：发送的是 00\"\n");
    EXPECT_EQ(text("change_fh"), "zz");
    EXPECT_EQ(image()[54], 0);
    does("type @/edit 5a\nkey Tab\nexpect @/edit refused 0\n");
    EXPECT_EQ(image()[54], 0x5A);
    const struct {
        const char* typed;
        bool refused;
        int sent;
    } rows[] = {{"5", false, 0x05}, {"05", false, 0x05}, {"", true, 0},
                {" ", true, 0},     {"1G", true, 0x01},  {"fF", false, 0xFF}};
    for (const auto& row : rows) {
        does(tk_format("type @/edit \"%s\"\nkey Enter\nexpect @/edit refused %d\n", row.typed, row.refused));
        EXPECT_EQ(image()[54], row.sent) << row.typed;
    }
}

// ---- CAN page

TEST_F(generic_page, filter_switch_enables_mask_codes_and_frame_type_together) {
    const char* names[] = {"edit_scherm", "edit_check0", "edit_check1", "edit_check2",
                           "edit_check3", "edit_check4", "edit_check5", "combo_box_ex_rejector"};
    show("page_can");
    for (const char* name : names) EXPECT_FALSE(enabled(name)) << name;
    EXPECT_TRUE(enabled("edit_send"));
    does("click @/check_button\n");
    for (const char* name : names) EXPECT_TRUE(enabled(name)) << name;
    does("click @/check_button\n");
    for (const char* name : names) EXPECT_FALSE(enabled(name)) << name;
    EXPECT_EQ(image()[8], 0);
    set("can_check", 1);
    show("page_can");
    for (const char* name : names) EXPECT_TRUE(enabled(name)) << name;
}

TEST_F(generic_page, a_length_that_no_user_may_type_is_shown_as_it_is) {
    set("change_len", 200);
    set("change_star", 255);
    show("page_change");
    EXPECT_EQ(shown("spin_box1"), "200");
    EXPECT_EQ(shown("spin_box"), "255");
    EXPECT_EQ(value("change_len"), 200U);
    EXPECT_EQ(console(), "");
}

TEST_F(generic_page, standard_frames_with_change_len_4_set_it_to_2) {
    show("page_can");
    does("pick @/combo_box_ex_Fkind 标准帧\n");
    EXPECT_EQ(value("change_len"), 2U);
    EXPECT_EQ(image()[52], 2);
    EXPECT_EQ(image()[47], 0);
    EXPECT_EQ(console(), "1231546548789\n");
    expect_code();
}

TEST_F(generic_page, standard_frames_cut_the_length_from_3_on) {
    for (const uint32_t length : {0U, 1U, 2U, 3U, 8U}) {
        set("change_len", length);
        set("can_sendf_kind", 8);
        show("page_can");
        does("pick @/combo_box_ex_Fkind 标准帧\n");
        EXPECT_EQ(value("change_len"), std::min(length, 2U));
        EXPECT_EQ(image()[52], std::min(length, 2U));
        EXPECT_EQ(console(), length > 2 ? "1231546548789\n" : "") << length;
    }
}

TEST_F(generic_page, extended_frames_leave_the_length) {
    set("can_sendf_kind", 0);
    show("page_can");
    does("pick @/combo_box_ex_Fkind 扩展帧\n");
    EXPECT_EQ(value("change_len"), 4U);
    EXPECT_EQ(value("can_sendf_kind"), 8U);
    EXPECT_EQ(console(), "");
}

struct hex_case {
    const char* edit;
    const char* key;
    std::size_t at;
};
const hex_case hex_cases[] = {
    {"edit_scherm", "can_scherm", 10}, {"edit_check0", "can_check0", 14},    {"edit_check1", "can_check1", 18},
    {"edit_check2", "can_check2", 26}, {"edit_check3", "can_check3", 30},    {"edit_check4", "can_check4", 34},
    {"edit_check5", "can_check5", 38}, {"edit_send", "can_sendf_flage", 48},
};

class generic_hex_edits : public generic_page, public testing::WithParamInterface<hex_case> {};

TEST_P(generic_hex_edits, form_store_and_refresh_when_left) {
    const hex_case& hex = GetParam();
    set("can_check", 1);
    show("page_can");
    does(std::string("type @/") + hex.edit + " 123456789A\nkey Tab\n");
    EXPECT_EQ(shown(hex.edit), "12 34 56 78");
    EXPECT_EQ(text(hex.key), "12 34 56 78");
    const std::vector<uint8_t> now = image();
    EXPECT_THAT(
        std::vector<uint8_t>(now.begin() + static_cast<long>(hex.at), now.begin() + static_cast<long>(hex.at) + 4),
        testing::ElementsAre(0x12, 0x34, 0x56, 0x78));
    expect_code();
    does(std::string("click @/") + hex.edit + "\nexpect @/" + hex.edit + " text 12345678\n");
}
INSTANTIATE_TEST_SUITE_P(all, generic_hex_edits, testing::ValuesIn(hex_cases),
                         [](const auto& one) { return std::string(one.param.key); });

struct unlike_case {
    const char* typed;
    const char* formed;
    const char* sent; ///< null: what was typed
};
const unlike_case unlike_cases[] = {
    {"xyz", "00 00 0x yz", "00 00 00 00"}, {"12G4", "00 00 12 G4", "00 00 12 00"}, {"abcd", "00 00 ab cd", nullptr},
    {"1G", "00 00 00 1G", "00 00 00 01"},  {"1 2", "00 00 01  2", "00 00 01 02"},  {"", "00 00 00 00", nullptr},
};

TEST_F(generic_page, a_hex_edit_says_when_it_is_not_what_is_sent) {
    show("page_can");
    for (const unlike_case& row : unlike_cases) {
        does(std::string("type @/edit_send \"") + row.typed + "\"\nkey Tab\n");
        EXPECT_EQ(shown("edit_send"), row.formed);
        EXPECT_EQ(text("can_sendf_flage"), row.formed); // stored as it was typed
        EXPECT_EQ(widget_get_refused(on_page("edit_send")), row.sent != nullptr) << row.typed;
        if (row.sent == nullptr) continue;
        EXPECT_THAT(code(), HasSubstr(row.sent));
        const std::string tip = std::string("\"不是十六进制数：发送的是 ") + row.sent + "\"\n";
        does("expect @/edit_send tooltip " + tip);
        show("page_can"); // filled again it is still so
        does("expect @/edit_send tooltip " + tip);
        does("click @/edit_send\nexpect @/edit_send refused 0\n"); // the image's digits
    }
}

TEST_F(generic_page, a_spin_box_says_what_it_does_not_take) {
    const struct {
        const char* page;
        const char* box;
        const char* key;
        int typed;
        uint32_t stored;
        int bound;
    } rows[] = {
        {"page_spi", "spin_box_number", "spi_ff_fnum", 999, 99, 256},
        {"page_spi", "spin_box_time", "spi_ff_time", 256, 25, 256},
        {"page_uart", "spin_box_distance", "uart_f_distance", 300, 30, 256},
        {"page_change", "spin_box", "change_star", 8, 0, 8},
        {"page_change", "spin_box1", "change_len", 9, 4, 9},
    };
    for (const auto& row : rows) {
        show(row.page);
        does(tk_format("type @/%s %d\nexpect @/%s text %d\nexpect @/%s refused 1\nexpect @/%s tooltip "
                       "\"未采用：取值须小于 %d\"\n",
                       row.box, row.typed, row.box, row.typed, row.box, row.box, row.bound));
        EXPECT_EQ(value(row.key), row.stored) << row.box;
        does(tk_format(
            "key Tab\nexpect @/%s text %u\nexpect @/%s refused 1\nexpect @/%s tooltip \"未采用 %d：取值须小于 "
            "%d，实际保存的是 %u\"\n",
            row.box, row.stored, row.box, row.box, row.typed, row.bound, row.stored));
        does(tk_format("type @/%s %d\nexpect @/%s refused 0\n", row.box, row.bound - 1, row.box));
        EXPECT_EQ(value(row.key), static_cast<uint32_t>(row.bound - 1)) << row.box;
        expect_code();
    }
    EXPECT_EQ(console(), "");
}

TEST_F(generic_page, hex_edit_typing_FF_gives_00_00_00_FF) {
    show("page_can");
    does("type @/edit_send FF\nkey Tab\n");
    EXPECT_EQ(text("can_sendf_flage"), "00 00 00 FF");
    EXPECT_EQ(image()[51], 0xFF);
}

TEST_F(generic_page, hex_edit_left_empty_gives_zeros) {
    tk_object_set_prop_str(dev->props.get(), "can_sendf_flage", "12 34 56 78");
    cfg_image_from_props(*dev);
    show("page_can");
    does("type @/edit_send \"\"\nkey Tab\n");
    EXPECT_EQ(text("can_sendf_flage"), "00 00 00 00");
    EXPECT_EQ(image()[48], 0);
}

TEST_F(generic_page, hex_edit_with_a_formed_text_is_left_alone) {
    show("page_can");
    does("type @/edit_send \"12 34 56 78\"\nkey Tab\n");
    EXPECT_EQ(text("can_sendf_flage"), "00 00 00 00");
    EXPECT_EQ(image()[48], 0);
    EXPECT_EQ(shown("edit_send"), "12 34 56 78");
    // It says so: what is on show is not what is sent.
    for (const char* typed : {"12 34 56 78", "12 34567890", "12 zz"})
        does(tk_format(
            "type @/edit_send \"%s\"\nkey Tab\nexpect @/edit_send text \"%s\"\nexpect @/edit_send refused 1\n"
            "expect @/edit_send tooltip \"未采用：发送的是 00 00 00 00\"\n",
            typed, typed));
    does("type @/edit_send \"00 00 00 00\"\nkey Tab\nexpect @/edit_send refused 0\n");
    does("type @/edit_send 12345678\nkey Tab\nexpect @/edit_send refused 0\n"
         "type @/edit_send \"12 34 56 78\"\nkey Tab\nexpect @/edit_send refused 0\n");
    EXPECT_EQ(image()[48], 0x12);
}

TEST_F(generic_page, hex_edit_takes_eleven_characters_of_anything) {
    show("page_can");
    does("type @/edit_send 型号xyz12345678\nexpect @/edit_send text 型号xyz123456\nkey Tab\n");
    // The first eight bytes: two characters of three bytes and "xy".
    EXPECT_EQ(text("can_sendf_flage"), "\xE5\x9E \x8B\xE5 \x8F\xB7 xy");
    for (std::size_t at = 48; at < 52; at++) EXPECT_EQ(image()[at], 0);
    expect_code();
}

TEST_F(generic_page, hex_edit_without_an_edit_says_so) {
    const page_table& can = *generic_pages.tables[3];
    for (const page_row& row : can.rows)
        if (std::string("edit_send") == row.name) {
            for (const event_type type : {event_type::focus, event_type::blur}) {
                EXPECT_EQ(page_event(can, row, nullptr, *dev, {.type = type}), RET_BAD_PARAMS);
                EXPECT_THAT(console(),
                            FitsPattern("on_edit_send_focus:[0-9]+ condition\\(edit != NULL\\) failed!\n"));
            }
        } else {
            EXPECT_EQ(page_event(can, row, nullptr, *dev, {.type = event_type::focus}), RET_BAD_PARAMS);
            EXPECT_EQ(console(), "") << row.name;
        }
}

TEST_F(generic_page, greying_the_edit_under_the_cursor_is_harmless) {
    set("change_mode", 3);
    show("page_change");
    does("type @/edit 5A\n");
    set("change_mode", 1);
    show("page_change"); // greys it while it has the focus
    EXPECT_FALSE(enabled("edit"));
}

TEST_F(generic_page, a_page_made_anew_is_attached_anew) {
    show("page_can");
    home_anew();
    choose(generic_pages);
    show("page_can");
    EXPECT_EQ(combo_box_count_options(on_page("combo_box_ex_bps")), 16);
    does("pick @/combo_box_ex_bps 5K\n");
    EXPECT_EQ(image()[4], 1);
}

} // namespace
