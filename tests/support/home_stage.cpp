#include "tests/support/home_stage.h"

#include "app/families.h"
#include "toolkit/table_view/table_view.h"

#include <string_view>

namespace {

void show_part(widget* home, const char* name, bool on) {
    widget_set_visible(widget_lookup(home, name), on);
    widget_set_enable(widget_lookup(home, name), on);
}

void show_code(const dev_obj& dev, const family_pages& of) {
    widget* home = widget_child(window_manager(), "home_page");
    const bool alternative = widget_get_value_int(widget_lookup(home, of.code_mode)) != 0;
    widget_set_text_utf8(widget_lookup(home, "mledit"),
                         of.of->code_text(dev, {alternative, false}, nullptr).c_str());
}

std::unique_ptr<dev_obj> device_with_code(const family_pages& of) {
    const family_descriptor* const list[] = {of.of};
    std::unique_ptr<dev_obj> made = dev_open(list, of.of->device);
    made->shown = [shown = made.get(), &of] { show_code(*shown, of); };
    return made;
}

} // namespace

void home_stage::SetUp() {
    toolkit_stage_start();
    table_view_register();
    home_anew();
    console_.emplace();
}

void home_stage::TearDown() {
    console_.reset();
    toolkit_stage_clear(); // before the devices go
}

void home_stage::home_anew() {
    if (home != nullptr) window_manager_close_window_force(window_manager(), home);
    home = window_open("home_page");
    page = nullptr;
    ASSERT_NE(home, nullptr) << window_open_error();
}

void home_stage::choose(const family_pages& of) {
    of_ = &of;
    if (devices_[&of] == nullptr) devices_[&of] = device_with_code(of);
    dev = devices_[&of].get();
    for (const family_pages* other : families()) {
        show_part(home, other->container, other == &of);
        show_part(home, other->code_mode, other == &of);
    }
}

/// Null when the page is neither the tab's nor inside it.
widget* home_stage::page_of_tab(const page_tab& tab, const char* name) const {
    widget* outer = widget_lookup(widget_lookup(home, of_->page_set), tab.page);
    if (tab.page == std::string_view(name)) return outer;
    widget_build(outer);
    return widget_lookup(outer, name);
}

widget* home_stage::show(const char* name) {
    page = nullptr;
    for (const page_tab& tab : of_->tabs) {
        page = page_of_tab(tab, name);
        if (page == nullptr) continue;
        widget* set = widget_lookup(home, of_->page_set);
        widget* outer = widget_lookup(set, tab.page);
        EXPECT_EQ(pages_set_active_by_name(set, tab.page), RET_OK);
        EXPECT_EQ(tab.init(outer, *dev), RET_OK);
        widget_foreach(outer, [name](widget* w) {
            if (widget_type(w) == "pages") pages_set_active_by_name(w, name);
            return RET_OK;
        });
        break;
    }
    EXPECT_NE(page, nullptr) << name;
    page_path_ = std::string("home_page/") + name;
    dev_show(*dev);
    return page;
}

void home_stage::does(std::string script) {
    for (std::size_t at = script.find('@'); at != std::string::npos; at = script.find('@', at))
        script.replace(at, 1, page_path_);
    EXPECT_EQ(user_does(script), "");
}

void home_stage::set(const std::string& key, uint32_t number) const {
    const field* row = field_find(dev->of.fields, key);
    ASSERT_NE(row, nullptr) << key;
    tk_object* props = dev->props.get();
    if (row->form == value_form::word)
        tk_object_set_prop_uint32(props, key.c_str(), number);
    else if (row->form == value_form::flag)
        tk_object_set_prop_bool(props, key.c_str(), number != 0);
    else
        tk_object_set_prop_uint8(props, key.c_str(), static_cast<uint8_t>(number));
    ASSERT_EQ(dev_encode(*dev), RET_OK);
}
