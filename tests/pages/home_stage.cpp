#include "tests/pages/home_stage.h"

#include "dev_a/pages/vkt510a_pages.h"

namespace {

void show(widget* home, const char* name, bool wanted) {
    widget_set_visible(widget_lookup(home, name), wanted);
    widget_set_enable(widget_lookup(home, name), wanted);
}

void show_only(widget* home, const family_pages& wanted) {
    for (const char* name : {"view10", "vkt510a_view_1", "vkt610b_view_1"})
        show(home, name, std::string(wanted.container) == name);
    for (const char* name : {"code_mode", "code_mode_vkt510a", "code_mode_vkt610b"})
        show(home, name, std::string(wanted.code_mode) == name);
}

} // namespace

void home_stage::SetUp() {
    toolkit_stage_start();
    ASSERT_EQ(config_objects_create(), RET_OK);
    generic_family_register();
    vkt510a_family_register();
    a = dev_open("VKT510A");
    dev_set(family::a, a);
    cfg_image_set(family::a, {});
    cfg_code_mode_set(false);
    cfg_image_from_props();
    home = window_open("home_page");
    ASSERT_NE(home, nullptr) << window_open_error();
    log_set_capture([](const std::string& text, void* to) { static_cast<home_stage*>(to)->console_ += text; },
                    this);
}

void home_stage::TearDown() {
    log_set_capture(nullptr, nullptr);
    window_manager_close_window_force(window_manager(), home);
    dev_set(family::a, nullptr);
    tk_object_unref(a->props);
    tk_mutex_destroy(a->mutex);
    delete a;
    config_objects_destroy();
}

widget* home_stage::show_page(const family_pages& pages, const char* name) {
    show_only(home, pages);
    page = widget_lookup(widget_lookup(home, pages.page_set), name);
    EXPECT_NE(page, nullptr) << name;
    EXPECT_EQ(pages_set_active_by_name(widget_lookup(home, pages.page_set), name), RET_OK);
    page_path_ = std::string("home_page/") + name;
    for (const page_tab& tab : pages.tabs)
        if (std::string(name) == tab.page) {
            EXPECT_EQ(tab.init(page), RET_OK);
        }
    EXPECT_EQ(pages.show_code(home), RET_OK);
    return page;
}

std::string home_stage::console() {
    std::string text;
    text.swap(console_);
    return text;
}

void home_stage::does(std::string script) {
    for (std::size_t at = script.find('@'); at != std::string::npos; at = script.find('@', at))
        script.replace(at, 1, page_path_);
    EXPECT_EQ(user_does(script), "");
}
