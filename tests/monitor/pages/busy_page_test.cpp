// The data page while things happen at the same time: frames that come, a module that goes, a page that is left.
#include "tests/monitor/pages/data_stage.h"

#include "toolkit/core/idle.h"

namespace {

class busy_page : public data_stage {
  protected:
    static widget* row(int n) {
        widget* found = nullptr;
        int at = 0;
        widget_foreach(on_page("table_client"), [&](widget* one) {
            if (widget_name(one) == "data_row" && at++ == n) found = one;
            return RET_OK;
        });
        return found;
    }
    static std::string cell(int n, const char* name) { return widget_get_text_utf8(widget_child(row(n), name)); }
    uint8_t next_ = 0x40;
    void say(uint8_t id) {
        const uint32_t before = rows();
        module->babble({0xAA, 0x07, 0x03, 0x01, 0x00, id, 0x00, 0x00, 0x00, id, id});
        ASSERT_TRUE(wait([before] { return rows() > before; }));
    }
};

TEST_F(busy_page, cleared_while_scrolled_away_the_table_is_at_its_top_whatever_comes) {
    open_page();
    widget* table = on_page("table_client");
    table_client_set_rows(table, 1000);
    table_client_show_row(table, 500);
    table_client_fill(table);
    ASSERT_EQ(table_client_first_row(table), 500u);
    table_client_choose(table, std::nullopt); // as the clear button does
    table_client_set_rows(table, 0);
    table_client_rows_inserted(table, 300); // before the next filling
    table_client_set_rows(table, 300);
    EXPECT_EQ(table_client_first_row(table), 0u);
}

TEST_F(busy_page, periodic_sending_ends_with_its_module) {
    open_page(plain());
    does("pick ~/combo_box_ex_crc_mode 不带校验\ntype ~/edit_timer 5\nclick ~/check_button_send_timer\n");
    ASSERT_TRUE(wait_received(3));
    module->hang_up();
    ASSERT_TRUE(wait([] { return shown("state_word") == "连接已断开"; }));
    ASSERT_TRUE(wait([] { return data_page_traffic().send_done(); }));
    settle();
    const uint32_t before = rows();
    const std::string lines = csv();
    user_wait([] { return false; }, 300);
    EXPECT_LE(rows(), before + 1);
    EXPECT_LE(csv().size(), lines.size() + 100) << "frames that never went out are recorded as sent";
}

TEST_F(busy_page, what_is_held_is_what_the_row_shows) {
    open_page();
    does("pick ~/combo_box_ex_crc_mode 不带校验\n");
    say(0x11);
    table_client_fill(on_page("table_client"));
    say(0x22); // a refresh ran, the filling waits for its pace
    std::string seen;
    std::string held;
    widget* data = widget_child(row(0), "data");
    widget_on(data, event_type::pointer_down, [&](const event&) {
        seen = widget_get_text_utf8(data);
        return RET_OK;
    });
    // Frames come all the time: what the pointer goes down on is the row as it was filled last.
    const uint32_t stream = timer_add(
        [this] {
            module->babble({0xAA, 0x07, 0x03, 0x01, 0x00, 0x33, 0x00, 0x00, 0x00, next_, next_});
            next_++;
            return RET_REPEAT;
        },
        15);
    user_wait([] { return false; }, 300);
    const uint32_t watch = timer_add(
        [&held] {
            widget* info = navigator_find("data_info");
            if (info == nullptr) return RET_REPEAT;
            held = widget_get_text_utf8(widget_lookup(info, "edit_data"));
            navigator_back();
            return RET_REMOVE;
        },
        20);
    does("press ~/table_client/data_row[0]/data 900\n");
    timer_remove(watch);
    timer_remove(stream);
    EXPECT_EQ(held, seen);
}

TEST_F(busy_page, a_pause_does_not_hide_that_the_module_is_gone) {
    open_page();
    does("pick ~/combo_box_ex_crc_mode 不带校验\nclick ~/check_button_read_puase\n");
    say(0x11); // ends the read that was under way
    module->hang_up();
    EXPECT_TRUE(user_wait([] { return shown("state_word") == "连接已断开"; }, 3000)) << shown("state_word");
}

TEST_F(busy_page, a_module_that_goes_while_the_page_is_left_is_known_at_home) {
    open_page();
    data_page_leave_ms() = 300;
    does("click ~/button_back\n");
    module->hang_up();
    ASSERT_TRUE(wait([] { return page() == nullptr && data_page_traffic().link() == traffic_link::none; }));
    settle();
    EXPECT_EQ(text(home(), "state_word"), "连接已断开");
}

// A page that is switched off hands keys to its parent.
TEST_F(busy_page, a_key_while_the_page_is_left_does_nothing) {
    open_page();
    data_page_leave_ms() = 500;
    does("click ~/button_back\nkey a\n");
    ASSERT_TRUE(wait([] { return page() == nullptr; }));
}

} // namespace
