#include "tests/toolkit/ravel/stage.h"
#include "toolkit/table_view/table_view.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QPixmap>

namespace {

constexpr const char* row_ui =
    R"(<ui version="4.0"><widget class="QWidget" name="row"><property name="minimumSize"><size><width>0</width><height>28</height></size></property>
<widget class="QLabel" name="index"><property name="geometry"><rect><x>0</x><y>0</y><width>90</width><height>28</height></rect></property></widget></widget></ui>)";

class table : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        table_view_register();
        write_layout("row", row_ui);
        open(ui_window(ui_widget("table_client", "table_client", "0 0 400 280", ui_dynamic("row_layout", "row"))));
        client = at("table_client");
        table_client_set_on_create_row(client, [this](uint32_t, widget*) {
            ++made;
            return RET_OK;
        });
        table_client_set_on_load_data(client, [this](uint32_t index, widget* row) {
            ++loaded;
            return widget_set_text_utf8(widget_child(row, "index"), std::to_string(index).c_str());
        });
    }
    widget* client = nullptr;
    int made = 0;
    int loaded = 0;
};

TEST_F(table, MakesOnlyTheRowsThatShow) {
    table_client_set_rows(client, 1'000'000);
    ASSERT_TRUE(wait_until([this] { return loaded > 0; }));
    EXPECT_EQ(table_client_get_rows(client), 1'000'000u);
    EXPECT_GE(made, 10);
    EXPECT_LE(made, 12);
    EXPECT_EQ(loaded, made);
}

TEST_F(table, TheLayoutOfItsRowsIsReadOnce) {
    table_client_set_rows(client, 1);
    ASSERT_EQ(table_client_fill(client), RET_OK);
    ASSERT_EQ(made, 1);
    write_layout("row", "no layout");
    table_client_set_rows(client, 5);
    ASSERT_EQ(table_client_fill(client), RET_OK);
    EXPECT_EQ(made, 5);
}

TEST_F(table, ALayoutThatCouldNotBeReadIsReadAgain) {
    write_layout("row", "no layout");
    table_client_set_rows(client, 3);
    {
        said log;
        ASSERT_EQ(table_client_fill(client), RET_OK);
        EXPECT_THAT(log.take(), testing::HasSubstr("table row: "));
    }
    ASSERT_EQ(made, 0);
    write_layout("row", row_ui);
    ASSERT_EQ(table_client_fill(client), RET_OK);
    EXPECT_EQ(made, 3);
}

TEST_F(table, RefreshesAskedForTogetherAreOne) {
    table_client_set_rows(client, 3);
    table_client_set_rows(client, 2);
    table_client_set_rows(client, 3);
    ASSERT_TRUE(wait_until([this] { return loaded > 0; }));
    EXPECT_EQ(loaded, 3);
}

TEST_F(table, AfterAQuietTimeTheFirstFillingIsTheNextTurnsAndTheRestKeepThePace) {
    settle(); // the filling of the first showing
    loaded = 0;
    QElapsedTimer clock;
    // However slow the machine is: between two fillings the pace has passed. Asked for in every turn of the loop.
    int fillings = 0;
    clock.start();
    while (fillings < 8 && clock.elapsed() < 20000) {
        table_client_set_rows(client, 3);
        QCoreApplication::processEvents();
        if (loaded == 0) continue;
        EXPECT_EQ(loaded, 3) << "one filling a turn";
        loaded = 0;
        fillings++;
    }
    EXPECT_EQ(fillings, 8);
    EXPECT_GE(clock.elapsed(), 7 * (table_rows_pace_ms - 1));
}

TEST_F(table, WhatIsAskedForWhileAFillingWaitsIsPartOfIt) {
    ASSERT_EQ(table_client_fill(client), RET_OK); // the pace counts from here
    loaded = 0;
    for (int i = 0; i < 1000; ++i) {
        table_client_set_rows(client, 2);
        table_client_rows_inserted(client, 1);
        table_client_show_row(client, 0);
    }
    ASSERT_TRUE(wait_until([this] { return loaded > 0; }));
    settle();
    EXPECT_EQ(loaded, 3) << "the two rows and the one above, once";
}

TEST_F(table, FillingNowTakesWhatWasAskedForWithIt) {
    table_client_set_rows(client, 3);
    EXPECT_EQ(table_client_fill(client), RET_OK);
    EXPECT_EQ(loaded, 3);
    int turns = 0;
    wait_until([&turns] { return ++turns > 5; });
    EXPECT_EQ(loaded, 3) << "nothing is left to be filled";
}

TEST_F(table, AHiddenOneIsFilledWhenItShows) {
    settle();
    loaded = 0;
    widget_set_visible(client, false);
    table_client_set_rows(client, 3);
    EXPECT_EQ(table_client_fill(client), RET_FAIL);
    int turns = 0;
    wait_until([&turns] { return ++turns > 5; });
    EXPECT_EQ(loaded, 0);
    widget_set_visible(client, true);
    EXPECT_TRUE(wait_until([this] { return loaded == 3; }));
}

TEST_F(table, RowsInsertedAboveLeaveWhatIsShownInPlace) {
    table_client_set_rows(client, 1000);
    table_client_show_row(client, 100);
    EXPECT_EQ(table_client_first_row(client), 100u) << "after the filling that is asked for";
    ASSERT_EQ(table_client_fill(client), RET_OK);
    widget* top = table_row_cast(widget_lookup(client, "index"));
    EXPECT_EQ(table_row_index(top), 100);
    EXPECT_EQ(table_client_rows_inserted(client, 7), RET_OK);
    EXPECT_EQ(table_client_first_row(client), 107u);
    ASSERT_EQ(table_client_fill(client), RET_OK);
    EXPECT_EQ(table_client_get_rows(client), 1007u);
    EXPECT_EQ(table_row_index(top), 107) << "the same record, at the same place";
    wheel(client, -120);
    EXPECT_GT(table_client_first_row(client), 107u);
}

TEST_F(table, OfRowsInsertedIntoAFullOneTheLastGo) {
    table_client_set_rows(client, 100);
    table_client_show_row(client, 50);
    table_client_rows_inserted(client, 7, 100);
    EXPECT_EQ(table_client_get_rows(client), 100u);
    EXPECT_EQ(table_client_first_row(client), 57u);
    table_client_rows_inserted(client, 7, 104);
    EXPECT_EQ(table_client_get_rows(client), 104u);
    table_client_rows_inserted(client, 200, 104);
    EXPECT_GT(table_client_first_row(client), 90u) << "what was shown has gone";
}

TEST_F(table, NewContentKeepsItsOwnPaceAndTheUserIsShownFaster) {
    ASSERT_EQ(table_client_fill(client), RET_OK);
    QElapsedTimer clock;
    clock.start();
    loaded = 0;
    table_client_set_rows(client, 3);
    ASSERT_TRUE(wait_until([this] { return loaded > 0; }));
    EXPECT_GE(clock.elapsed(), table_rows_pace_ms - 2);
    ASSERT_EQ(table_client_fill(client), RET_OK);
    clock.restart();
    loaded = 0;
    table_client_set_rows(client, 3);
    table_client_show_row(client, 0);
    ASSERT_TRUE(wait_until([this] { return loaded > 0; }));
    EXPECT_GE(clock.elapsed(), table_fill_pace_ms - 2) << "the earlier of the two";
    EXPECT_LT(table_fill_pace_ms, table_rows_pace_ms);
}

TEST_F(table, TheUserScrollsFromWhereTheNextFillingBegins) {
    ASSERT_EQ(table_client_fill(client), RET_OK); // what is asked for now waits for the pace
    table_client_set_rows(client, 1000);
    table_client_show_row(client, 500);
    wheel(client, -120);
    const uint32_t turned = table_client_first_row(client);
    EXPECT_GT(turned, 500u);
    EXPECT_LT(turned, 510u);
    table_client_rows_inserted(client, 100);
    EXPECT_EQ(table_client_first_row(client), turned + 100);
}

TEST_F(table, ScrolledToItsTopItFollows) {
    table_client_set_rows(client, 1000);
    ASSERT_EQ(table_client_fill(client), RET_OK);
    widget* top = table_row_cast(widget_lookup(client, "index"));
    table_client_rows_inserted(client, 7);
    ASSERT_EQ(table_client_fill(client), RET_OK);
    EXPECT_EQ(table_client_first_row(client), 0u);
    EXPECT_EQ(table_row_index(top), 0);
}

TEST_F(table, FirstRowIsHeldToWhatThereIs) {
    table_client_set_rows(client, 25);
    table_client_show_row(client, 24);
    EXPECT_EQ(table_client_first_row(client), 16u) << "nine whole rows fit inside the frame";
    table_client_set_rows(client, 4);
    EXPECT_EQ(table_client_first_row(client), 0u);
    EXPECT_EQ(table_client_first_row(win), 0u);
    EXPECT_EQ(table_client_rows_inserted(win, 1), RET_BAD_PARAMS);
    EXPECT_EQ(table_client_fill(win), RET_BAD_PARAMS);
    table_client_rows_inserted(client, 0xFFFFFFFF);
    EXPECT_EQ(table_client_get_rows(client), 0x7FFFFFFEu);
}

/// The widget's picture in whole pixels, and how far two of them are apart.
QImage picture_of(widget* w) { return qwidget_of(w)->grab().toImage().convertToFormat(QImage::Format_RGB32); }
int furthest_apart(const QImage& a, const QImage& b) {
    int most = a.size() == b.size() ? 0 : 255;
    for (int y = 0; y < a.height() && most < 255; ++y)
        for (int x = 0; x < a.width(); ++x)
            most = std::max(most, std::abs(qGray(a.pixel(x, y)) - qGray(b.pixel(x, y))));
    return most;
}

TEST_F(stage, a_cell_looks_like_a_label) {
    open(ui_window(
        ui_widget("QLabel", "cell", "10 10 300 28", ui_dynamic("class", "cell mono")) +
        ui_widget("QLabel", "label", "10 50 300 28", ui_dynamic("class", "mono")) +
        ui_widget("QLabel", "start", "10 90 300 28", ui_dynamic("class", "cell") + ui_text("text", "gone"))));
    EXPECT_EQ(widget_type(at("cell")), "label");
    EXPECT_EQ(widget_get_text_utf8(at("start")), "gone");
    widget_set_text_utf8(at("start"), "");
    EXPECT_EQ(widget_get_text_utf8(at("start")), "");
    const QImage blank = picture_of(at("cell"));
    for (const char* text : {"0 1 2 3 4 5 6 7 8 9", "7C 60 15 17 {fig}", "\xE6\xA0\x87\xE5\x87\x86 11"}) {
        for (const char* name : {"cell", "label"}) widget_set_text_utf8(at(name), text);
        EXPECT_EQ(widget_get_text_utf8(at("cell")), text);
        EXPECT_GT(furthest_apart(picture_of(at("cell")), blank), 100);
        EXPECT_LT(furthest_apart(picture_of(at("cell")), picture_of(at("label"))), 24) << text;
    }
    // Another colour, as the style sheet gives it to a state.
    for (const char* name : {"cell", "label"}) widget_set_style_state(at(name), "failed");
    for (const char* name : {"cell", "label"}) widget_set_text_utf8(at(name), "FF");
    EXPECT_LT(furthest_apart(picture_of(at("cell")), picture_of(at("label"))), 24);
}

TEST_F(table, RowsKnowTheirIndexAndFewerRowsHideTheRest) {
    table_client_set_rows(client, 3);
    ASSERT_TRUE(wait_until([this] { return loaded == 3; }));
    widget* label = widget_lookup(client, "index");
    ASSERT_NE(label, nullptr);
    widget* row = table_row_cast(label);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(table_row_index(row), 0);
    EXPECT_EQ(table_row_cast(client), nullptr);
    table_client_set_rows(client, 0);
    EXPECT_TRUE(wait_until([row] { return table_row_index(row) == -1; }));
    EXPECT_FALSE(widget_get_visible(row));
}

TEST_F(table, WhatIsNoTableIsRefused) {
    EXPECT_EQ(table_client_set_rows(win, 1), RET_BAD_PARAMS);
    EXPECT_EQ(table_client_set_on_load_data(nullptr, nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(table_client_get_rows(win), 0u);
}

} // namespace
