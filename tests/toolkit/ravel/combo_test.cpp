#include "tests/toolkit/ravel/stage.h"

#include "toolkit/ravel/combo_hints.h"
#include "toolkit/ravel/qt/drive_input.h"
#include "toolkit/ravel/qt/widget_class.h"

#include <QApplication>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class combos : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        open(ui_window(ui_widget("QComboBox", "fixed", "10 10 200 32") +
                       ui_widget("QComboBox", "port", "10 60 200 32", ui_flag("editable", true)) +
                       ui_widget("QLineEdit", "edit", "10 110 200 32")));
        fixed = at("fixed");
        port = at("port");
        combo_box_append_option(fixed, 11, "300");
        combo_box_append_option(fixed, 4, "9600");
        combo_box_append_option(fixed, 1, "115200");
        widget_set_value_int(fixed, 11);
        for (widget* w : {fixed, port}) told.hear(w, event_type::value_changed);
    }
    static combo_widget* box(widget* w) { return static_cast<combo_widget*>(qwidget_of(w)); }
    static bool list_is_open(widget* w) { return box(w)->popup_is_open(); }

    /// Opens the list and picks a row with the pointer.
    static void pick(widget* w, int row) {
        const QPoint arrow = drive_list_spot(state_of(qwidget_of(w)));
        click_at(w, arrow.x(), arrow.y());
        ASSERT_TRUE(wait_until([w] { return list_is_open(w); }));
        QAbstractItemView* list = box(w)->view();
        const QPoint spot = list->visualRect(box(w)->model()->index(row, 0)).center();
        // A list just opened by a press takes a release over a row for the end of that press.
        wait_until([&] {
            if (!list_is_open(w)) return true;
            drive_press(list->viewport(), spot);
            if (list_is_open(w)) drive_release(list->viewport(), spot);
            return !list_is_open(w);
        });
        settle();
    }

    widget* fixed = nullptr;
    widget* port = nullptr;
};

TEST_F(combos, options_keep_their_order_and_values_any_order) {
    EXPECT_EQ(combo_box_count_options(fixed), 3);
    EXPECT_TRUE(combo_box_has_option_text(fixed, "9600"));
    EXPECT_FALSE(combo_box_has_option_text(fixed, "960"));
    widget_set_value_int(fixed, 4);
    EXPECT_EQ(widget_get_text_utf8(fixed), "9600");
    widget_set_text_utf8(fixed, "115200");
    EXPECT_EQ(widget_get_value_int(fixed), 1);
    EXPECT_EQ(widget_set_text_utf8(fixed, "no such"), RET_FAIL);
    EXPECT_EQ(widget_get_value_int(fixed), 1);
    EXPECT_THAT(told.take(), IsEmpty());
}

TEST_F(combos, a_value_that_no_option_has_selects_and_shows_nothing) {
    widget_set_value_int(fixed, 99);
    EXPECT_EQ(widget_get_text_utf8(fixed), "");
    EXPECT_EQ(widget_get_value_int(fixed), -1);
    combo_box_append_option(fixed, 5, "more");
    EXPECT_EQ(widget_get_value_int(fixed), -1);
}

TEST_F(combos, a_wide_list_shows_its_options_whole) {
    const std::string longest = "a file with a long name　/in/a/folder";
    combo_box_append_option(fixed, 5, longest.c_str());
    const int needed = box(fixed)->fontMetrics().horizontalAdvance(QString::fromStdString(longest));
    widget_set_prop_bool(fixed, "wide_list", true);
    ASSERT_LT(box(fixed)->width(), needed);
    const QPoint arrow = drive_list_spot(state_of(qwidget_of(fixed)));
    click_at(fixed, arrow.x(), arrow.y());
    ASSERT_TRUE(wait_until([this] { return list_is_open(fixed); }));
    EXPECT_GE(box(fixed)->view()->width(), needed);
    key("Esc");
}

// The key that has picked is still on its way while the dialog's loop runs.
TEST_F(combos, a_pick_by_enter_can_open_a_modal_dialog) {
    write_layout("ask", ui_dialog(ui_widget("QLineEdit", "note", "10 10 90 30")));
    std::string typed;
    widget_on(fixed, event_type::value_changed, [&typed](const event&) {
        widget* ask = window_open("ask");
        key("Enter"); // before its loop runs
        idle_queue([ask, &typed] {
            type("7");
            typed = widget_get_text_utf8(widget_lookup(ask, "note"));
            key("Esc");
            return RET_OK;
        });
        dialog_modal(ask);
        return RET_OK;
    });
    const QPoint arrow = drive_list_spot(state_of(qwidget_of(fixed)));
    click_at(fixed, arrow.x(), arrow.y());
    ASSERT_TRUE(wait_until([this] { return list_is_open(fixed); }));
    key("Down");
    key("Enter");
    EXPECT_EQ(widget_get_value_int(fixed), 4);
    EXPECT_EQ(typed, "7");
    EXPECT_FALSE(list_is_open(fixed));
}

TEST_F(combos, enter_in_a_box_that_nobody_touched_is_no_change) {
    told.take();
    click(at("port"));
    key("Enter");
    key("Tab");
    EXPECT_THAT(told.take(), IsEmpty());
}

TEST_F(combos, starts_without_a_choice_until_it_is_set_or_picked) {
    open(ui_window(ui_widget("QComboBox", "appended", "10 10 200 32") +
                   ui_widget("QComboBox", "given", "10 60 200 32")),
         "fresh");
    widget* appended = at("appended");
    widget* given = at("given");
    combo_box_append_option(appended, 11, "300");
    combo_box_append_option(appended, 4, "9600");
    combo_box_set_options(given, {{11, "300"}, {4, "9600"}});
    for (widget* w : {appended, given}) {
        EXPECT_EQ(widget_get_value_int(w), -1);
        EXPECT_EQ(widget_get_text_utf8(w), "");
        told.hear(w, event_type::value_changed);
    }
    pick(appended, 0);
    EXPECT_EQ(widget_get_value_int(appended), 11);
    EXPECT_THAT(told.take(), ElementsAre("appended:value_changed")) << "what is shown first is a choice too";
    qwidget_of(given)->setFocus(Qt::TabFocusReason);
    key("Down");
    EXPECT_EQ(widget_get_value_int(given), 11);
    EXPECT_THAT(told.take(), ElementsAre("given:value_changed"));
    combo_box_reset_options(given);
    combo_box_append_option(given, 11, "300");
    EXPECT_EQ(widget_get_value_int(given), -1);
    pick(given, 0);
    EXPECT_THAT(told.take(), ElementsAre("given:value_changed")) << "the same option of a new list";
}

TEST_F(combos, picking_tells_and_picking_the_same_again_does_not) {
    pick(fixed, 1);
    EXPECT_EQ(widget_get_value_int(fixed), 4);
    EXPECT_THAT(told.take(), ElementsAre("fixed:value_changed"));
    pick(fixed, 1);
    EXPECT_THAT(told.take(), IsEmpty());
}

TEST_F(combos, keys_and_the_wheel_on_the_focused_one_tell_each_change) {
    click(at("edit"));
    wheel(fixed, -120);
    EXPECT_EQ(widget_get_value_int(fixed), 11) << "without the focus the wheel is not for it";
    EXPECT_TRUE(widget_get_focused(at("edit")));
    qwidget_of(fixed)->setFocus(Qt::TabFocusReason);
    key("Down");
    EXPECT_EQ(widget_get_value_int(fixed), 4);
    wheel(fixed, -120);
    EXPECT_EQ(widget_get_value_int(fixed), 1);
    EXPECT_THAT(told.take(), SizeIs(2));
    key("Down");
    EXPECT_THAT(told.take(), IsEmpty()) << "the last option is the last";
}

TEST_F(combos, typed_text_is_taken_as_typed_on_enter_and_on_leaving) {
    combo_box_append_option(port, 0, "COM7");
    EXPECT_EQ(widget_get_text_utf8(port), "") << "an editable one keeps its text, none";
    click(port);
    type("COM12");
    EXPECT_THAT(told.take(), IsEmpty()) << "not before it is left";
    key("Enter");
    EXPECT_THAT(told.take(), ElementsAre("port:value_changed"));
    EXPECT_EQ(widget_get_text_utf8(port), "COM12");
    EXPECT_EQ(widget_get_value_int(port), -1);
    key("Ctrl+a");
    type("COM7");
    key("Tab");
    EXPECT_THAT(told.take(), ElementsAre("port:value_changed"));
    EXPECT_EQ(widget_get_value_int(port), 0) << "the text of an option means that option";
    click(port);
    key("Tab");
    EXPECT_THAT(told.take(), IsEmpty());
}

TEST_F(combos, press_reaches_handlers_on_the_arrow_and_on_the_text) {
    combo_box_append_option(port, 0, "COM7");
    for (widget* w : {fixed, port}) told.hear(w, event_type::pointer_down);
    click(port);
    EXPECT_THAT(told.take(), ElementsAre("port:pointer_down"));
    const QPoint arrow = drive_list_spot(state_of(qwidget_of(port)));
    click_at(port, arrow.x(), arrow.y());
    EXPECT_THAT(told.take(), ElementsAre("port:pointer_down"));
    ASSERT_TRUE(wait_until([this] { return list_is_open(port); }));
    box(port)->hidePopup();
    click(fixed);
    EXPECT_THAT(told.take(), ElementsAre("fixed:pointer_down"));
    box(fixed)->hidePopup();
}

TEST_F(combos, refreshed_options_keep_the_choice_and_an_open_list_open) {
    pick(fixed, 1);
    told.take();
    click(fixed);
    ASSERT_TRUE(wait_until([this] { return list_is_open(fixed); }));
    combo_box_set_options(fixed, {{0, "new"}, {7, "9600"}, {8, "a"}, {9, "b"}, {10, "c"}});
    settle();
    EXPECT_TRUE(list_is_open(fixed));
    EXPECT_EQ(box(fixed)->view()->model()->rowCount(), 5);
    EXPECT_GE(box(fixed)->view()->height(), 5 * 20) << "the list has room for the new rows";
    EXPECT_EQ(widget_get_text_utf8(fixed), "9600");
    EXPECT_EQ(widget_get_value_int(fixed), 7);
    combo_box_append_option(fixed, 11, "d");
    settle();
    EXPECT_TRUE(list_is_open(fixed));
    box(fixed)->hidePopup();
    EXPECT_THAT(told.take(), IsEmpty());
    combo_box_set_options(fixed, {{1, "x"}});
    EXPECT_EQ(widget_get_value_int(fixed), -1) << "the chosen text is gone";
}

TEST_F(combos, typed_text_survives_refresh_and_reset) {
    click(port);
    type("COM3");
    combo_box_set_options(port, {{0, "COM1"}, {1, "COM7"}});
    EXPECT_EQ(widget_get_text_utf8(port), "COM3");
    type("3");
    EXPECT_EQ(widget_get_text_utf8(port), "COM33") << "the cursor stays where it was";
    combo_box_reset_options(port);
    EXPECT_EQ(widget_get_text_utf8(port), "COM33");
    EXPECT_EQ(combo_box_count_options(port), 0);
    combo_box_append_option(port, 0, "COM1");
    EXPECT_EQ(widget_get_text_utf8(port), "COM33");
    combo_box_reset_options(fixed);
    EXPECT_EQ(widget_get_text_utf8(fixed), "");
    EXPECT_EQ(widget_get_value_int(fixed), -1);
    EXPECT_THAT(told.take(), IsEmpty());
}

TEST_F(combos, greyed_texts_stand_beside_the_options_and_are_no_part_of_them) {
    combo_box_set_hints(fixed, {"slow", "", "fast", "of nothing"});
    EXPECT_EQ(combo_box_get_hint(fixed, "300"), "slow");
    EXPECT_EQ(combo_box_get_hint(fixed, "9600"), "");
    EXPECT_EQ(combo_box_get_hint(fixed, "115200"), "fast");
    EXPECT_EQ(combo_box_get_hint(fixed, "no such"), "");
    EXPECT_EQ(widget_get_text_utf8(fixed), "300");
    EXPECT_TRUE(combo_box_has_option_text(fixed, "115200"));
    pick(fixed, 2);
    EXPECT_EQ(widget_get_text_utf8(fixed), "115200");
    EXPECT_THAT(told.take(), ElementsAre("fixed:value_changed"));
    combo_box_set_options(fixed, {{11, "300"}, {7, "57600"}, {1, "115200"}});
    EXPECT_EQ(combo_box_get_hint(fixed, "300"), "slow");
    EXPECT_EQ(combo_box_get_hint(fixed, "57600"), "");
    EXPECT_EQ(combo_box_get_hint(fixed, "115200"), "fast");
    combo_box_set_options(fixed, {{1, "115200"}});
    EXPECT_EQ(combo_box_get_hint(fixed, "115200"), "") << "it was another option's row";
    combo_box_set_hints(fixed, {});
    EXPECT_THAT(told.take(), IsEmpty());
}

/// The picture of an open list's row from `from` on, in pixels.
QImage row_picture(combo_widget* box, int row, int from) {
    QAbstractItemView* list = box->view();
    const QRect place = list->visualRect(box->model()->index(row, 0));
    return list->viewport()->grab(place.adjusted(from, 0, 0, 0)).toImage();
}

bool is_plain(const QImage& picture) {
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (picture.pixel(x, y) != picture.pixel(0, 0)) return false;
    return true;
}

TEST_F(combos, a_list_is_as_wide_as_its_greyed_texts_need_and_never_wider_than_the_window) {
    const auto opened = [this](combo_widget* w) {
        w->showPopup();
        ASSERT_TRUE(wait_until([this] { return list_is_open(fixed); }));
        settle();
    };
    combo_widget* of_fixed = box(fixed);
    opened(of_fixed);
    const int plain = of_fixed->view()->width();
    combo_box_set_hints(fixed, {"", "", std::string(40, 'm')});
    settle();
    EXPECT_GT(of_fixed->view()->width(), plain) << "an open one, too";
    EXPECT_TRUE(list_is_open(fixed));
    const int names = of_fixed->fontMetrics().horizontalAdvance("115200");
    EXPECT_TRUE(is_plain(row_picture(of_fixed, 0, names + 24)));
    EXPECT_FALSE(is_plain(row_picture(of_fixed, 2, names + 24))) << "it is painted beside the name";
    of_fixed->hidePopup();
    combo_box_set_hints(fixed, {std::string(4000, 'm')});
    opened(of_fixed);
    EXPECT_EQ(of_fixed->view()->minimumWidth(), of_fixed->window()->width());
    const QRect list(of_fixed->view()->window()->mapToGlobal(QPoint()), of_fixed->view()->window()->size());
    const QRect around(of_fixed->window()->mapToGlobal(QPoint()), of_fixed->window()->size());
    EXPECT_LE(list.right(), around.right());
    of_fixed->hidePopup();
    combo_box_set_hints(fixed, {});
    opened(of_fixed);
    EXPECT_EQ(of_fixed->view()->width(), plain) << "without them it is as it was";
    of_fixed->hidePopup();
}

TEST_F(combos, more_than_a_hundred_options_work) {
    std::vector<std::pair<int32_t, std::string>> many;
    for (int i = 0; i < 500; ++i) many.emplace_back(1000 - i, tk_format("COM%d", i));
    combo_box_set_options(fixed, many);
    EXPECT_EQ(combo_box_count_options(fixed), 500);
    widget_set_value_int(fixed, 1000 - 499);
    EXPECT_EQ(widget_get_text_utf8(fixed), "COM499");
    qwidget_of(fixed)->setFocus();
    key("Up");
    EXPECT_EQ(widget_get_text_utf8(fixed), "COM498");
}

TEST_F(combos, wrong_arguments_are_refused) {
    EXPECT_EQ(combo_box_append_option(nullptr, 1, "x"), RET_BAD_PARAMS);
    EXPECT_EQ(combo_box_append_option(at("edit"), 1, "x"), RET_BAD_PARAMS);
    EXPECT_EQ(combo_box_append_option(fixed, 1, nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(combo_box_reset_options(nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(combo_box_count_options(nullptr), 0);
    EXPECT_FALSE(combo_box_has_option_text(fixed, nullptr));
    EXPECT_EQ(combo_box_set_hints(nullptr, {}), RET_BAD_PARAMS);
    EXPECT_EQ(combo_box_set_hints(at("edit"), {"x"}), RET_BAD_PARAMS);
    EXPECT_EQ(combo_box_get_hint(nullptr, "x"), "");
    EXPECT_EQ(combo_box_get_hint(fixed, nullptr), "");
}

} // namespace
