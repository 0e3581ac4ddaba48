#include "dev_a/pages/vkt510a_pages.h"
#include "dev_generic/pages/generic_pages.h"
#include "fields/row_kinds.h"
#include "tests/support/home_stage.h"
#include "tests/support/pattern.h"

#include <set>

namespace {

constexpr const family_pages* both[] = {&generic_pages, &vkt510a_pages};

class layouts : public home_stage {
  protected:
    widget* page_of(const family_pages& of, const page_table& table) const {
        widget* own = widget_lookup(widget_lookup(home, of.page_set), table.name);
        widget_build(own);
        return own;
    }
};

TEST_F(layouts, every_row_finds_its_widget) {
    for (const family_pages* of : both)
        for (const page_table* table : of->tables) {
            widget* on = page_of(*of, *table);
            ASSERT_NE(on, nullptr) << table->name;
            EXPECT_THAT(page_missing(*table, on), testing::IsEmpty()) << table->name;
        }
}

TEST_F(layouts, every_widget_that_takes_input_stands_in_a_row) {
    const std::set<std::string> taking = {"combo_box", "spin_box",    "edit",      "check_button",
                                          "switch",    "scroll_view", "scroll_bar"};
    for (const family_pages* of : both)
        for (const page_table* table : of->tables) {
            std::set<std::string> bound;
            for (const page_row& row : table->rows) bound.insert(row.name);
            if (table->scroll_view != nullptr) bound.insert({table->scroll_view, table->scroll_bar});
            std::size_t seen = 0;
            widget_foreach(page_of(*of, *table), [&](widget* w) {
                if (taking.contains(widget_type(w))) {
                    seen++;
                    EXPECT_TRUE(bound.contains(widget_name(w))) << table->name << "/" << widget_name(w);
                }
                return RET_OK;
            });
            EXPECT_GE(seen, 3U) << table->name;
        }
}

TEST_F(layouts, every_row_has_the_kind_of_its_widget) {
    const auto type_of = [](row_kind kind) -> std::string {
        switch (kind) {
        case row_kind::choice:
        case row_kind::choice_text:
        case row_kind::still_choice:
            return "combo_box";
        case row_kind::check:
            return "check_button";
        case row_kind::number:
            return "spin_box";
        case row_kind::caption:
        case row_kind::rule_hint:
            return "label";
        default:
            return "edit";
        }
    };
    for (const family_pages* of : both)
        for (const page_table* table : of->tables)
            for (const page_row& row : table->rows)
                EXPECT_EQ(widget_type(widget_lookup(page_of(*of, *table), row.name)), type_of(row.kind))
                    << row.name;
}

TEST_F(layouts, every_row_with_a_key_has_a_default_and_a_place) {
    for (const family_pages* of : both)
        for (const page_table* table : of->tables)
            for (const page_row& row : table->rows) {
                if (row.what->key == nullptr || row.kind == row_kind::still_choice) continue;
                const field* behind = field_find(of->of->fields, row.what->key);
                ASSERT_NE(behind, nullptr) << row.what->key;
                EXPECT_GT(behind->place.bytes(), 0U) << row.what->key;
            }
}

TEST_F(layouts, a_page_is_attached_once_however_often_it_is_shown) {
    for (const family_pages* of : both) {
        choose(*of);
        for (const page_table* table : of->tables) {
            widget* on = page_of(*of, *table);
            for (int i = 0; i < 3; i++) ASSERT_EQ(page_init(*table, on, *dev), RET_OK);
            for (const page_row& row : table->rows) {
                if (row_options(row).empty()) continue;
                EXPECT_EQ(combo_box_count_options(widget_lookup(on, row.name)),
                          static_cast<int32_t>(row_options(row).size()))
                    << table->name << "/" << row.name;
            }
        }
    }
}

TEST_F(layouts, init_without_a_page_says_so) {
    log_set_log_level(LOG_LEVEL_DEBUG);
    const std::pair<const family_pages*, std::vector<std::string>> inits[] = {
        {&generic_pages, {"page_change_init", "page_spi_init", "page_uart_init", "page_can_init"}},
        {&vkt510a_pages,
         {"page_vkt510a_change_init", "page_vkt510a_spi_init", "page_vkt510a_uart_init", "page_vkt510a_can_init"}},
    };
    for (const auto& [of, names] : inits) {
        choose(*of);
        ASSERT_EQ(of->tabs.size(), names.size());
        for (std::size_t i = 0; i < names.size(); i++) {
            EXPECT_EQ(of->tabs[i].init(nullptr, *dev), RET_BAD_PARAMS);
            EXPECT_THAT(console(), FitsPattern(names[i] + ":[0-9]+ condition\\(win != NULL\\) failed!\n"));
        }
    }
}

/// How far a CAN page's content reaches beyond its view.
int overhang(widget* on, const page_table& table) {
    widget* view = widget_lookup(on, table.scroll_view);
    scroll_view_set_offset(view, 0, 100000);
    const int hidden = scroll_view_get_offset_y(view);
    scroll_view_set_offset(view, 0, 0);
    return hidden;
}

TEST_F(layouts, can_pages_can_be_scrolled_to_their_end) {
    const std::pair<int, int> sizes[] = {{1280, 750}, {1024, 600}};
    for (const auto& [w, h] : sizes) {
        user_window_size(w, h);
        for (const family_pages* of : both) {
            const page_table& table = *of->tables[3];
            choose(*of);
            show(table.name);
            does("expect @ visible 1\n");
            EXPECT_LE(overhang(page, table), 183) << table.name << " at " << w << "x" << h;
        }
    }
    user_window_size(1280, 750);
}

} // namespace
