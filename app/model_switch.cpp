#include "app/model_switch.h"

#include "app/code_view.h"
#include "app/devices.h"
#include "app/home_scroll.h"
#include "app/profile_title.h"
#include "shell/navigator.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t model_text_max = 100;

/// The model chosen first; where it is none of the families in use, their first.
const char* start_model() {
    constexpr const char* usual = "VKT531A";
    return pages_of_model(usual) != nullptr ? usual : families().front()->of->models.front().name;
}

model_followers followers{};

/// Families whose tabs are bound in this window.
std::set<const family_pages*>& prepared() {
    static auto& bound = *new std::set<const family_pages*>;
    return bound;
}

void show(widget* home, const char* name, bool on) {
    widget* w = widget_lookup(home, name);
    widget_set_visible(w, on);
    widget_set_enable(w, on);
}

ret_t tab_fill(widget* set, const family_pages& pages, const page_tab& tab) {
    dev_obj* dev = device_of(pages);
    return dev == nullptr ? RET_FAIL : tab.init(widget_lookup(set, tab.page), *dev);
}

// The page is looked up below its page set: pages of several families may share widget names.
ret_t tab_show(widget* home, const family_pages& pages, const page_tab& tab) {
    widget* set = widget_lookup(home, pages.page_set);
    ret_t ret = pages_set_active_by_name(set, tab.page);
    if (ret == RET_OK) ret = tab_fill(set, pages, tab);
    if (followers.shown != nullptr) followers.shown(home);
    return ret;
}

// A tab's value changes when it goes off too; only the one that is on shows its page.
void tabs_bind(widget* home, const family_pages& pages) {
    for (const auto& tab : pages.tabs) {
        widget* button = widget_need(home, tab.button);
        widget_on(button, event_type::value_changed, [home, button, &pages, &tab](const event&) {
            return widget_get_value_int(button) != 0 ? tab_show(home, pages, tab) : RET_OK;
        });
    }
}

bool monitor_exists(const family_pages& pages) { return pages.of->monitor_refusal != nullptr; }

ret_t pages_prepare(widget* home, const family_pages& pages) {
    log_console(tk_format("设备名称: %s\n", pages.of->device));
    if (prepared().contains(&pages)) return RET_OK;
    if (widget_lookup(home, pages.page_set) == nullptr || pages.tabs.empty()) return RET_FAIL;
    if (pages.starts_at_first_tab) {
        home_scroll_to_top(home);
        pages_set_active(widget_lookup(home, pages.page_set), 0);
        widget_set_value_int(widget_lookup(home, pages.tabs.front().button), 1);
    }
    tabs_bind(home, pages);
    prepared().insert(&pages);
    return RET_OK;
}

/// Shows a device's configuration as text.
ret_t code_show(const family_pages& pages, bool restored) {
    const dev_obj* dev = device_of(pages);
    const ret_t ret =
        dev == nullptr ? RET_FAIL : code_view_show(navigator_find("home_page"), pages, *dev, restored);
    if (ret != RET_OK) {
        if (pages.code_lost != nullptr) log_console(pages.code_lost);
        return ret;
    }
    profile_title_soon();
    if (followers.code_shown != nullptr) followers.code_shown(pages, restored);
    return ret;
}

// Makes the device if need be, and prepares the pages when that, `renew` or the window asks for it; the console
// says what failed.
ret_t device_ready(widget* home, const family_pages& pages, bool renew) {
    const bool missing = device_of(pages) == nullptr;
    dev_obj* dev = device_make(pages);
    if (dev == nullptr) {
        log_console(tk_format("%s产品初始化失败\n", pages.log_name));
        return RET_FAIL;
    }
    if (followers.device_ready != nullptr) followers.device_ready(pages, *dev);
    dev->shown = [&pages] { static_cast<void>(code_show(pages, false)); };
    if (!missing && !renew && prepared().contains(&pages)) return RET_OK;
    if (pages_prepare(home, pages) == RET_OK) return RET_OK;
    log_console(tk_format("%s初始化按键列表失败\n", pages.log_name));
    return RET_FAIL;
}

ret_t family_show(widget* home, const family_pages& pages, bool renew) {
    ret_t ret = device_ready(home, pages, renew);
    if (ret == RET_OK) ret = model_widgets_show(home, pages);
    if (ret != RET_OK) return ret;
    model_page_refresh(home);
    ret = model_show_code(home);
    if (followers.shown != nullptr) followers.shown(home);
    return ret;
}

} // namespace

void model_followed_by(model_followers who) { followers = who; }

void model_bind(widget* home) {
    for (const family_pages* pages : families()) {
        widget_on(widget_need(home, pages->code_mode), event_type::click, [home](const event& what) {
            widget_set_focused(what.target); // takes what is being typed, as by the mouse
            return model_show_code(home);
        });
        if (pages == pages_of_model(start_model())) continue;
        show(home, pages->container, false);
        show(home, pages->code_mode, false);
    }
}

void model_selector_fill(widget* home) {
    widget* selector = widget_lookup(home, "combo_box_ex_dev");
    std::vector<std::pair<int32_t, std::string>> options;
    for (const family_pages* pages : families())
        for (const family_model& row : pages->of->models) options.emplace_back(row.selector_value, row.name);
    combo_box_set_options(selector, options);
    widget_set_text_utf8(selector, start_model());
    set_current_model(start_model());
}

void model_window_changed() { prepared().clear(); }

ret_t model_widgets_show(widget* home, const family_pages& chosen) {
    if (device_of(chosen) == nullptr) {
        log_console("dev_info == NULL error ");
        return RET_INIT_FAILED;
    }
    show(home, "button_serial_assistant", false);
    for (const family_pages* pages : families()) {
        show(home, pages->container, false);
        show(home, pages->code_mode, false);
    }
    show(home, "button_data_lock", false);
    show(home, chosen.container, true);
    show(home, chosen.code_mode, true);
    if (monitor_exists(chosen)) show(home, "button_data_lock", true);
    return RET_OK;
}

const family_pages* model_selected(widget* home) {
    return pages_of_model(widget_get_text_utf8(widget_lookup(home, "combo_box_ex_dev")));
}

ret_t model_switch(widget* home) {
    log_console("开始初始化\n");
    widget* selector = widget_lookup(home, "combo_box_ex_dev");
    if (selector == nullptr) {
        log_console("获取设备名称失败\n");
        return RET_FAIL;
    }
    set_current_model(tk_utf8_cut(widget_get_text_utf8(selector), model_text_max));
    for (dev_obj* dev : devices()) dev_module_unknown(*dev); // another module is meant
    const family_pages* pages = model_selected(home);
    return pages == nullptr ? RET_OK : family_show(home, *pages, false);
}

ret_t model_choose(widget* home, const std::string& model) {
    for (const family_pages* pages : families())
        for (const family_model& row : pages->of->models) {
            if (model != row.name) continue;
            widget_set_value_int(widget_lookup(home, "combo_box_ex_dev"), row.selector_value);
            return model_switch(home);
        }
    return RET_FAIL;
}

ret_t model_start(widget* home) {
    const family_pages* pages = pages_of_model(start_model());
    if (pages == nullptr) return RET_INIT_FAILED;
    if (dev_obj* dev = device_of(*pages)) static_cast<void>(dev_encode(*dev));
    return family_show(home, *pages, true) == RET_OK ? RET_OK : RET_INIT_FAILED;
}

ret_t model_page_refresh(widget* home) {
    const family_pages* pages = model_selected(home);
    if (pages == nullptr) return RET_FAIL;
    for (const auto& tab : pages->tabs)
        if (widget_get_value_int(widget_lookup(home, tab.button)) != 0)
            return tab_fill(widget_lookup(home, pages->page_set), *pages, tab);
    return RET_FAIL;
}

ret_t model_show_code(widget* home) {
    const family_pages* pages = model_selected(home);
    return pages == nullptr ? RET_FAIL : code_show(*pages, false);
}

ret_t model_show_code_as(const family_pages& pages, bool restored) { return code_show(pages, restored); }

ret_t model_tab_show(widget* home, const family_pages& pages, const page_tab& tab) {
    widget_set_value_int(widget_lookup(home, tab.button), 1);
    return tab_show(home, pages, tab);
}

ret_t model_restore_defaults(widget* home) {
    const family_pages* pages = model_selected(home);
    dev_obj* dev = pages == nullptr ? nullptr : device_of(*pages);
    if (dev == nullptr) return RET_FAIL;
    dev_restore(*dev);
    ret_t ret = code_show(*pages, true);
    if (ret == RET_OK) ret = model_page_refresh(home);
    dev_edited(*dev, {.name = "恢复默认"});
    return ret;
}
