// Enabling rules and filter edits of the CAN FD channel pages.
#include "tests/dev_b/pages/b_page.h"

namespace {

class canfd_page : public b_channel {
  protected:
    void open() { show(mine("page_vkt610b_canfd_#").c_str()); }
    bool reacts(const char* name) const { return enabled(mine(name).c_str()); }
    std::string text(const char* name) const { return shown(mine(name).c_str()); }
    void act(const std::string& script) { does(mine(script)); }
};
INSTANTIATE_TEST_SUITE_P(both, canfd_page, testing::Values('1', '2'), channel_name);

const char* standard_edits[] = {"edit_scherm0_vkt610b_canfd#", "edit_check0_vkt610b_canfd#",
                                "edit_check1_vkt610b_canfd#", "edit_check2_vkt610b_canfd#",
                                "edit_check3_vkt610b_canfd#"};
const char* extended_edits[] = {"edit_scherm1_vkt610b_canfd#", "edit_check4_vkt610b_canfd#",
                                "edit_check5_vkt610b_canfd#", "edit_check6_vkt610b_canfd#",
                                "edit_check7_vkt610b_canfd#"};

TEST_P(canfd_page, the_data_rate_is_enabled_while_brs_is_1) {
    open();
    EXPECT_TRUE(reacts("combo_box_ex_rejector_vkt610b_canfd#"));
    act("click @/check_button_vkt610b_canfd#\n");
    EXPECT_FALSE(reacts("combo_box_ex_rejector_vkt610b_canfd#"));
    act("click @/check_button_vkt610b_canfd#\n");
    EXPECT_TRUE(reacts("combo_box_ex_rejector_vkt610b_canfd#"));
    set(mine("canfd#_brs_vkt610b"), 0);
    open();
    EXPECT_FALSE(reacts("combo_box_ex_rejector_vkt610b_canfd#"));
}

TEST_P(canfd_page, classic_can_stores_brs_0_and_greys_brs_and_data_rate) {
    open();
    act("pick @/combo_box_ex_mode_vkt610b_canfd# CAN模式\n");
    EXPECT_EQ(value(mine("canfd#_mode_vkt610b")), 0U);
    EXPECT_EQ(value(mine("canfd#_brs_vkt610b")), 0U);
    EXPECT_EQ(widget_get_value_int(on_page(mine("check_button_vkt610b_canfd#").c_str())), 0);
    EXPECT_FALSE(reacts("check_button_vkt610b_canfd#"));
    EXPECT_FALSE(reacts("combo_box_ex_rejector_vkt610b_canfd#"));
    EXPECT_EQ(listed(GetParam() - '0' + 4), "0A060800");
    act("pick @/combo_box_ex_mode_vkt610b_canfd# \"CAN FD模式\"\n");
    EXPECT_TRUE(reacts("check_button_vkt610b_canfd#"));
    EXPECT_EQ(value(mine("canfd#_brs_vkt610b")), 0U); // what was switched off stays off
    EXPECT_FALSE(reacts("combo_box_ex_rejector_vkt610b_canfd#"));
    EXPECT_EQ(console(), "");
}

TEST_P(canfd_page, a_brs_that_cannot_be_stored_along_is_named) {
    open();
    refuse(mine("canfd#_brs_vkt610b").c_str());
    act("pick @/combo_box_ex_mode_vkt610b_canfd# CAN模式\n");
    EXPECT_EQ(console(), mine("set canfd#_brs_vkt610b failed!\n"));
}

TEST_P(canfd_page, a_mode_that_cannot_be_stored_changes_nothing_else) {
    open();
    set(mine("canfd#_mode_vkt610b"), 0); // behind the page's back: an enabling rule that ran would show it
    refuse(mine("canfd#_mode_vkt610b").c_str());
    act("pick @/combo_box_ex_mode_vkt610b_canfd# \"CAN FD模式\"\n");
    EXPECT_EQ(console(), mine("set canfd#_mode_vkt610b failed!\n"));
    EXPECT_TRUE(reacts("check_button_vkt610b_canfd#"));
}

TEST_P(canfd_page, a_refused_mode_still_runs_the_enabling_rule) {
    open();
    set(mine("canfd#_mode_vkt610b"), 0); // behind the page's back
    const std::string combo = mine("combo_box_ex_mode_vkt610b_canfd#");
    combo_box_append_option(on_page(combo.c_str()), 3, "too far");
    act("pick @/" + combo + " \"too far\"\n");
    EXPECT_EQ(console(), mine("canfd#_mode_work_value is error\n"));
    EXPECT_FALSE(reacts("check_button_vkt610b_canfd#"));
}

TEST_P(canfd_page, the_stored_mode_decides_at_filling) {
    set(mine("canfd#_mode_vkt610b"), 0);
    open();
    EXPECT_FALSE(reacts("check_button_vkt610b_canfd#"));
    EXPECT_EQ(value(mine("canfd#_brs_vkt610b")), 1U); // shown, not changed
    set(mine("canfd#_mode_vkt610b"), 2);
    open();
    EXPECT_TRUE(reacts("check_button_vkt610b_canfd#"));
}

TEST_P(canfd_page, the_filter_mode_enables_its_edits) {
    open();
    const std::tuple<const char*, bool, bool> modes[] = {
        {"标准帧滤波", true, false}, {"扩展帧滤波", false, true}, {"标准帧、扩展帧滤波", true, true}};
    uint8_t stored = 0;
    for (const auto& [picked, standard, extended] : modes) {
        act(std::string("pick @/combo_box_ex_reject_mode_vkt610b_canfd# ") + picked + "\n");
        for (const char* edit : standard_edits) EXPECT_EQ(reacts(edit), standard) << picked << edit;
        for (const char* edit : extended_edits) EXPECT_EQ(reacts(edit), extended) << picked << edit;
        set(mine("canfd#_leach_mode_vkt610b"), stored++);
        open();
        for (const char* edit : standard_edits) EXPECT_EQ(reacts(edit), standard) << picked << edit;
        for (const char* edit : extended_edits) EXPECT_EQ(reacts(edit), extended) << picked << edit;
    }
}

TEST_P(canfd_page, the_calculator_button_shows_while_user_timing_is_ticked) {
    open();
    widget* button = on_page(mine("canfd#_button_bp_calculate").c_str());
    EXPECT_FALSE(widget_get_visible(button));
    EXPECT_FALSE(widget_get_enable(button));
    act("click @/bps_do_button_vkt610b_canfd#\n");
    EXPECT_TRUE(widget_get_visible(button));
    EXPECT_TRUE(widget_get_enable(button));
    EXPECT_EQ(value(mine("canfd#_brs_do_button_vkt610b")), 1U);
    act("click @/bps_do_button_vkt610b_canfd#\n");
    EXPECT_FALSE(widget_get_visible(button));
    EXPECT_EQ(value(mine("canfd#_brs_do_button_vkt610b")), 0U);
}

// ---- filter edits

struct filter_case {
    const char* edit;
    const char* key;
    int reg; ///< of channel 1; channel 2's stands ten further on
    bool standard;
    const char* named;
};
const filter_case filter_cases[] = {
    {"edit_scherm0_vkt610b_canfd#", "canfd#_scherm_vkt610b", 7, true, "scherm0_value"},
    {"edit_check0_vkt610b_canfd#", "canfd#_check0_vkt610b", 8, true, "check0_value"},
    {"edit_check1_vkt610b_canfd#", "canfd#_check1_vkt610b", 9, true, "check1_value"},
    {"edit_check2_vkt610b_canfd#", "canfd#_check2_vkt610b", 10, true, "check2_value"},
    {"edit_check3_vkt610b_canfd#", "canfd#_check3_vkt610b", 11, true, "check3_value"},
    {"edit_scherm1_vkt610b_canfd#", "canfd#_scherm_e_vkt610b", 12, false, "scherm1_value"},
    {"edit_check4_vkt610b_canfd#", "canfd#_check0_e_vkt610b", 13, false, "check4_value"},
    {"edit_check5_vkt610b_canfd#", "canfd#_check1_e_vkt610b", 14, false, "check5_value"},
    {"edit_check6_vkt610b_canfd#", "canfd#_check2_e_vkt610b", 15, false, "check6_value"},
    {"edit_check7_vkt610b_canfd#", "canfd#_check3_e_vkt610b", 16, false, "check7_value"},
};

TEST_P(canfd_page, filter_edits_are_held_stored_and_shown_again_when_left) {
    open();
    for (const filter_case& row : filter_cases) {
        const std::string edit = mine(row.edit);
        const int reg = row.reg + (GetParam() == '2' ? 10 : 0);
        const std::string key = mine(row.key);
        act(std::string("type @/") + row.edit + " 123\nkey Tab\nexpect @/" + row.edit + " text 00000123\n");
        EXPECT_EQ(value(key), 0x123U) << edit;
        EXPECT_EQ(listed(reg), "23010000") << edit;
        act(std::string("type @/") + row.edit + " FFFFFFFF\nkey Enter\n"); // Enter stores without leaving
        EXPECT_EQ(value(key), row.standard ? 0x7FFU : 0x1FFFFFFFU) << edit;
        EXPECT_EQ(shown(edit.c_str()), row.standard ? "000007FF" : "1FFFFFFF");
        EXPECT_EQ(listed(reg), row.standard ? "FF070000" : "FFFFFF1F") << edit;
        EXPECT_EQ(console(), "");
        act(std::string("type @/") + row.edit + " xyz\nkey Tab\n");
        EXPECT_EQ(console(), std::string("sscanf read ") + row.named + " failed!") << edit;
        EXPECT_TRUE(widget_get_refused(on_page(edit.c_str())));
        EXPECT_EQ(value(key), row.standard ? 0x7FFU : 0x1FFFFFFFU) << edit;
        refuse(key.c_str());
        act(std::string("type @/") + row.edit + " 5\nkey Tab\n");
        EXPECT_EQ(console(), "set " + key + " failed!");
        EXPECT_FALSE(widget_get_refused(on_page(edit.c_str())));
        refuse(nullptr);
    }
}

TEST_P(canfd_page, a_filter_edit_says_what_it_did_not_take) {
    const struct {
        const char* edit;
        const char* typed;
        const char* shown;
        const char* why; ///< null: all of it was taken
    } rows[] = {
        {"edit_scherm0_vkt610b_canfd#", "FFFF", "000007FF", "未采用 FFFF：实际保存的是 000007FF"},
        {"edit_scherm0_vkt610b_canfd#", "07ff", "000007FF", nullptr},
        {"edit_scherm0_vkt610b_canfd#", "xyz", "000007FF", "未采用 xyz：不是十六进制数，实际保存的是 000007FF"},
        {"edit_check4_vkt610b_canfd#", "0x1a", "0000001A", nullptr},
        {"edit_check4_vkt610b_canfd#", "12G", "00000012", "未采用 12G：实际保存的是 00000012"},
        {"edit_check4_vkt610b_canfd#", "000", "00000000", nullptr},
        {"edit_check4_vkt610b_canfd#", "", "00000000", "未采用 空白：不是十六进制数，实际保存的是 00000000"},
    };
    open();
    act("pick @/combo_box_ex_reject_mode_vkt610b_canfd# 标准帧、扩展帧滤波\n");
    for (const auto& row : rows) {
        const std::string at = std::string("@/") + row.edit;
        act("type " + at + " \"" + row.typed + "\"\nkey Tab\nexpect " + at + " text " + row.shown + "\n");
        EXPECT_EQ(widget_get_refused(on_page(mine(row.edit).c_str())), row.why != nullptr) << row.typed;
        if (row.why != nullptr) act("expect " + at + " tooltip \"" + row.why + "\"\n");
    }
}

TEST_P(canfd_page, typing_800_into_a_standard_code_gives_7FF) {
    open();
    act("type @/edit_check0_vkt610b_canfd# 800\n");
    EXPECT_EQ(value(mine("canfd#_check0_vkt610b")), 0U); // not at every key
    act("key Tab\n");
    EXPECT_EQ(value(mine("canfd#_check0_vkt610b")), 0x7FFU);
    EXPECT_EQ(text("edit_check0_vkt610b_canfd#"), "000007FF");
}

TEST_P(canfd_page, what_is_held_for_display_stays_in_the_store) {
    set(mine("canfd#_scherm_vkt610b"), 0xFFFFFFFF);
    set(mine("canfd#_check0_vkt610b"), 0xFFFFFFFF);
    set(mine("canfd#_scherm_e_vkt610b"), 0xFFFFFFFF);
    set(mine("canfd#_check0_e_vkt610b"), 0xFFFFFFFF);
    open();
    EXPECT_EQ(text("edit_scherm0_vkt610b_canfd#"), "FFFFFFFF"); // a standard mask is shown as stored
    EXPECT_EQ(text("edit_check0_vkt610b_canfd#"), "000007FF");
    EXPECT_EQ(text("edit_scherm1_vkt610b_canfd#"), "1FFFFFFF");
    EXPECT_EQ(text("edit_check4_vkt610b_canfd#"), "1FFFFFFF");
    act("click @/edit_check0_vkt610b_canfd#\nkey Tab\n");
    EXPECT_EQ(value(mine("canfd#_check0_vkt610b")), 0xFFFFFFFFU);
    act("click @/edit_scherm0_vkt610b_canfd#\nkey Tab\n");
    EXPECT_EQ(value(mine("canfd#_scherm_vkt610b")), 0xFFFFFFFFU);
    // A commit holds the mask too.
    act("type @/edit_scherm0_vkt610b_canfd# FFFFFFFE\nkey Tab\n");
    EXPECT_EQ(value(mine("canfd#_scherm_vkt610b")), 0x7FFU);
    EXPECT_EQ(text("edit_scherm0_vkt610b_canfd#"), "000007FF");
}

struct typed_case {
    const char* typed;
    uint32_t stored; ///< 0x55 where nothing is
};
TEST_P(canfd_page, filter_edits_take_what_begins_as_a_hex_number) {
    const typed_case typed[] = {
        {"0x1A", 0x1A}, {" 1A", 0x1A}, {"1A2B3C4D", 0x1A2B3C4D}, {"1A2B3C4D5E", 0x1A2B3C4D},
        {"12G", 0x12},  {"", 0x55},    {"型12", 0x55},           {"g1", 0x55},
        {"abc", 0xABC}, {"1 2", 0x1},  {"-1", 0x1FFFFFFF},
    };
    for (const typed_case& row : typed) {
        set(mine("canfd#_check0_e_vkt610b"), 0x55);
        open();
        act(std::string("type @/edit_check4_vkt610b_canfd# \"") + row.typed + "\"\nkey Tab\n");
        EXPECT_EQ(value(mine("canfd#_check0_e_vkt610b")), row.stored) << row.typed;
    }
}

TEST_P(canfd_page, an_edit_left_unchanged_stores_nothing) {
    open();
    refuse(mine("canfd#_check0_vkt610b").c_str()); // a store that is asked says so
    act("click @/edit_check0_vkt610b_canfd#\nkey Tab\n");
    EXPECT_EQ(text("edit_check0_vkt610b_canfd#"), "00000000");
    EXPECT_EQ(console(), "");
}

} // namespace
