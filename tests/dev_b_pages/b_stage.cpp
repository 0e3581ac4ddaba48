#include "tests/dev_b_pages/b_stage.h"

#include "toolkit/core/text.h"
#include "toolkit/table_view/table_view.h"

#include <algorithm>

namespace {

void show_part(widget* home, const char* name, bool on) {
    widget_set_visible(widget_lookup(home, name), on);
    widget_set_enable(widget_lookup(home, name), on);
}

} // namespace

void b_stage::SetUp() {
    toolkit_stage_start();
    table_view_register();
    vkt610b_family_register();
    b = dev_open("VKT610B");
    dev_set(family::b, b);
    home = window_open("home_page");
    ASSERT_NE(home, nullptr) << window_open_error();
    for (const char* other : {"view10", "vkt510a_view_1", "code_mode", "code_mode_vkt510a"})
        show_part(home, other, false);
    show_part(home, pages().container, true);
    show_part(home, pages().code_mode, true);
    log_set_capture([](const std::string& text, void* to) { static_cast<b_stage*>(to)->console_ += text; }, this);
}

void b_stage::TearDown() {
    log_set_capture(nullptr, nullptr);
    window_manager_close_window_force(window_manager(), home);
    dev_set(family::b, nullptr);
    tk_object_unref(b->props);
    tk_mutex_destroy(b->mutex);
    delete b;
}

widget* b_stage::show(const char* name) {
    for (const page_tab& tab : pages().tabs) {
        widget* set = widget_lookup(home, pages().page_set);
        widget* outer = widget_lookup(set, tab.page);
        widget_build(outer);
        page = std::string(name) == tab.page ? outer : widget_lookup(outer, name);
        if (page == nullptr) continue;
        EXPECT_EQ(pages_set_active_by_name(set, tab.page), RET_OK);
        EXPECT_EQ(tab.init(outer), RET_OK);
        for (const char* inner : {"vkt610b_uart_pages", "vkt610b_canfd_pages"})
            pages_set_active_by_name(widget_lookup(outer, inner), name);
        break;
    }
    EXPECT_NE(page, nullptr) << name;
    page_path_ = std::string("home_page/") + name;
    EXPECT_EQ(pages().show_code(home), RET_OK);
    return page;
}

std::string b_stage::listed(int reg) const {
    const std::string head = tk_format("寄存器 %02X 的配置指令: ", static_cast<unsigned>(reg));
    const std::string text = code();
    const std::size_t at = text.find(head);
    return at == std::string::npos ? "" : text.substr(at + head.size() + 10, 8);
}

std::string b_stage::console() {
    std::string text;
    text.swap(console_);
    return text;
}

void b_stage::does(std::string script) {
    for (std::size_t at = script.find('@'); at != std::string::npos; at = script.find('@', at))
        script.replace(at, 1, page_path_);
    EXPECT_EQ(user_does(script), "");
}

bool b_stage::unlocked() const {
    if (tk_mutex_try_lock(b->mutex) != RET_OK) return false;
    return tk_mutex_unlock(b->mutex) == RET_OK;
}
