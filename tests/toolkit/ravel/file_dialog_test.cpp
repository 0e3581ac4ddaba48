// The dialogs that ask for a file, and a file dropped on the window.
#include "tests/support/scratch_folder.h"
#include "tests/toolkit/ravel/stage.h"
#include "toolkit/ravel/drive.h"
#include "toolkit/ravel/file_dialog.h"

#include <filesystem>
#include <fstream>

using testing::ElementsAre;
using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

class file_dialog : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        folder_ = scratch_folder("vkt_file_dialog");
        fs::create_directories(folder_ / "inner");
        std::ofstream(folder_ / "one.json") << "{}";
        open(ui_window(ui_widget("QLineEdit", "edit", "10 10 300 32")), "home");
    }
    void TearDown() override {
        EXPECT_EQ(failed_, "");
        // Somebody may look into the folder still, which Windows counts as use.
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
        stage::TearDown();
    }

    std::string in(const char* name) const { return (folder_ / name).generic_string(); }
    file_question question() const {
        return {.title = "打开配置",
                .folder = folder_.generic_string(),
                .filters = {{"配置文件", "json"}, {"C 数组", "h"}, {"所有文件", ""}}};
    }
    /// Plays lines in the dialog that is opened next.
    void will_do(const std::string& script) {
        const auto echo = [this](const std::string& line) {
            if (line.rfind("FAIL", 0) == 0) failed_ += line;
        };
        const auto ended = [](bool good) {
            if (!good) window_manager_back_to_home(window_manager());
        };
        ASSERT_EQ(drive_play(script, {echo, ended}), RET_OK);
    }
    std::optional<file_answer> opens(const std::string& script) {
        will_do(script);
        return file_dialog_open(question());
    }
    std::optional<file_answer> saves(const std::string& script, const std::string& name = "new") {
        will_do(script);
        file_question what = question();
        what.name = name;
        return file_dialog_save(what);
    }

    fs::path folder_;
    std::string failed_;
};

TEST_F(file_dialog, a_typed_name_is_opened) {
    const auto chosen = opens("wait file_dialog/file_name focused 1\nexpect file_dialog/title text 打开配置\n"
                              "type file_dialog/file_name one.json\nclick file_dialog/ok");
    ASSERT_TRUE(chosen);
    EXPECT_EQ(chosen->path, in("one.json"));
    EXPECT_EQ(chosen->filter, 0U);
}

TEST_F(file_dialog, a_whole_path_and_the_enter_key_do_too) {
    const auto chosen = opens("type file_dialog/file_name " + in("one.json") + "\nkey Enter");
    ASSERT_TRUE(chosen);
    EXPECT_EQ(chosen->path, in("one.json"));
}

TEST_F(file_dialog, what_is_not_there_is_said_and_the_dialog_stays) {
    EXPECT_FALSE(
        opens("type file_dialog/file_name none.json\nkey Enter\nwait file_dialog/notice text 没有这个文件\n"
              "expect file_dialog/replace visible 0\nappend file_dialog/file_name x\n"
              "expect file_dialog/notice visible 0\nclick file_dialog/cancel"));
}

TEST_F(file_dialog, a_folder_is_entered) {
    // The list of a folder comes later than the folder: nothing is typed meanwhile.
    EXPECT_FALSE(
        opens("type file_dialog/file_name inner\nkey Enter\nwait file_dialog/file_name text \"\"\nkey Esc"));
}

TEST_F(file_dialog, a_file_of_another_folder_is_typed_with_it) {
    std::ofstream(folder_ / "inner" / "two.json") << "{}";
    const auto chosen = opens("type file_dialog/file_name inner/two.json\nkey Enter");
    ASSERT_TRUE(chosen);
    EXPECT_EQ(chosen->path, in("inner/two.json"));
}

TEST_F(file_dialog, the_folder_above_is_a_click_away) {
    EXPECT_FALSE(opens("click file_dialog/to_parent\nkey Esc"));
}

TEST_F(file_dialog, esc_and_the_button_leave_it_without_a_file) {
    EXPECT_FALSE(opens("wait file_dialog/file_name focused 1\nkey Esc"));
    EXPECT_FALSE(opens("click file_dialog/cancel"));
    EXPECT_EQ(widget_name(window_manager_get_top_window(window_manager())), "home");
}

TEST_F(file_dialog, closing_the_program_leaves_it_too) {
    will_do("wait file_dialog/file_name focused 1\nclose");
    EXPECT_FALSE(file_dialog_open(question()));
    EXPECT_FALSE(file_dialog_open(question())) << "no loop is run once the program ends";
    end_stage();
    start_stage();
}

TEST_F(file_dialog, a_name_without_an_extension_gets_the_filters) {
    const auto saved =
        saves("expect file_dialog/file_name text new.json\ntype file_dialog/file_name other\nkey Enter");
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->path, in("other.json"));
    const auto own = saves("type file_dialog/file_name other.txt\nkey Enter");
    ASSERT_TRUE(own);
    EXPECT_EQ(own->path, in("other.txt"));
}

TEST_F(file_dialog, the_chosen_filter_comes_back_and_changes_the_names_extension) {
    const auto saved = saves("pick file_dialog/file_type \"C 数组 (*.h)\"\nwait file_dialog/file_name text new.h\n"
                             "click file_dialog/ok");
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->path, in("new.h"));
    EXPECT_EQ(saved->filter, 1U);
    const auto any =
        saves("pick file_dialog/file_type \"所有文件 (*)\"\ntype file_dialog/file_name plain\nkey Enter");
    ASSERT_TRUE(any);
    EXPECT_EQ(any->path, in("plain"));
    EXPECT_EQ(any->filter, 2U);
}

TEST_F(file_dialog, a_file_that_is_there_is_replaced_only_when_that_is_said) {
    EXPECT_FALSE(saves("type file_dialog/file_name one\nclick file_dialog/ok\n"
                       "wait file_dialog/replace focused 1\nexpect file_dialog/notice contains one.json\nkey Esc"));
    const auto saved =
        saves("type file_dialog/file_name one\nkey Enter\nwait file_dialog/replace focused 1\nkey Enter");
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->path, in("one.json"));
    // Typing on takes the question back.
    const auto other = saves("type file_dialog/file_name one.json\nkey Enter\nwait file_dialog/replace visible 1\n"
                             "type file_dialog/file_name two\nexpect file_dialog/replace visible 0\nkey Enter");
    ASSERT_TRUE(other);
    EXPECT_EQ(other->path, in("two.json"));
}

TEST_F(file_dialog, a_folder_that_is_missing_is_said) {
    EXPECT_FALSE(saves("type file_dialog/file_name away/x\nkey Enter\nwait file_dialog/notice text 没有这个文件夹\n"
                       "key Esc"));
}

TEST_F(file_dialog, it_opens_where_it_can_when_its_folder_is_missing) {
    will_do("type file_dialog/file_name " + in("one.json") + "\nkey Enter");
    file_question what = question();
    what.folder = in("away");
    EXPECT_TRUE(file_dialog_open(what));
}

/// The paths that the window was given.
class drops : public file_dialog {
  protected:
    void hear(widget* w) {
        widget_on(w, event_type::drop, [this](const event& what) {
            paths_.emplace_back(what.path);
            return RET_OK;
        });
    }
    std::string drop(const std::string& path) {
        failed_.clear();
        bool done = false;
        const auto echo = [this](const std::string& line) {
            if (line.rfind("FAIL", 0) == 0) failed_ += line;
        };
        EXPECT_EQ(drive_play("drop " + path, {echo, [&done](bool) { done = true; }}), RET_OK);
        EXPECT_TRUE(wait_until([&done] { return done; }));
        settle();
        return std::exchange(failed_, "");
    }
    std::vector<std::string> paths_;
};

TEST_F(drops, a_file_reaches_the_window_whatever_it_falls_on) {
    widget_set_prop_int(at("edit"), "w", 990);
    widget_set_prop_int(at("edit"), "h", 590);
    hear(win);
    EXPECT_EQ(drop(in("one.json")), "");
    EXPECT_THAT(paths_, ElementsAre(in("one.json")));
    EXPECT_EQ(widget_get_text_utf8(at("edit")), "") << "no field takes it as text";
}

TEST_F(drops, nobody_takes_it_where_the_top_window_does_not_listen) {
    hear(win);
    open(ui_dialog(""), "card");
    EXPECT_THAT(drop(in("one.json")), HasSubstr("no window takes a file now"));
    EXPECT_TRUE(paths_.empty());
}

TEST_F(drops, what_is_taken_must_be_listened_for) {
    EXPECT_THAT(drop(in("one.json")), HasSubstr("no window takes a file now"));
}

} // namespace
