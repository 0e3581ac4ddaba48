#include "config/pages/generic_pages.h"
#include "dev_a/pages/vkt510a_pages.h"
#include "tests/pages/home_stage.h"
#include "tests/support/pattern.h"

#include <set>

namespace {

struct family_tables {
    family of;
    std::span<const page_table> tables;
};
std::vector<family_tables> all_tables() {
    return {{family::generic, generic_page_tables()}, {family::a, vkt510a_page_tables()}};
}

class layouts : public home_stage {
  protected:
    widget* page_of(const family_tables& group, const page_table& table) const {
        widget* own = widget_lookup(widget_lookup(home, family_pages_of(group.of)->page_set), table.name);
        widget_build(own);
        return own;
    }
};

TEST_F(layouts, every_row_finds_its_widget) {
    for (const family_tables& group : all_tables())
        for (const page_table& table : group.tables) {
            widget* on = page_of(group, table);
            ASSERT_NE(on, nullptr) << table.name;
            EXPECT_THAT(page_missing(table, on), testing::IsEmpty()) << table.name;
        }
}

TEST_F(layouts, every_widget_that_takes_input_stands_in_a_row) {
    const std::set<std::string> taking = {"combo_box", "spin_box",    "edit",      "check_button",
                                          "switch",    "scroll_view", "scroll_bar"};
    for (const family_tables& group : all_tables())
        for (const page_table& table : group.tables) {
            std::set<std::string> bound;
            for (const page_row& row : table.rows) bound.insert(row.name);
            if (table.scroll_view != nullptr) bound.insert({table.scroll_view, table.scroll_bar});
            std::size_t seen = 0;
            widget_foreach(page_of(group, table), [&](widget* w) {
                if (taking.contains(widget_type(w))) {
                    seen++;
                    EXPECT_TRUE(bound.contains(widget_name(w))) << table.name << "/" << widget_name(w);
                }
                return RET_OK;
            });
            EXPECT_GE(seen, 3U) << table.name;
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
            return "label";
        default:
            return "edit";
        }
    };
    for (const family_tables& group : all_tables())
        for (const page_table& table : group.tables)
            for (const page_row& row : table.rows)
                EXPECT_EQ(widget_type(widget_lookup(page_of(group, table), row.name)), type_of(row.kind))
                    << row.name;
}

TEST_F(layouts, every_row_with_a_key_has_a_default_and_a_place) {
    for (const family_tables& group : all_tables())
        for (const page_table& table : group.tables)
            for (const page_row& row : table.rows) {
                if (row.key == nullptr || row.kind == row_kind::caption) continue;
                EXPECT_NE(default_find(group.of, row.key), nullptr) << row.key;
                const reg_field* field = map_find(table.scheme->map(), row.key);
                ASSERT_NE(field, nullptr) << row.key;
                EXPECT_GT(field->place.bytes, 0) << row.key;
            }
}

TEST_F(layouts, a_page_is_attached_once_however_often_it_is_shown) {
    for (const family_tables& group : all_tables())
        for (const page_table& table : group.tables) {
            widget* on = page_of(group, table);
            for (int i = 0; i < 3; i++) ASSERT_EQ(page_init(table, on), RET_OK);
            for (const page_row& row : table.rows) {
                if (row.options.empty()) continue;
                EXPECT_EQ(combo_box_count_options(widget_lookup(on, row.name)),
                          static_cast<int32_t>(row.options.size()))
                    << table.name << "/" << row.name;
            }
        }
}

TEST_F(layouts, init_without_a_page_says_so) {
    log_set_log_level(LOG_LEVEL_DEBUG);
    const std::pair<ret_t (*)(widget*), const char*> inits[] = {
        {page_change_init, "page_change_init"},
        {page_spi_init, "page_spi_init"},
        {page_uart_init, "page_uart_init"},
        {page_can_init, "page_can_init"},
        {page_vkt510a_change_init, "page_vkt510a_change_init"},
        {page_vkt510a_spi_init, "page_vkt510a_spi_init"},
        {page_vkt510a_uart_init, "page_vkt510a_uart_init"},
        {page_vkt510a_can_init, "page_vkt510a_can_init"},
    };
    for (const auto& [init, name] : inits) {
        EXPECT_EQ(init(nullptr), RET_BAD_PARAMS);
        EXPECT_THAT(console(), FitsPattern(std::string(name) + ":[0-9]+ condition\\(win != NULL\\) failed!\n"));
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
        for (const family_tables& group : all_tables()) {
            const page_table& table = group.tables[3];
            show_page(*family_pages_of(group.of), table.name);
            does("expect @ visible 1\n");
            EXPECT_LE(overhang(page, table), 183) << table.name << " at " << w << "x" << h;
        }
    }
    user_window_size(1280, 750);
}

} // namespace
