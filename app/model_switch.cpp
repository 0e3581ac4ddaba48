#include "app/model_switch.h"

#include "app/paths.h"
#include "config/dev_obj.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <array>
#include <vector>

namespace {

constexpr const char* start_model = "VKT531A";
constexpr std::size_t model_text_max = 100;

std::array<bool, family_count> prepared; // this window's tabs of the family are bound

bool& prepared_of(const family_pages& pages) { return prepared[static_cast<std::size_t>(pages.of)]; }

void show(widget* home, const char* name, bool on) {
    widget* w = widget_lookup(home, name);
    widget_set_visible(w, on);
    widget_set_enable(w, on);
}

// The page is looked up below its page set: pages of several families may share widget names.
ret_t tab_show(widget* home, const family_pages& pages, const page_tab& tab) {
    widget* set = widget_lookup(home, pages.page_set);
    const ret_t ret = pages_set_active_by_name(set, tab.page);
    return ret == RET_OK ? tab.init(widget_lookup(set, tab.page)) : ret;
}

// A tab's value changes when it goes off too; only the one that is on shows its page.
void tabs_bind(widget* home, const family_pages& pages) {
    for (const auto& tab : pages.tabs) {
        widget* button = widget_lookup(home, tab.button);
        widget_on(button, event_type::value_changed, [home, button, &pages, &tab](const event&) {
            return widget_get_value_int(button) != 0 ? tab_show(home, pages, tab) : RET_OK;
        });
    }
}

// The monitor's button appears only where there is a monitor to open.
bool monitor_exists(const family_pages& pages) { return pages.data_monitor && layout_exists("data_page"); }

// The generic family's first page and tab come up as the layout has them.
ret_t pages_prepare(widget* home, const family_pages& pages, const dev_obj* dev) {
    log_console(tk_format("设备名称: %s\n", dev->model == nullptr ? pages.device : dev->model));
    if (prepared_of(pages)) return RET_OK;
    if (widget_lookup(home, pages.page_set) == nullptr || pages.tabs.empty()) return RET_FAIL;
    if (pages.of != family::generic) {
        const auto& first = pages.tabs.front();
        widget_set_value_int(widget_lookup(home, "scroll_bar_d_home"), 0);
        pages_set_active(widget_lookup(home, pages.page_set), 0);
        widget_set_value_int(widget_lookup(home, first.button), 1);
    }
    tabs_bind(home, pages);
    prepared_of(pages) = true;
    return RET_OK;
}

ret_t visibility_apply(widget* home, const family_pages& chosen) {
    if (dev_get(chosen.of) == nullptr) {
        log_console("dev_info == NULL error ");
        return RET_INIT_FAILED;
    }
    show(home, "button_serial_assistant", false);
    for (const family of : {family::generic, family::b, family::a}) {
        const family_pages* pages = family_pages_of(of);
        if (pages == nullptr) continue;
        show(home, pages->container, false);
        show(home, pages->code_mode, false);
    }
    show(home, "button_data_lock", false);
    show(home, chosen.container, true);
    show(home, chosen.code_mode, true);
    if (monitor_exists(chosen)) show(home, "button_data_lock", true);
    return RET_OK;
}

// Objects that were replaced: a thread may still know one. Never destroyed.
std::vector<dev_obj*>& retired() {
    static auto& objects = *new std::vector<dev_obj*>;
    return objects;
}

// Makes the device object if need be (always, when `renew`) and prepares the pages; the console says what failed.
ret_t device_ready(widget* home, const family_pages& pages, bool renew) {
    const bool missing = dev_get(pages.of) == nullptr;
    if (missing || renew) {
        dev_obj* dev = dev_open(pages.device);
        if (dev == nullptr) {
            log_console(tk_format("%s产品初始化失败\n", pages.log_name));
            return RET_FAIL;
        }
        if (!missing) retired().push_back(dev_get(pages.of));
        dev_set(pages.of, dev);
    }
    if (!missing && !renew && prepared_of(pages)) return RET_OK;
    if (pages_prepare(home, pages, dev_get(pages.of)) == RET_OK) return RET_OK;
    log_console(tk_format("%s初始化按键列表失败\n", pages.log_name));
    return RET_FAIL;
}

ret_t family_show(widget* home, const family_pages& pages, bool renew) {
    ret_t ret = device_ready(home, pages, renew);
    if (ret == RET_OK) ret = visibility_apply(home, pages);
    if (ret != RET_OK) return ret;
    model_page_refresh(home);
    return model_show_code(home);
}

} // namespace

void model_selector_fill(widget* home) {
    widget* selector = widget_lookup(home, "combo_box_ex_dev");
    combo_box_reset_options(selector);
    for (const auto& row : models)
        if (family_pages_of(row.of) != nullptr) combo_box_append_option(selector, row.selector_value, row.name);
    widget_set_value_int(selector, model_find(start_model)->selector_value);
    set_current_model(start_model);
}

void model_window_changed() { prepared.fill(false); }

const family_pages* model_selected(widget* home) {
    const model_row* row = model_find(widget_get_text_utf8(widget_lookup(home, "combo_box_ex_dev")));
    return row == nullptr ? nullptr : family_pages_of(row->of);
}

ret_t model_switch(widget* home) {
    log_console("开始初始化\n");
    widget* selector = widget_lookup(home, "combo_box_ex_dev");
    if (selector == nullptr) {
        log_console("获取设备名称失败\n");
        return RET_FAIL;
    }
    set_current_model(tk_utf8_cut(widget_get_text_utf8(selector), model_text_max));
    const family_pages* pages = model_selected(home);
    return pages == nullptr ? RET_OK : family_show(home, *pages, false);
}

ret_t model_start(widget* home) {
    const family_pages* pages = family_pages_of(family::generic);
    if (pages == nullptr) return RET_INIT_FAILED;
    if (const auto encode = family_ops_of(family::generic).encode) encode(nullptr);
    return family_show(home, *pages, true) == RET_OK ? RET_OK : RET_INIT_FAILED;
}

ret_t model_page_refresh(widget* home) {
    const family_pages* pages = model_selected(home);
    if (pages == nullptr) return RET_FAIL;
    for (const auto& tab : pages->tabs)
        if (widget_get_value_int(widget_lookup(home, tab.button)) != 0)
            return tab.init(widget_lookup(widget_lookup(home, pages->page_set), tab.page));
    return RET_FAIL;
}

ret_t model_show_code(widget* home) {
    const family_pages* pages = model_selected(home);
    return pages == nullptr || pages->show_code == nullptr ? RET_FAIL : pages->show_code(home);
}

ret_t model_restore_defaults(widget* home) {
    const family_pages* pages = model_selected(home);
    if (pages == nullptr || pages->restore_defaults == nullptr) return RET_FAIL;
    const ret_t ret = pages->restore_defaults(home);
    return ret == RET_OK ? model_page_refresh(home) : ret;
}
