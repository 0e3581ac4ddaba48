// The bit timing calculator and the question after a timing that does not fit.
#include "dev_b/pages/bps_calculator.h"
#include "dev_b/timing_list.h"
#include "tests/dev_b/pages/b_page.h"
#include "tests/support/scratch_folder.h"
#include "toolkit/core/idle.h"
#include "toolkit/table_view/table_view.h"

#include <filesystem>
#include <fstream>
#include <optional>

namespace {

namespace fs = std::filesystem;

const char* timing_keys[] = {"canfd_bps_do_brp_z_vkt610b",   "canfd_bps_do_tseg1_z_vkt610b",
                             "canfd_bps_do_tseg2_z_vkt610b", "canfd_bps_do_brp_c_vkt610b",
                             "canfd_bps_do_tseg1_c_vkt610b", "canfd_bps_do_tseg2_c_vkt610b"};
constexpr const char* divider_key = "canfd_bps_do_div_vkt610b";

class calculator : public b_channel {
  protected:
    void SetUp() override {
        b_channel::SetUp();
        folder_ = scratch_folder("bps_lists");
        fs::create_directories(folder_);
        usual_ = timing_list_folder();
        timing_list_folder() = folder_.string();
        set(mine("canfd#_brs_do_button_vkt610b"), 1);
        show(mine("page_vkt610b_canfd_#").c_str());
    }
    void TearDown() override {
        timing_list_folder() = usual_;
        fs::remove_all(folder_);
        b_channel::TearDown();
    }
    void put_list(const std::string& name, const std::string& text) const {
        std::ofstream(folder_ / mine(name), std::ios::binary) << text;
    }
    /// Opens the calculator from its page, plays lines in it ("~" is its path) and ends it with "back".
    void in_calculator(const std::string& script) {
        play("click @/canfd#_button_bp_calculate\n" + script + "click ~/canfd#_back\n");
    }
    /// The same without the end.
    void play(const std::string& script) {
        std::string lines = mine(script);
        const std::string path = mine("page_vkt610b_bps_canfd#");
        for (std::size_t at = lines.find('~'); at != std::string::npos; at = lines.find('~'))
            lines.replace(at, 1, path);
        does(lines);
        EXPECT_EQ(widget_child(window_manager(), path.c_str()), nullptr);
        EXPECT_EQ(widget_child(window_manager(), "bps_do_error"), nullptr);
    }
    /// Opens the calculator as its page does and plays lines in it; its answer.
    uint32_t answer(const std::string& script) {
        std::string lines = mine(script);
        const std::string path = mine("page_vkt610b_bps_canfd#");
        for (std::size_t at = lines.find('~'); at != std::string::npos; at = lines.find('~'))
            lines.replace(at, 1, path);
        std::string failed;
        user_will_do(lines, &failed);
        const uint32_t code = bps_calculator_open(*dev, GetParam() - '0');
        EXPECT_EQ(failed, "");
        return code;
    }
    uint32_t half(const char* key) const { return GetParam() == '2' ? value(key) >> 16 : value(key) & 0xFFFF; }
    uint32_t other_half(const char* key) const {
        return GetParam() == '2' ? value(key) & 0xFFFF : value(key) >> 16;
    }
    /// Stores a timing for this channel; the other channel's halves become 0.
    void store(uint32_t divider_code, std::initializer_list<uint32_t> values) const {
        const int shift = GetParam() == '2' ? 16 : 0;
        set(divider_key, divider_code << shift);
        const char* const* key = timing_keys;
        for (const uint32_t v : values) set(*key++, v << shift);
    }

    fs::path folder_;
    std::string usual_;
};
INSTANTIATE_TEST_SUITE_P(both, calculator, testing::Values('1', '2'), channel_name);

const std::string fill_80_percent = // 200 MHz / 4 / 25 = 2000 kbit/s, / 5 = 400 kbit/s; 80 %
    "pick ~/canfd#_div_z 4\npick ~/combo_box_ex_bps_z_vkt610b_canfd# 400K\n"
    "type ~/canfd#_brp_z 5\ntype ~/canfd#_tseg1_z 20\ntype ~/canfd#_tseg2_z 5\n"
    "type ~/canfd#_edit_smp_z_vkt610b 80\n";
const std::string fill_data_80_percent =
    "pick ~/combo_box_ex_bps_c_vkt610b_canfd# 2M\ntype ~/canfd#_brp_c 1\ntype ~/canfd#_tseg1_c 20\n"
    "type ~/canfd#_tseg2_c 5\ntype ~/canfd#_edit_smp_c_vkt610b 80\n";

// ---- opening

TEST_P(calculator, the_defaults_open_with_empty_edits) {
    in_calculator("expect ~/canfd#_brp_z text \"\"\nexpect ~/canfd#_tseg1_z text \"\"\n"
                  "expect ~/canfd#_edit_smp_z_vkt610b text \"\"\nexpect ~/canfd#_brp_c text \"\"\n"
                  "expect ~/canfd#_div_z value -1\nexpect ~/canfd#_div_z options 2|4|5|8\n"
                  "expect ~/canfd#_div_c visible 0\n"
                  "expect ~/combo_box_ex_bps_z_vkt610b_canfd# options "
                  "40K|50K|80K|100K|125K|200K|250K|400K|500K|800K|1M\n"
                  "expect ~/combo_box_ex_bps_c_vkt610b_canfd# options 400K|500K|800K|1M|2M|4M|5M\n"
                  "expect ~/combo_box_ex_bps_z_vkt610b_canfd# text 1M\n"
                  "expect ~/combo_box_ex_bps_c_vkt610b_canfd# text 5M\n"
                  "expect ~/canfd#_brp_c enabled 1\nexpect ~/list_view_z exists 1\n");
    EXPECT_EQ(console(), "");
}

TEST_P(calculator, every_divider_has_its_clock_and_rates) {
    const struct {
        const char* divider;
        int mhz, nominal_kbit, data_kbit;
    } rows[] = {{"2", 100, 800, 4000}, {"5", 40, 320, 1600}, {"8", 25, 200, 1000}, {"4", 50, 400, 2000}};
    std::string script =
        "expect ~/canfd#_label1_clock_c_vkt610b text \"时间份额时钟 —\"\n" + fill_80_percent + fill_data_80_percent;
    for (const auto& row : rows) {
        const bool chosen = row.nominal_kbit == 400; // the rates that the selectors show
        script += tk_format("pick ~/canfd#_div_z %s\nexpect ~/canfd#_label1_clock_c_vkt610b text \"时间份额时钟 %d "
                            "MHz\"\nexpect ~/canfd#_result_z text \"计算值：%d kbit/s，采样点 80.00 %%\"\n"
                            "expect ~/canfd#_result_c text \"计算值：%d kbit/s，采样点 80.00 %%\"\n",
                            row.divider, row.mhz, row.nominal_kbit, row.data_kbit);
        for (const char* result : {"canfd#_result_z", "canfd#_result_c"})
            script += tk_format("expect ~/%s state %s\n", result, chosen ? "ok" : "warning");
        for (const char* count : {"canfd#_count_z", "canfd#_count_c"})
            script += tk_format("expect ~/%s text 没有候选\n", count);
    }
    in_calculator(script + "type ~/canfd#_brp_z 0\nexpect ~/canfd#_result_z text 计算值：—\n"
                           "expect ~/canfd#_result_z state \"\"\n");
}

TEST_P(calculator, a_stored_timing_is_loaded) {
    store(2, {5, 20, 5, 1, 20, 5});
    in_calculator("expect ~/canfd#_div_z text 4\nexpect ~/combo_box_ex_bps_z_vkt610b_canfd# text 400K\n"
                  "expect ~/canfd#_brp_z text 5\nexpect ~/canfd#_tseg1_z text 20\nexpect ~/canfd#_tseg2_z text 5\n"
                  "expect ~/canfd#_edit_smp_z_vkt610b text 80.00\n"
                  "expect ~/combo_box_ex_bps_c_vkt610b_canfd# text 2M\nexpect ~/canfd#_brp_c text 1\n"
                  "expect ~/canfd#_edit_smp_c_vkt610b text 80.00\n"
                  "expect ~/canfd#_result_c text \"计算值：2000 kbit/s，采样点 80.00 %\"\n"
                  "expect ~/canfd#_result_c state ok\n"
                  "expect ~/canfd#_label1_clock_c_vkt610b text \"时间份额时钟 50 MHz\"\n");
}

TEST_P(calculator, a_phase_that_loads_alone_brings_the_divider_of_both) {
    const std::string agreed = "expect ~/canfd#_div_z text 4\nexpect ~/canfd#_div_c value 2\n"
                               "expect ~/canfd#_label1_clock_c_vkt610b text \"时间份额时钟 50 MHz\"\n";
    store(2, {7, 20, 5, 1, 20, 5}); // 50 MHz / 175 is no rate
    in_calculator(agreed + "expect ~/canfd#_brp_z text \"\"\nexpect ~/canfd#_brp_c text 1\n");
    store(2, {5, 20, 5, 7, 20, 5});
    in_calculator(agreed + "expect ~/canfd#_brp_z text 5\nexpect ~/canfd#_brp_c text \"\"\n");
}

TEST_P(calculator, a_rate_that_is_offered_first_is_chosen_only_by_picking_it) {
    const auto keys_become = [this](std::optional<uint32_t> number) {
        const std::string rates[] = {mine("canfd#_speed_zc_vkt610b"), mine("canfd#_speed_data_vkt610b")};
        for (const std::string& key : rates) set(key, 11); // no rate's index
        for (const char* key : {divider_key, timing_keys[0], timing_keys[1], timing_keys[2], timing_keys[3],
                                timing_keys[4], timing_keys[5]}) {
            if (number)
                set(key, *number);
            else
                tk_object_remove_prop(dev->props.get(), key);
        }
    };
    for (const auto& number : {std::optional(0U), std::optional(1U), std::optional<uint32_t>()}) {
        keys_become(number);
        in_calculator("expect ~/combo_box_ex_bps_z_vkt610b_canfd# value -1\n"
                      "expect ~/combo_box_ex_bps_c_vkt610b_canfd# value -1\n"
                      "pick ~/combo_box_ex_bps_z_vkt610b_canfd# 40K\n"
                      "pick ~/combo_box_ex_bps_c_vkt610b_canfd# 400K\n");
        EXPECT_EQ(value(mine("canfd#_speed_zc_vkt610b")), 0U);
        EXPECT_EQ(value(mine("canfd#_speed_data_vkt610b")), 0U);
    }
}

TEST_P(calculator, the_channels_own_rates_are_chosen_where_the_timing_has_none) {
    for (const char* key : {divider_key, timing_keys[0], timing_keys[1], timing_keys[2], timing_keys[3],
                            timing_keys[4], timing_keys[5]})
        set(key, 0);
    set(mine("canfd#_speed_zc_vkt610b"), 8);
    set(mine("canfd#_speed_data_vkt610b"), 6);
    in_calculator("expect ~/combo_box_ex_bps_z_vkt610b_canfd# text 500K\n"
                  "expect ~/combo_box_ex_bps_c_vkt610b_canfd# text 5M\n");
    EXPECT_EQ(value(mine("canfd#_speed_zc_vkt610b")), 8U);
    EXPECT_EQ(value(mine("canfd#_speed_data_vkt610b")), 6U);
    set(mine("canfd#_speed_data_vkt610b"), 7);
    in_calculator("expect ~/combo_box_ex_bps_c_vkt610b_canfd# value -1\n");
    store(2, {5, 20, 5, 1, 20, 5});
    in_calculator("expect ~/combo_box_ex_bps_z_vkt610b_canfd# text 400K\n"
                  "expect ~/combo_box_ex_bps_c_vkt610b_canfd# text 2M\n");
}

TEST_P(calculator, classic_can_greys_the_data_phase) {
    set(mine("canfd#_mode_vkt610b"), 0);
    in_calculator("expect ~/canfd#_brp_c enabled 0\nexpect ~/canfd#_tseg1_c enabled 0\n"
                  "expect ~/canfd#_tseg2_c enabled 0\nexpect ~/canfd#_edit_smp_c_vkt610b enabled 0\n"
                  "expect ~/combo_box_ex_bps_c_vkt610b_canfd# enabled 0\nexpect ~/list_view_c enabled 0\n"
                  "expect ~/canfd#_brp_z enabled 1\nexpect ~/list_view_z enabled 1\n");
}

// ---- candidate lists

TEST_P(calculator, choosing_a_row_fills_the_edits_and_keeps_the_list) {
    put_list("vkt610b_bps_canfd#_z_4_400.txt", "5-20-5-5-80.00\n1-100-25-25-80.00\n5-19-6-6-76.00\n");
    in_calculator("pick ~/canfd#_div_z 4\npick ~/combo_box_ex_bps_z_vkt610b_canfd# 400K\n"
                  "wait ~/list_view_z/item[0] text \"BRP: 5, TSEGE1: 20, TSEGE2: 5, SMP: 80.00%\"\n"
                  "expect ~/list_view_z/item[2] text \"BRP: 5, TSEGE1: 19, TSEGE2: 6, SMP: 76.00%\"\n"
                  "click ~/list_view_z/item[2]\n"
                  "expect ~/canfd#_brp_z text 5\nexpect ~/canfd#_tseg1_z text 19\nexpect ~/canfd#_tseg2_z text 6\n"
                  "expect ~/canfd#_edit_smp_z_vkt610b text 76.00\n"
                  "expect ~/canfd#_result_z text \"计算值：400 kbit/s，采样点 76.00 %\"\n"
                  "expect ~/list_view_z/item[1] text \"BRP: 1, TSEGE1: 100, TSEGE2: 25, SMP: 80.00%\"\n"
                  "click ~/list_view_z/item[1]\nexpect ~/canfd#_tseg1_z text 100\n"
                  "expect ~/list_view_z/item[0] h 30\n"
                  "expect ~/list_view_z w 727\nexpect ~/list_view_z h 120\n");
}

TEST_P(calculator, the_keyboard_moves_the_chosen_row_and_enter_fills_it_in) {
    put_list("vkt610b_bps_canfd#_z_4_400.txt", "5-20-5-5-80.00\n1-100-25-25-80.00\n5-19-6-6-76.00\n");
    in_calculator("pick ~/canfd#_div_z 4\npick ~/combo_box_ex_bps_z_vkt610b_canfd# 400K\n"
                  "wait ~/list_view_z/item[0] text \"BRP: 5, TSEGE1: 20, TSEGE2: 5, SMP: 80.00%\"\n"
                  "expect ~/list_view_z/item[0] state \"\"\n"
                  "click ~/canfd#_tseg2_z\nkey Tab\nwait ~/list_view_z focused 1\n"
                  "wait ~/list_view_z/item[0] state current\n"
                  "expect ~/canfd#_brp_z text \"\"\n"
                  "key Down\nwait ~/list_view_z/item[1] state current\n"
                  "wait ~/list_view_z/item[0] state \"\"\n"
                  "key Enter\nexpect ~/canfd#_brp_z text 1\nexpect ~/canfd#_tseg1_z text 100\n"
                  "expect ~/canfd#_tseg2_z text 25\nexpect ~/canfd#_edit_smp_z_vkt610b text 80.00\n"
                  "expect ~/list_view_z focused 1\n"
                  "key Tab\nwait ~/list_view_z/item[1] state chosen\n"
                  "click ~/list_view_z/item[2]\nwait ~/list_view_z/item[2] state current\n"
                  "wait ~/list_view_z/item[1] state \"\"\n"
                  "expect ~/canfd#_back tooltip \"关闭，不保存位定时；已选的速率保留　Esc\"\n"
                  "type ~/canfd#_brp_z 5\nkey Tab\nwait ~/list_view_z/item[0] state \"\"\n"
                  "wait ~/list_view_z/item[1] state \"\"\n");
}

TEST_P(calculator, every_edit_filters_its_own_list) {
    put_list("vkt610b_bps_canfd#_c_4_2000.txt", "1-20-5-5-80.00\n1-19-6-6-76.00\n");
    in_calculator("pick ~/canfd#_div_z 4\npick ~/combo_box_ex_bps_c_vkt610b_canfd# 2M\n"
                  "wait ~/list_view_c/item[1] visible 1\n"
                  "type ~/canfd#_tseg1_c 19\nkey Tab\nwait ~/list_view_c/item[1] visible 0\n"
                  "expect ~/list_view_c/item[0] text \"BRP: 1, TSEGE1: 19, TSEGE2: 6, SMP: 76.00%\"\n"
                  "type ~/canfd#_tseg1_c \"\"\nkey Enter\nwait ~/list_view_c/item[1] visible 1\n"
                  "type ~/canfd#_edit_smp_c_vkt610b 80.009\nkey Tab\nwait ~/list_view_c/item[1] visible 0\n"
                  "expect ~/list_view_c/item[0] text \"BRP: 1, TSEGE1: 20, TSEGE2: 5, SMP: 80.00%\"\n" // cut
                  "type ~/canfd#_brp_c 2\nkey Enter\nwait ~/list_view_c/item[0] visible 0\n"
                  "expect ~/canfd#_count_c text 没有候选\n"
                  // A divider without a list, then the one with it again: both lists follow the one selector.
                  "type ~/canfd#_brp_c \"\"\nkey Tab\nwait ~/list_view_c/item[0] visible 1\n"
                  "pick ~/canfd#_div_z 8\nwait ~/list_view_c/item[0] visible 0\n"
                  "pick ~/canfd#_div_z 4\nwait ~/list_view_c/item[0] visible 1\n");
    EXPECT_EQ(console(), "");
}

TEST_P(calculator, a_divider_brings_its_own_lists_of_both_phases) {
    put_list("vkt610b_bps_canfd#_z_4_400.txt", "5-20-5-5-80.00\n");
    put_list("vkt610b_bps_canfd#_c_4_2000.txt", "1-20-5-5-80.00\n");
    put_list("vkt610b_bps_canfd#_z_8_400.txt", "2-25-6-6-80.65\n");
    put_list("vkt610b_bps_canfd#_c_8_2000.txt", "1-10-2-2-83.33\n");
    in_calculator("pick ~/combo_box_ex_bps_z_vkt610b_canfd# 400K\npick ~/combo_box_ex_bps_c_vkt610b_canfd# 2M\n"
                  "pick ~/canfd#_div_z 4\n"
                  "wait ~/list_view_z/item[0] text \"BRP: 5, TSEGE1: 20, TSEGE2: 5, SMP: 80.00%\"\n"
                  "wait ~/list_view_c/item[0] text \"BRP: 1, TSEGE1: 20, TSEGE2: 5, SMP: 80.00%\"\n"
                  "pick ~/canfd#_div_z 8\n"
                  "wait ~/list_view_z/item[0] text \"BRP: 2, TSEGE1: 25, TSEGE2: 6, SMP: 80.65%\"\n"
                  "wait ~/list_view_c/item[0] text \"BRP: 1, TSEGE1: 10, TSEGE2: 2, SMP: 83.33%\"\n");
}

TEST_P(calculator, an_item_carries_its_whole_line) {
    put_list("vkt610b_bps_canfd#_z_4_500.txt", "5-16-4-3-80.00\n");
    store(2, {5, 16, 4, 1, 20, 5});
    std::string tips;
    timer_add(
        [&tips, tries = 0]() mutable { // in the dialog's loop
            widget* dialog = widget_child(window_manager(), mine("page_vkt610b_bps_canfd#").c_str());
            tips = widget_get_prop_str(widget_lookup(widget_lookup(dialog, "list_view_z"), "item"), "tips", "");
            if (tips.empty() && ++tries < 1000) return RET_REPEAT;
            dialog_quit(dialog, 0);
            return RET_REMOVE;
        },
        5);
    bps_calculator_open(*dev, GetParam() - '0');
    EXPECT_EQ(tips, "5-16-4-3-80.00");
}

TEST_P(calculator, an_edit_filters_when_it_is_left_or_at_enter_and_not_at_every_key) {
    put_list("vkt610b_bps_canfd#_z_4_400.txt", "5-20-5-5-80.00\n1-100-25-25-80.00\n5-19-6-6-76.00\n");
    in_calculator("pick ~/canfd#_div_z 4\npick ~/combo_box_ex_bps_z_vkt610b_canfd# 400K\n"
                  "wait ~/canfd#_count_z text \"候选 3 条，单击一条填入左侧\"\n"
                  "type ~/canfd#_brp_z 1\nexpect ~/canfd#_count_z text \"候选 3 条，单击一条填入左侧\"\n"
                  // Enter is for the edit as long as there is something typed in it; the dialog stays.
                  "key Enter\nexpect ~/canfd#_count_z text \"候选 1 条，单击一条填入左侧\"\n"
                  "expect bps_do_error exists 0\nexpect ~/canfd#_brp_z focused 1\n"
                  "type ~/canfd#_brp_z 5\nkey Tab\nexpect ~/canfd#_count_z text \"候选 2 条，单击一条填入左侧\"\n"
                  // What the edits give shows at every key.
                  "type ~/canfd#_tseg1_z 20\ntype ~/canfd#_tseg2_z 5\n"
                  "expect ~/canfd#_result_z text \"计算值：400 kbit/s，采样点 80.00 %\"\n");
}

TEST_P(calculator, a_row_is_the_one_that_was_seen_whatever_was_typed_before) {
    put_list("vkt610b_bps_canfd#_z_4_400.txt", "5-20-5-5-80.00\n1-100-25-25-80.00\n5-19-6-6-76.00\n");
    in_calculator("pick ~/canfd#_div_z 4\npick ~/combo_box_ex_bps_z_vkt610b_canfd# 400K\n"
                  "wait ~/list_view_z/item[2] visible 1\n"
                  "type ~/canfd#_tseg1_z 100\nclick ~/list_view_z/item[2]\n"
                  "expect ~/canfd#_tseg1_z text 19\nexpect ~/canfd#_edit_smp_z_vkt610b text 76.00\n"
                  // Leaving the edit that was typed in brings no new list: the row filled it.
                  "key Tab\nexpect ~/canfd#_count_z text \"候选 3 条，单击一条填入左侧\"\n");
}

TEST_P(calculator, anything_may_be_typed) {
    put_list("vkt610b_bps_canfd#_z_4_400.txt", "5-20-5-5-80.00\n");
    const char* typed[] = {"型",   "-1",   "+5",   "0x10", "1e9", "99999", "５",
                           "%s%n", "\\\"", "．８", " 7",   "nan", "-inf"};
    std::string script = "click @/canfd#_button_bp_calculate\npick ~/canfd#_div_z 4\n"
                         "pick ~/combo_box_ex_bps_z_vkt610b_canfd# 400K\n";
    for (const char* text : typed) {
        for (const char* edit :
             {"canfd#_brp_z", "canfd#_tseg1_z", "canfd#_tseg2_z", "canfd#_edit_smp_z_vkt610b", "canfd#_tseg1_c"})
            script += std::string("type ~/") + edit + " \"" + text + "\"\nkey Tab\n";
        script += "click ~/canfd#_ok\nexpect bps_do_error visible 1\nclick bps_do_error/canfd1_no\n";
    }
    play(script + "click ~/canfd#_back\n");
    EXPECT_EQ(value(divider_key), 0x40004U);
    for (const char* key : timing_keys) EXPECT_NE(half(key), 0U);
}

TEST_P(calculator, a_list_of_a_million_lines_comes_in_pieces) {
    std::string text;
    for (int i = 0; i < 500000; ++i) text += "1-100-25-25-80.00\n5-20-5-5-80.00\n";
    put_list("vkt610b_bps_canfd#_z_4_400.txt", text);
    const std::string all = "wait ~/canfd#_count_z text \"候选 1000000 条，单击一条填入左侧\" 60000\n";
    in_calculator("pick ~/canfd#_div_z 4\npick ~/combo_box_ex_bps_z_vkt610b_canfd# 400K\n" + all +
                  // A filter while the list is read begins it anew; nothing of the old one comes in between.
                  "pick ~/combo_box_ex_bps_z_vkt610b_canfd# 500K\npick ~/combo_box_ex_bps_z_vkt610b_canfd# 400K\n"
                  "type ~/canfd#_brp_z 5\nkey Enter\n"
                  "wait ~/canfd#_count_z text \"候选 500000 条，单击一条填入左侧\" 60000\n"
                  "expect ~/list_view_z/item[0] text \"BRP: 5, TSEGE1: 20, TSEGE2: 5, SMP: 80.00%\"\n"
                  // Left in the middle.
                  "type ~/canfd#_brp_z 1\nkey Enter\n");
    EXPECT_EQ(console(), "");
}

TEST_P(calculator, the_first_rows_of_a_long_list_are_there_before_it_is_read) {
    std::string text;
    for (int i = 0; i < 1000000; ++i) text += "5-20-5-5-80.00\n";
    put_list("vkt610b_bps_canfd#_z_4_400.txt", text);
    store(2, {5, 20, 5, 1, 20, 5});
    uint32_t at_opening = 0;
    idle_queue([&at_opening] { // runs in the dialog's loop, before the second piece
        widget* dialog = widget_child(window_manager(), mine("page_vkt610b_bps_canfd#").c_str());
        at_opening = table_client_get_rows(widget_lookup(dialog, "list_view_z"));
        dialog_quit(dialog, 0);
        return RET_OK;
    });
    EXPECT_EQ(bps_calculator_open(*dev, GetParam() - '0'), 0U);
    EXPECT_GE(at_opening, 10000U);
    EXPECT_LT(at_opening, 100000U);
}

TEST_P(calculator, lines_that_are_no_candidates_are_counted_once) {
    log_set_log_level(LOG_LEVEL_DEBUG);
    put_list("vkt610b_bps_canfd#_z_4_400.txt", std::string("a-b\n\x01\xFF\x00-\n5-20-5-5-80.00\n5-20\n", 29));
    in_calculator("pick ~/canfd#_div_z 4\npick ~/combo_box_ex_bps_z_vkt610b_canfd# 400K\n"
                  "wait ~/list_view_z/item[0] visible 1\nexpect ~/list_view_z/item[1] visible 0\n");
    EXPECT_THAT(console(), testing::HasSubstr("lines are no candidates\n"));
}

TEST_P(calculator, a_long_list_scrolls) {
    std::string text;
    for (int i = 1; i <= 2000; ++i) text += std::to_string(i) + "-20-5-5-80.00\n";
    put_list("vkt610b_bps_canfd#_z_4_400.txt", text);
    put_list("vkt610b_bps_canfd#_z_4_500.txt", text);
    in_calculator("pick ~/canfd#_div_z 4\npick ~/combo_box_ex_bps_z_vkt610b_canfd# 400K\n"
                  "wait ~/list_view_z/item[0] text \"BRP: 1, TSEGE1: 20, TSEGE2: 5, SMP: 80.00%\"\n"
                  "wheel ~/list_view_z -120\nwheel ~/list_view_z -120\n" // three rows a notch
                  "wait ~/list_view_z/item[0] text \"BRP: 7, TSEGE1: 20, TSEGE2: 5, SMP: 80.00%\"\n"
                  "click ~/list_view_z/item[1]\nexpect ~/canfd#_brp_z text 8\n"
                  "expect ~/list_view_z/item[1] text \"BRP: 8, TSEGE1: 20, TSEGE2: 5, SMP: 80.00%\"\n"
                  // Another list begins at its top.
                  "type ~/canfd#_brp_z \"\"\nkey Tab\nwheel ~/list_view_z -120\n"
                  "wait ~/list_view_z/item[0] text \"BRP: 4, TSEGE1: 20, TSEGE2: 5, SMP: 80.00%\"\n"
                  "pick ~/combo_box_ex_bps_z_vkt610b_canfd# 500K\n"
                  "wait ~/list_view_z/item[0] text \"BRP: 1, TSEGE1: 20, TSEGE2: 5, SMP: 80.00%\"\n");
}

TEST_P(calculator, the_list_says_what_is_to_be_chosen_first) {
    const std::string ask = "请先选择时钟分频和速率\n";
    set(mine("canfd#_speed_zc_vkt610b"), 11); // no rate's index
    set(mine("canfd#_speed_data_vkt610b"), 7);
    in_calculator("expect ~/canfd#_count_z text " + ask + "expect ~/canfd#_count_c text " + ask +
                  "pick ~/combo_box_ex_bps_z_vkt610b_canfd# 400K\nexpect ~/canfd#_count_z text " + ask +
                  "pick ~/canfd#_div_z 4\nexpect ~/canfd#_count_z text 没有候选\n"
                  "expect ~/canfd#_count_c text " +
                  ask + "pick ~/combo_box_ex_bps_c_vkt610b_canfd# 2M\nexpect ~/canfd#_count_c text 没有候选\n");
}

// ---- rates

TEST_P(calculator, a_rate_is_stored_at_once_and_stays) {
    in_calculator("pick ~/combo_box_ex_bps_z_vkt610b_canfd# 125K\npick ~/combo_box_ex_bps_c_vkt610b_canfd# 4M\n");
    EXPECT_EQ(value(mine("canfd#_speed_zc_vkt610b")), 4U);
    EXPECT_EQ(value(mine("canfd#_speed_data_vkt610b")), 5U);
    EXPECT_EQ(listed(GetParam() - '0' + 4), "04053A00");
    // The page behind shows them.
    EXPECT_EQ(shown(mine("combo_box_ex_bps_vkt610b_canfd#").c_str()), "125k");
    EXPECT_EQ(shown(mine("combo_box_ex_rejector_vkt610b_canfd#").c_str()), "4M");
    EXPECT_EQ(value(divider_key), 0x40004U);
}

// ---- ok and back

TEST_P(calculator, ok_stores_the_channels_halves) {
    play("click @/canfd#_button_bp_calculate\n" + fill_80_percent + fill_data_80_percent + "click ~/canfd#_ok\n");
    EXPECT_EQ(half(divider_key), 2U);
    EXPECT_EQ(other_half(divider_key), 4U);
    const uint32_t wanted[] = {5, 20, 5, 1, 20, 5};
    const uint32_t kept[] = {1, 0x20, 8, 1, 6, 2};
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(half(timing_keys[i]), wanted[i]) << timing_keys[i];
        EXPECT_EQ(other_half(timing_keys[i]), kept[i]) << timing_keys[i];
    }
    EXPECT_EQ(listed(27), GetParam() == '2' ? "04000200" : "02000400");
    EXPECT_EQ(console(), "");
}

TEST_P(calculator, answers_0_however_it_is_left) {
    const std::string fill = fill_80_percent + fill_data_80_percent;
    EXPECT_EQ(answer(fill + "click ~/canfd#_ok\n"), 0U);
    EXPECT_EQ(answer("click ~/canfd#_back\n"), 0U);
    EXPECT_EQ(answer("key Esc\n"), 0U);
    EXPECT_EQ(answer(fill + "type ~/canfd#_brp_z 773\nclick ~/canfd#_ok\nclick bps_do_error/canfd1_no\n"
                            "expect ~/canfd#_brp_z text 773\nclick ~/canfd#_back\n"),
              0U);
}

TEST_P(calculator, classic_can_leaves_the_data_keys_untouched) {
    set(mine("canfd#_mode_vkt610b"), 0);
    play("click @/canfd#_button_bp_calculate\n" + fill_80_percent + "click ~/canfd#_ok\n");
    EXPECT_EQ(half(timing_keys[0]), 5U);
    EXPECT_EQ(value(timing_keys[3]), 0x10001U);
    EXPECT_EQ(value(timing_keys[4]), 0x60006U);
    EXPECT_EQ(value(timing_keys[5]), 0x20002U);
}

TEST_P(calculator, back_and_esc_store_no_timing) {
    in_calculator(fill_80_percent + fill_data_80_percent);
    EXPECT_EQ(value(divider_key), 0x40004U);
    play("click @/canfd#_button_bp_calculate\n" + fill_80_percent + fill_data_80_percent + "key Esc\n");
    EXPECT_EQ(value(divider_key), 0x40004U);
    EXPECT_EQ(value(timing_keys[0]), 0x10001U);
}

TEST_P(calculator, a_timing_that_does_not_fit_is_asked_about_and_no_goes_back) {
    play("click @/canfd#_button_bp_calculate\n" + fill_80_percent + fill_data_80_percent +
         "type ~/canfd#_tseg2_z 6\nclick ~/canfd#_ok\nexpect bps_do_error visible 1\n"
         "click bps_do_error/canfd1_no\nexpect bps_do_error exists 0\nexpect ~/canfd#_tseg2_z text 6\n"
         "type ~/canfd#_tseg2_z 5\n"
         "type ~/canfd#_edit_smp_z_vkt610b 79.99\nclick ~/canfd#_ok\nexpect bps_do_error visible 1\n"
         "key Esc\nexpect bps_do_error exists 0\n"
         "click ~/canfd#_back\n");
    EXPECT_EQ(value(divider_key), 0x40004U);
    EXPECT_EQ(console(), "");
}

TEST_P(calculator, a_store_that_refuses_is_named) {
    refuse(timing_keys[0]);
    log_set_log_level(LOG_LEVEL_ERROR);
    play("click @/canfd#_button_bp_calculate\n" + fill_80_percent + fill_data_80_percent + "click ~/canfd#_ok\n");
    EXPECT_EQ(console(), "set canfd_bps_do_brp_z_vkt610b failed!\n");
}

class first_calculator : public calculator {};
INSTANTIATE_TEST_SUITE_P(one, first_calculator, testing::Values('1'), channel_name);
class second_calculator : public calculator {};
INSTANTIATE_TEST_SUITE_P(two, second_calculator, testing::Values('2'), channel_name);

TEST_P(first_calculator, answers_1_when_a_timing_was_forced) {
    EXPECT_EQ(answer(fill_80_percent + fill_data_80_percent +
                     "type ~/canfd1_brp_z 773\nclick ~/canfd1_ok\nclick bps_do_error/canfd1_ok\n"),
              1U);
}

TEST_P(first_calculator, forcing_stores_what_is_on_the_page_and_closes_both) {
    // (old OR 0xFF) AND new: 0x10001 | 0xFF = 0x100FF, so of 0x305 only 0x05 stays.
    play("click @/canfd1_button_bp_calculate\n" + fill_80_percent + fill_data_80_percent +
         "type ~/canfd1_brp_z 773\nclick ~/canfd1_ok\nclick bps_do_error/canfd1_ok\n");
    EXPECT_EQ(value(divider_key), 2U); // the bare code
    EXPECT_EQ(value(timing_keys[0]), 0x05U);
    EXPECT_EQ(value(timing_keys[1]), 20U);
    EXPECT_EQ(value(timing_keys[5]), 5U);
    EXPECT_EQ(listed(27), "02000000");
    EXPECT_EQ(console(), "");
}

TEST_P(second_calculator, forcing_needs_the_first_channels_calculator) {
    log_set_log_level(LOG_LEVEL_ERROR);
    play("click @/canfd2_button_bp_calculate\n" + fill_80_percent + fill_data_80_percent +
         "type ~/canfd2_brp_z 7\nclick ~/canfd2_ok\nclick bps_do_error/canfd1_ok\n");
    EXPECT_EQ(value(divider_key), 0x40004U);
    EXPECT_EQ(value(timing_keys[0]), 0x10001U);
    EXPECT_EQ(console(), "page_vkt610b_bps_canfd1 is not open, no bit timing stored\n");
}

TEST_P(first_calculator, a_saved_timing_loads_only_while_the_other_half_is_0) {
    store(2, {5, 20, 5, 1, 20, 5});
    set(divider_key, 0x40002);
    in_calculator("expect ~/canfd1_brp_z text \"\"\nexpect ~/canfd1_div_z value -1\n");
    set(divider_key, 2);
    in_calculator("expect ~/canfd1_brp_z text 5\n");
}

TEST_P(first_calculator, rate_666_is_loaded_and_selects_nothing) {
    store(0, {1, 120, 30, 1, 120, 30}); // 100 MHz / 150
    in_calculator("expect ~/canfd1_brp_z text 1\nexpect ~/canfd1_tseg1_z text 120\n"
                  "expect ~/combo_box_ex_bps_z_vkt610b_canfd1 value -1\n");
}

TEST_P(calculator, esc_closes_the_question_and_then_the_calculator) {
    play("click @/canfd#_button_bp_calculate\nclick ~/canfd#_ok\nexpect bps_do_error visible 1\nkey Esc\n"
         "expect bps_do_error exists 0\nexpect ~ exists 1\nkey Esc\n");
    EXPECT_EQ(window_manager_get_top_window(window_manager()), home);
    EXPECT_EQ(value(divider_key), 0x40004U);
}

} // namespace
