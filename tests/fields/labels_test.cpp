// What a person reads stands in the layouts and in the fields: both say the same.
#include "app/families.h"
#include "fields/row_kinds.h"
#include "tests/support/home_stage.h"
#include "tests/support/layout_texts.h"

#include <set>

namespace {

class labels : public home_stage {
  protected:
    /// Calls `visit` for every row that shows a field, on its page.
    void for_rows(const std::function<void(const page_row& row)>& visit) {
        for (const family_pages* of : families()) {
            choose(*of);
            for (const page_table* table : of->tables) {
                ASSERT_NE(show(table->name), nullptr) << table->name;
                for (const page_row& row : table->rows) {
                    SCOPED_TRACE(std::string(table->name) + "/" + row.name);
                    if (row.what != &no_field) visit(row);
                }
            }
        }
    }
};

TEST_F(labels, layouts_and_fields_have_one_text) {
    std::size_t seen = 0;
    for_rows([&](const page_row& row) {
        const layout_texts shown = layout_texts_of(page, row.name);
        EXPECT_NE(shown.label, "");
        EXPECT_EQ(shown.label, row.what->label);
        EXPECT_EQ(shown.unit, row.what->unit);
        seen++;
    });
    EXPECT_EQ(seen, 28U + 27 + 40);
}

/// The value and text of every option, as the box shows them.
void expect_offers(widget* box, std::span<const choice_option> choices) {
    ASSERT_EQ(combo_box_count_options(box), static_cast<int32_t>(choices.size()));
    for (const choice_option& choice : choices) {
        ASSERT_EQ(widget_set_value_int(box, choice.value), RET_OK);
        EXPECT_EQ(widget_get_text_utf8(box), choice.text);
        EXPECT_EQ(widget_get_value_int(box), choice.value);
    }
}

TEST_F(labels, combo_boxes_offer_the_choices_of_their_fields) {
    std::vector<std::string> of_their_own;
    for_rows([&](const page_row& row) {
        widget* box = on_page(row.name);
        if (widget_type(box) != "combo_box") return;
        if (!kind_ops_of(row).options.empty()) {
            of_their_own.emplace_back(row.name);
            return;
        }
        std::string texts;
        for (const choice_option& choice : row.what->choices)
            texts += (texts.empty() ? "" : "|") + std::string(choice.text);
        does(std::string("expect @/") + row.name + " options \"" + texts + "\"\n"); // in this order
        expect_offers(box, row.what->choices);
    });
    EXPECT_THAT(of_their_own, testing::ElementsAre("combo_box_ex_2_vkt610b")); // two fields are chosen together
}

/// The widgets of a page in the layout's order, by name.
std::vector<std::string> names_below(widget* root) {
    std::vector<std::string> names;
    widget_foreach(root, [&names](widget* w) {
        names.push_back(widget_name(w));
        return RET_OK;
    });
    return names;
}

TEST_F(labels, fields_stand_where_they_say) {
    for (const family_pages* of : families()) {
        choose(*of);
        uint8_t page_number = 0;
        for (const page_table* table : of->tables) {
            ASSERT_NE(show(table->name), nullptr) << table->name;
            std::vector<const page_row*> rows;
            for (const page_row& row : table->rows)
                if (row.what->key != nullptr) rows.push_back(&row);
            std::sort(rows.begin(), rows.end(),
                      [](const page_row* a, const page_row* b) { return a->what->shown.row < b->what->shown.row; });
            std::vector<std::string> wanted, laid_out;
            for (const page_row* row : rows) {
                EXPECT_EQ(row->what->shown.page, page_number) << row->name;
                EXPECT_GT(row->what->shown.row, 0) << row->name;
                wanted.emplace_back(row->name);
            }
            for (const std::string& name : names_below(page))
                if (std::find(wanted.begin(), wanted.end(), name) != wanted.end()) laid_out.push_back(name);
            EXPECT_EQ(laid_out, wanted) << table->name;
            page_number++;
        }
    }
}

TEST_F(labels, pages_are_named_as_their_tabs) {
    static constexpr std::pair<const char*, const char*> inner_tabs[] = {
        {"page_vkt610b_uart_1", "tab_button_uart1"},
        {"page_vkt610b_uart_2", "tab_button_uart2"},
        {"page_vkt610b_canfd_1", "tab_button_canfd1"},
        {"page_vkt610b_canfd_2", "tab_button_canfd2"},
    };
    std::size_t seen = 0;
    for (const family_pages* of : families()) {
        choose(*of);
        ASSERT_GE(of->of->pages.size(), of->tables.size());
        for (std::size_t i = 0; i < of->tables.size(); i++) {
            const std::string name = of->tables[i]->name;
            const char* button = nullptr;
            for (const page_tab& tab : of->tabs)
                if (name == tab.page) button = tab.button;
            for (const auto& [inner, tab] : inner_tabs)
                if (name == inner) button = tab;
            ASSERT_NE(button, nullptr) << name;
            ASSERT_NE(show(name.c_str()), nullptr) << name;
            EXPECT_EQ(widget_get_text_utf8(widget_lookup(home, button)), of->of->pages[i]) << name;
            seen++;
        }
    }
    EXPECT_EQ(seen, 4U + 4 + 6);
}

TEST_F(labels, only_these_values_stand_on_no_page) {
    std::set<std::string> without;
    for (const family_pages* of : families())
        for (const field& one : of->of->fields)
            if (one.key != nullptr) without.insert(one.key);
    for_rows([&](const page_row& row) {
        if (row.what->key != nullptr) without.erase(row.what->key);
    });
    EXPECT_THAT(without,
                testing::UnorderedElementsAre(
                    // one value is supported
                    "uart_bit_num", "uart_stop", "spi_data_len", "spi_cpol", "spi_cpha",
                    // of the calculator
                    "canfd_bps_do_div_vkt610b", "canfd_bps_do_brp_z_vkt610b", "canfd_bps_do_tseg1_z_vkt610b",
                    "canfd_bps_do_tseg2_z_vkt610b", "canfd_bps_do_brp_c_vkt610b", "canfd_bps_do_tseg1_c_vkt610b",
                    "canfd_bps_do_tseg2_c_vkt610b"));
}

} // namespace
