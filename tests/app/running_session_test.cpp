// The home page while a session runs: nothing of it can be changed, and what a read brings reaches store, code view
// and page in this order.
#include "app/progress.h"
#include "app/session_results.h"
#include "dev_a/pages/vkt510a_pages.h"
#include "dev_b/pages/vkt610b_pages.h"
#include "dev_generic/pages/generic_pages.h"
#include "serial/port_lease.h"
#include "tests/support/app_fixture.h"
#include "tests/support/user.h"

#include <set>

namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;

struct read_case {
    const family_pages& of;
    const char* model;
    const char* tab;
    const char* page;
    const char* rates; ///< selector of the UART rate on this page
    const char* key;
    std::size_t at; ///< of the rate's code in the module's memory
    uint8_t code;   ///< of 1200 baud
    const char* shown;
    const char* listed;    ///< in the code view then
    const char* last_step; ///< reported before the image
};

class running_session : public app_test, public testing::WithParamInterface<read_case> {
  protected:
    void SetUp() override {
        app_test::SetUp();
        port_usual_ = port_timing_get();
        session_usual_ = session_timing_get();
        // A read in vain lasts as long as the test.
        port_timing_get().timeouts.ReadTotalTimeoutConstant = 60000;
        session_timing_get().read_wait_ms = 60000;
        connect(GetParam().model);
        click(home(), GetParam().tab);
    }
    void TearDown() override {
        app_test::TearDown();
        port_timing_get() = port_usual_;
        session_timing_get() = session_usual_;
    }
    static std::string path(const char* name) { return std::string("home_page/") + GetParam().page + "/" + name; }
    static uint32_t stored() {
        return tk_object_get_prop_uint32(device(GetParam().of).props.get(), GetParam().key, 0xDEAD);
    }
    static bool rate_on_page() { return text(at(GetParam().page), GetParam().rates) == GetParam().shown; }
    static bool rate_in_code() { return text(home(), "mledit").find(GetParam().listed) != std::string::npos; }
    /// All that the user could have changed.
    static std::string all_values() {
        const dev_obj& dev = device(GetParam().of);
        std::string all =
            text(home(), "mledit") + text(home(), "combo_box_ex_dev") + text(home(), "combo_box_ex_serial");
        for (const std::string& key : tk_object_keys(dev.props.get()))
            all += "\n" + key + "=" + tk_object_get_prop_str(dev.props.get(), key.c_str(), "");
        widget_foreach(home(), [&all](widget* w) {
            if (widget_type(w) != "pages") all += "\n" + widget_name(w) + "=" + widget_get_text_utf8(w);
            return RET_OK;
        });
        return all;
    }
    /// The paths of what takes input on the family's part of the home page: its tabs and what stands on the page.
    static std::vector<std::string> inputs() {
        const std::set<std::string> taking = {"combo_box", "spin_box",   "edit",   "check_button",
                                              "switch",    "tab_button", "button", "scroll_bar"};
        std::vector<std::string> paths = {std::string("home_page/") + GetParam().of.code_mode};
        widget_foreach(at(GetParam().of.container), [&](widget* w) {
            if (taking.contains(widget_type(w)) && widget_get_visible(w))
                paths.push_back("home_page/" + widget_name(w));
            return RET_OK;
        });
        return paths;
    }
    /// Starts a read that the module leaves without an answer.
    void read_in_vain() {
        module->plan({.what = sim::fault::silent, .times = 0xFFFFFFFF});
        click(home(), "button_read");
        ASSERT_TRUE(wait([this] { return module->count().reads == 1; }));
    }

  private:
    port_timing port_usual_;
    session_timing session_usual_;
};

TEST_P(running_session, covers_the_home_page) {
    read_in_vain();
    const std::string before = all_values();
    const std::vector<uint8_t> image = device(GetParam().of).image;
    const std::vector<std::string> all = inputs();
    EXPECT_GE(all.size(), 8U);
    for (const std::string& input : all)
        for (const char* act : {"click %s", "wheel %s -120"})
            EXPECT_THAT(user_tries(tk_format(act, input.c_str())), HasSubstr("lies behind progress")) << input;
    for (const char* name : {"button", "button2", "button_read", "button_write", "button_default",
                             "progress_button", "combo_box_ex_dev", "combo_box_ex_serial"})
        EXPECT_THAT(user_tries(std::string("click home_page/") + name),
                    AnyOf(HasSubstr("lies behind progress"), HasSubstr("is disabled")));
    // The keyboard belongs to the progress window, which cannot be left.
    for (const char* key : {"Tab", "Down", "7", "Space", "Enter", "Shift+Tab", "Up", "Esc"})
        user_tries(std::string("key ") + key);
    EXPECT_TRUE(device(GetParam().of).session.running());
    EXPECT_EQ(all_values(), before);
    EXPECT_EQ(device(GetParam().of).image, image);
    EXPECT_EQ(window_manager_get_top_window(window_manager()), progress());
}

TEST_P(running_session, gives_the_page_back_when_it_is_over) {
    read_in_vain();
    com::abort_all();
    ASSERT_TRUE(wait([] { return widget_get_visible(widget_lookup(progress(), "ok")); }));
    press_ok();
    EXPECT_FALSE(rate_on_page());
    EXPECT_EQ(user_does("pick " + path(GetParam().rates) + " " + user_word(GetParam().shown)), "");
    EXPECT_EQ(stored(), GetParam().code);
    EXPECT_TRUE(rate_in_code());
}

TEST_P(running_session, brings_an_image_to_store_code_view_and_page_in_this_order) {
    std::vector<uint8_t> memory = module->memory();
    memory[GetParam().at] = GetParam().code;
    module->set_memory(memory);
    ASSERT_NE(stored(), GetParam().code);
    dev_obj& dev = device(GetParam().of);
    std::vector<std::string> order;
    const auto note = [&](const char* when) {
        order.push_back(tk_format("%s: store %d, code %d, page %d, %s", when, stored() == GetParam().code,
                                  rate_in_code(), rate_on_page(), text(progress(), "label3").c_str()));
    };
    dev.shown = [&note, show = dev.shown] {
        note("before");
        show();
        note("after");
    };
    EXPECT_EQ(run("button_read"), "读配置完成");
    dev.shown = nullptr;
    const std::string step = GetParam().last_step;
    EXPECT_THAT(order,
                ElementsAre("before: store 1, code 0, page 0, " + step, "after: store 1, code 1, page 0, " + step));
    EXPECT_TRUE(rate_on_page());
    EXPECT_EQ(dev.image[GetParam().at], GetParam().code);
}

TEST_P(running_session, brings_an_image_to_the_page_with_the_report_of_100_percent) {
    const session_reports reports = session_results(GetParam().of);
    session_bytes image = device(GetParam().of).image;
    image[GetParam().at] = GetParam().code;
    progress_open_for_run();
    reports.image(1, image);
    settle();
    EXPECT_EQ(stored(), GetParam().code);
    EXPECT_TRUE(rate_in_code());
    EXPECT_FALSE(rate_on_page());
    reports.connected();
    reports.progress({99, "按键初始化.....", operation::read});
    settle();
    EXPECT_FALSE(rate_on_page());
    reports.progress({100, "读配置完成", operation::read});
    settle();
    EXPECT_TRUE(rate_on_page());
}

INSTANTIATE_TEST_SUITE_P(
    families, running_session,
    testing::Values(read_case{generic_pages, "VKT531A", "table_button_uart", "page_uart", "combo_box_ex_bps",
                              "uart_baud_rate", 0, 9, "1200", "F7 F8 01 3C 09 ", "上传配置....."},
                    read_case{vkt510a_pages, "VKT510A", "vkt510a_tab_button_uart", "page_vkt510a_uart",
                              "combo_box_ex_bps_vkt510a", "uart_bps_vkt510a", 0, 9, "1200", "F7 F8 01 3C 09 ",
                              "检测配置....."},
                    read_case{vkt610b_pages, "VKT610B", "vkt610b_tab_button_uart", "page_vkt610b_uart_1",
                              "combo_box_ex_bps_1_vkt610b", "uart1_bps_vkt610b", 8, 2, "1.2k",
                              "寄存器 02 的配置指令: AA0702FF0202000000", "读配置....."}),
    [](const auto& one) { return std::string(one.param.model); });

} // namespace
