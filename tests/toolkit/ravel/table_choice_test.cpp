// Choosing rows of a table by pointer and keyboard.
#include "tests/toolkit/ravel/stage.h"
#include "toolkit/table_view/table_view.h"

namespace {

constexpr const char* row_ui =
    R"(<ui version="4.0"><widget class="QWidget" name="row"><property name="minimumSize"><size><width>0</width><height>28</height></size></property>
<widget class="QLabel" name="index"><property name="geometry"><rect><x>0</x><y>0</y><width>90</width><height>28</height></rect></property></widget></widget></ui>)";

/// A table that shows nine whole rows between two edits.
class chosen_rows : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        table_view_register();
        write_layout("row", row_ui);
        open(ui_window(ui_widget("QLineEdit", "before", "0 300 100 30") +
                       ui_widget("table_client", "table_client", "0 0 400 280", ui_dynamic("row_layout", "row")) +
                       ui_widget("QLineEdit", "after", "0 350 100 30")));
        client = at("table_client");
        table_client_set_on_load_data(client, [](uint32_t index, widget* row) {
            const std::string text = (table_row_chosen(row) ? "*" : "") + std::to_string(index);
            return widget_set_text_utf8(widget_child(row, "index"), text.c_str());
        });
        table_client_set_on_take(client, [this](uint32_t index) {
            taken.push_back(index);
            return RET_OK;
        });
        table_client_set_on_copy(client, [this](table_rows rows) {
            copied.push_back(rows);
            return RET_OK;
        });
        table_client_set_on_create_row(client, [this](uint32_t, widget* row) {
            made.push_back(row);
            return RET_OK;
        });
        table_client_set_choice(client, table_choice::range);
        rows(100);
    }
    void keys(std::initializer_list<const char*> names) {
        for (const char* name : names) key(name);
    }
    /// The keyboard comes from the edit before the table.
    void come() {
        click(at("before"));
        key("Tab");
    }
    widget* cell(std::size_t row) const { return widget_child(made.at(row), "index"); }
    void rows(uint32_t count) {
        table_client_set_rows(client, count);
        ASSERT_EQ(table_client_fill(client), RET_OK);
    }
    /// "3-5@2": rows 3 to 5 are chosen, row 2 stands on top; "-@0".
    std::string state() const {
        const auto chosen = table_client_chosen(client);
        return (chosen ? std::to_string(chosen->first) + "-" + std::to_string(chosen->last) : "-") + "@" +
               std::to_string(table_client_first_row(client));
    }
    std::string after(const char* one) {
        key(one);
        return state();
    }
    /// Texts of the rows that show.
    std::string shown(std::size_t row) {
        table_client_fill(client);
        return widget_get_text_utf8(cell(row));
    }
    widget* client = nullptr;
    std::vector<widget*> made;
    std::vector<uint32_t> taken;
    std::vector<table_rows> copied;
};

TEST_F(chosen_rows, the_keyboard_comes_to_the_first_visible_row_and_moves_on) {
    table_client_show_row(client, 20);
    come();
    EXPECT_TRUE(widget_get_focused(client));
    EXPECT_EQ(state(), "20-20@20");
    EXPECT_EQ(after("Down"), "21-21@20");
    EXPECT_EQ(after("Up"), "20-20@20");
    EXPECT_EQ(after("Up"), "19-19@19");
    EXPECT_EQ(after("PageDown"), "28-28@20");
    EXPECT_EQ(after("PageUp"), "19-19@19");
    EXPECT_EQ(after("Home"), "0-0@0");
    EXPECT_EQ(after("Up"), "0-0@0");
    EXPECT_EQ(after("End"), "99-99@91");
    EXPECT_EQ(after("Down"), "99-99@91");
    key("Tab");
    EXPECT_FALSE(widget_get_focused(client));
    EXPECT_EQ(state(), "99-99@91") << "stays chosen";
    key("Shift+Tab");
    EXPECT_EQ(state(), "99-99@91") << "and is found again";
}

TEST_F(chosen_rows, shift_makes_a_range_of_one_end_that_moves) {
    come();
    EXPECT_EQ(after("Down"), "1-1@0");
    EXPECT_EQ(after("Shift+Down"), "1-2@0");
    EXPECT_EQ(after("Shift+PageDown"), "1-11@3");
    EXPECT_EQ(after("Shift+Home"), "0-1@0");
    EXPECT_EQ(after("Ctrl+a"), "0-99@0");
    EXPECT_EQ(after("Home"), "0-0@0");
}

TEST_F(chosen_rows, one_row_only_where_no_range_is_asked_for) {
    table_client_set_choice(client, table_choice::one);
    come();
    keys({"Shift+Down", "Ctrl+a"});
    EXPECT_EQ(state(), "1-1@0");
}

TEST_F(chosen_rows, enter_takes_and_ctrl_c_copies_what_is_chosen) {
    come();
    keys({"Down", "Enter", "Shift+Down", "Ctrl+c"});
    EXPECT_EQ(taken, std::vector<uint32_t>{1});
    EXPECT_EQ(copied, (std::vector<table_rows>{{1, 2}}));
}

TEST_F(chosen_rows, the_pointer_chooses_the_row_under_it) {
    click(cell(3));
    EXPECT_EQ(state(), "3-3@0");
    EXPECT_TRUE(widget_get_focused(client));
    EXPECT_EQ(shown(3), "*3");
    EXPECT_EQ(shown(4), "4");
    click(cell(4));
    EXPECT_EQ(shown(3), "3");
    EXPECT_EQ(shown(4), "*4");
    EXPECT_TRUE(taken.empty());
}

TEST_F(chosen_rows, chosen_rows_keep_their_content_and_go_with_it) {
    table_client_choose(client, table_rows{2, 4});
    table_client_rows_inserted(client, 10);
    EXPECT_EQ(state(), "12-14@0");
    rows(14);
    EXPECT_EQ(state(), "12-13@0");
    rows(12);
    EXPECT_EQ(state(), "-@0");
    table_client_choose(client, table_rows{10, 500});
    EXPECT_EQ(state(), "10-11@0");
    table_client_choose(client, std::nullopt);
    EXPECT_EQ(state(), "-@0");
}

TEST_F(chosen_rows, without_rows_the_keyboard_passes) {
    rows(0);
    come();
    EXPECT_TRUE(widget_get_focused(at("after")));
    rows(1);
    come();
    EXPECT_TRUE(widget_get_focused(client));
}

TEST_F(chosen_rows, nothing_is_chosen_where_that_is_not_asked_for) {
    table_client_choose(client, table_rows{1, 1});
    table_client_set_choice(client, table_choice::none);
    EXPECT_EQ(state(), "-@0");
    click(cell(3));
    table_client_choose(client, table_rows{1, 1});
    EXPECT_EQ(state(), "-@0");
    EXPECT_EQ(table_client_set_choice(nullptr, table_choice::one), RET_BAD_PARAMS);
    EXPECT_EQ(table_client_choose(at("before"), table_rows{0, 0}), RET_BAD_PARAMS);
    EXPECT_EQ(table_client_set_on_take(nullptr, {}), RET_BAD_PARAMS);
    EXPECT_EQ(table_client_set_on_copy(nullptr, {}), RET_BAD_PARAMS);
    EXPECT_EQ(table_client_chosen(nullptr), std::nullopt);
    EXPECT_FALSE(table_row_chosen(at("before")));
}

} // namespace
