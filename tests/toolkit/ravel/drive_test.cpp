#include "tests/support/scratch_folder.h"
#include "toolkit/ravel/combo_hints.h"
#include "toolkit/ravel/drive.h"
#include "toolkit/ravel/qt/drive_input.h"
#include "toolkit/ravel/qt/drive_widgets.h"
#include "toolkit/ravel/ravel.h"

#include <QApplication>
#include <QImage>
#include <QKeyEvent>
#include <QTimer>

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

constexpr const char* rect =
    "<property name=\"geometry\"><rect><x>%d</x><y>%d</y><width>%d</width><height>%d</height>"
    "</rect></property>";

std::string widget_xml(const char* qt_class, const char* name, int x, int y, int w, int h,
                       const std::string& more = "") {
    return std::string("<widget class=\"") + qt_class + "\" name=\"" + name + "\">" + tk_format(rect, x, y, w, h) +
           more + "</widget>\n";
}
std::string flag(const char* name, bool value) {
    return std::string("<property name=\"") + name + "\"><bool>" + (value ? "true" : "false") +
           "</bool></property>";
}
std::string text(const char* value) {
    return std::string("<property name=\"text\"><string>") + value + "</string></property>";
}
std::string ui(const std::string& root) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ui version=\"4.0\"><class>Form</class>" + root + "</ui>\n";
}

/// A window with one widget of most kinds.
std::string home_layout() {
    std::string inside = widget_xml("QPushButton", "button", 10, 10, 100, 32, text("go")) +
                         widget_xml("QPushButton", "button_off", 120, 10, 100, 32, flag("enabled", false)) +
                         widget_xml("QPushButton", "button_dialog", 230, 10, 100, 32) +
                         widget_xml("QComboBox", "combo", 10, 50, 160, 32) +
                         widget_xml("QComboBox", "combo_edit", 180, 50, 160, 32, flag("editable", true)) +
                         widget_xml("QSpinBox", "spin", 10, 90, 100, 32) +
                         widget_xml("QLineEdit", "edit", 120, 90, 200, 32) +
                         widget_xml("QLineEdit", "edit_fixed", 330, 90, 100, 32, flag("readOnly", true)) +
                         widget_xml("QCheckBox", "check", 10, 130, 400, 32, text("check")) +
                         widget_xml("QPlainTextEdit", "mledit", 450, 10, 200, 150) +
                         widget_xml("QLabel", "under", 10, 300, 100, 32, text("under")) +
                         widget_xml("QWidget", "over", 0, 290, 200, 60);
    // The view shows the first 100 of 400 pixels.
    const std::string content =
        widget_xml("QWidget", "content", 0, 0, 180, 400,
                   "<property name=\"minimumSize\"><size><width>0</width><height>400</height></size>"
                   "</property>" +
                       widget_xml("QPushButton", "near", 10, 10, 100, 32) +
                       widget_xml("QPushButton", "far", 10, 300, 100, 32));
    inside += widget_xml("QScrollArea", "scroll", 450, 170, 200, 100, flag("widgetResizable", true) + content);
    inside += widget_xml("QWidget", "page_a", 10, 400, 200, 60, widget_xml("QCheckBox", "twin", 0, 0, 100, 30));
    inside += widget_xml("QWidget", "page_b", 220, 400, 200, 60, widget_xml("QCheckBox", "twin", 0, 0, 100, 30));
    const std::string item = widget_xml("QLabel", "", 0, 0, 80, 20);
    inside += widget_xml("QWidget", "list", 450, 300, 200, 100,
                         widget_xml("QLabel", "", 0, 40, 80, 20, text("second")) +
                             widget_xml("QLabel", "", 0, 10, 80, 20, text("first")));
    inside += widget_xml("QWidget", "nameless_is_here", 10, 200, 200, 60,
                         widget_xml("QLabel", "", 0, 0, 50, 9, text("above")) +
                             widget_xml("QWidget", "", 0, 0, 100, 30, flag("visible", false)) +
                             widget_xml("QWidget", "", 0, 0, 100, 30,
                                        widget_xml("QCheckBox", "inside", 0, 0, 100, 30) +
                                            widget_xml("QLabel", "", 0, 0, 50, 9, text("deep"))));
    return ui(widget_xml("QWidget", "home", 0, 0, 700, 500, inside));
}

std::string dialog_layout() {
    return ui(widget_xml("QDialog", "card", 0, 0, 300, 200,
                         widget_xml("QPushButton", "ok", 10, 10, 100, 32) +
                             widget_xml("QLineEdit", "edit", 10, 60, 100, 32)));
}

class Drive : public testing::Test {
  protected:
    void SetUp() override {
        dir_ = scratch_folder("drive_test");
        std::filesystem::create_directories(dir_ / "res/default/ui");
        std::filesystem::create_directories(dir_ / "res/default/styles");
        write("res/default/styles/default.qss", "@surface: #F5F7FA;\n");
        write("res/default/ui/home.ui", home_layout());
        write("res/default/ui/card.ui", dialog_layout());
        idle_restart();
        tk_pre_init();
        ASSERT_EQ(tk_init(700, 500, app_type::desktop, "drive", (dir_ / "res").string().c_str()), RET_OK);
        home_ = window_open("home");
        ASSERT_NE(home_, nullptr) << window_open_error();
        combo_box_set_options(get("combo"), {{1, "one"}, {2, "two"}, {3, "drei Wörter hier"}});
        combo_box_set_options(get("combo_edit"), {{0, "COM1"}, {1, "COM7"}});
        heard("button", event_type::click);
        heard("combo", event_type::value_changed);
        heard("combo_edit", event_type::value_changed);
        heard("edit", event_type::value_changed);
        heard("check", event_type::value_changed);
        heard("scroll", event_type::wheel);
        heard("near", event_type::click);
        widget_on(get("button"), event_type::pointer_down, [this](const event&) { return hear("down"); });
        widget_on(get("button_dialog"), event_type::click, [this](const event&) { return run_dialog(); });
    }
    void TearDown() override {
        tk_exit();
        std::filesystem::remove_all(dir_);
    }

    widget* get(const char* name) { return widget_lookup(home_, name); }
    std::string path(const char* name) { return (dir_ / name).generic_string(); }
    void write(const char* name, const std::string& content) {
        std::ofstream(dir_ / name, std::ios::binary) << content;
    }
    ret_t hear(const std::string& what) {
        events_.push_back(what);
        return RET_OK;
    }
    void heard(const char* name, event_type type) {
        widget_on(get(name), type, [this, name](const event& e) {
            return hear(name + (e.delta != 0 ? tk_format(" %d", e.delta) : std::string()));
        });
    }
    ret_t run_dialog() {
        widget* card = window_open("card");
        widget_on(widget_lookup(card, "ok"), event_type::click,
                  [card](const event&) { return dialog_quit(card, 7); });
        quit_code_ = dialog_modal(card);
        return hear("dialog done");
    }

    /// Plays to the end (closing the window when the script does not) and returns what was told.
    std::vector<std::string> play(const std::string& script) {
        lines_.clear();
        EXPECT_EQ(drive_play(script, {[this](const std::string& line) { lines_.push_back(line); },
                                      [this](bool good) {
                                          ended_++;
                                          good_ = good;
                                          tk_quit(0);
                                      }}),
                  RET_OK);
        tk_run();
        QCoreApplication::sendPostedEvents();
        EXPECT_EQ(ended_, 1);
        return lines_;
    }
    /// Plays a script that must go well.
    void good(const std::string& script) {
        const auto lines = play(script);
        EXPECT_TRUE(good_) << testing::PrintToString(lines);
    }
    /// Plays a script whose last line must fail; returns why.
    std::string bad(const std::string& script) {
        const auto lines = play(script);
        EXPECT_FALSE(good_) << script;
        EXPECT_FALSE(lines.empty());
        EXPECT_THAT(lines.back(), StartsWith("FAIL"));
        return lines.back();
    }

    std::filesystem::path dir_;
    widget* home_ = nullptr;
    std::vector<std::string> events_, lines_;
    uint32_t quit_code_ = 0;
    int ended_ = 0;
    bool good_ = false;
};

TEST_F(Drive, TellsOfEachLine) {
    EXPECT_THAT(play("# a script\nclick home/button\nexpect button text go\nclose\n"),
                ElementsAre("ok   2 click home/button\n", "ok   3 expect button text go\n", "ok   4 close\n"));
    EXPECT_THAT(events_, ElementsAre("down", "button"));
}

TEST_F(Drive, AFailedLineSaysExpectedAndFoundAndEndsThePlay) {
    EXPECT_THAT(play("expect button text stop\nclick button\n"),
                ElementsAre("FAIL 1 expect button text stop: expected text \"stop\", found \"go\"\n"));
    EXPECT_FALSE(good_);
    EXPECT_THAT(events_, IsEmpty());
}

TEST_F(Drive, AScriptThatCannotBeReadIsNotPlayed) {
    EXPECT_THAT(play("click button\nclck\n"), ElementsAre("FAIL line 2: unknown action \"clck\"\n"));
    EXPECT_FALSE(good_);
    EXPECT_THAT(events_, IsEmpty());
}

TEST_F(Drive, TheProgramEndsWithStatus3) {
    write("bad.drive", "expect button text stop\n");
    ASSERT_EQ(tk_drive(path("bad.drive").c_str()), RET_OK);
    tk_run();
    EXPECT_EQ(tk_exit_status(), 3);
}

TEST_F(Drive, AGoodScriptEndsWithStatus0) {
    write("good.drive", "click button\nclose\n");
    ASSERT_EQ(tk_drive(path("good.drive").c_str()), RET_OK);
    tk_run();
    EXPECT_EQ(tk_exit_status(), 0);
    EXPECT_EQ(tk_drive(path("missing.drive").c_str()), RET_FAIL);
}

TEST_F(Drive, LinesThatWereNotPlayedAreAFailure) {
    write("cut.drive", "click button\nwait button text never 60000\nclose\n");
    ASSERT_EQ(tk_drive(path("cut.drive").c_str()), RET_OK);
    std::string said;
    log_set_capture(
        [](const std::string& line, void* to) {
            *static_cast<std::string*>(to) += line;
            if (line.starts_with("ok   1 ")) QTimer::singleShot(0, [] { QCoreApplication::exit(0); });
        },
        &said);
    tk_run();
    log_set_capture(nullptr, nullptr);
    EXPECT_THAT(said,
                testing::EndsWith("ok   1 click button\nFAIL 2 wait button text never 60000: the program ended "
                                  "before this line was played\n"));
    EXPECT_EQ(tk_exit_status(), 3);
}

TEST_F(Drive, AScriptWithoutCloseLeavesTheProgramRunning) {
    bool over = false, ran_on = false;
    ASSERT_EQ(drive_play("click button\n", {[](const std::string&) {},
                                            [&](bool) {
                                                over = true;
                                                timer_add(
                                                    [&] {
                                                        ran_on = true;
                                                        tk_quit(0);
                                                        return RET_REMOVE;
                                                    },
                                                    30);
                                            }}),
              RET_OK);
    tk_run();
    EXPECT_TRUE(over && ran_on);
}

TEST_F(Drive, PicksAnOptionThroughTheList) {
    good("pick combo two\nexpect combo text two\nexpect combo value 2\n"
         "pick combo \"drei Wörter hier\"\nexpect combo value 3\npick combo \"drei Wörter hier\"\npick combo one\n"
         "expect combo value 1\nexpect combo options \"one|two|drei Wörter hier\"\nexpect combo option two\n"
         "expect combo count 3\n");
    EXPECT_THAT(events_, ElementsAre("combo", "combo", "combo"));
}

TEST_F(Drive, AnOptionThatIsNotThereFails) {
    EXPECT_THAT(bad("pick combo four"),
                HasSubstr("expected the option \"four\", found \"one|two|drei Wörter hier\""));
}

TEST_F(Drive, AnEditableComboTakesOptionsAndTyping) {
    good("pick combo_edit COM7\nexpect combo_edit text COM7\nexpect combo_edit value 1\n"
         "pick combo_edit /dev/ttyS9\nexpect combo_edit text /dev/ttyS9\nexpect combo_edit value -1\n");
    EXPECT_THAT(events_, ElementsAre("combo_edit", "combo_edit"));
}

TEST_F(Drive, TypesReplacesAndAppends) {
    good("type edit \"Ab c\"\nexpect edit focused 1\nappend edit \"-ü\"\nexpect edit text \"Ab c-ü\"\nkey Tab\n"
         "expect edit focused 0\ntype edit 7\nkey Enter\nexpect edit value 7\ntype edit \"\"\nexpect edit text "
         "\"\"\n");
    EXPECT_THAT(events_, ElementsAre("edit", "edit"));
}

TEST_F(Drive, TypingLetsGoOfTheButtonThatItClickedWith) {
    for (const event_type type : {event_type::pointer_down, event_type::pointer_up})
        widget_on(get("edit"), type,
                  [this, type](const event&) { return hear(type == event_type::pointer_down ? "down" : "up"); });
    good("type edit a\nappend edit b\n");
    EXPECT_THAT(events_, ElementsAre("down", "up", "down", "up"));
}

TEST_F(Drive, TypesIntoASpinBox) {
    good("type spin 42\nexpect spin value 42\nkey Up\nexpect spin value 43\nwheel spin -120\nexpect spin value "
         "42\n");
}

TEST_F(Drive, KeysWithModifiers) {
    good("type edit abc\nkey Ctrl+A\nkey Ctrl+C\nkey End\nkey Ctrl+V\nexpect edit text abcabc\nkey Shift+Home\n"
         "key Delete\nexpect edit text \"\"\nkey Shift+x\nkey Space\nkey y\nexpect edit text \"X y\"\nkey "
         "Backspace\n"
         "expect edit text \"X \"\n");
}

/// Keys as they come to the native window: "press 0x41 A", with S, C and A before the text for the modifiers.
class key_watch final : public QObject {
  public:
    key_watch() { qApp->installEventFilter(this); }
    std::string take() { return std::exchange(seen_, {}); }
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (!watched->isWindowType()) return false;
        if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease) return false;
        const auto* key = static_cast<QKeyEvent*>(event);
        const auto has = [key](Qt::KeyboardModifier one) { return key->modifiers().testFlag(one); };
        seen_ += tk_format("%s%x%s%s%s%s|", event->type() == QEvent::KeyPress ? "+" : "-", key->key(),
                           has(Qt::ShiftModifier) ? " S" : "", has(Qt::ControlModifier) ? " C" : "",
                           has(Qt::AltModifier) ? " A" : "",
                           key->text().isEmpty() ? "" : (" " + drive_quote(key->text().toStdString())).c_str());
        return false;
    }

  private:
    std::string seen_;
};

TEST_F(Drive, KeysComeAsFromAKeyboard) {
    key_watch watch;
    const struct {
        const char* name;
        const char* seen;
    } keys[] = {
        {"Tab", "1000001 \"\\t\""},
        {"Enter", "1000004 \"\\r\""},
        {"Esc", "1000000 \"\x1b\""},
        {"Space", "20 \" \""},
        {"Backspace", "1000003 \"\b\""},
        {"Delete", "1000007 \"\x7f\""},
        {"Insert", "1000006"},
        {"Up", "1000013"},
        {"Down", "1000015"},
        {"Left", "1000012"},
        {"Right", "1000014"},
        {"Home", "1000010"},
        {"End", "1000011"},
        {"PageUp", "1000016"},
        {"PageDown", "1000017"},
        {"F1", "1000030"},
        {"F9", "1000038"},
        {"F12", "100003b"},
        {"a", "41 \"a\""},
        {"7", "37 \"7\""},
        {"Shift+x", "58 S \"X\""},
        {"Ctrl+A", "41 C"},
        {"Alt+y", "59 A"},
        {"Ctrl+Shift+Home", "1000010 S C"},
        {"Shift+Tab", "1000002 S \"\\t\""},
    };
    for (const auto& row : keys) {
        drive_key key;
        ASSERT_TRUE(drive_parse_key(row.name, &key));
        drive_stroke(key);
        EXPECT_EQ(watch.take(), std::string("+") + row.seen + "|-" + row.seen + "|") << row.name;
    }
    const struct {
        const char* character;
        const char* seen;
    } typed[] = {
        {"\n", "1000004 \"\\r\""}, {"\t", "1000001 \"\\t\""}, {"a", "41 \"a\""},
        {"A", "41 S \"A\""},       {"5", "35 \"5\""},         {"ü", "1ffffff \"ü\""},
    };
    for (const auto& row : typed) {
        drive_type(QString::fromUtf8(row.character));
        EXPECT_EQ(watch.take(), std::string("+") + row.seen + "|-" + row.seen + "|") << row.character;
    }
}

TEST_F(Drive, ClicksCheckBoxesOnWhatReacts) {
    good("expect check value 0\nclick check\nexpect check value 1\nclick check\nexpect check value 0\n");
    EXPECT_THAT(events_, ElementsAre("check", "check"));
}

TEST_F(Drive, PressHoldsTheButton) {
    const int64_t before = time_now_ms();
    good("press button 200\n");
    EXPECT_GE(time_now_ms() - before, 200);
    EXPECT_THAT(events_, ElementsAre("down", "button"));
}

TEST_F(Drive, TwoClicksAreNoDoubleClick) {
    good("click button\nclick button\n");
    EXPECT_THAT(events_, ElementsAre("down", "button", "down", "button"));
}

TEST_F(Drive, TheWheelReachesWhatIsUnderThePointer) {
    good("wheel near -120\nwheel scroll 240\n");
    EXPECT_THAT(events_, ElementsAre("scroll -120", "scroll 240"));
}

TEST_F(Drive, WhatCannotBeReachedCannotBeClicked) {
    EXPECT_THAT(bad("click button_off"), HasSubstr("home/button_off is disabled"));
}
TEST_F(Drive, WhatIsHiddenCannotBeClicked) {
    widget_set_visible(get("button"), false);
    EXPECT_THAT(bad("click button"), HasSubstr("home/button is hidden"));
}
TEST_F(Drive, WhatIsCoveredCannotBeClicked) {
    EXPECT_THAT(bad("click under"), HasSubstr("home/under is covered by home/over"));
}
TEST_F(Drive, WhatIsScrolledAwayCannotBeClicked) {
    EXPECT_THAT(bad("click near\nclick far"), HasSubstr("home/scroll/content/far is out of view"));
    EXPECT_THAT(events_, ElementsAre("near"));
}
TEST_F(Drive, WhatLiesBehindADialogCannotBeClicked) {
    EXPECT_THAT(bad("click button_dialog\nclick home/button"), HasSubstr("home/button lies behind card"));
}
TEST_F(Drive, WhatCannotBeTypedInto) {
    EXPECT_THAT(bad("type edit_fixed x"), HasSubstr("home/edit_fixed cannot be typed into"));
}
TEST_F(Drive, WhatIsNoComboHasNoOptions) { EXPECT_THAT(bad("pick button x"), HasSubstr("is no combo box")); }
TEST_F(Drive, TypingStopsWhenTheKeyboardGoesElsewhere) {
    EXPECT_THAT(bad("type edit \"ab\\tc\""), HasSubstr("home/edit does not have the keyboard focus"));
    EXPECT_EQ(widget_get_text_utf8(get("edit")), "ab");
}

TEST_F(Drive, GoesOnInsideAModalDialog) {
    good("click button_dialog\nwait card visible 1\ntype card/edit x\nexpect card/edit text x\nclick ok\n"
         "wait card exists 0\nclick button\n");
    EXPECT_EQ(quit_code_, 7u);
    EXPECT_THAT(events_, ElementsAre("dialog done", "down", "button"));
}

TEST_F(Drive, CloseUnwindsAModalDialog) {
    EXPECT_THAT(play("click button_dialog\nclose\n"),
                ElementsAre("ok   1 click button_dialog\n", "ok   2 close\n"));
    EXPECT_TRUE(good_);
    EXPECT_THAT(events_, ElementsAre("dialog done"));
}

TEST_F(Drive, WaitWaits) {
    timer_add(
        [this] {
            widget_set_text_utf8(get("under"), "changed");
            return RET_REMOVE;
        },
        150);
    good("wait under text changed 5000\nexpect under contains ang\n");
}

TEST_F(Drive, NothingIsPlayedOrWaitedForWithoutWhatItTakes) {
    EXPECT_FALSE(drive_wait({}, 1));
    EXPECT_EQ(drive_play("close\n", {[](const std::string&) {}, {}}), RET_BAD_PARAMS);
    EXPECT_EQ(drive_play("close\n", {{}, [](bool) {}}), RET_BAD_PARAMS);
    EXPECT_EQ(tk_drive(nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(drive_paint(nullptr), RET_BAD_PARAMS);
    EXPECT_TRUE(drive_wait([] { return true; }, 0)) << "no time needed";
    EXPECT_FALSE(drive_wait([] { return false; }, 1));
}

TEST_F(Drive, WaitGivesUp) {
    EXPECT_THAT(bad("wait under text changed 60"), HasSubstr("expected text \"changed\", found \"under\""));
}

TEST_F(Drive, PropertiesOfEachKind) {
    widget_set_refused(get("edit"), "too long");
    widget_set_style_state(get("under"), "failed");
    good(
        "expect edit refused 1\nexpect edit tooltip \"too long\"\nexpect button refused 0\nexpect under state "
        "failed\n"
        "expect button x 10\nexpect button y 10\nexpect button w 100\nexpect button h 32\nexpect button type "
        "button\n"
        "expect combo type combo_box\nexpect button_off enabled 0\nexpect button enabled 1\nexpect home visible 1\n"
        "expect nothing visible 0\nexpect nothing exists 0\nexpect button exists 1\nexpect list count 2\n");
}

TEST_F(Drive, PathsThatMeanMoreThanOneWidgetAreRefused) {
    EXPECT_THAT(bad("click page_a/twin\nexpect page_a/twin value 1\nexpect page_b/twin value 0\nclick twin"),
                HasSubstr("2 widgets are meant by twin: home/page_a/twin home/page_b/twin"));
}
TEST_F(Drive, PathsThatMeanNoneAreRefused) {
    EXPECT_THAT(bad("click home/nothing"), HasSubstr("there is no widget home/nothing"));
}
TEST_F(Drive, TheWholePathOfAWidgetMeansIt) {
    EXPECT_THAT(
        bad("click button_dialog\nexpect card/edit text \"\"\nexpect home/edit text \"\"\nexpect edit text x"),
        HasSubstr("2 widgets are meant by edit: card/edit home/edit"));
}
TEST_F(Drive, RepeatedWidgetsAreReachedByIndex) {
    good("expect list/label[0] text first\nexpect list/label[1] text second\nexpect list/[1] text second\n"
         "expect list/label[2] exists 0\nexpect twin[1] exists 1\nexpect page_b/twin[0] exists 1\n");
}

TEST_F(Drive, ADumpedPathIsWhatAScriptWouldSay) {
    good("dump \"" + path("a.txt") + "\"\n");
    std::string dump;
    ASSERT_TRUE(fs_read_all(path("a.txt").c_str(), &dump));
    EXPECT_THAT(dump, HasSubstr("home/list/label[0] label \"first\" "));
    EXPECT_THAT(dump, HasSubstr("home/list/label[1] label \"second\" "));
    EXPECT_THAT(dump, HasSubstr("home/nameless_is_here/inside check_button")) << "looked through, as in a script";
    EXPECT_THAT(dump, HasSubstr("home/nameless_is_here/label[1] label \"deep\" "))
        << "counted in all that has a name";
    good("expect home/nameless_is_here/label[1] text deep\nexpect home/list/label[0] text first\n");
    EXPECT_THAT(dump, HasSubstr("home/nameless_is_here/view[0] view ")) << "but has a path itself";
    EXPECT_THAT(dump, HasSubstr("home/nameless_is_here/view view ")) << "hidden: no place in the order";
}

TEST_F(Drive, EveryPropertyThatAScriptMayAskForHasAValue) {
    widget_set_text_utf8(get("combo"), "two");
    widget_set_prop_str(get("combo"), "state", "failed");
    widget_set_refused(get("combo"), "why", "line");
    mledit_set_marks(get("mledit"), {{0, 1}});
    EXPECT_EQ(drive_property(drive_find({{"mledit"}}).state, "marks"), "differs 0+1");
    for (const std::string& name : drive_properties()) {
        if (name == "marks") continue; // of text boxes alone
        EXPECT_NE(drive_property(drive_find({{"combo"}}).state, name), "") << name;
    }
    EXPECT_EQ(drive_property(drive_find({{"combo"}}).state, "painted"), "0");
    good("expect combo painted 1\nexpect near window_x 460\nexpect near window_y 180\n"
         "expect near x 10\nexpect near y 10\nexpect combo contains tw\nexpect combo value 2\n");
}

TEST_F(Drive, AtMostEightOfSeveralAreListed) {
    std::string list = "2 widgets are meant by twin: home/page_a/twin home/page_b/twin";
    EXPECT_EQ(drive_find({{"twin"}}).error, list);
    for (int extra = 0; extra < 8; ++extra) {
        const std::string name = "many" + std::to_string(extra);
        write(("res/default/ui/" + name + ".ui").c_str(),
              ui(widget_xml("QWidget", name.c_str(), 0, 0, 700, 500, widget_xml("QLabel", "same", 0, 0, 9, 9))));
        window_open(name.c_str());
    }
    list = "8 widgets are meant by same:";
    for (int extra = 8; extra-- > 0;) list += " many" + std::to_string(extra) + "/same";
    EXPECT_EQ(drive_find({{"same"}}).error, list);
    write("res/default/ui/ninth.ui",
          ui(widget_xml("QWidget", "ninth", 0, 0, 700, 500, widget_xml("QLabel", "same", 0, 0, 9, 9))));
    window_open("ninth");
    EXPECT_THAT(drive_find({{"same"}}).error, StartsWith("9 widgets are meant by same: ninth/same many7/same"));
    EXPECT_THAT(drive_find({{"same"}}).error, testing::EndsWith("many1/same ..."));
}

TEST_F(Drive, ExpectFile) {
    write("log.txt", "one\ntwo\n");
    const std::string log = path("log.txt");
    good("expect-file \"" + log + "\" \"one\\ntwo\"\n");
}
TEST_F(Drive, WaitFile) {
    timer_add(
        [this] {
            write("later.txt", "here");
            return RET_REMOVE;
        },
        150);
    good("wait-file \"" + path("later.txt") + "\" here\n");
}
TEST_F(Drive, WaitFileGivesUp) {
    EXPECT_THAT(bad("wait-file \"" + path("nothing.txt") + "\" two 60"), HasSubstr("no such file"));
}
TEST_F(Drive, ExpectFileSaysWhatWasFound) {
    write("log.txt", "one\n");
    EXPECT_THAT(bad("expect-file \"" + path("log.txt") + "\" two"), HasSubstr("expected \"two\" in"));
    EXPECT_THAT(lines_.back(), HasSubstr("found \"one\\n\""));
}
TEST_F(Drive, ExpectFileThatIsNotThere) {
    EXPECT_THAT(bad("expect-file \"" + path("nothing.txt") + "\" two"), HasSubstr("no such file"));
}

TEST_F(Drive, ShotsAndDumps) {
    good("type edit hello\nshot \"" + path("a.png") + "\"\ndump \"" + path("a.txt") + "\"\n");
    const QImage image(QString::fromStdString(path("a.png")));
    EXPECT_EQ(image.width(), 700);
    EXPECT_EQ(image.height(), 500);
    std::string dump;
    ASSERT_TRUE(fs_read_all(path("a.txt").c_str(), &dump));
    EXPECT_THAT(dump, HasSubstr("home/edit edit \"hello\" value=0 enabled visible 120,90 200x32\n"));
    EXPECT_THAT(dump, HasSubstr("home/button_off button \"\" value=0 disabled visible"));
    EXPECT_THAT(dump, HasSubstr("home/page_a/twin check_button"));
}
TEST_F(Drive, GreyedTextsOfAListAreSeen) {
    combo_box_set_hints(get("combo"), {"", "of the second"});
    good("expect combo hints \"|of the second|\"\nexpect combo hint \"two of the second\"\n"
         "expect combo option two\nexpect combo_edit hints |\nexpect edit hints \"\"\ndump \"" +
         path("a.txt") + "\"\n");
    std::string dump;
    ASSERT_TRUE(fs_read_all(path("a.txt").c_str(), &dump));
    EXPECT_THAT(dump, HasSubstr("160x32 hints=\"|of the second|\"\n"));
    EXPECT_THAT(dump, HasSubstr("home/combo_edit combo_box \"\" value=-1 enabled visible 180,50 160x32\n"));
}
TEST_F(Drive, AGreyedTextIsOneWithItsOption) {
    combo_box_set_hints(get("combo"), {"", "of the second"});
    EXPECT_THAT(bad("expect combo hint two"), HasSubstr("found \"|of the second|\""));
}
TEST_F(Drive, AnOpenListIsSeen) {
    good("expect combo open 0\nclick combo\nwait combo open 1\nexpect combo_edit open 0\nkey Esc\n"
         "wait combo open 0\nexpect edit open 0\n");
}
TEST_F(Drive, AShotThatCannotBeWrittenFails) {
    EXPECT_THAT(bad("shot \"" + path("no/such/folder/a.png") + "\""), HasSubstr("cannot write"));
}
TEST_F(Drive, AShotShowsAnOpenList) {
    good("shot \"" + path("closed.png") + "\"\nclick combo\nshot \"" + path("open.png") + "\"\nkey Esc\n");
    const QImage closed(QString::fromStdString(path("closed.png"))), open(QString::fromStdString(path("open.png")));
    ASSERT_EQ(closed.size(), open.size());
    EXPECT_NE(closed, open);
}

} // namespace
