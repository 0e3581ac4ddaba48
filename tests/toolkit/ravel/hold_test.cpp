#include "tests/toolkit/ravel/stage.h"
#include "toolkit/table_view/table_view.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr uint32_t hold_ms = 20;

class holding : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        open(
            ui_window(ui_widget("QPushButton", "go", "10 10 90 30") + ui_widget("QLabel", "label", "10 50 90 30")));
        for (const char* name : {"go", "label"}) {
            EXPECT_EQ(widget_set_long_press_ms(at(name), hold_ms), RET_OK);
            told.hear(at(name), event_type::long_press);
        }
    }
    /// Until a timer that was started after the press, and is longer, has run.
    void outlast() {
        bool over = false;
        timer_add(
            [&over] {
                over = true;
                return RET_REMOVE;
            },
            3 * hold_ms);
        EXPECT_TRUE(wait_until([&over] { return over; }));
    }
};

TEST_F(holding, is_reported_once_a_press_while_the_button_is_down) {
    for (const char* name : {"go", "label"}) {
        press(at(name));
        EXPECT_TRUE(wait_until([this] { return told.count() > 0; }));
        outlast();
        EXPECT_THAT(told.take(), ElementsAre(std::string(name) + ":long_press"));
        release(at(name));
        EXPECT_THAT(told.take(), IsEmpty());
        press(at(name));
        EXPECT_TRUE(wait_until([this] { return told.count() > 0; }));
        release(at(name));
        EXPECT_THAT(told.take(), ElementsAre(std::string(name) + ":long_press"));
    }
}

TEST_F(holding, the_click_comes_all_the_same) {
    told.hear(at("go"), event_type::click);
    press(at("go"));
    EXPECT_TRUE(wait_until([this] { return told.count() > 0; }));
    release(at("go"));
    EXPECT_THAT(told.take(), ElementsAre("go:long_press", "go:click"));
}

TEST_F(holding, releasing_cancels_it) {
    click(at("go"));
    click(at("label"));
    outlast();
    EXPECT_THAT(told.take(), IsEmpty());
}

TEST_F(holding, leaving_cancels_it_also_when_the_pointer_comes_back) {
    for (const char* name : {"go", "label"}) {
        press(at(name));
        drag(at(name), 300, 5);
        drag(at(name), 5, 5);
        outlast();
        EXPECT_THAT(told.take(), IsEmpty());
        release(at(name));
    }
}

TEST_F(holding, moving_inside_does_not) {
    press(at("go"));
    drag(at("go"), 5, 5);
    EXPECT_TRUE(wait_until([this] { return told.count() > 0; }));
    release(at("go"));
}

TEST_F(holding, what_is_covered_hidden_or_disabled_meanwhile_reports_nothing) {
    press(at("go"));
    widget_set_visible(at("go"), false);
    outlast();
    press(at("label"));
    widget_set_enable(at("label"), false);
    outlast();
    EXPECT_THAT(told.take(), IsEmpty());
    release(win);
}

TEST_F(holding, its_time_is_a_second_at_first_and_has_bounds) {
    EXPECT_EQ(widget_set_long_press_ms(win, 0), RET_BAD_PARAMS);
    EXPECT_EQ(widget_set_long_press_ms(win, 60001), RET_BAD_PARAMS);
    EXPECT_EQ(widget_set_long_press_ms(win, 60000), RET_OK);
    EXPECT_EQ(widget_set_long_press_ms(nullptr, 10), RET_BAD_PARAMS);
    EXPECT_EQ(live(window_manager())->long_press_ms, 1000u);
}

TEST_F(holding, a_cell_of_a_table_takes_it_and_so_does_its_row) {
    table_view_register();
    write_layout("row", "<ui version=\"4.0\">" +
                            ui_widget("QWidget", "row", "0 0 400 28",
                                      ui_widget("QLabel", "data", "0 0 90 28", ui_dynamic("class", "cell"))) +
                            "</ui>");
    open(ui_window(ui_widget("table_client", "table", "0 0 400 280", ui_dynamic("row_layout", "row"))),
         "with_table");
    std::vector<std::string> held;
    table_client_set_on_create_row(at("table"), [&held](uint32_t, widget* row) {
        for (widget* w : {row, widget_child(row, "data")}) {
            widget_set_long_press_ms(w, hold_ms);
            widget_on(w, event_type::long_press, [&held](const event& e) {
                held.push_back(widget_name(e.target) + std::to_string(table_row_index(table_row_cast(e.target))));
                return RET_OK;
            });
        }
        return RET_OK;
    });
    table_client_set_rows(at("table"), 5);
    ASSERT_EQ(table_client_fill(at("table")), RET_OK);
    std::vector<widget*> cells;
    widget_foreach(at("table"), [&cells](widget* w) {
        if (widget_name(w) == "data") cells.push_back(w);
        return RET_OK;
    });
    ASSERT_EQ(cells.size(), 5u);
    press(cells[2]);
    EXPECT_TRUE(wait_until([&held] { return held.size() == 2; }));
    release(cells[2]);
    EXPECT_THAT(held, testing::UnorderedElementsAre("data2", "row2"));
}

} // namespace
