#include "tests/toolkit/ravel/stage.h"

#include "toolkit/ravel/qt/window_stack.h"
#include "toolkit/table_view/table_view.h"

#include <QApplication>

#include <filesystem>

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

namespace {

class layouts : public stage {};

TEST_F(layouts, knows_every_class_by_its_type) {
    open(ui_window(
        ui_widget("QWidget", "a_view", "0 0 9 9") +
        ui_widget("QFrame", "a_card", "0 0 9 9", ui_dynamic("class", "card")) +
        ui_widget("QFrame", "a_frame", "0 0 9 9") + ui_widget("QLabel", "a_label", "0 0 9 9") +
        ui_widget("QLabel", "a_hscroll", "0 0 9 9", ui_dynamic("class", "hscroll_label")) +
        ui_widget("QPushButton", "a_button", "0 0 9 9") +
        ui_widget("QPushButton", "a_tab", "0 0 9 9", ui_dynamic("class", "wide tab_button")) +
        ui_widget("QComboBox", "a_combo", "0 0 9 9") + ui_widget("QSpinBox", "a_spin", "0 0 9 9") +
        ui_widget("QLineEdit", "an_edit", "0 0 9 9") + ui_widget("QCheckBox", "a_check", "0 0 9 9") +
        ui_widget("QCheckBox", "a_switch", "0 0 9 9", ui_dynamic("class", "switch")) +
        ui_widget("QStackedWidget", "a_pages", "0 0 9 9") + ui_widget("QScrollArea", "a_scroll_view", "0 0 9 9") +
        ui_widget("QScrollBar", "a_bar", "0 0 9 9") + ui_widget("QProgressBar", "a_progress", "0 0 9 9") +
        ui_widget("QPlainTextEdit", "an_mledit", "0 0 9 9")));
    std::vector<std::string> types;
    widget_foreach(win, [&types](widget* w) {
        types.push_back(widget_type(w));
        return RET_OK;
    });
    EXPECT_THAT(types, ElementsAre("view", "card", "view", "label", "hscroll_label", "button", "tab_button",
                                   "combo_box", "spin_box", "edit", "check_button", "switch", "pages",
                                   "scroll_view", "scroll_bar", "progress_bar", "mledit"));
    EXPECT_EQ(widget_type(win), "window");
    EXPECT_EQ(widget_name(win), "win");
}

struct refused_layout {
    const char* what;
    std::string text;
    const char* complaint; ///< "LINE: reason"
};

class refusals : public stage, public testing::WithParamInterface<refused_layout> {};

TEST_P(refusals, names_file_line_and_reason) {
    const auto widgets_before = QApplication::allWidgets().size();
    write_layout("bad", GetParam().text);
    EXPECT_EQ(window_open("bad"), nullptr);
    EXPECT_THAT(window_open_error(), EndsWith("/ui/bad.ui:" + std::string(GetParam().complaint)));
    EXPECT_EQ(QApplication::allWidgets().size(), widgets_before);
    EXPECT_EQ(window_manager_get_top_window(window_manager()), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    layouts, refusals,
    testing::Values(
        refused_layout{"class", ui_window(ui_widget("QTreeView", "t", "0 0 1 1")),
                       "5: class \"QTreeView\" is not known here"},
        refused_layout{"inner_dialog", ui_window(ui_widget("QDialog", "t", "0 0 1 1")),
                       "5: class \"QDialog\" is not known here"},
        refused_layout{"root", ui_file("QLabel", ""), "3: the root must be a QWidget or a QDialog, not a QLabel"},
        refused_layout{"property", ui_window(ui_number("cursorWidth", 3)),
                       "5: property \"cursorWidth\" is not known"},
        refused_layout{"property_of_another_class",
                       ui_window(ui_widget("QLabel", "l", "0 0 1 1", ui_number("maximum", 3))),
                       "7: a QLabel has no property \"maximum\""},
        refused_layout{"value_kind",
                       ui_window("<property name=\"font\"><font><pointsize>9</pointsize></font></property>"),
                       "5: values of kind <font> are not known"},
        refused_layout{"bad_enum",
                       ui_window(ui_widget("QScrollBar", "b", "0 0 1 1",
                                           "<property name=\"orientation\"><enum>Qt::Askew</enum></property>")),
                       "7: bad value for property \"orientation\""},
        refused_layout{"bad_number",
                       ui_window(ui_widget("QSpinBox", "s", "0 0 1 1",
                                           "<property name=\"maximum\"><number>ten</number></property>")),
                       "7: \"ten\" is not a number"},
        refused_layout{"layout_class", ui_window("<layout class=\"QSpiral\"></layout>"),
                       "5: layout class \"QSpiral\" is not known"},
        refused_layout{"layout_property",
                       ui_window("<layout class=\"QVBoxLayout\">\n" + ui_number("slack", 3) + "</layout>"),
                       "6: a layout's property \"slack\" is not known"},
        refused_layout{
            "second_layout",
            ui_window("<layout class=\"QVBoxLayout\"></layout>\n<layout class=\"QVBoxLayout\"></layout>"),
            "6: a second layout"},
        refused_layout{"action", ui_window("<addaction name=\"x\"/>"), "5: <addaction> is not known here"},
        refused_layout{"buddy",
                       ui_window(ui_widget("QLabel", "l", "0 0 1 1",
                                           "<property name=\"buddy\"><cstring>nobody</cstring></property>\n")),
                       "7: there is no widget \"nobody\""},
        refused_layout{"unclosed", "<ui version=\"4.0\">\n<widget class=\"QWidget\" name=\"x\">\n",
                       "3: Premature end of document."},
        refused_layout{"mismatched", "<ui>\n<widget class=\"QWidget\">\n</layout></ui>",
                       "3: Opening and ending tag mismatch."},
        refused_layout{"not_designer", "<html/>\n", "1: is not a Designer file"},
        refused_layout{"empty", "", "1: Premature end of document."},
        refused_layout{"no_widget", "<ui>\n</ui>\n", "1: there is no <widget>"},
        refused_layout{"item_of_none", ui_window("<layout class=\"QVBoxLayout\">\n<item/></layout>"),
                       "6: an item holds one thing"},
        refused_layout{"thing_in_layout", ui_window("<layout class=\"QVBoxLayout\">\n<thing/></layout>"),
                       "6: <thing> is not known in a layout"},
        refused_layout{"thing_in_item",
                       ui_window("<layout class=\"QVBoxLayout\">\n<item>\n<thing/></item></layout>"),
                       "7: <thing> is not known in a layout"},
        refused_layout{
            "inner_layout",
            ui_window("<layout class=\"QVBoxLayout\"><item>\n<layout class=\"QSpiral\"/></item></layout>"),
            "6: layout class \"QSpiral\" is not known"},
        refused_layout{"layout_value",
                       ui_window("<layout class=\"QVBoxLayout\">\n<property name=\"sizeConstraint\">"
                                 "<enum>QLayout::Askew</enum></property></layout>"),
                       "6: bad value for property \"sizeConstraint\""},
        refused_layout{"alignment",
                       ui_window("<layout class=\"QVBoxLayout\">\n<item alignment=\"Qt::AlignAskew\">" +
                                 ui_widget("QLabel", "l", "") + "</item></layout>"),
                       "6: unknown alignment \"Qt::AlignAskew\""},
        refused_layout{"spacer_property",
                       ui_window("<layout class=\"QVBoxLayout\"><item><spacer>\n" + ui_number("colour", 3) +
                                 "</spacer></item></layout>"),
                       "6: a spacer's property \"colour\" is not known"},
        refused_layout{"spacer_policy",
                       ui_window("<layout class=\"QVBoxLayout\"><item><spacer>\n<property name=\"sizeType\">"
                                 "<enum>QSizePolicy::Wide</enum></property></spacer></item></layout>"),
                       "6: unknown size policy"},
        refused_layout{"size_policy",
                       ui_window("<property name=\"sizePolicy\">\n<sizepolicy hsizetype=\"Wide\" "
                                 "vsizetype=\"Fixed\"/></property>"),
                       "6: unknown size policy \"Wide\""},
        refused_layout{"size_policy_part",
                       ui_window("<property name=\"sizePolicy\">\n<sizepolicy hsizetype=\"Fixed\" "
                                 "vsizetype=\"Fixed\"><horstretch>0</horstretch></sizepolicy></property>"),
                       "6: <verstretch> is missing"},
        refused_layout{
            "rect_part",
            ui_window("<property name=\"geometry\">\n<rect><x>0</x><y>0</y><width>9</width></rect></property>"),
            "6: <height> is missing"},
        refused_layout{"no_value", ui_window("<property name=\"enabled\"></property>"),
                       "5: property \"enabled\" has no value"},
        refused_layout{"page_number",
                       ui_window(ui_widget("QStackedWidget", "p", "0 0 1 1", ui_text("currentIndex", "last"))),
                       "7: a number is wanted"},
        refused_layout{
            "second_content",
            ui_window(ui_widget("QScrollArea", "a", "0 0 1 1",
                                ui_widget("QWidget", "one", "0 0 1 1") + ui_widget("QWidget", "two", "0 0 1 1"))),
            "10: a scroll area holds one widget"},
        refused_layout{"buddy_of_an_edit",
                       ui_window(ui_widget("QLineEdit", "e", "0 0 1 1",
                                           "<property name=\"buddy\"><cstring>e</cstring></property>\n")),
                       "7: only a label has a buddy"},
        refused_layout{"rename",
                       ui_window(ui_widget("QWidget", "i", "0 0 1 1",
                                           ui_dynamic("include", "x") + ui_dynamic("rename", "a=b,c"))),
                       "5: rename wants \"from=to\", not \"c\""},
        refused_layout{"include_into_layout",
                       ui_window(ui_widget("QWidget", "i", "0 0 1 1",
                                           ui_dynamic("include", "x") + "<layout class=\"QVBoxLayout\"/>")),
                       "5: a widget with a layout cannot include"},
        refused_layout{"connections",
                       "<ui>\n<widget class=\"QWidget\" name=\"x\"/>\n<connections><x/></connections></ui>",
                       "3: <connections> must be empty"},
        refused_layout{"two_roots", "<ui>\n<widget class=\"QWidget\"/>\n<widget class=\"QWidget\"/></ui>",
                       "3: <widget> is not known here"},
        refused_layout{"includes_itself",
                       ui_window(ui_widget("QWidget", "i", "0 0 1 1", ui_dynamic("include", "bad"))),
                       "0: includes itself, or includes go too deep"}),
    [](const auto& row) { return std::string(row.param.what); });

TEST_F(layouts, tab_stop_of_nobody_is_refused) {
    write_layout("bad",
                 "<ui>\n<widget class=\"QWidget\"></widget>\n<tabstops>\n<tabstop>x</tabstop></tabstops></ui>");
    EXPECT_EQ(window_open("bad"), nullptr);
    EXPECT_THAT(window_open_error(), EndsWith("bad.ui:4: there is no widget \"x\""));
}

TEST_F(layouts, missing_file_is_told) {
    EXPECT_EQ(window_open("nowhere"), nullptr);
    EXPECT_THAT(window_open_error(), EndsWith("/ui/nowhere.ui:0: cannot be opened"));
    open(ui_window(""));
    EXPECT_EQ(window_open_error(), "");
}

TEST_F(layouts, elements_nested_without_end_are_refused) {
    std::string text = "<ui>";
    for (int i = 0; i < 100000; ++i) text += "<a>";
    write_layout("bad", text);
    EXPECT_EQ(window_open("bad"), nullptr);
    EXPECT_THAT(window_open_error(), HasSubstr("nested too deeply"));
}

TEST_F(layouts, failed_opening_closes_nothing) {
    widget* first = open(ui_window(""), "first");
    write_layout("bad", "<ui/>");
    EXPECT_EQ(window_open_and_close("bad", first), nullptr);
    EXPECT_EQ(window_manager_get_top_window(window_manager()), first);
}

TEST_F(layouts, include_takes_content_and_keeps_the_outer_name) {
    write_layout("part", ui_window(ui_dynamic("clock", "slow") + ui_widget("QLineEdit", "edit", "1 2 30 20")));
    open(ui_window(ui_widget("QWidget", "outer", "5 5 100 100", ui_dynamic("include", "part")) +
                   ui_widget("QWidget", "", "5 5 100 100", ui_dynamic("include", "part"))));
    EXPECT_EQ(widget_type(widget_lookup(at("outer"), "edit")), "edit");
    EXPECT_EQ(widget_get_prop_str(at("outer"), "clock", ""), "slow");
    EXPECT_EQ(widget_get_prop_int(at("outer"), "w", 0), 100);
    EXPECT_NE(widget_child(win, "root"), nullptr) << "without a name of its own it takes the included one's";
}

class late_pages : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        write_layout("page", ui_window(ui_widget("QLineEdit", "edit", "0 0 90 30") +
                                       ui_widget("QSpinBox", "spin", "0 40 90 30")));
        const std::string include = ui_dynamic("include", "page");
        text_ =
            ui_window(ui_widget("QLineEdit", "before", "0 0 90 30") +
                      ui_widget("QStackedWidget", "pages", "0 40 300 200",
                                ui_widget("QWidget", "p0", "", include) + ui_widget("QWidget", "p1", "", include)) +
                      ui_widget("QLineEdit", "after", "0 250 90 30"));
    }
    /// Qt's own view of it, which builds nothing.
    bool is_built(const char* page) const { return !qwidget_of(at(page))->children().isEmpty() && has_field(page); }
    bool has_field(const char* page) const {
        return qwidget_of(at(page))->findChild<QWidget*>(QStringLiteral("edit")) != nullptr;
    }
    std::string text_;
};

TEST_F(late_pages, only_the_shown_page_is_built_at_once) {
    open(text_);
    EXPECT_TRUE(is_built("p0"));
    EXPECT_FALSE(is_built("p1"));
    at("after");
    EXPECT_EQ(widget_lookup(win, "before"), at("before"));
    EXPECT_FALSE(is_built("p1")) << "found without it";
}

TEST_F(late_pages, showing_one_builds_and_shows_it) {
    open(text_);
    pages_set_active(at("pages"), 1);
    settle();
    ASSERT_TRUE(is_built("p1"));
    widget* edit = widget_child(at("p1"), "edit");
    EXPECT_TRUE(widget_get_visible(edit));
    EXPECT_FALSE(covered_at(qwidget_of(edit), QPoint(5, 5)));
    click(edit);
    type("x");
    EXPECT_EQ(widget_get_text_utf8(edit), "x");
}

TEST_F(late_pages, a_page_in_something_hidden_waits_until_that_is_shown) {
    const std::string include = ui_dynamic("include", "page");
    open(ui_window(ui_widget("QWidget", "box", "0 0 400 300",
                             ui_flag("visible", false) + ui_widget("QStackedWidget", "pages", "0 40 300 200",
                                                                   ui_widget("QWidget", "p0", "", include) +
                                                                       ui_widget("QWidget", "p1", "", include)))));
    EXPECT_FALSE(is_built("p0"));
    pages_set_active(at("pages"), 1);
    EXPECT_FALSE(is_built("p1"));
    widget_set_visible(at("box"), true);
    settle();
    EXPECT_FALSE(is_built("p0"));
    ASSERT_TRUE(is_built("p1"));
    EXPECT_TRUE(widget_get_visible(widget_child(at("p1"), "edit")));
    EXPECT_FALSE(covered_at(qwidget_of(widget_child(at("p1"), "edit")), QPoint(5, 5)));
}

TEST_F(late_pages, looking_builds_none) {
    open(text_);
    EXPECT_EQ(widget_lookup(at("p1"), "spin"), nullptr);
    EXPECT_EQ(widget_child(at("p1"), "spin"), nullptr);
    int visited = 0;
    widget_foreach(at("pages"), [&visited](widget*) {
        ++visited;
        return RET_OK;
    });
    EXPECT_EQ(visited, 4) << "two pages and the two fields of the one that shows";
    EXPECT_FALSE(is_built("p1"));
}

TEST_F(late_pages, one_is_built_on_demand) {
    open(text_);
    EXPECT_EQ(widget_build(at("p1")), RET_OK);
    EXPECT_TRUE(is_built("p1"));
    widget* spin = widget_lookup(at("p1"), "spin");
    EXPECT_NE(spin, nullptr);
    EXPECT_FALSE(widget_get_visible(spin));
    EXPECT_EQ(widget_build(at("p1")), RET_OK) << "once more does nothing";
    EXPECT_EQ(widget_lookup(at("p1"), "spin"), spin);
    EXPECT_EQ(widget_build(nullptr), RET_BAD_PARAMS);
}

TEST_F(late_pages, building_what_is_around_builds_what_shows_in_it) {
    const std::string include = ui_dynamic("include", "page");
    open(ui_window(ui_widget("QWidget", "box", "0 0 400 300",
                             ui_flag("visible", false) + ui_widget("QStackedWidget", "pages", "0 40 300 200",
                                                                   ui_widget("QWidget", "p0", "", include) +
                                                                       ui_widget("QWidget", "p1", "", include)))));
    EXPECT_EQ(widget_build(at("box")), RET_OK);
    EXPECT_TRUE(is_built("p0"));
    EXPECT_FALSE(is_built("p1"));
}

TEST_F(late_pages, a_walk_visits_all_that_is_built) {
    open(text_);
    widget_build(at("p1"));
    std::vector<std::string> names;
    widget_foreach(win, [&names](widget* w) {
        names.push_back(widget_name(w));
        return RET_OK;
    });
    EXPECT_THAT(names, ElementsAre("before", "pages", "p0", "edit", "spin", "p1", "edit", "spin", "after"));
}

TEST_F(late_pages, the_tab_key_finds_their_fields_where_they_stand) {
    open(text_);
    pages_set_active(at("pages"), 1);
    settle();
    click(at("before"));
    key("Tab");
    EXPECT_TRUE(widget_get_focused(widget_lookup(at("p1"), "edit")));
    key("Tab");
    EXPECT_TRUE(widget_get_focused(widget_lookup(at("p1"), "spin")));
    key("Tab");
    EXPECT_TRUE(widget_get_focused(at("after")));
    pages_set_active(at("pages"), 0);
    click(at("before"));
    key("Tab");
    EXPECT_TRUE(widget_get_focused(widget_lookup(at("p0"), "edit")));
}

TEST_F(late_pages, a_missing_file_is_told_when_the_window_opens) {
    write_layout("win", ui_window(ui_widget("QStackedWidget", "pages", "0 0 9 9",
                                            ui_widget("QWidget", "p", "", ui_dynamic("include", "nowhere")))));
    EXPECT_EQ(window_open("win"), nullptr);
    EXPECT_THAT(window_open_error(), EndsWith("/ui/nowhere.ui:0: cannot be opened"));
}

TEST_F(late_pages, a_broken_one_is_told_in_the_log_and_stays_empty) {
    std::string said;
    open(text_);
    write_layout("page", ui_window(ui_widget("QDial", "d", "")));
    log_set_capture([](const std::string& line, void* to) { *static_cast<std::string*>(to) += line; }, &said);
    widget_build(at("p1"));
    EXPECT_EQ(widget_child(at("p1"), "edit"), nullptr);
    log_set_capture(nullptr, nullptr);
    EXPECT_THAT(said, EndsWith("/ui/page.ui:5: class \"QDial\" is not known here\n"));
}

TEST_F(layouts, those_of_the_program_are_all_sound) {
    table_view_register();
    const auto source = std::filesystem::path(VKT_SOURCE_TREE) / "res/default/ui";
    std::vector<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(source)) {
        names.push_back(file.path().stem().string());
        std::filesystem::copy(file.path(), layout_folder() + file.path().filename().string());
    }
    ASSERT_THAT(names, testing::Contains("home_page"));
    std::string said;
    log_set_capture([](const std::string& line, void* to) { *static_cast<std::string*>(to) += line; }, &said);
    for (const std::string& name : names) {
        widget* w = window_open(name.c_str());
        EXPECT_NE(w, nullptr) << window_open_error();
        if (w == nullptr) continue;
        widget_foreach(w, [](widget*) { return RET_OK; }); // late pages too
        window_manager_close_window_force(window_manager(), w);
        settle();
    }
    log_set_capture(nullptr, nullptr);
    EXPECT_EQ(said, "");
}

TEST_F(layouts, a_dialog_cannot_be_included) {
    write_layout("part", ui_dialog(""));
    write_layout("bad", ui_window(ui_widget("QWidget", "outer", "0 0 9 9", ui_dynamic("include", "part"))));
    EXPECT_EQ(window_open("bad"), nullptr);
    EXPECT_THAT(window_open_error(), EndsWith("/ui/part.ui:3: the root of an included layout must be a QWidget"));
}

TEST_F(layouts, include_renames_twins) {
    write_layout("channel",
                 ui_window(ui_widget("QLineEdit", "edit_ch1", "1 2 30 20") +
                           ui_widget("QLabel", "label_ch1", "1 2 30 20",
                                     "<property name=\"buddy\"><cstring>edit_ch1</cstring></property>")));
    open(ui_window(ui_widget("QWidget", "one", "0 0 50 50", ui_dynamic("include", "channel")) +
                   ui_widget("QWidget", "two", "0 0 50 50",
                             ui_dynamic("include", "channel") + ui_dynamic("rename", "ch1=ch2"))));
    EXPECT_NE(widget_child(at("one"), "edit_ch1"), nullptr);
    EXPECT_NE(widget_child(at("two"), "edit_ch2"), nullptr);
    EXPECT_EQ(widget_child(at("two"), "edit_ch1"), nullptr);
}

TEST_F(layouts, helpers_inside_qt_widgets_are_not_seen) {
    open(ui_window(ui_widget("QComboBox", "combo", "0 0 90 30", ui_flag("editable", true)) +
                   ui_widget("QSpinBox", "spin", "0 40 90 30") +
                   ui_widget("QScrollArea", "area", "0 80 90 30", ui_widget("QWidget", "content", "0 0 10 10"))));
    std::vector<std::string> names;
    widget_foreach(win, [&names](widget* w) {
        names.push_back(widget_name(w));
        return RET_OK;
    });
    EXPECT_THAT(names, ElementsAre("combo", "spin", "area", "content"));
    EXPECT_EQ(widget_lookup(win, "qt_spinbox_lineedit"), nullptr);
    EXPECT_EQ(widget_child(at("area"), "content"), at("content"));
}

TEST_F(layouts, boxes_grids_and_spacers_place_their_items) {
    const std::string margins = ui_number("leftMargin", 10) + ui_number("topMargin", 20) +
                                ui_number("rightMargin", 10) + ui_number("bottomMargin", 0) +
                                ui_number("horizontalSpacing", 8) + ui_number("verticalSpacing", 4);
    const std::string fixed =
        "<property name=\"minimumSize\"><size><width>50</width><height>30</height></size></property>"
        "<property name=\"maximumSize\"><size><width>50</width><height>30</height></size></property>";
    open(ui_window(
        "<layout class=\"QGridLayout\">" + margins + "<item row=\"0\" column=\"0\">" +
        ui_widget("QFrame", "a", "", fixed) + "</item><item row=\"1\" column=\"1\">" +
        ui_widget("QFrame", "b", "", fixed) +
        "</item><item row=\"2\" column=\"2\"><spacer><property name=\"orientation\"><enum>Qt::Vertical</enum>"
        "</property><property name=\"sizeType\"><enum>QSizePolicy::Expanding</enum></property>"
        "<property name=\"sizeHint\" stdset=\"0\"><size><width>1</width><height>1</height></size></property>"
        "</spacer></item><item row=\"0\" column=\"2\"><layout class=\"QHBoxLayout\" stretch=\"1\"><item>" +
        ui_widget("QFrame", "c", "") + "</item></layout></item></layout>"));
    const auto place = [this](const char* name) {
        widget* w = at(name);
        return std::vector{widget_get_prop_int(w, "x", -1), widget_get_prop_int(w, "y", -1)};
    };
    EXPECT_THAT(place("a"), ElementsAre(10, 20));
    EXPECT_EQ(widget_get_prop_int(at("b"), "y", -1), 20 + 30 + 4);
    EXPECT_GE(widget_get_prop_int(at("c"), "x", -1), widget_get_prop_int(at("b"), "x", -1) + 50 + 8);
    EXPECT_EQ(widget_get_prop_int(win, "w", 0), 1000) << "a window fills the native one";
}

struct settable {
    const char* name;
    const char* ui_class;
    const char* kind;
    const char* value;
};
const settable settables[] = {
    {"accessibleName", "QLabel", "string", "x"},
    {"alignment", "QLabel", "set", "Qt::AlignRight|Qt::AlignTop"},
    {"autoDefault", "QPushButton", "bool", "true"},
    {"autoExclusive", "QPushButton", "bool", "true"},
    {"buttonSymbols", "QSpinBox", "enum", "QAbstractSpinBox::NoButtons"},
    {"checkable", "QPushButton", "bool", "true"},
    {"checked", "QCheckBox", "bool", "true"},
    {"default", "QPushButton", "bool", "true"},
    {"editable", "QComboBox", "bool", "true"},
    {"enabled", "QLabel", "bool", "false"},
    {"flat", "QPushButton", "bool", "true"},
    {"focusPolicy", "QLabel", "enum", "Qt::ClickFocus"},
    {"frameShadow", "QFrame", "enum", "QFrame::Sunken"},
    {"frameShape", "QFrame", "enum", "QFrame::VLine"},
    {"horizontalScrollBarPolicy", "QScrollArea", "enum", "Qt::ScrollBarAlwaysOn"},
    {"iconSize", "QPushButton", "size", "<width>7</width><height>9</height>"},
    {"indent", "QLabel", "number", "5"},
    {"invertedAppearance", "QScrollBar", "bool", "true"},
    {"layoutDirection", "QLabel", "enum", "Qt::RightToLeft"},
    {"lineWrapMode", "QPlainTextEdit", "enum", "QPlainTextEdit::NoWrap"},
    {"margin", "QLabel", "number", "5"},
    {"maxLength", "QLineEdit", "number", "5"},
    {"maxVisibleItems", "QComboBox", "number", "5"},
    {"maximum", "QSpinBox", "number", "5"},
    {"maximumSize", "QLabel", "size", "<width>7</width><height>9</height>"},
    {"minimum", "QSpinBox", "number", "5"},
    {"minimumSize", "QLabel", "size", "<width>7</width><height>9</height>"},
    {"openExternalLinks", "QLabel", "bool", "true"},
    {"orientation", "QScrollBar", "enum", "Qt::Horizontal"},
    {"pageStep", "QScrollBar", "number", "5"},
    {"placeholderText", "QLineEdit", "string", "x"},
    {"plainText", "QPlainTextEdit", "string", "x"},
    {"prefix", "QSpinBox", "string", "x"},
    {"readOnly", "QLineEdit", "bool", "true"},
    {"shortcut", "QPushButton", "string", "Ctrl+B"},
    {"singleStep", "QSpinBox", "number", "5"},
    {"sizeAdjustPolicy", "QComboBox", "enum", "QComboBox::AdjustToContents"},
    {"suffix", "QSpinBox", "string", "x"},
    {"tabChangesFocus", "QPlainTextEdit", "bool", "false"},
    {"text", "QLabel", "string", "x"},
    {"textFormat", "QLabel", "enum", "Qt::PlainText"},
    {"textInteractionFlags", "QLabel", "set", "Qt::TextSelectableByMouse"},
    {"textVisible", "QProgressBar", "bool", "false"},
    {"toolTip", "QLabel", "string", "x"},
    {"undoRedoEnabled", "QPlainTextEdit", "bool", "true"},
    {"value", "QSpinBox", "number", "5"},
    {"verticalScrollBarPolicy", "QScrollArea", "enum", "Qt::ScrollBarAlwaysOn"},
    {"visible", "QLabel", "bool", "false"},
    {"widgetResizable", "QScrollArea", "bool", "false"},
    {"windowTitle", "QLabel", "string", "x"},
    {"wordWrap", "QLabel", "bool", "true"},
    {"wrapping", "QSpinBox", "bool", "true"},
};

TEST_F(layouts, every_property_that_one_may_set_is_set) {
    for (const settable& row : settables) {
        const std::string property =
            tk_format("<property name=\"%s\"><%s>%s</%s></property>", row.name, row.kind, row.value, row.kind);
        open(ui_window(ui_widget(row.ui_class, "without", "0 0 9 9") +
                       ui_widget(row.ui_class, "with", "0 0 9 9", property)));
        ASSERT_NE(win, nullptr) << row.name;
        const QVariant value = qwidget_of(at("with"))->property(row.name);
        ASSERT_TRUE(value.isValid()) << row.name;
        EXPECT_NE(value, qwidget_of(at("without"))->property(row.name)) << row.name;
        window_manager_close_window_force(window_manager(), win);
        settle();
    }
}

TEST_F(layouts, what_the_designer_adds_beside_the_widget_is_passed_over) {
    write_layout("win",
                 "<ui version=\"4.0\"><class>t</class><author>a</author><comment>c</comment>"
                 "<exportmacro>e</exportmacro><layoutdefault spacing=\"6\"/><customwidgets><x/></customwidgets>" +
                     ui_widget("QWidget", "root", "0 0 9 9") + "<tabstops/><resources/><connections/></ui>");
    EXPECT_NE(window_open("win"), nullptr) << window_open_error();
}

TEST_F(layouts, elements_and_includes_go_as_deep_as_they_may) {
    const auto nested = [](int depth) { // the root is one, its widget the second
        std::string inside;
        for (int i = 0; i < depth; ++i)
            inside = "<widget class=\"QWidget\" name=\"w" + std::to_string(i) + "\">" + inside + "</widget>";
        return "<ui>" + inside + "</ui>";
    };
    write_layout("deep", nested(100));
    EXPECT_NE(window_open("deep"), nullptr) << window_open_error();
    write_layout("deeper", nested(101));
    EXPECT_EQ(window_open("deeper"), nullptr);
    EXPECT_THAT(window_open_error(), HasSubstr("nested too deeply"));
    for (int level = 0; level < 9; ++level)
        write_layout("level" + std::to_string(level),
                     ui_window(ui_widget("QWidget", "in" + std::to_string(level), "0 0 9 9",
                                         ui_dynamic("include", "level" + std::to_string(level + 1)))));
    write_layout("level9", ui_window(ui_widget("QLabel", "last", "0 0 9 9")));
    widget* just = window_open("level1");
    ASSERT_NE(just, nullptr) << window_open_error();
    EXPECT_NE(widget_lookup(just, "last"), nullptr);
    EXPECT_EQ(window_open("level0"), nullptr);
    EXPECT_THAT(window_open_error(), EndsWith("level9.ui:0: includes itself, or includes go too deep"));
}

TEST_F(layouts, tab_key_follows_the_tab_stops) {
    write_layout("stops",
                 "<ui>\n" +
                     ui_widget("QWidget", "root", "0 0 100 100",
                               ui_widget("QLineEdit", "a", "0 0 50 30") +
                                   ui_widget("QLineEdit", "b", "0 40 50 30") +
                                   ui_widget("QLineEdit", "c", "0 80 50 30")) +
                     "<tabstops><tabstop>b</tabstop><tabstop>a</tabstop><tabstop>c</tabstop></tabstops></ui>");
    win = window_open("stops");
    ASSERT_NE(win, nullptr) << window_open_error();
    settle();
    click(at("b"));
    key("Tab");
    EXPECT_TRUE(widget_get_focused(at("a")));
    key("Tab");
    EXPECT_TRUE(widget_get_focused(at("c")));
}

TEST_F(layouts, texts_come_from_the_strings_file_unless_marked) {
    ASSERT_EQ(locale_info_change("zh", "CN"), RET_OK);
    open(ui_window(ui_widget("QLabel", "told", "0 0 9 9", ui_text("text", "SPI_F")) +
                   ui_widget("QLabel", "plain", "0 0 9 9",
                             "<property name=\"text\"><string notr=\"true\">SPI_F</string></property>")));
    EXPECT_EQ(widget_get_text_utf8(at("told")), locale_info_tr("SPI_F"));
    EXPECT_NE(widget_get_text_utf8(at("told")), "SPI_F");
    EXPECT_EQ(widget_get_text_utf8(at("plain")), "SPI_F");
}

TEST_F(layouts, options_pages_and_dynamic_properties_of_a_layout_hold) {
    open(ui_window(
        ui_dynamic("single_instance", "true") + ui_dynamic("to_modal", "false") +
        ui_widget("QComboBox", "combo", "0 0 90 30",
                  "<item><property name=\"text\"><string>x</string></property></item>"
                  "<item><property name=\"text\"><string>y</string></property></item>") +
        ui_widget("QStackedWidget", "pages", "0 0 90 90",
                  ui_number("currentIndex", 1) + ui_widget("QWidget", "p0", "") + ui_widget("QWidget", "p1", ""))));
    EXPECT_TRUE(widget_get_prop_bool(win, "single_instance", false));
    EXPECT_FALSE(widget_get_prop_bool(win, "to_modal", true));
    EXPECT_EQ(combo_box_count_options(at("combo")), 2);
    EXPECT_EQ(widget_get_value_int(at("pages")), 1);
    EXPECT_TRUE(widget_get_visible(at("p1")));
    EXPECT_FALSE(widget_get_visible(at("p0")));
}

} // namespace
