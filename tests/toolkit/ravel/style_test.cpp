// The look: contrasts of the sheet's colours, and what a focused widget shows.
#include "tests/toolkit/ravel/stage.h"

#include "toolkit/ravel/qt/assets.h"
#include "toolkit/ravel/qt/drive_input.h"
#include "toolkit/ravel/qt/widget_class.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QColor>
#include <QFontInfo>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <tuple>

namespace {

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}
double luminance(const QColor& color) {
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}
double contrast(const QColor& a, const QColor& b) {
    const double one = luminance(a);
    const double other = luminance(b);
    return (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05);
}

struct pairing {
    const char* ink;
    std::vector<const char*> grounds;
};
const pairing texts[] = {
    {"text",
     {"surface", "card", "select", "hover", "zebra", "tx-odd", "tx-even", "error-soft", "line", "bar", "bar-ok",
      "bar-failed", "differs", "at-hand"}},
    {"hint", {"surface", "card", "zebra"}},
    {"accent", {"surface", "card"}},
    {"accent-hover", {"surface", "card", "hover", "select"}},
    {"on-accent", {"accent", "accent-hover", "accent-press", "accent-focus"}},
    {"ok", {"surface", "card", "zebra"}},
    {"warning", {"surface", "card", "zebra"}},
    {"error", {"surface", "card", "zebra", "error-soft"}},
    {"tx", {"card", "zebra", "select", "tx-odd", "tx-even"}},
    {"card", {"text"}}, // tooltips
};
const pairing marks[] = {
    {"edge", {"card"}},
    {"accent", {"surface", "card", "select"}},
    {"error", {"card", "error-soft"}},
    {"focus-on-accent", {"card", "surface", "accent-focus", "select", "hover"}},
    {"ok", {"surface", "card"}}, // the dot of the state
    {"warning", {"surface", "card"}},
};

class style : public stage {
  protected:
    static void expect_contrast(const pairing& row, double least) {
        for (const char* ground : row.grounds)
            EXPECT_GE(contrast(style_color(row.ink), style_color(ground)), least) << row.ink << " on " << ground;
    }
    /// A widget as it shows on screen, with `around` pixels of its surroundings.
    static QImage picture(widget* w, int around) {
        const QWidget* own = qwidget_of(w);
        const QRect place(own->mapTo(native_window(), QPoint(-around, -around)),
                          own->size() + QSize(2 * around, 2 * around));
        return native_window()->grab(place).toImage();
    }
};

/// Each of them in the light sheet and in the dark one.
class both_sheets : public style, public testing::WithParamInterface<bool> {
  protected:
    void SetUp() override {
        style::SetUp();
        ASSERT_EQ(theme_set_dark(GetParam()), RET_OK);
    }
    void TearDown() override {
        style::TearDown();
        theme_set_dark(false);
    }
};
INSTANTIATE_TEST_SUITE_P(look, both_sheets, testing::Bool(),
                         [](const auto& test) { return test.param ? "dark" : "light"; });

TEST_P(both_sheets, texts_can_be_read_on_their_grounds) {
    EXPECT_NEAR(contrast(Qt::black, Qt::white), 21, 0.01);
    for (const pairing& row : texts) expect_contrast(row, 4.5);
}

TEST_P(both_sheets, edges_and_marks_stand_out) {
    for (const pairing& row : marks) expect_contrast(row, 3);
}

TEST_P(both_sheets, rows_of_records_have_their_grounds) {
    struct ground {
        const char* state;
        const char* color;
    };
    constexpr ground grounds[] = {{"even", "card"},
                                  {"odd", "zebra"},
                                  {"even tx", "tx-even"},
                                  {"odd tx", "tx-odd"},
                                  {"even chosen", "select"},
                                  {"odd chosen", "select"},
                                  {"even tx chosen", "select"},
                                  {"odd tx chosen", "select"}};
    open(ui_window(ui_widget("QWidget", "row", "0 0 300 28", ui_dynamic("class", "ground record_row"))));
    for (const ground& one : grounds) {
        widget_set_style_state(at("row"), one.state);
        const QImage seen = picture(at("row"), 0);
        for (const QPoint spot : {QPoint(0, 0), QPoint(150, 14), QPoint(299, 27)})
            EXPECT_EQ(seen.pixelColor(spot).name(), style_color(one.color).name()) << one.state;
    }
    for (const char* other : {"card", "zebra", "select", "tx-odd"})
        EXPECT_NE(style_color("tx-even").name(), style_color(other).name());
    for (const char* other : {"card", "zebra", "select"})
        EXPECT_NE(style_color("tx-odd").name(), style_color(other).name());
}

TEST_F(style, items_of_a_list_are_written_in_20_pixels_in_every_state) {
    open(ui_window(ui_widget("QPushButton", "item", "20 20 300 30",
                             ui_text("text", "text") + ui_dynamic("class", "list_item")) +
                   ui_widget("QPushButton", "other", "20 100 300 30", ui_text("text", "text"))));
    const auto size = [this](const char* name) { return QFontInfo(qwidget_of(at(name))->font()).pixelSize(); };
    EXPECT_EQ(size("item"), 20);
    EXPECT_NE(size("other"), 20);
    qwidget_of(at("item"))->setFocus(Qt::TabFocusReason);
    settle();
    EXPECT_EQ(size("item"), 20);
    press(at("item"));
    EXPECT_EQ(size("item"), 20);
    release(at("item"));
    widget_set_enable(at("item"), false);
    EXPECT_EQ(size("item"), 20);
}

struct focus_case {
    const char* label;
    const char* ui_class;
    const char* style_class;
    bool flag; ///< default, or checked
};
void PrintTo(const focus_case& one, std::ostream* out) { *out << one.label; }

class focus_mark : public style, public testing::WithParamInterface<std::tuple<focus_case, bool>> {
  protected:
    static constexpr int around = 4;
    void SetUp() override {
        stage::SetUp();
        const auto& [one, dark] = GetParam();
        ASSERT_EQ(theme_set_dark(dark), RET_OK);
        open(ui_window(ui_widget("QWidget", "ground", "0 0 400 300",
                                 ui_dynamic("class", "card") + ui_widget("QLineEdit", "other", "20 200 200 32") +
                                     ui_widget(one.ui_class, "w", "20 20 200 40",
                                               ui_dynamic("class", one.style_class) + content(one)))));
        if (one.ui_class == std::string("QComboBox")) {
            combo_box_append_option(at("w"), 0, "text");
            widget_set_value_int(at("w"), 0);
        }
    }
    void TearDown() override {
        stage::TearDown();
        theme_set_dark(false);
    }
    static std::string content(const focus_case& one) {
        const std::string kind = one.ui_class;
        if (kind == "QPushButton" && one.style_class[0] == '\0')
            return ui_text("text", "text") + ui_flag("default", one.flag);
        if (kind == "QPushButton" || kind == "QCheckBox") return ui_text("text", "text");
        return kind == "QLineEdit" ? ui_text("text", "text") : "";
    }
    QImage shown(bool with_focus) {
        qwidget_of(at(with_focus ? "w" : "other"))->setFocus(Qt::TabFocusReason);
        settle();
        if (auto* edit = qwidget_of(at("w"))->findChild<QLineEdit*>()) edit->deselect();
        if (auto* edit = dynamic_cast<QLineEdit*>(qwidget_of(at("w")))) edit->deselect();
        return picture(at("w"), around);
    }
};

TEST_P(focus_mark, is_one_frame_that_stands_out) {
    if (std::get<0>(GetParam()).flag) widget_set_value_int(at("w"), 1);
    const QImage without = shown(false);
    const QImage with = shown(true);
    ASSERT_TRUE(widget_get_focused(at("w")));
    ASSERT_EQ(with.size(), without.size());
    const int mid = with.width() * 3 / 4;
    const QColor ground = with.pixelColor(mid, 0);
    EXPECT_EQ(ground, style_color("card"));
    // The frame: on all four sides, against what is around it and what was there before.
    const int w = with.width();
    const int h = with.height();
    for (const QPoint at_frame :
         {QPoint(mid, around), QPoint(mid, h - 1 - around), QPoint(around, h / 2), QPoint(w - 1 - around, h / 2)}) {
        const QColor frame = with.pixelColor(at_frame);
        EXPECT_GE(contrast(frame, ground), 3)
            << at_frame.x() << "," << at_frame.y() << " " << frame.name().toStdString();
        EXPECT_NE(frame, without.pixelColor(at_frame)) << at_frame.x() << "," << at_frame.y();
    }
    // Nothing drawn inside it: a column without text has one colour between the two lines.
    const int column = around + 4;
    const QColor inside = with.pixelColor(column, h / 2);
    for (int y = around + 4; y < h - around - 4; ++y)
        ASSERT_EQ(with.pixelColor(column, y), inside) << "a second mark at line " << y;
}

std::string focus_label(const testing::TestParamInfo<std::tuple<focus_case, bool>>& test) {
    return std::string(std::get<0>(test.param).label) + (std::get<1>(test.param) ? "_dark" : "");
}

INSTANTIATE_TEST_SUITE_P(
    of_each_kind, focus_mark,
    testing::Combine(testing::Values(focus_case{"button", "QPushButton", "", false},
                                     focus_case{"default_button", "QPushButton", "", true},
                                     focus_case{"primary", "QPushButton", "primary", false},
                                     focus_case{"danger", "QPushButton", "danger", false},
                                     focus_case{"tab", "QPushButton", "tab_button", false},
                                     focus_case{"chosen_tab", "QPushButton", "tab_button", true},
                                     focus_case{"inner_tab", "QPushButton", "tab_button sub_tab", false},
                                     focus_case{"chosen_inner_tab", "QPushButton", "tab_button sub_tab", true},
                                     focus_case{"edit", "QLineEdit", "", false},
                                     focus_case{"spin_box", "QSpinBox", "", false},
                                     focus_case{"combo_box", "QComboBox", "", false},
                                     focus_case{"text", "QPlainTextEdit", "", false}),
                     testing::Bool()),
    focus_label);

TEST_P(both_sheets, a_check_button_shows_its_focus_as_one_frame) {
    open(ui_window(ui_widget("QWidget", "ground", "0 0 400 300",
                             ui_dynamic("class", "card") + ui_widget("QLineEdit", "other", "20 200 200 32") +
                                 ui_widget("QCheckBox", "check", "20 20 90 32", ui_text("text", "text")) +
                                 ui_widget("QCheckBox", "turn", "20 60 90 32",
                                           ui_text("text", "text") + ui_dynamic("class", "switch")))));
    for (const char* name : {"check", "turn"}) {
        qwidget_of(at(name))->setFocus(Qt::TabFocusReason);
        settle();
        const QImage with = picture(at(name), 4);
        const QColor ground = with.pixelColor(0, 0);
        const int w = with.width();
        const int h = with.height();
        EXPECT_GE(contrast(with.pixelColor(w / 2, 4), ground), 3) << name;
        EXPECT_GE(contrast(with.pixelColor(4, h / 2), ground), 3) << name;
        // Right of the text, down to the lower line: no other line.
        for (int y = 8; y < h - 8; ++y)
            ASSERT_EQ(with.pixelColor(w - 8, y), with.pixelColor(w - 8, h / 2)) << name << " line " << y;
    }
}

TEST_P(both_sheets, fields_have_edges_that_stand_out) {
    open(ui_window(ui_widget(
        "QWidget", "ground", "0 0 400 300",
        ui_dynamic("class", "card") + ui_widget("QLineEdit", "edit", "20 20 200 32") +
            ui_widget("QSpinBox", "spin", "20 60 200 32") + ui_widget("QComboBox", "combo", "20 100 200 32") +
            ui_widget("QPushButton", "first", "20 140 200 32") + ui_widget("QCheckBox", "check", "20 180 200 32") +
            ui_widget("QPlainTextEdit", "text", "20 220 200 60"))));
    qwidget_of(at("first"))->setFocus();
    settle();
    for (const char* name : {"edit", "spin", "combo", "text"}) {
        const QImage shown = picture(at(name), 4);
        const int mid = shown.width() / 2;
        EXPECT_GE(contrast(shown.pixelColor(mid, 4), shown.pixelColor(mid, 0)), 3) << name;
    }
    // The box of a check button, wherever the style puts it.
    const QImage box = picture(at("check"), 0);
    double best = 0;
    for (int x = 0; x < 24; ++x)
        best = std::max(best, contrast(box.pixelColor(x, box.height() / 2), style_color("card")));
    EXPECT_GE(best, 3);
}

TEST_F(style, a_choice_leaves_no_hover_behind) {
    open(ui_window(ui_widget("QComboBox", "combo", "20 20 200 32") +
                   ui_widget("QLineEdit", "other", "20 200 90 32")));
    for (int i = 0; i < 6; ++i) combo_box_append_option(at("combo"), i, std::to_string(i).c_str());
    widget_set_value_int(at("combo"), 0);
    auto* combo = static_cast<combo_widget*>(qwidget_of(at("combo")));
    for (const char* how : {"pointer", "Enter", "Esc"}) {
        click(at("combo"));
        ASSERT_TRUE(wait_until([combo] { return combo->popup_is_open(); }));
        combo->setAttribute(Qt::WA_UnderMouse); // where the system says nothing of a pointer that a list has taken
        if (how == std::string("pointer")) {
            const QPoint spot = combo->view()->visualRect(combo->model()->index(4, 0)).center();
            ASSERT_TRUE(wait_until([&] {
                drive_press(combo->view()->viewport(), spot);
                if (combo->popup_is_open()) drive_release(combo->view()->viewport(), spot);
                return !combo->popup_is_open();
            }));
        } else {
            key("Down");
            key(how);
        }
        settle();
        EXPECT_FALSE(combo->underMouse()) << how;
    }
}

/// Leftmost pixel of a part of a picture that differs from its first one; the width when all are alike.
int ink_begins(const QImage& picture, const QRect& part) {
    const QColor ground = picture.pixelColor(part.topLeft());
    for (int x = part.left(); x <= part.right(); ++x)
        for (int y = part.top(); y <= part.bottom(); ++y)
            if (contrast(picture.pixelColor(x, y), ground) > 2) return x - part.left();
    return part.width();
}

class lists : public style {
  protected:
    combo_widget* open_list(const std::string& place, int options) {
        open(ui_window(ui_widget("QComboBox", "combo", place)));
        for (int i = 0; i < options; ++i) combo_box_append_option(at("combo"), i, "VKT");
        widget_set_value_int(at("combo"), 1);
        auto* combo = static_cast<combo_widget*>(qwidget_of(at("combo")));
        click(at("combo"));
        EXPECT_TRUE(wait_until([combo] { return combo->popup_is_open(); }));
        return combo;
    }
    static QRect on_screen(const QWidget* w) { return {w->mapToGlobal(QPoint(0, 0)), w->size()}; }
    void TearDown() override {
        if (auto* combo = dynamic_cast<QComboBox*>(qwidget_of(at("combo")))) combo->hidePopup();
        style::TearDown();
    }
};

TEST_F(lists, open_below_their_field) {
    const combo_widget* combo = open_list("20 20 200 32", 6);
    EXPECT_GE(on_screen(combo->view()).top(), on_screen(combo).bottom());
    EXPECT_LE(on_screen(combo->view()).top(), on_screen(combo).bottom() + 4);
    EXPECT_EQ(on_screen(combo->view()).left(), on_screen(combo).left());
}

TEST_F(lists, open_above_only_where_there_is_no_room_below) {
    native_window()->move(0, native_window()->screen()->geometry().bottom() - 600);
    settle();
    const combo_widget* combo = open_list("20 560 200 32", 6);
    EXPECT_LE(on_screen(combo->view()).bottom(), on_screen(combo).top());
    native_window()->move(0, 0);
}

TEST_F(lists, have_the_insets_of_the_sheet_in_every_row) {
    const combo_widget* combo = open_list("20 20 200 32", 6);
    settle();
    const QImage shown = combo->view()->viewport()->grab().toImage();
    for (int row = 0; row < 6; ++row) {
        const QRect place = combo->view()->visualRect(combo->model()->index(row, 0));
        EXPECT_EQ(place.height(), 28) << row;
        const int inset = ink_begins(shown, place);
        EXPECT_GE(inset, 8) << row;
        EXPECT_LE(inset, 13) << row;
    }
    EXPECT_EQ(combo->view()->grab().toImage().pixelColor(100, 0), style_color("edge"));
    EXPECT_GE(combo->view()->viewport()->y(), 4);
}

TEST_F(style, a_box_with_one_choice_looks_fixed) {
    open(ui_window(ui_widget("QComboBox", "one", "20 20 200 32") + ui_widget("QComboBox", "two", "20 60 200 32") +
                   ui_widget("QComboBox", "typed", "20 100 200 32", ui_flag("editable", true)) +
                   ui_widget("QLineEdit", "other", "20 200 90 32")));
    for (const char* name : {"one", "two", "typed"}) combo_box_append_option(at(name), 0, "only");
    combo_box_append_option(at("two"), 1, "second");
    click(at("other"));
    const auto ground = [this](const char* name) { return picture(at(name), 0).pixelColor(100, 4); };
    const auto arrow = [this](const char* name) {
        const QImage shown = picture(at(name), 0);
        return ink_begins(shown, QRect(170, 4, 26, 24)) < 26;
    };
    EXPECT_EQ(ground("one"), style_color("surface"));
    EXPECT_FALSE(arrow("one"));
    for (const char* name : {"two", "typed"}) {
        EXPECT_EQ(ground(name), style_color("card")) << name;
        EXPECT_TRUE(arrow(name)) << name;
    }
    combo_box_append_option(at("one"), 1, "second");
    EXPECT_EQ(ground("one"), style_color("card"));
    EXPECT_TRUE(arrow("one"));
    combo_box_reset_options(at("two"));
    EXPECT_EQ(ground("two"), style_color("card"));
}

TEST_F(style, a_text_too_long_for_its_box_shows_its_beginning_and_end) {
    const std::string text = "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA";
    open(ui_window(ui_widget("QComboBox", "box", "20 20 116 32", ui_flag("editable", true)) +
                   ui_widget("QLineEdit", "other", "20 200 90 32")));
    click(at("other"));
    const auto shown = [&](const std::string& what) {
        widget_set_text_utf8(at("box"), what.c_str());
        settle();
        return picture(at("box"), 0);
    };
    const QImage whole = shown(text + "XYZ");
    EXPECT_NE(whole, shown(text + "WWW")) << "the end shows";
    EXPECT_NE(whole, shown("III" + text + "XYZ")) << "the beginning shows";
    EXPECT_EQ(whole, shown(text + text + "XYZ")) << "the middle does not";
    click(at("box"));
    key("Home");
    const QImage typing = picture(at("box"), 0);
    key("End");
    EXPECT_NE(picture(at("box"), 0).copy(4, 8, 70, 16), typing.copy(4, 8, 70, 16)) << "all of it while one types";
    click(at("other"));
    auto* box = static_cast<combo_widget*>(qwidget_of(at("box")));
    widget_set_tooltip(at("box"), "hint");
    EXPECT_EQ(box->tooltip_shown().toStdString(), text + text + "XYZ\nhint");
    shown("COM7");
    EXPECT_EQ(box->tooltip_shown().toStdString(), "hint");
}

/// The names that a sheet of the program gives values.
std::map<std::string, std::string> names_in(const std::string& sheet) {
    std::ifstream file(VKT_SOURCE_TREE "/res/default/styles/" + sheet);
    std::map<std::string, std::string> names;
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("@")) names[line.substr(0, line.find(':'))] = line.substr(line.find(':'));
    return names;
}

TEST(sheets, the_dark_one_has_another_value_for_every_colour_and_no_rule) {
    const auto light = names_in("default.qss");
    const auto dark = names_in("dark.qss");
    ASSERT_GT(light.size(), 20U);
    for (const auto& [name, value] : light) {
        if (value.find('#') == std::string::npos && value.find("rgb") == std::string::npos) continue;
        ASSERT_TRUE(dark.contains(name)) << name;
        EXPECT_NE(dark.at(name), value) << name;
    }
    for (const auto& [name, value] : dark) EXPECT_TRUE(light.contains(name)) << name;
    std::ifstream file(VKT_SOURCE_TREE "/res/default/styles/dark.qss");
    ASSERT_TRUE(file.is_open());
    for (std::string line; std::getline(file, line);) EXPECT_EQ(line.find('{'), std::string::npos) << line;
}

TEST(sheets, every_picture_has_a_dark_one_at_both_sizes) {
    std::size_t seen = 0;
    const std::filesystem::path images = VKT_SOURCE_TREE "/res/default/images";
    for (const auto& entry : std::filesystem::directory_iterator(images)) {
        if (entry.path().extension() != ".png") continue;
        seen++;
        const QImage light(QString::fromStdString(entry.path().string()));
        const QImage dark(QString::fromStdString((images / "dark" / entry.path().filename()).string()));
        EXPECT_EQ(dark.size(), light.size()) << entry.path().filename();
        EXPECT_NE(dark, light) << entry.path().filename();
    }
    EXPECT_GE(seen, 30U);
}

TEST_P(both_sheets, the_base_style_draws_in_the_colours_of_the_sheet) {
    const std::pair<QPalette::ColorRole, const char*> roles[] = {
        {QPalette::Window, "surface"},
        {QPalette::Base, "card"},
        {QPalette::Button, "card"},
        {QPalette::WindowText, "text"},
        {QPalette::Text, "text"},
        {QPalette::ButtonText, "text"},
        {QPalette::Highlight, "select"},
        {QPalette::HighlightedText, "text"},
        {QPalette::PlaceholderText, "hint"},
        {QPalette::Link, "accent"},
        {QPalette::ToolTipBase, "text"},
        {QPalette::ToolTipText, "card"},
    };
    const QPalette palette = QApplication::palette();
    for (const auto& [role, name] : roles)
        EXPECT_EQ(palette.color(QPalette::Active, role), style_color(name)) << role << " " << name;
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        EXPECT_EQ(palette.color(QPalette::Disabled, role), style_color("off-text")) << role;
}

/// With a sheet of its own until the test ends.
class own_sheet : public style {
  protected:
    static constexpr const char* theme = "../styles/default.qss";
    void TearDown() override {
        style::TearDown();
        std::filesystem::copy_file(VKT_SOURCE_TREE "/res/default/styles/default.qss", layout_folder() + theme,
                                   std::filesystem::copy_options::overwrite_existing);
        read_again();
    }
    static void use(const std::string& text) {
        std::ofstream(layout_folder() + theme, std::ios::binary) << text;
        read_again();
    }
    static void read_again() { ASSERT_TRUE(use_sheet(false)); }
    QColor ground(const char* name) const { return picture(at(name), 0).pixelColor(3, 3); }
};

TEST_F(own_sheet, names_stand_for_values_and_one_that_has_none_shows_in_magenta) {
    use("@paper: #102030;\n@paper-2:#405060;\r\nQLabel[class=\"a\"] { background: @paper; }\n"
        "QLabel[class=\"b\"] { background: @paper-2; } QLabel[class=\"c\"] { background: @paper-3; }\n");
    std::string labels;
    for (const std::string name : {"a", "b", "c"})
        labels += ui_widget("QLabel", name, "20 20 30 30", ui_dynamic("class", name));
    open(ui_window(labels));
    EXPECT_EQ(style_color("paper"), QColor("#102030"));
    EXPECT_EQ(style_color("paper-3"), QColor(Qt::black)) << "for what is drawn by hand";
    const std::pair<const char*, const char*> seen[] = {{"a", "#102030"}, {"b", "#405060"}, {"c", "#FF00FF"}};
    for (const auto& [name, color] : seen) {
        qwidget_of(at(name))->raise();
        EXPECT_EQ(ground(name), QColor(color)) << name;
    }
}

TEST_F(own_sheet, one_without_anything_in_it_is_none_and_the_old_one_stays) {
    std::ofstream(layout_folder() + theme, std::ios::binary) << "";
    EXPECT_FALSE(use_sheet(false));
    EXPECT_FALSE(use_sheet(true)) << "the dark one has no rules of its own";
    EXPECT_FALSE(theme_is_dark());
}

TEST_F(style, another_look_is_taken_by_what_is_open) {
    open(ui_window(
        ui_widget("QPushButton", "go", "20 20 120 32", ui_text("text", "go") + ui_dynamic("icon", "connect")) +
        ui_widget("QLineEdit", "edit", "20 60 120 32") +
        ui_widget("QLabel", "sign", "20 100 32 32", ui_dynamic("icon", "notice"))));
    const auto ground = [this](const char* name) { return picture(at(name), 0).pixelColor(60, 5); };
    const auto icon = [this] {
        return static_cast<QPushButton*>(qwidget_of(at("go")))->icon().pixmap(20).toImage();
    };
    const auto sign = [this] { return static_cast<QLabel*>(qwidget_of(at("sign")))->pixmap().toImage(); };
    const QImage light_icon = icon();
    const QImage light_sign = sign();
    EXPECT_FALSE(theme_is_dark());
    EXPECT_EQ(ground("edit"), QColor("#FFFFFF"));
    ASSERT_EQ(theme_set_dark(true), RET_OK);
    settle();
    EXPECT_TRUE(theme_is_dark());
    EXPECT_EQ(ground("edit"), QColor("#1B2129"));
    EXPECT_EQ(QApplication::palette().color(QPalette::Text), QColor("#E4E9F0"));
    EXPECT_NE(icon(), light_icon);
    EXPECT_NE(sign(), light_sign);
    ASSERT_EQ(theme_set_dark(false), RET_OK);
    settle();
    EXPECT_EQ(ground("edit"), QColor("#FFFFFF"));
    EXPECT_EQ(icon(), light_icon);
    EXPECT_EQ(sign(), light_sign);
}

TEST_F(style, a_palette_with_light_text_is_dark) {
    QPalette palette;
    palette.setColor(QPalette::Window, QColor("#F0F0F0"));
    palette.setColor(QPalette::WindowText, Qt::black);
    EXPECT_FALSE(palette_is_dark(palette));
    palette.setColor(QPalette::Window, QColor("#202020"));
    palette.setColor(QPalette::WindowText, Qt::white);
    EXPECT_TRUE(palette_is_dark(palette));
    palette.setColor(QPalette::Window, Qt::white);
    EXPECT_FALSE(palette_is_dark(palette)) << "one that says nothing";
    // The system's, whatever the program has chosen for itself.
    theme_set_dark(true);
    EXPECT_FALSE(system_info_is_dark()) << "the platform of the tests is light";
    theme_set_dark(false);
}

} // namespace
