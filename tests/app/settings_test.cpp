// The program's settings: kept in one file, which may be any file.
#include "app/settings.h"
#include "app/start_choice.h"
#include "tests/support/app_fixture.h"

#include <fstream>
#ifndef _WIN32
#include <sys/stat.h>
#endif

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace fs = std::filesystem;

namespace {

std::string file() { return settings_path("settings.json"); }

class settings_file : public app_test {
  protected:
    void SetUp() override {
        app_test::SetUp();
        settings_forget();
        said_clear();
    }
    static void holds(const std::string& text) {
        fs::create_directories(settings_folder());
        std::ofstream(file(), std::ios::binary) << text;
        settings_forget();
    }
    static std::size_t lines_said() {
        const std::string text = said();
        return static_cast<std::size_t>(std::ranges::count(text, '\n'));
    }
};

TEST_F(settings_file, without_one_everything_has_its_default_and_nothing_is_said) {
    EXPECT_EQ(settings_get(), settings{});
    EXPECT_EQ(said(), "");
    EXPECT_FALSE(fs::exists(file())) << "nothing is written before something changes";
}

TEST_F(settings_file, what_was_changed_is_read_again) {
    const settings all{.window_w = 1100,
                       .window_h = 640,
                       .check_after_write = true,
                       .confirm_write = true,
                       .restore_last = true,
                       .close_progress = true,
                       .last_model = "VKT610B",
                       .last_port = "COM9",
                       .recent_files = {"/a/b.json", "车间.json"}};
    EXPECT_EQ(settings_change([&](settings& s) { s = all; }), RET_OK);
    settings_forget();
    EXPECT_EQ(settings_get(), all);
    EXPECT_EQ(said(), "");
}

TEST_F(settings_file, each_switch_stands_under_its_own_key) {
    holds(R"({"check_after_write": true, "confirm_write": false})");
    EXPECT_TRUE(settings_get().check_after_write);
    EXPECT_FALSE(settings_get().confirm_write);
    holds(R"({"restore_last": true})");
    EXPECT_EQ(settings_get(), (settings{.restore_last = true}));
    holds(R"({"close_progress": true, "confirm_write": true})");
    EXPECT_EQ(settings_get(), (settings{.confirm_write = true, .close_progress = true}));
}

TEST_F(settings_file, what_nobody_knows_in_it_stays) {
    holds(R"({"colour": "red", "window_w": 1000})");
    EXPECT_EQ(settings_change([](settings& s) { s.window_w = 1200; }), RET_OK);
    EXPECT_THAT(file_text(file()), HasSubstr("\"colour\": \"red\""));
    EXPECT_THAT(file_text(file()), HasSubstr("\"window_w\": 1200"));
}

TEST_F(settings_file, only_a_difference_is_written) {
    EXPECT_EQ(settings_change([](settings&) {}), RET_OK);
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(settings_file, a_file_that_is_none_has_one_line_and_is_replaced) {
    const std::string texts[] = {"", "{", "not JSON", "[1]", "\xFF\xFE", std::string(3, '\0'), "{\"window_w\": 11"};
    for (const std::string& text : texts) {
        said_clear();
        holds(text);
        EXPECT_EQ(settings_get(), settings{}) << text;
        EXPECT_EQ(lines_said(), 1U) << said();
        EXPECT_THAT(said(), HasSubstr("settings.json"));
        EXPECT_EQ(settings_change([](settings& s) { s.close_progress = true; }), RET_OK);
        EXPECT_EQ(lines_said(), 1U) << "said once: " << said();
        settings_forget();
        EXPECT_TRUE(settings_get().close_progress) << text;
    }
}

TEST_F(settings_file, the_line_is_said_also_before_the_log_has_its_level) {
    log_set_log_level(LOG_LEVEL_ERROR);
    holds("{");
    settings_get();
    EXPECT_EQ(lines_said(), 1U);
    said_clear();
    holds(R"({"close_progress": [1]})");
    settings_get();
    EXPECT_EQ(lines_said(), 1U);
    log_set_log_level(LOG_LEVEL_DEBUG);
}

#ifndef _WIN32
TEST_F(settings_file, a_pipe_in_its_place_is_none) {
    fs::create_directories(settings_folder());
    ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
    EXPECT_EQ(settings_get(), settings{}) << "nobody writes into it, so reading it would wait for ever";
    EXPECT_EQ(lines_said(), 1U);
    EXPECT_EQ(settings_change([](settings& s) { s.close_progress = true; }), RET_FAIL) << "nobody reads it either";
    EXPECT_EQ(settings_write("settings.json", "{}"), RET_FAIL);
}
#endif

TEST_F(settings_file, what_another_window_has_changed_meanwhile_stays) {
    holds(R"({"recent_1": "/old.json"})");
    EXPECT_EQ(settings_get().recent_files.size(), 1U);
    std::ofstream(file(), std::ios::binary)
        << R"({"check_after_write": true, "window_w": 1100, "recent_1": "/theirs.json", "recent_2": "/old.json"})";
    EXPECT_EQ(settings_change([](settings& s) { s.confirm_write = true; }), RET_OK);
    EXPECT_FALSE(settings_get().check_after_write) << "this window's switch stands as it is";
    EXPECT_EQ(settings_change([](settings& s) { s.recent_files.insert(s.recent_files.begin(), "/mine.json"); }),
              RET_OK);
    EXPECT_THAT(settings_get().recent_files, ElementsAre("/mine.json", "/theirs.json", "/old.json"));
    settings_forget();
    EXPECT_EQ(settings_get(), (settings{.window_w = 1100,
                                        .check_after_write = true,
                                        .confirm_write = true,
                                        .recent_files = {"/mine.json", "/theirs.json", "/old.json"}}));
}

TEST_F(settings_file, cut_at_every_byte_it_is_none_or_whole) {
    const std::string whole = R"({"window_w": 1100, "window_h": 640, "restore_last": true})";
    for (std::size_t size = 0; size < whole.size(); size++) {
        said_clear();
        holds(whole.substr(0, size));
        EXPECT_EQ(settings_get(), settings{}) << size;
        EXPECT_EQ(lines_said(), 1U) << size;
    }
}

TEST_F(settings_file, values_of_another_kind_have_their_default_and_one_line) {
    holds(R"({"window_w": -5, "window_h": "tall", "close_progress": [1], "restore_last": "maybe", "last_port": {},
              "recent_1": 5.5, "confirm_write": true})");
    const settings& read = settings_get();
    EXPECT_EQ(read.window_w, 0);
    EXPECT_EQ(read.window_h, 0);
    EXPECT_FALSE(read.close_progress);
    EXPECT_FALSE(read.restore_last);
    EXPECT_TRUE(read.confirm_write) << "what is right in it counts";
    EXPECT_EQ(lines_said(), 1U) << said();
    for (const char* key : {"window_w", "window_h", "close_progress", "restore_last"})
        EXPECT_THAT(said(), HasSubstr(key));
    EXPECT_THAT(said(), Not(HasSubstr("confirm_write")));
    holds(R"({"window_w": 99999})");
    EXPECT_EQ(settings_get().window_w, 0);
}

TEST_F(settings_file, a_file_of_100_mb_is_none) {
    fs::create_directories(settings_folder());
    std::ofstream(file()) << "{";
    fs::resize_file(file(), 100UL * 1024UL * 1024UL);
    settings_forget();
    EXPECT_EQ(settings_get(), settings{});
    EXPECT_EQ(lines_said(), 1U);
}

TEST_F(settings_file, a_folder_in_its_place_is_said_when_read_and_when_written) {
    fs::create_directories(file());
    EXPECT_EQ(settings_get(), settings{});
    EXPECT_EQ(lines_said(), 1U);
    said_clear();
    EXPECT_EQ(settings_change([](settings& s) { s.close_progress = true; }), RET_FAIL);
    EXPECT_THAT(said(), HasSubstr("settings.json cannot be written"));
    EXPECT_TRUE(settings_get().close_progress) << "it holds until the end";
    EXPECT_TRUE(fs::is_directory(file()));
}

TEST_F(settings_file, without_a_folder_nothing_is_kept) {
    const std::string folder = std::exchange(settings_folder(), "");
    EXPECT_EQ(settings_get(), settings{});
    EXPECT_EQ(settings_change([](settings& s) { s.close_progress = true; }), RET_FAIL);
    EXPECT_EQ(settings_write("x.json", "{}"), RET_FAIL);
    settings_folder() = folder;
    settings_forget();
}

TEST_F(settings_file, folder_and_the_one_around_it_are_made) {
    const std::string folder =
        std::exchange(settings_folder(), (tree() / "fresh" / "vktcfgtools").generic_string());
    EXPECT_EQ(settings_change([](settings& s) { s.close_progress = true; }), RET_OK);
    EXPECT_TRUE(fs::exists(file()));
    settings_folder() = folder;
    settings_forget();
}

TEST_F(settings_file, recent_files_are_ten_at_most) {
    EXPECT_EQ(settings_change([](settings& s) {
                  for (int i = 0; i < 12; i++) s.recent_files.push_back(std::to_string(i));
              }),
              RET_OK);
    EXPECT_EQ(settings_get().recent_files.size(), 10U);
    EXPECT_EQ(settings_change([](settings& s) { s.recent_files = {"a"}; }), RET_OK);
    settings_forget();
    EXPECT_THAT(settings_get().recent_files, ElementsAre("a")) << "no old one comes back";
}

TEST_F(settings_file, the_command_lines_size_wins) {
    const auto size = [](const command_line_options& options) {
        const window_size is = start_window_size(options);
        return std::pair(is.w, is.h);
    };
    EXPECT_EQ(size({}), std::pair(1280, 750));
    EXPECT_EQ(settings_change([](settings& s) { s.window_w = 1100; }), RET_OK);
    EXPECT_EQ(size({}), std::pair(1280, 750)) << "half a size is none";
    EXPECT_EQ(settings_change([](settings& s) { s.window_h = 640; }), RET_OK);
    EXPECT_EQ(size({}), std::pair(1100, 640));
    EXPECT_EQ(size({.width = 800, .height = 500, .sized = true}), std::pair(800, 500));
}

TEST_F(settings_file, the_last_choice_is_restored_only_where_that_is_wanted) {
    EXPECT_EQ(settings_change([](settings& s) {
                  s.last_model = "VKT610B";
                  s.last_port = "COM9";
              }),
              RET_OK);
    start_choice_restore(home());
    EXPECT_EQ(text(home(), "combo_box_ex_dev"), "VKT531A");
    EXPECT_EQ(settings_change([](settings& s) { s.restore_last = true; }), RET_OK);
    start_choice_restore(home());
    EXPECT_EQ(text(home(), "combo_box_ex_dev"), "VKT610B");
    EXPECT_EQ(text(home(), "combo_box_ex_serial"), "COM9");
    EXPECT_EQ(settings_change([](settings& s) { s.last_model = "VKT999"; }), RET_OK);
    start_choice_restore(home());
    EXPECT_EQ(text(home(), "combo_box_ex_dev"), "VKT610B") << "no such model";
    pick("combo_box_ex_dev", "VKT510A");
    start_choice_keep();
    EXPECT_EQ(settings_get().last_model, "VKT510A");
    EXPECT_EQ(settings_get().last_port, "COM9");
    EXPECT_EQ(settings_get().window_w, widget_get_prop_int(home(), "w", 0));
}

} // namespace
