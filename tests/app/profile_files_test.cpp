// Profiles and kept edits on the home page.
#include "app/edits.h"
#include "app/kept_edits.h"
#include "app/profile_files.h"
#include "app/profile_title.h"
#include "app/settings.h"
#include "profile/compare.h"
#include "profile/export.h"
#include "tests/support/app_fixture.h"
#include "tests/support/user.h"

#include <cstring>
#include <fstream>
#ifndef _WIN32
#include <sys/stat.h>
#endif

using testing::ElementsAre;
using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

class profile_files : public app_test {
  protected:
    static dev_obj& dev() { return *current_device(); }
    static uint32_t value(const char* key) { return tk_object_get_prop_uint32(dev().props.get(), key, 0xDEAD); }
    static std::string write(const char* name, const std::string& body) {
        const fs::path path = tree() / "bin" / fs::path(std::u8string(name, name + std::strlen(name)));
        std::ofstream(path, std::ios::binary) << body;
        const std::u8string utf8 = path.generic_u8string();
        return {utf8.begin(), utf8.end()};
    }
    static std::string of_model(const char* model, const char* values) {
        return tk_format(R"({"format": 1, "model": "%s", "values": {%s}})", model, values);
    }
    static std::string name_shown() {
        settle();
        return text(home(), "profile_name");
    }
};

TEST_F(profile_files, taking_one_is_a_step_and_shows_everything) {
    const std::string before = text(home(), "mledit");
    EXPECT_EQ(profile_take(home(), write("a.json", of_model("VKT531A", R"("uart_f_distance": 9)"))), RET_OK);
    EXPECT_EQ(value("uart_f_distance"), 9U);
    EXPECT_NE(text(home(), "mledit"), before);
    ASSERT_NE(edits_of(*current_pages())->undoable(), nullptr);
    EXPECT_EQ(edits_of(*current_pages())->undoable()->name, "载入配置");
    EXPECT_EQ(name_shown(), "a.json");
    EXPECT_EQ(edits_undo(home()), RET_OK);
    settle();
    EXPECT_EQ(text(home(), "mledit"), before);
}

TEST_F(profile_files, what_is_refused_changes_nothing) {
    const std::string good = write("a.json", of_model("VKT531A", R"("uart_f_distance": 9)"));
    ASSERT_EQ(profile_take(home(), good), RET_OK);
    const auto image = dev().image;
    const char* const bodies[] = {
        "",
        "{",
        "nonsense",
        R"({"format": 2, "model": "VKT531A", "values": {}})",
        R"({"format": 1, "model": "VKT999", "values": {}})",
        R"({"format": 1, "model": "VKT510A", "values": {}})",
        R"({"format": 1, "model": "VKT531A", "values": {"uart_f_distance": 1, "uart_f_distance": 2}})",
        R"({"format": 1, "model": "VKT531A", "values": {"uart_f_distance": "2"}})",
        R"({"format": 1, "model": "VKT531A", "values": {"uart_f_distance": -2}})",
        R"({"format": 1, "model": "VKT531A", "values": {"uart_f_distance": 2.5}})"};
    for (const char* body : bodies) {
        std::string failed;
        user_will_do("wait profile_errors/ok visible 1\nkey Esc", &failed);
        EXPECT_EQ(profile_take(home(), write("bad.json", body)), RET_FAIL) << body;
        settle();
        EXPECT_EQ(failed, "") << body;
        EXPECT_EQ(dev().image, image) << body;
    }
    EXPECT_EQ(name_shown(), "a.json");
    EXPECT_THAT(settings_get().recent_files, ElementsAre(good));
}

TEST_F(profile_files, a_folder_and_a_file_of_100_mb_are_refused) {
    const fs::path large = tree() / "bin" / "large.json";
    std::ofstream(large) << "{";
    fs::resize_file(large, 100UL * 1024UL * 1024UL);
    for (const std::string& path : {(tree() / "bin").generic_string(), large.generic_string()}) {
        std::string failed;
        user_will_do("wait profile_errors/ok visible 1\nclick profile_errors/ok", &failed);
        EXPECT_EQ(profile_take(home(), path), RET_FAIL);
        settle();
        EXPECT_EQ(failed, "");
    }
    fs::remove(large);
}

#ifndef _WIN32
TEST_F(profile_files, a_pipe_is_refused_without_waiting_for_its_writer) {
    const std::string pipe = (tree() / "bin" / "pipe.json").generic_string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::string failed;
    user_will_do("wait profile_errors/profile_errors_list contains 不是文件\nclick profile_errors/ok", &failed);
    EXPECT_EQ(profile_take(home(), pipe), RET_FAIL);
    settle();
    EXPECT_EQ(failed, "");
    fs::remove(pipe);
}

TEST_F(profile_files, a_pipe_in_the_place_of_kept_edits_is_none) {
    fs::create_directories(settings_folder());
    ASSERT_EQ(mkfifo(settings_path("unwritten.json").c_str(), 0600), 0);
    kept_edits_forget();
    EXPECT_FALSE(kept_edits_offer());
    EXPECT_THAT(said(), HasSubstr("不是文件"));
}
#endif

TEST_F(profile_files, none_is_taken_while_a_session_runs) {
    plug("VKT531A");
    const std::string path = write("a.json", of_model("VKT531A", R"("uart_f_distance": 9)"));
    module->plan({.what = sim::fault::silent, .times = 0xFFFFFFFF});
    click(home(), "button");
    ASSERT_TRUE(session_any_running());
    answer_message();
    EXPECT_EQ(profile_take(home(), path), RET_FAIL);
    EXPECT_THAT(message_seen, HasSubstr("结束后再载入"));
    EXPECT_EQ(value("uart_f_distance"), 2U);
}

TEST_F(profile_files, none_is_taken_while_the_data_page_is_open) {
    const std::string path = write("a.json", of_model("VKT531A", R"("uart_f_distance": 9)"));
    widget* page = home();
    ASSERT_NE(window_open("data_page"), nullptr);
    answer_message();
    EXPECT_EQ(profile_take(page, path), RET_FAIL);
    EXPECT_THAT(message_seen, HasSubstr("结束后再载入"));
    EXPECT_EQ(value("uart_f_distance"), 2U);
}

TEST_F(profile_files, a_long_name_is_shortened_beside_the_title) {
    const std::string path = write("一二三四五六七八九十一二三四五六七八九十.json", of_model("VKT531A", ""));
    ASSERT_EQ(profile_take(home(), path), RET_OK);
    EXPECT_EQ(name_shown(), "一二三四五六七八九十一二三四五六七八九十.js…");
}

TEST_F(profile_files, connected_another_model_is_not_chosen) {
    connect();
    const std::string path = write("b.json", of_model("VKT530A", ""));
    answer_message();
    EXPECT_EQ(profile_take(home(), path), RET_FAIL);
    EXPECT_THAT(message_seen, HasSubstr("断开后才能切换型号"));
    EXPECT_EQ(current_model(), "VKT531A");
}

TEST_F(profile_files, the_mark_follows_the_values) {
    ASSERT_EQ(profile_take(home(), write("a.json", of_model("VKT531A", ""))), RET_OK);
    EXPECT_EQ(name_shown(), "a.json");
    click(home(), "table_button_uart");
    pick("page_uart/combo_box_ex_bps", "9600");
    EXPECT_EQ(name_shown(), "a.json ●");
    pick("page_uart/combo_box_ex_bps", "115200");
    EXPECT_EQ(name_shown(), "a.json");
}

TEST_F(profile_files, a_note_is_kept_when_it_is_saved_again) {
    const std::string path =
        write("a.json", R"({"format": 1, "model": "VKT531A", "note": "机床 3", "values": {}})");
    ASSERT_EQ(profile_take(home(), path), RET_OK);
    click(home(), "table_button_uart");
    pick("page_uart/combo_box_ex_bps", "9600");
    EXPECT_EQ(profile_save_here(home()), RET_OK);
    EXPECT_THAT(file_text(path), HasSubstr("\"note\": \"机床 3\""));
    EXPECT_THAT(file_text(path), HasSubstr("\"text\": \"9600\""));
    EXPECT_EQ(name_shown(), "a.json");
}

TEST_F(profile_files, a_value_that_no_file_may_have_is_said_when_it_is_saved) {
    const std::string path = write("a.json", of_model("VKT531A", ""));
    ASSERT_EQ(profile_take(home(), path), RET_OK);
    message_seen.clear();
    EXPECT_EQ(profile_save_here(home()), RET_OK);
    EXPECT_EQ(message_seen, "");
    std::vector<uint8_t> image = dev().image; // a module's
    image[field_find(dev().of.fields, "change_mode")->place.at] = 9;
    dev_accept(dev(), image);
    answer_message();
    EXPECT_EQ(profile_save_here(home()), RET_OK);
    EXPECT_THAT(message_seen, HasSubstr("不会被载入：转换模式 9"));
    EXPECT_THAT(file_text(path), HasSubstr("\"change_mode\": 9"));
}

TEST_F(profile_files, a_recent_one_is_once_in_the_list_and_the_newest_first) {
    const std::string a = write("a.json", of_model("VKT531A", "")), b = write("b.json", of_model("VKT531A", ""));
    for (const std::string& path : {a, b, a}) ASSERT_EQ(profile_take(home(), path), RET_OK);
    EXPECT_THAT(settings_get().recent_files, ElementsAre(a, b));
    fs::remove(b);
    answer_message();
    EXPECT_EQ(profile_take(home(), b), RET_FAIL);
    EXPECT_THAT(message_seen, HasSubstr("找不到文件"));
    EXPECT_THAT(settings_get().recent_files, ElementsAre(a));
}

TEST_F(profile_files, the_list_offers_the_recent_ones_and_goes_on_saying_what_it_is) {
    const std::string a = write("a.json", of_model("VKT531A", R"("uart_f_distance": 9)"));
    settings_change([&](settings& all) { all.recent_files = {"gone/b.json", a}; });
    profile_bind(home()); // as at the start
    widget* combo = at("combo_recent");
    const std::string option = "a.json　" + (tree() / "bin").generic_string();
    EXPECT_EQ(combo_box_count_options(combo), 3);
    EXPECT_TRUE(combo_box_has_option_text(combo, option.c_str()));
    EXPECT_EQ(text(home(), "combo_recent"), "最近");
    EXPECT_TRUE(enabled("combo_recent"));
    pick("combo_recent", option.c_str());
    settle();
    EXPECT_EQ(value("uart_f_distance"), 9U);
    EXPECT_EQ(text(home(), "combo_recent"), "最近");
    EXPECT_THAT(settings_get().recent_files, ElementsAre(a, "gone/b.json"));
}

TEST_F(profile_files, what_would_be_written_is_exported_in_four_forms_of_both_frames) {
    const struct {
        const char* pick;
        const char* name;
        export_form form;
    } rows[] = {{"文本 (*.txt)", "VKT610B.txt", export_form::frames},
                {"C 数组 (*.h)", "VKT610B.h", export_form::c_array},
                {"二进制 (*.bin)", "VKT610B.bin", export_form::binary},
                {"终端脚本 (*.script)", "VKT610B.script", export_form::script}};
    pick("combo_box_ex_dev", "VKT610B");
    ASSERT_EQ(profile_take(home(), write("b.json", of_model("VKT610B", ""))), RET_OK);
    for (const bool alternative : {false, true}) {
        if (alternative) click(home(), "code_mode_vkt610b");
        for (const auto& row : rows) {
            const fs::path path = tree() / "bin" / row.name;
            fs::remove(path);
            EXPECT_EQ(user_does("click home_page/button_export\nwait file_dialog/file_name focused 1\n"
                                "pick file_dialog/file_type " +
                                user_word(row.pick) + "\nclick file_dialog/ok\n"),
                      "");
            settle();
            EXPECT_EQ(file_text(path), export_text(dev(), "VKT610B", alternative, row.form)) << row.name;
        }
    }
    EXPECT_NE(export_frames(dev(), true), export_frames(dev(), false));
}

TEST_F(profile_files, unwritten_edits_are_kept_offered_and_taken) {
    EXPECT_FALSE(kept_edits_offer());
    kept_edits_at_closing();
    EXPECT_FALSE(fs::exists(settings_path("unwritten.json"))) << "nothing is unwritten";
    pick("combo_box_ex_dev", "VKT510A");
    click(home(), "vkt510a_tab_button_uart");
    pick("page_vkt510a_uart/combo_box_ex_bps_vkt510a", "9600");
    const auto image = dev().image;
    kept_edits_at_closing();
    ASSERT_TRUE(fs::exists(settings_path("unwritten.json")));
    // The next start.
    kept_edits_forget();
    dev_restore(dev());
    pick("combo_box_ex_dev", "VKT531A");
    EXPECT_EQ(kept_edits_offer(), "VKT510A");
    EXPECT_EQ(kept_edits_restore(home()), RET_OK);
    EXPECT_EQ(current_model(), "VKT510A");
    EXPECT_EQ(dev().image, image);
    EXPECT_FALSE(kept_edits_offer());
    EXPECT_FALSE(fs::exists(settings_path("unwritten.json")));
    kept_edits_at_closing();
    EXPECT_TRUE(fs::exists(settings_path("unwritten.json"))) << "they are still unwritten";
    kept_edits_dismiss();
    EXPECT_FALSE(fs::exists(settings_path("unwritten.json")));
}

TEST_F(profile_files, edits_of_a_family_that_is_not_shown_are_kept_too) {
    pick("combo_box_ex_dev", "VKT530A");
    click(home(), "table_button_uart");
    pick("page_uart/combo_box_ex_bps", "9600");
    pick("combo_box_ex_dev", "VKT610B");
    kept_edits_at_closing();
    kept_edits_forget();
    EXPECT_EQ(kept_edits_offer(), "VKT530A");
    click(home(), "vkt610b_tab_button_uart");
    pick("page_vkt610b_uart_1/combo_box_ex_bps_1_vkt610b", "9.6k");
    kept_edits_at_closing();
    kept_edits_forget();
    EXPECT_EQ(kept_edits_offer(), "VKT610B") << "what is on show counts before";
}

TEST_F(profile_files, what_the_module_holds_is_not_unwritten) {
    click(home(), "table_button_uart");
    pick("page_uart/combo_box_ex_bps", "9600");
    dev_module_holds(dev(), dev().image);
    kept_edits_at_closing();
    EXPECT_FALSE(fs::exists(settings_path("unwritten.json")));
}

TEST_F(profile_files, kept_edits_that_cannot_be_read_are_not_offered) {
    ASSERT_EQ(settings_write("unwritten.json", "{"), RET_OK);
    kept_edits_forget();
    said_clear();
    EXPECT_FALSE(kept_edits_offer());
    EXPECT_FALSE(kept_edits_offer());
    EXPECT_EQ(std::ranges::count(said(), '\n'), 1) << said();
    EXPECT_EQ(kept_edits_restore(home()), RET_FAIL);
    kept_edits_at_closing();
    EXPECT_FALSE(fs::exists(settings_path("unwritten.json")));
}

TEST_F(profile_files, kept_edits_wait_for_a_connected_module_of_another_model) {
    ASSERT_EQ(settings_write("unwritten.json", of_model("VKT510A", "")), RET_OK);
    kept_edits_forget();
    connect();
    answer_message();
    EXPECT_EQ(kept_edits_restore(home()), RET_FAIL);
    EXPECT_THAT(message_seen, HasSubstr("断开后再恢复"));
    EXPECT_EQ(kept_edits_offer(), "VKT510A");
}

TEST_F(profile_files, closing_where_nothing_can_be_written_says_so) {
    fs::create_directories(settings_folder());
    fs::create_directory(settings_path("unwritten.json"));
    click(home(), "table_button_uart");
    pick("page_uart/combo_box_ex_bps", "9600");
    said_clear();
    kept_edits_at_closing();
    EXPECT_THAT(said(), HasSubstr("unwritten.json cannot be written"));
}

} // namespace
