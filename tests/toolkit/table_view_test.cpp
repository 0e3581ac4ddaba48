#include "tests/toolkit/stage.h"
#include "toolkit/table_view/table_view.h"

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

TEST_F(table, RefreshesAskedForTogetherAreOne) {
    table_client_set_rows(client, 3);
    table_client_set_rows(client, 2);
    table_client_set_rows(client, 3);
    ASSERT_TRUE(wait_until([this] { return loaded > 0; }));
    EXPECT_EQ(loaded, 3);
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
