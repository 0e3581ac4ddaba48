// Start, main loop, end: each test has the toolkit to itself.
#include "tests/toolkit/ravel/stage.h"

#include "toolkit/ravel/drive.h"
#include "toolkit/ravel/qt/assets.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QApplication>
#include <QFontInfo>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class running : public stage {
  protected:
    void TearDown() override { end_stage(); }
    static void TearDownTestSuite() {}

    static ret_t later(const std::function<void()>& act) {
        return idle_queue([act] {
            act();
            return RET_OK;
        });
    }
};

TEST_F(running, ends_when_the_main_window_is_closed) {
    open(ui_window(""), "home");
    later([] { native_window()->close(); });
    EXPECT_EQ(tk_run(), RET_OK);
    EXPECT_EQ(tk_exit_status(), 0);
}

TEST_F(running, shows_the_window_without_anything_in_it_too) {
    EXPECT_FALSE(native_window()->isVisible());
    bool seen = false;
    later([&seen] {
        seen = native_window()->isVisible();
        tk_quit(0);
    });
    EXPECT_EQ(tk_run(), RET_OK);
    EXPECT_TRUE(seen);
    EXPECT_FALSE(native_window()->isVisible()) << "gone with the loop";
}

TEST_F(running, ends_with_a_status) {
    open(ui_window(""), "home");
    later([] { tk_quit(3); });
    EXPECT_EQ(tk_run(), RET_OK);
    EXPECT_EQ(tk_exit_status(), 3);
}

TEST_F(running, what_is_being_typed_is_taken_before_the_end) {
    open(ui_window(ui_widget("QLineEdit", "edit", "10 10 100 30")), "home");
    listener heard;
    heard.hear(at("edit"), event_type::value_changed);
    widget_on(win, event_type::request_close, [&](const event&) {
        EXPECT_EQ(heard.count(), 1);
        return RET_OK;
    });
    click(at("edit"));
    type("7F");
    EXPECT_EQ(heard.count(), 0);
    later([] { native_window()->close(); });
    tk_run();
    EXPECT_EQ(heard.count(), 1);
}

TEST_F(running, home_that_refuses_to_close_keeps_it_running) {
    open(ui_window(""), "home");
    int asked = 0;
    widget_on(win, event_type::request_close, [&asked](const event&) { return ++asked < 2 ? RET_FAIL : RET_OK; });
    later([] {
        native_window()->close();
        later([] { native_window()->close(); });
    });
    tk_run();
    EXPECT_EQ(asked, 2);
}

TEST_F(running, closing_unwinds_modal_dialogs_with_0_and_ends) {
    open(ui_window(""), "home");
    std::vector<int> ended;
    const auto ask = [&](const char* name, int number, const std::function<void()>& act) {
        write_layout(name, ui_dialog(""));
        widget* dialog = window_open(name);
        later(act);
        ended.push_back(number);
        ended.push_back(static_cast<int>(dialog_modal(dialog)));
        ended.push_back(number);
        EXPECT_EQ(dialog_modal(dialog), 0u);
    };
    later([&] { ask("one", 1, [&] { ask("two", 2, [] { native_window()->close(); }); }); });
    EXPECT_EQ(tk_run(), RET_OK);
    EXPECT_THAT(ended, ElementsAre(1, 2, 0, 2, 0, 1));
}

TEST_F(running, dialog_asked_for_while_ending_does_not_run) {
    open(ui_window(""), "home");
    later([&] {
        native_window()->close();
        write_layout("late", ui_dialog(""));
        EXPECT_EQ(dialog_modal(window_open("late")), 0u);
    });
    tk_run();
}

TEST_F(running, closed_before_the_main_loop_it_never_starts) {
    open(ui_window(""), "home");
    write_layout("ask", ui_dialog(""));
    widget* dialog = window_open("ask");
    later([] { native_window()->close(); });
    EXPECT_EQ(dialog_modal(dialog), 0u);
    EXPECT_EQ(tk_run(), RET_OK);
}

TEST_F(running, jobs_of_workers_run_on_the_gui_thread_in_order) {
    open(ui_window(""), "home");
    std::vector<int> seen;
    std::thread worker([&seen] {
        for (int i = 0; i < 1000; ++i)
            idle_queue([&seen, i] {
                EXPECT_TRUE(idle_is_gui_thread());
                seen.push_back(i);
                if (i == 999) tk_quit(0);
                return RET_OK;
            });
    });
    tk_run();
    worker.join();
    ASSERT_EQ(seen.size(), 1000u);
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
}

TEST_F(running, workers_that_post_while_it_ends_do_no_harm) {
    open(ui_window(""), "home");
    std::atomic<bool> stop{false};
    std::thread worker([&stop] {
        while (!stop) idle_queue([] { return RET_OK; });
    });
    later([] { tk_quit(0); });
    tk_run();
    tk_exit();
    EXPECT_EQ(idle_queue([] { return RET_OK; }), RET_FAIL);
    stop = true;
    worker.join();
}

TEST_F(running, timers_fire_and_an_idle_loop_waits) {
    open(ui_window(""), "home");
    settle();
    int ticks = 0;
    timer_add(
        [&ticks] {
            if (++ticks < 5) return RET_REPEAT;
            tk_quit(0);
            return RET_REMOVE;
        },
        10);
    const int64_t begun = time_now_ms();
    tk_run();
    EXPECT_EQ(ticks, 5);
    EXPECT_GE(time_now_ms() - begun, 45);
}

TEST_F(running, a_second_start_is_refused) {
    EXPECT_EQ(tk_init(800, 600, app_type::desktop, "again", "."), RET_FAIL) << "it runs already";
    EXPECT_EQ(tk_init(800, 600, app_type::desktop, nullptr, "."), RET_BAD_PARAMS);
}

TEST_F(running, starts_again_after_its_end_and_holds_the_size_to_its_bounds) {
    tk_exit();
    EXPECT_EQ(window_manager(), nullptr);
    EXPECT_EQ(window_open("x"), nullptr);
    idle_restart();
    const std::string root = layout_folder() + "../..";
    EXPECT_EQ(tk_init(800, 600, app_type::simulator, "again", "/nowhere/at/all"), RET_FAIL);
    ASSERT_EQ(tk_init(1, 100000, app_type::simulator, "again", root.c_str()), RET_OK);
    EXPECT_EQ(native_window()->size(), QSize(320, 16384));
    EXPECT_FALSE(native_window()->isVisible()) << "hidden until something is to be seen";
    EXPECT_EQ(native_window()->windowTitle(), "again");
    EXPECT_EQ(system_info_get_app_type(), app_type::simulator);
    EXPECT_EQ(tk_ext_widgets_init(), RET_OK);
}

TEST_F(running, before_its_start_and_after_its_end_nothing_is_done) {
    tk_exit();
    EXPECT_FALSE(system_info_is_dark());
    EXPECT_EQ(theme_set_dark(true), RET_BAD_PARAMS);
    EXPECT_FALSE(theme_is_dark());
    EXPECT_EQ(assets_manager_preload_style(), RET_BAD_PARAMS);
    EXPECT_EQ(system_info_set_default_font("default"), RET_BAD_PARAMS);
    EXPECT_EQ(clip_board_set_text("x"), RET_BAD_PARAMS);
    EXPECT_EQ(clip_board_get_text(), "");
    EXPECT_EQ(tk_run(), RET_FAIL);
    EXPECT_EQ(tk_ext_widgets_init(), RET_FAIL);
    EXPECT_EQ(window_manager_back(window_manager()), RET_BAD_PARAMS);
    EXPECT_EQ(drive_play("close", {[](const std::string&) {}, [](bool) {}}), RET_BAD_PARAMS);
    EXPECT_FALSE(drive_wait([] { return true; }, 0));
    EXPECT_EQ(drive_window_size(640, 480), RET_FAIL);
    idle_restart();
    ASSERT_EQ(tk_init(800, 600, app_type::desktop, "again", (layout_folder() + "../..").c_str()), RET_OK);
}

TEST_F(running, themes_fonts_and_strings) {
    EXPECT_EQ(assets_manager_set_theme("default"), RET_OK);
    EXPECT_EQ(assets_manager_set_theme("dark"), RET_NOT_IMPL);
    EXPECT_EQ(assets_manager_set_theme(nullptr), RET_BAD_PARAMS);
    EXPECT_TRUE(assets_has_theme("default"));
    EXPECT_FALSE(assets_has_theme("dark"));
    log_set_log_level(LOG_LEVEL_WARN);
    said log;
    EXPECT_FALSE(assets_has_theme(nullptr));
    log_set_log_level(LOG_LEVEL_ERROR);
    const std::string line = log.take();
    EXPECT_EQ(line.substr(0, line.find(':')), "assets_has_theme");
    EXPECT_THAT(line, testing::EndsWith(" condition(name != NULL) failed!\n"));
    EXPECT_EQ(tk_init_assets(), RET_OK);
    EXPECT_EQ(tk_set_lcd_orientation(0), RET_OK);
    EXPECT_EQ(tk_set_lcd_orientation(90), RET_NOT_IMPL);
    EXPECT_EQ(QApplication::font().pixelSize(), 14);
    EXPECT_TRUE(style_families("fonts").contains(QApplication::font().families().first()));
    EXPECT_EQ(system_info_set_default_font("No Such Family"), RET_FAIL);
    EXPECT_EQ(locale_info_tr("SPI_F"), "SPI_F") << "no language chosen yet";
    EXPECT_EQ(locale_info_change("zh", "CN"), RET_OK);
    EXPECT_NE(locale_info_tr("SPI_F"), "SPI_F");
    EXPECT_EQ(locale_info_tr("no such key"), "no such key");
    EXPECT_EQ(locale_info_tr(nullptr), "");
    EXPECT_EQ(QCoreApplication::translate("QLineEdit", "&Copy"), QString::fromUtf8("复制(&C)"));
    EXPECT_EQ(locale_info_change("xx", "YY"), RET_FAIL);
    EXPECT_NE(locale_info_tr("SPI_F"), "SPI_F") << "the language stays when the other has no file";
}

TEST_F(running, every_name_that_the_style_sheet_uses_is_defined) {
    const QString sheet = qApp->styleSheet();
    EXPECT_FALSE(sheet.isEmpty());
    EXPECT_FALSE(sheet.contains(u'@')) << "all names were replaced";
    EXPECT_FALSE(sheet.contains("magenta")) << "the mark of an undefined name";
    EXPECT_EQ(style_color("accent"), QColor(0x1B, 0x6E, 0xC2));
    EXPECT_EQ(style_color("no such name"), QColor(Qt::black));
}

TEST_F(running, cursor_is_the_arrow_when_the_theme_has_none) {
    EXPECT_EQ(window_manager_set_cursor(window_manager(), "cursor"), RET_OK);
    EXPECT_EQ(native_window()->cursor().shape(), Qt::ArrowCursor);
    EXPECT_EQ(window_manager_set_cursor(window_manager(), nullptr), RET_BAD_PARAMS);
}

#ifndef NDEBUG
TEST(system_look, is_that_of_the_system_whatever_the_program_looks_like) {
    testing::FLAGS_gtest_death_test_style = "threadsafe"; // what is known of the system is known once a process
    const auto dark_one = [] {
        tk_pre_init();
        int count = 1;
        char name[] = "dark";
        char* arguments[] = {name, nullptr};
        QApplication application(count, arguments);
        QPalette palette;
        palette.setColor(QPalette::Window, QColor("#202020"));
        palette.setColor(QPalette::WindowText, Qt::white);
        QApplication::setPalette(palette);
        const bool before = system_info_is_dark();
        QApplication::setPalette(QPalette(Qt::white));
        std::_Exit(before && system_info_is_dark() ? 0 : 1);
    };
    EXPECT_EXIT(dark_one(), testing::ExitedWithCode(0), "");
}

TEST(wrong_thread, a_widget_function_called_there_aborts) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto call = [] {
        tk_pre_init();
        log_set_capture([](const std::string& text, void*) { std::fputs(text.c_str(), stderr); }, nullptr);
        std::thread([] { widget_set_visible(nullptr, false); }).join();
    };
    EXPECT_DEATH(call(), "widget_set_visible called off the GUI thread!");
}
#else
TEST(wrong_thread, a_widget_function_called_there_is_logged_and_does_nothing) {
    tk_pre_init();
    std::string said;
    log_set_capture([](const std::string& text, void* to) { *static_cast<std::string*>(to) += text; }, &said);
    ret_t result = RET_OK;
    std::thread([&result] { result = widget_set_visible(nullptr, false); }).join();
    log_set_capture(nullptr, nullptr);
    EXPECT_EQ(result, RET_BAD_PARAMS);
    EXPECT_EQ(said, "widget_set_visible called off the GUI thread!\n");
}
#endif

} // namespace
