// Tables whose rows are wider than the view: how wide, and what moves them.
#include "tests/toolkit/ravel/stage.h"
#include "toolkit/ravel/qt/drive_input.h"
#include "toolkit/table_view/table_view.h"

#include <QAbstractScrollArea>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QScrollBar>
#include <QWheelEvent>

namespace {

const std::string columns_layout =
    R"(<layout class="QHBoxLayout" name="columns" stretch="0,1"><property name="spacing"><number>8</number></property>
<property name="leftMargin"><number>8</number></property><property name="topMargin"><number>0</number></property>
<property name="rightMargin"><number>8</number></property><property name="bottomMargin"><number>0</number></property>)";

std::string column(const std::string& name, const std::string& size, const std::string& words) {
    return "<item><widget class=\"QLabel\" name=\"" + name + "\">" + size + ui_dynamic("class", words) +
           "</widget></item>";
}

constexpr const char* fixed_size =
    R"(<property name="minimumSize"><size><width>60</width><height>28</height></size></property>
<property name="maximumSize"><size><width>60</width><height>28</height></size></property>)";
constexpr const char* growing_size =
    R"(<property name="minimumSize"><size><width>100</width><height>28</height></size></property>)";

class wide_rows : public stage {
  protected:
    static constexpr int view_width = 400;

    void SetUp() override {
        stage::SetUp();
        table_view_register();
        write_layout("row",
                     "<ui version=\"4.0\"><widget class=\"QWidget\" name=\"row\">"
                     "<property name=\"minimumSize\"><size><width>0</width><height>28</height></size></property>" +
                         columns_layout + column("index", fixed_size, "cell") +
                         column("data", growing_size, "cell mono") + "</layout></widget></ui>");
        open_with(ui_dynamic("header", "captions"));
    }
    void open_with(const std::string& property) {
        made.clear();
        open(ui_window(ui_widget("QWidget", "box", "0 0 400 40",
                                 ui_widget("QWidget", "captions", "0 3 100 30",
                                           columns_layout + column("head_index", fixed_size, "hint") +
                                               column("head_data", growing_size, "hint") + "</layout>")) +
                       ui_widget("table_client", "table_client", "0 40 400 280",
                                 ui_dynamic("row_layout", "row") + ui_dynamic("class", "records") + property)));
        client = at("table_client");
        table_client_set_on_load_data(client, [this](uint32_t index, widget* row) {
            widget_set_text_utf8(widget_child(row, "index"), std::to_string(index).c_str());
            return widget_set_text_utf8(widget_child(row, "data"), text.c_str());
        });
        table_client_set_on_create_row(client, [this](uint32_t, widget* row) {
            made.push_back(row);
            return RET_OK;
        });
        table_client_set_choice(client, table_choice::range);
    }
    void rows(uint32_t count, const std::string& data) {
        text = data;
        table_client_set_rows(client, count);
        fill();
    }
    /// Settled: a bar that comes makes the view smaller, which asks for another filling.
    void fill() const {
        ASSERT_EQ(table_client_fill(client), RET_OK);
        settle();
        ASSERT_EQ(table_client_fill(client), RET_OK);
    }
    static int px(widget* w, const char* what) { return widget_get_prop_int(w, what, -1000); }
    widget* data(std::size_t row = 0) const { return widget_child(made.at(row), "data"); }
    QScrollBar* bar() const { return static_cast<QAbstractScrollArea*>(qwidget_of(client))->horizontalScrollBar(); }
    /// How far the rows and the header stand to the left; -1 when they disagree.
    int aside() const {
        const int rows_at = -px(made.at(0), "x");
        return rows_at == -px(at("captions"), "x") && rows_at == -px(made.at(1), "x") ? rows_at : -1;
    }
    /// The keyboard comes to the table, and row 0 is chosen.
    void come() const { click(widget_child(made.at(0), "index")); }

    const std::string long_text = std::string(30, 'D') + std::string(60, '1');
    std::string text;
    std::vector<widget*> made;
    widget* client = nullptr;
};

TEST_F(wide_rows, a_row_is_as_wide_as_the_view_where_that_is_enough) {
    rows(3, "00 11 22");
    EXPECT_EQ(px(made.at(0), "w"), view_width);
    EXPECT_EQ(px(at("captions"), "w"), view_width);
    EXPECT_EQ(px(at("captions"), "y"), 3);
    EXPECT_EQ(px(at("captions"), "h"), 30);
    EXPECT_FALSE(bar()->isVisible());
    come();
    key("Right");
    EXPECT_EQ(aside(), 0);
    QKeyEvent right(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier);
    QCoreApplication::sendEvent(qwidget_of(client), &right);
    EXPECT_FALSE(right.isAccepted()) << "somebody else may take it";
}

TEST_F(wide_rows, the_longest_text_that_was_seen_stands_uncut) {
    rows(3, long_text);
    EXPECT_GT(px(made.at(0), "w"), view_width);
    EXPECT_EQ(px(data(), "w"), px(data(), "text_w"));
    EXPECT_EQ(px(at("captions"), "w"), px(made.at(0), "w"));
    EXPECT_EQ(px(at("head_data"), "x"), px(data(), "x"));
    EXPECT_TRUE(bar()->isVisible());
    EXPECT_EQ(bar()->pageStep(), view_width);
    EXPECT_EQ(bar()->singleStep(), 64);
    const int wide = px(made.at(0), "w");
    rows(3, "short");
    EXPECT_EQ(px(made.at(0), "w"), wide) << "columns do not jump with every record";
    rows(2, long_text + "22");
    EXPECT_GT(px(made.at(0), "w"), wide);
    EXPECT_EQ(px(data(), "w"), px(data(), "text_w"));
}

TEST_F(wide_rows, emptied_it_begins_anew) {
    rows(3, long_text);
    come();
    key("Right");
    EXPECT_GT(aside(), 0);
    rows(0, "");
    EXPECT_EQ(px(at("captions"), "w"), view_width);
    EXPECT_EQ(px(at("captions"), "x"), 0);
    rows(3, "short");
    EXPECT_EQ(px(made.at(0), "w"), view_width);
    EXPECT_EQ(aside(), 0);
}

TEST_F(wide_rows, a_cell_of_fixed_width_widens_nothing) {
    table_client_set_on_load_data(client, [](uint32_t, widget* row) {
        return widget_set_text_utf8(widget_child(row, "index"), std::string(200, '1').c_str());
    });
    rows(1, "");
    EXPECT_EQ(px(made.at(0), "w"), view_width);
    EXPECT_EQ(px(widget_child(made.at(0), "index"), "w"), 60);
    EXPECT_GT(px(widget_child(made.at(0), "index"), "text_w"), 1000);
}

TEST_F(wide_rows, left_and_right_move_it_as_far_as_there_is_something) {
    rows(3, long_text);
    const int most = px(made.at(0), "w") - view_width;
    come();
    key("Left");
    EXPECT_EQ(aside(), 0);
    key("Right");
    EXPECT_EQ(aside(), 64);
    EXPECT_LT(64 * 2, most);
    key("Left");
    EXPECT_EQ(aside(), 0);
    for (int i = 0; i < 30; ++i) key("Right");
    EXPECT_EQ(aside(), most);
    EXPECT_EQ(table_client_chosen(client), (table_rows{0, 0})) << "what is chosen stays";
}

TEST_F(wide_rows, the_wheel_with_shift_turns_it_aside_and_without_up_and_down) {
    rows(100, long_text);
    const auto turn = [this](int delta, bool shift) {
        drive_wheel(qwidget_of(client), QPoint(100, 100), delta, shift);
        fill();
    };
    turn(-120, true);
    EXPECT_EQ(aside(), 64);
    EXPECT_EQ(table_client_first_row(client), 0u);
    turn(-120, false);
    EXPECT_EQ(aside(), 64);
    const uint32_t down = table_client_first_row(client);
    EXPECT_GT(down, 0u);
    turn(60, true);
    EXPECT_EQ(aside(), 32);
    EXPECT_EQ(table_client_first_row(client), down);
    rows(0, "");
    rows(100, "short");
    turn(-120, true);
    EXPECT_EQ(aside(), 0) << "nothing is there";
    EXPECT_GT(table_client_first_row(client), 0u) << "so it turns what it turns without";
    rows(100, long_text);
    // As systems report it that swap the two themselves.
    QWheelEvent swapped(QPointF(100, 100), QPointF(100, 100), QPoint(), QPoint(-120, 0), Qt::NoButton,
                        Qt::ShiftModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(static_cast<QAbstractScrollArea*>(qwidget_of(client))->viewport(), &swapped);
    EXPECT_EQ(aside(), 64);
}

TEST_F(wide_rows, moved_aside_the_pointer_meets_what_is_seen) {
    rows(100, long_text);
    come();
    for (int i = 0; i < 3; ++i) key("Right");
    fill();
    told.hear(data(2), event_type::pointer_down);
    // The index column has gone: at the view's left edge the data begin.
    ASSERT_LT(px(data(), "x"), 3 * 64);
    drive_press(qwidget_of(client), QPoint(5, 2 * 28 + 14));
    drive_release(qwidget_of(client), QPoint(5, 2 * 28 + 14));
    settle();
    EXPECT_EQ(told.take(), std::vector<std::string>{"data:pointer_down"});
    EXPECT_EQ(table_client_chosen(client), (table_rows{2, 2}));
    click(data(1)); // its middle lies outside, what is seen of it is pressed
    EXPECT_EQ(table_client_chosen(client), (table_rows{1, 1}));
}

TEST_F(wide_rows, what_comes_in_above_leaves_it_where_it_is) {
    rows(100, long_text);
    come();
    key("Right");
    table_client_rows_inserted(client, 7);
    fill();
    EXPECT_EQ(aside(), 64);
    EXPECT_EQ(table_client_first_row(client), 0u) << "at its top it follows";
    table_client_show_row(client, 50);
    fill();
    table_client_rows_inserted(client, 7);
    fill();
    EXPECT_EQ(aside(), 64);
    EXPECT_EQ(table_client_first_row(client), 57u);
    EXPECT_EQ(table_row_index(made.at(0)), 57);
}

TEST_F(wide_rows, the_bar_takes_its_room_from_the_rows) {
    rows(100, "short");
    table_client_show_row(client, 99);
    fill();
    const uint32_t last_top = table_client_first_row(client);
    rows(100, long_text);
    table_client_show_row(client, 99);
    fill();
    EXPECT_GT(table_client_first_row(client), last_top) << "the last row is still seen whole";
}

TEST_F(wide_rows, without_a_header_rows_are_as_wide_as_the_view) {
    open_with("");
    rows(3, long_text);
    EXPECT_EQ(px(made.at(0), "w"), view_width);
    come();
    key("Right");
    EXPECT_EQ(px(made.at(0), "x"), 0);
    EXPECT_EQ(px(at("captions"), "w"), 100) << "it is nobody's";
}

TEST_F(wide_rows, a_header_that_is_not_there_is_none) {
    open_with(ui_dynamic("header", "absent"));
    rows(3, long_text);
    EXPECT_EQ(px(made.at(0), "w"), view_width);
}

} // namespace
