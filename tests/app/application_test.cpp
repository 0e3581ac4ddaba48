#include "app/application.h"

#include "app/assets.h"
#include "shell/err_display.h"
#include "tests/support/app_fixture.h"
#include "tests/support/pattern.h"
#include "toolkit/ravel/ravel.h"

namespace {

using testing::HasSubstr;

class application : public app_test {
  protected:
    /// Ends the process the way the program does; status 0 when that was quick and left the session log empty.
    [[noreturn]] static void leave() {
        const int64_t before = time_now_ms();
        application_exit();
        tk_exit();
        const bool quick = time_now_ms() - before < 1000;
        std::error_code missing;
        const bool emptied = std::filesystem::file_size("../log/p_v_info.txt", missing) == 0 && !missing;
        end_process(quick && emptied ? 0 : 1);
    }
};
using ApplicationDeathTest = application;

void write_session_log() { ASSERT_EQ(fs_append("../log/p_v_info.txt", "VKT510A:\n"), RET_OK); }

TEST_F(ApplicationDeathTest, exit_at_rest_empties_the_session_log) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            write_session_log();
            leave();
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(ApplicationDeathTest, exit_with_a_hanging_session_is_as_quick) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            plug("VKT531A");
            module->plan({.what = sim::fault::silent, .times = 0xFFFFFFFF});
            click(home(), "button");
            wait([this] { return module->count().handshakes == 1; });
            write_session_log();
            leave();
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(ApplicationDeathTest, exit_with_a_hanging_a_session_is_as_quick) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            plug("VKT510A");
            module->plan({.what = sim::fault::silent, .times = 0xFFFFFFFF});
            click(home(), "button");
            wait([this] { return module->count().handshakes == 1; });
            leave();
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(ApplicationDeathTest, exit_says_so_on_the_console) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            application_exit();
            end_process(said().find("application_exit\n") != std::string::npos ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(application, other_themes_are_not_supported) {
    said_clear();
    EXPECT_EQ(assets_init("dark"), RET_NOT_IMPL);
    EXPECT_EQ(said(), "dark not support.\n");
}

TEST_F(application, a_theme_must_be_named) {
    said_clear();
    EXPECT_EQ(assets_init(nullptr), RET_FAIL);
    EXPECT_THAT(said(),
                FitsPattern("assets_init_internal:[0-9]+ condition\\(theme != NULL && am != NULL\\) failed!\n"));
}

/// Makes the program believe that it may not write: its probe file cannot be made where a folder of that name
/// stands, not even by an administrator.
class unwritable_folder {
  public:
    unwritable_folder() { std::filesystem::create_directory("authority"); }
    ~unwritable_folder() { std::filesystem::remove("authority"); }
    unwritable_folder(const unwritable_folder&) = delete;
    unwritable_folder& operator=(const unwritable_folder&) = delete;
};

TEST_F(application, a_folder_that_cannot_be_written_is_told_and_the_page_opens) {
    const unwritable_folder here;
    answer_message();
    EXPECT_EQ(navigator_replace("home_page"), RET_OK);
    EXPECT_TRUE(wait([this] { return !message_seen.empty() && message() == nullptr; }));
    EXPECT_EQ(message_seen, "无权限，请使用管理员权限运行程序");
    EXPECT_NE(home(), nullptr);
}

TEST_F(application, a_press_of_the_port_selector_tells_it_too) {
    const unwritable_folder here;
    answer_message();
    click(home(), "combo_box_ex_serial");
    EXPECT_TRUE(wait([this] { return !message_seen.empty() && message() == nullptr; }));
    EXPECT_EQ(message_seen, "无权限，请使用管理员权限运行程序");
}

TEST_F(application, the_message_window_is_single) {
    int shown = 0;
    idle_queue([&shown] {
        idle_queue([&shown] {
            while (message() != nullptr) {
                ++shown;
                navigator_close("err_display");
            }
            return RET_OK;
        });
        return err_display_show("二");
    });
    err_display_show("一");
    EXPECT_EQ(shown, 1);
}

} // namespace
