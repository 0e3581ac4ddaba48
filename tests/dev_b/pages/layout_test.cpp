#include "tests/dev_b/pages/b_page.h"
#include "tests/support/pattern.h"

#include <map>
#include <set>

namespace {

class b_layouts : public b_page {
  protected:
    widget* page_of(const page_table& table) const {
        widget* set = widget_lookup(home, vkt610b_pages.page_set);
        for (const page_tab& tab : vkt610b_pages.tabs) widget_build(widget_lookup(set, tab.page));
        widget* own = widget_lookup(set, table.name);
        widget_build(own);
        return own;
    }
};

TEST_F(b_layouts, every_row_finds_its_widget) {
    for (const page_table* table : vkt610b_pages.tables) {
        ASSERT_NE(page_of(*table), nullptr) << table->name;
        EXPECT_THAT(page_missing(*table, page_of(*table)), testing::IsEmpty()) << table->name;
    }
}

TEST_F(b_layouts, every_widget_that_takes_input_stands_in_a_row) {
    const std::set<std::string> taking = {"combo_box", "spin_box",    "edit",       "check_button",
                                          "switch",    "scroll_view", "scroll_bar", "button"};
    for (const page_table* table : vkt610b_pages.tables) {
        std::set<std::string> bound;
        for (const page_row& row : table->rows) bound.insert(row.name);
        if (table->scroll_view != nullptr) bound.insert({table->scroll_view, table->scroll_bar});
        std::size_t seen = 0;
        widget_foreach(page_of(*table), [&](widget* w) {
            if (!taking.contains(widget_type(w))) return RET_OK;
            seen++;
            EXPECT_TRUE(bound.contains(widget_name(w))) << table->name << "/" << widget_name(w);
            return RET_OK;
        });
        EXPECT_GE(seen, 1U) << table->name;
    }
}

TEST_F(b_layouts, every_key_has_a_default) {
    std::set<std::string> keys;
    for (const page_table* table : vkt610b_pages.tables)
        for (const page_row& row : table->rows) {
            if (row.what->key == nullptr) continue;
            EXPECT_NE(field_find(dev->of.fields, row.what->key), nullptr) << row.what->key;
            EXPECT_TRUE(keys.insert(row.what->key).second) << row.what->key;
        }
    // All but the seven of the calculator.
    EXPECT_EQ(keys.size(), 3U + 2 + 2 + 2 * 16 + 1);
}

TEST_F(b_layouts, twins_differ_in_channel_and_number_only) {
    const auto tables = vkt610b_pages.tables;
    const auto swapped = [](std::string text) {
        for (const char* both : {"canfd1", "canfd_1", "uart1", "uart_1", "bps_1"}) {
            std::string other = both;
            other.back() = '2';
            const std::size_t at = text.find(both);
            if (at != std::string::npos) text.replace(at, other.size(), other);
        }
        return text;
    };
    for (const std::size_t first : {2U, 4U}) {
        const page_table& one = *tables[first];
        const page_table& two = *tables[first + 1];
        EXPECT_EQ(swapped(one.name), two.name);
        ASSERT_EQ(one.rows.size(), two.rows.size());
        for (std::size_t i = 0; i < one.rows.size(); ++i) {
            EXPECT_EQ(swapped(one.rows[i].name), two.rows[i].name);
            EXPECT_STRNE(one.rows[i].name, two.rows[i].name);
            const char* key = one.rows[i].what->key;
            if (key == nullptr) continue;
            EXPECT_EQ(swapped(key), two.rows[i].what->key);
            EXPECT_STRNE(key, two.rows[i].what->key);
        }
    }
}

TEST_F(b_layouts, option_lists_keep_their_order) {
    const std::map<std::string, std::pair<int32_t, std::string>> lists = {
        {"combo_box_ex_1_vkt610b", {2, "自定义转换|自定义带校验转换"}},
        {"combo_box_ex_2_vkt610b",
         {5, "UART1转CANFD1|UART1转CANFD1和CANFD2|UART1和UART2转CANFD1和CANFD2|SPI转CANFD1|SPI转CANFD1和CANFD2"}},
        {"combo_box_ex_bps_1_vkt610b",
         {25, "300|600|1.2k|2.4k|4.8k|9.6k|14.4k|19.2k|38.4k|57.6k|115.2k|128k|256k|460.8k|921.6k|1M|1.5M|2M|2.5M|"
              "3M|3.5M|4M|5M|6M|7M"}},
        {"combo_box_ex_bps_vkt610b_canfd1", {11, "40k|50k|80k|100k|125k|200k|250k|400k|500k|800k|1M"}},
        {"combo_box_ex_rejector_vkt610b_canfd1", {7, "400k|500k|800k|1M|2M|4M|5M"}},
        {"combo_box_ex_mode_vkt610b_canfd1", {3, "CAN模式|CAN FD模式|CAN+CAN FD 模式"}},
        {"combo_box_ex_reject_mode_vkt610b_canfd1", {3, "标准帧滤波|扩展帧滤波|标准帧、扩展帧滤波"}},
    };
    for (int i = 0; i < 3; ++i) // filling again appends nothing
        for (const page_tab& tab : vkt610b_pages.tabs)
            ASSERT_EQ(tab.init(widget_lookup(widget_lookup(home, vkt610b_pages.page_set), tab.page), *dev), RET_OK);
    std::string script;
    for (const auto& [name, list] : lists) {
        EXPECT_EQ(combo_box_count_options(widget_lookup(home, name.c_str())), list.first) << name;
        script += "expect home_page/" + name + " options \"" + list.second + "\"\n";
        std::string twin = name;
        const std::size_t channel = twin.find("canfd1");
        if (channel != std::string::npos) twin[channel + 5] = '2';
        if (name.find("bps_1") != std::string::npos) twin = "combo_box_ex_bps_2_vkt610b";
        script += "expect home_page/" + twin + " options \"" + list.second + "\"\n";
    }
    does(script);
}

TEST_F(b_layouts, init_without_a_page_says_so) {
    log_set_log_level(LOG_LEVEL_WARN);
    const auto expect_said = [this](const std::string& init) {
        EXPECT_THAT(console(), FitsPattern(init + ":[0-9]+ condition\\(win != NULL\\) failed!\n"));
    };
    const char* tabs[] = {"page_vkt610b_change_init", "page_vkt610b_spi_init", "page_vkt610b_uart_init",
                          "page_vkt610b_canfd_init"};
    for (std::size_t i = 0; i < std::size(tabs); ++i) {
        EXPECT_EQ(vkt610b_pages.tabs[i].init(nullptr, *dev), RET_BAD_PARAMS);
        expect_said(tabs[i]);
    }
    const char* tables[] = {"page_vkt610b_change_init", "page_vkt610b_spi_init",     "page_vkt610b_uart_1_init",
                            "page_vkt610b_uart_2_init", "page_vkt610b_canfd_1_init", "page_vkt610b_canfd_2_init"};
    for (std::size_t i = 0; i < std::size(tables); ++i) {
        EXPECT_EQ(page_init(*vkt610b_pages.tables[i], nullptr, *dev), RET_BAD_PARAMS);
        expect_said(tables[i]);
    }
    log_set_log_level(LOG_LEVEL_ERROR);
}

TEST_F(b_layouts, canfd_pages_can_be_scrolled_to_their_end) {
    for (const auto& [w, h] : {std::pair{1280, 750}, std::pair{1024, 600}}) {
        user_window_size(w, h);
        for (const char* name : {"page_vkt610b_canfd_1", "page_vkt610b_canfd_2"}) {
            show(name);
            does("expect @ visible 1\n");
            widget* view = on_page(name == std::string("page_vkt610b_canfd_1") ? "scroll_view_vkt610b_canfd1"
                                                                               : "scroll_view_vkt610b_canfd2");
            scroll_view_set_offset(view, 0, 100000);
            EXPECT_LE(scroll_view_get_offset_y(view), 183) << name << " at " << w << "x" << h;
            scroll_view_set_offset(view, 0, 0);
        }
    }
    user_window_size(1280, 750);
}

TEST_F(b_layouts, the_wheel_moves_each_channels_own_bar) {
    for (const char channel : {'1', '2'}) {
        const std::string view = std::string("scroll_view_vkt610b_canfd") + channel;
        const std::string bar = std::string("scroll_bar_d_can_vkt610b_canfd") + channel;
        show((std::string("page_vkt610b_canfd_") + channel).c_str());
        scroll_view_set_virtual_h(on_page(view.c_str()), 3000);
        does("wheel @/" + view + " -120\n");
        EXPECT_EQ(widget_get_value_int(on_page(bar.c_str())), 100);
        EXPECT_EQ(scroll_view_get_offset_y(on_page(view.c_str())), 36); // 36.6
        does("wheel @/" + view + " 120\nwheel @/" + view + " 120\n");
        EXPECT_EQ(widget_get_value_int(on_page(bar.c_str())), 0);
    }
}

} // namespace
