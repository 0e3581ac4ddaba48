// The read-only text box: grounds behind parts of its text, and the character under the pointer.
#include "tests/toolkit/ravel/stage.h"

#include "toolkit/ravel/qt/assets.h"
#include "toolkit/ravel/qt/drive_input.h"
#include "toolkit/ravel/qt/drive_widgets.h"
#include "toolkit/ravel/qt/text_widget.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QImage>
#include <QPixmap>
#include <QScrollBar>
#include <QTextCursor>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* lines = "寄存器 00: AA07\n寄存器 01: AB08\nthird 😀 end\n";

class text_boxes : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        open(ui_window(ui_widget("QPlainTextEdit", "box", "10 10 400 100") +
                       ui_widget("QLineEdit", "edit", "10 150 200 32", ui_flag("enabled", false)) +
                       ui_widget("QComboBox", "combo", "10 200 200 32", ui_flag("editable", true)) +
                       ui_widget("QLabel", "label", "10 250 100 30")));
        widget_set_text_utf8(box(), lines);
        settle();
        for (const event_type type : {event_type::text_hover, event_type::text_click})
            widget_on(box(), type, [this](const event& e) {
                heard.push_back((e.type == event_type::text_hover ? "hover " : "click ") +
                                std::to_string(e.offset));
                return RET_OK;
            });
    }
    void TearDown() override {
        theme_set_dark(false);
        stage::TearDown();
    }

    widget* box() const { return at("box"); }
    text_widget* area() const { return dynamic_cast<text_widget*>(qwidget_of(box())); }
    /// Where a part of the text begins, in bytes.
    static int32_t byte_of(const char* part) { return static_cast<int32_t>(std::string_view(lines).find(part)); }
    void point_at(int32_t offset) const {
        drive_move(area()->viewport(), area()->spot_of(offset));
        settle();
    }
    void leave() const {
        drive_move(native_window(), {600, 400});
        settle();
    }
    std::vector<std::string> take() { return std::exchange(heard, {}); }
    /// The ground beside a character's own pixels: that of its cell's left edge, above what it draws.
    QColor ground_of(int32_t offset) const {
        const QImage picture = area()->viewport()->grab().toImage();
        return picture.pixelColor(area()->spot_of(offset) - QPoint(0, area()->fontMetrics().lineSpacing() / 2 - 1));
    }

    std::vector<std::string> heard;
};

TEST_F(text_boxes, a_text_of_the_same_length_is_shown_and_leaves_what_is_chosen_chosen) {
    QTextCursor chosen = area()->textCursor();
    chosen.setPosition(0);
    chosen.setPosition(3, QTextCursor::KeepAnchor);
    area()->setTextCursor(chosen);
    for (const char* next :
         {"寄存器 00: AA07\n寄存器 01: CB09\nthird 😁 end\n", "寄存器 00: BA07\n寄存器 01: CB09\nthird 😁 enD\n",
          "寄存器 00: BA07\n寄存器 01: CB09\nthird 😁 enD\n", lines}) {
        widget_set_text_utf8(box(), next);
        EXPECT_EQ(widget_get_text_utf8(box()), next);
        EXPECT_EQ(area()->textCursor().selectedText(), "寄存器");
    }
    widget_set_text_utf8(box(), "寄存器 00\n");
    EXPECT_EQ(widget_get_text_utf8(box()), std::string("寄存器 00\n"));
    widget_set_text_utf8(box(), "");
    widget_set_text_utf8(box(), "");
    EXPECT_EQ(widget_get_text_utf8(box()), std::string());
}

TEST_F(text_boxes, marks_are_grounds_behind_bytes_in_both_themes) {
    const int32_t first = byte_of("AA07");
    const int32_t second = byte_of("AB08");
    for (const bool dark : {false, true}) {
        theme_set_dark(dark);
        settle();
        const QColor plain = style_color("card");
        ASSERT_EQ(mledit_set_marks(box(),
                                   {{first, 2, text_mark_kind::differs}, {second + 2, 2, text_mark_kind::at_hand}}),
                  RET_OK);
        EXPECT_EQ(ground_of(first), style_color("differs"));
        EXPECT_EQ(ground_of(first + 1), style_color("differs"));
        EXPECT_EQ(ground_of(first + 2), plain);
        EXPECT_EQ(ground_of(second + 1), plain);
        EXPECT_EQ(ground_of(second + 2), style_color("at-hand"));
        EXPECT_EQ(ground_of(second + 3), style_color("at-hand"));
        mledit_set_marks(box(), {});
        EXPECT_EQ(ground_of(first), plain);
    }
}

TEST_F(text_boxes, marks_take_the_colours_of_another_theme) {
    mledit_set_marks(box(), {{0, 3, text_mark_kind::differs}});
    theme_set_dark(true);
    settle();
    EXPECT_EQ(ground_of(0), style_color("differs"));
}

TEST_F(text_boxes, a_later_mark_covers_an_earlier_one_and_the_end_cuts_it) {
    const int32_t first = byte_of("AA07");
    mledit_set_marks(box(), {{first, 9999, text_mark_kind::differs}, {first + 1, 1, text_mark_kind::at_hand}});
    EXPECT_EQ(ground_of(first), style_color("differs"));
    EXPECT_EQ(ground_of(first + 1), style_color("at-hand"));
    EXPECT_EQ(ground_of(first + 2), style_color("differs"));
    EXPECT_EQ(widget_get_text_utf8(box()), lines);
}

TEST_F(text_boxes, marks_change_neither_text_nor_selection_nor_scroll_place) {
    std::string many;
    for (int i = 0; i < 50; i++) many += "line of text\n";
    widget_set_text_utf8(box(), many.c_str());
    settle();
    QTextCursor cursor = area()->textCursor();
    cursor.setPosition(20);
    cursor.setPosition(30, QTextCursor::KeepAnchor);
    area()->setTextCursor(cursor);
    area()->verticalScrollBar()->setValue(17);
    mledit_set_marks(box(), {{0, 4, text_mark_kind::differs}, {25, 4, text_mark_kind::at_hand}});
    settle();
    EXPECT_EQ(widget_get_text_utf8(box()), many);
    EXPECT_EQ(area()->verticalScrollBar()->value(), 17);
    EXPECT_EQ(area()->textCursor().selectionStart(), 20);
    EXPECT_EQ(area()->textCursor().selectionEnd(), 30);
}

TEST_F(text_boxes, marks_are_read_back_until_another_text_comes) {
    const std::vector<text_mark> marks = {{3, 2, text_mark_kind::at_hand}};
    mledit_set_marks(box(), marks);
    EXPECT_EQ(mledit_get_marks(box()), marks);
    widget_set_text_utf8(box(), "new");
    EXPECT_THAT(mledit_get_marks(box()), IsEmpty());
    EXPECT_EQ(ground_of(1), style_color("card"));
}

TEST_F(text_boxes, what_is_no_mark_is_refused) {
    EXPECT_EQ(mledit_set_marks(box(), {{-1, 2}}), RET_BAD_PARAMS);
    EXPECT_EQ(mledit_set_marks(box(), {{1, -2}}), RET_BAD_PARAMS);
    EXPECT_EQ(mledit_set_marks(box(), {{INT32_MAX, 1}}), RET_BAD_PARAMS);
    EXPECT_EQ(mledit_set_marks(at("label"), {}), RET_BAD_PARAMS);
    EXPECT_EQ(mledit_set_marks(nullptr, {}), RET_BAD_PARAMS);
    EXPECT_EQ(mledit_get_hovered(at("label")), -1);
    EXPECT_THAT(mledit_get_marks(at("label")), IsEmpty());
}

TEST_F(text_boxes, the_pointer_is_at_one_character_each_time) {
    point_at(byte_of("AB08"));
    EXPECT_EQ(mledit_get_hovered(box()), byte_of("AB08"));
    point_at(byte_of("存"));
    EXPECT_THAT(take(), ElementsAre("hover " + std::to_string(byte_of("AB08")), "hover 3"));
    drive_move(area()->viewport(), area()->spot_of(3) + QPoint(1, 0));
    settle();
    EXPECT_THAT(take(), IsEmpty()) << "the same character";
    point_at(byte_of("😀"));
    point_at(byte_of(" end"));
    EXPECT_THAT(take(),
                ElementsAre("hover " + std::to_string(byte_of("😀")), "hover " + std::to_string(byte_of(" end"))));
    drive_move(area()->viewport(), {350, 10});
    settle();
    EXPECT_THAT(take(), ElementsAre("hover -1")) << "right of a line";
    point_at(0);
    leave();
    EXPECT_THAT(take(), ElementsAre("hover 0", "hover -1"));
    EXPECT_EQ(mledit_get_hovered(box()), -1);
}

TEST_F(text_boxes, another_text_under_the_pointer_tells_nothing) {
    point_at(byte_of("AB08"));
    take();
    widget_set_text_utf8(box(), "AB");
    EXPECT_THAT(take(), IsEmpty());
    EXPECT_EQ(mledit_get_hovered(box()), -1) << "beyond its end";
}

TEST_F(text_boxes, a_click_is_told_with_its_character_and_a_drag_is_not) {
    const int32_t first = byte_of("AA07");
    const QPoint spot = area()->spot_of(first);
    drive_press(area()->viewport(), spot);
    drive_release(area()->viewport(), spot);
    settle();
    EXPECT_THAT(take(), ElementsAre("hover " + std::to_string(first), "click " + std::to_string(first)));
    drive_press(area()->viewport(), spot);
    drive_drag(area()->viewport(), spot + QPoint(40, 0));
    drive_release(area()->viewport(), spot + QPoint(40, 0));
    settle();
    EXPECT_TRUE(area()->textCursor().hasSelection());
    EXPECT_THAT(take(), IsEmpty());
    drive_press(area()->viewport(), {350, 10});
    drive_release(area()->viewport(), {350, 10});
    settle();
    EXPECT_THAT(take(), ElementsAre("hover -1")) << "beside the text";
}

TEST_F(text_boxes, scripts_point_and_click_at_characters) {
    mledit_set_marks(box(), {{3, 2, text_mark_kind::differs}, {8, 1, text_mark_kind::at_hand}});
    EXPECT_EQ(drive_property(live(box()), "marks"), "differs 3+2, at_hand 8+1");
    point_at(3);
    EXPECT_EQ(drive_property(live(box()), "hovered"), "3");
}

// ---- the pointer on any widget

TEST_F(text_boxes, the_pointer_comes_and_goes_on_disabled_fields_too) {
    for (const char* name : {"edit", "combo", "label"})
        for (const event_type type : {event_type::pointer_enter, event_type::pointer_leave})
            told.hear(at(name), type);
    const auto go = [this](const char* name) {
        drive_move(qwidget_of(at(name)), drive_spot(live(at(name))));
        settle();
    };
    go("edit");
    EXPECT_THAT(told.take(), ElementsAre("edit:pointer_enter"));
    go("combo");
    EXPECT_THAT(told.take(), ElementsAre("edit:pointer_leave", "combo:pointer_enter"));
    leave();
    EXPECT_THAT(told.take(), ElementsAre("combo:pointer_leave"));
}

} // namespace
