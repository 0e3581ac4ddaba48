#include "app/change_list.h"

#include "app/devices.h"
#include "app/field_place.h"
#include "app/home_parts.h"
#include "edits/put_back.h"
#include "shell/copy_notice.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/text.h"
#include "toolkit/table_view/table_view.h"

#include <algorithm>
#include <map>
#include <utility>

namespace {

ret_t (*applied_as)(widget* home, const char* name) = nullptr;

// What the table shows now.
std::vector<image_difference>& shown() {
    static auto& rows = *new std::vector<image_difference>;
    return rows;
}

/// The fields on the rows as they are seen: they follow `shown` with the table's next filling.
std::map<const widget*, const field*>& seen() {
    static auto& fields = *new std::map<const widget*, const field*>;
    return fields;
}

// Whose button is held down: what the press stores may move the rows under the pointer.
const field* pressed = nullptr;

std::string title_of(const family_descriptor& of, const field& what) {
    const std::string page = what.shown.page < of.pages.size() ? of.pages[what.shown.page] : "";
    return page.empty() ? what.label : page + " · " + what.label;
}

std::string default_of(const dev_obj& dev, const field& what) {
    const auto value = value_in_image(dev.of, what, image_of_defaults(dev.of));
    return value ? value_with_unit(what, *value) : "";
}

/// The module's value (of a known one), the current and the default one, each with its name, `between` them.
std::string values_text(const dev_obj& dev, const image_difference& one, const char* between) {
    const std::string module =
        dev.in_module ? "模块中: " + value_with_unit(*one.what, one.left) + between : std::string();
    return module + "当前: " + value_with_unit(*one.what, one.right) + between +
           "默认: " + default_of(dev, *one.what);
}

/// What differs from the module and yet is no edit; empty when nothing does.
std::string same_text(const dev_obj& dev) {
    std::string names;
    if (!dev.in_module) return names;
    for (const image_difference& one : image_differences(dev.of, dev.in_module->bytes, dev.image))
        if (one.always_same) names += (names.empty() ? "" : "、") + title_of(dev.of, *one.what);
    return names.empty() ? names : "写入时总是同一个值，不算改动：" + names;
}

bool differs_from_defaults(const dev_obj& dev, const std::vector<image_difference>& unwritten) {
    if (!dev.in_module) return !unwritten.empty();
    return std::ranges::any_of(image_differences(dev.of, image_of_defaults(dev.of), dev.image),
                               [](const image_difference& one) { return !one.always_same; });
}

const image_difference* row_at(int64_t index) {
    return index >= 0 && static_cast<std::size_t>(index) < shown().size() ? &shown()[index] : nullptr;
}

ret_t fill_row(uint32_t index, widget* row) {
    const image_difference* one = row_at(index);
    const dev_obj* dev = current_device();
    if (one == nullptr || dev == nullptr) return RET_FAIL;
    seen()[row] = one->what;
    widget_set_text_utf8(widget_lookup(row, "change_field"), title_of(dev->of, *one->what).c_str());
    widget_set_text_utf8(widget_lookup(row, "change_values"), values_text(*dev, *one, "　").c_str());
    return widget_set_style_state(row, table_row_chosen(row) ? "chosen" : index % 2 == 0 ? "even" : "odd");
}

ret_t put_back(widget* home, widget* row, put_back_to to) {
    const field* what = std::exchange(pressed, nullptr);
    if (what == nullptr) what = seen()[row]; // by the keyboard
    dev_obj* dev = current_device();
    if (what == nullptr || dev == nullptr) return RET_FAIL;
    const ret_t ret = edit_put_back(*dev, *what, to);
    return ret == RET_OK ? applied_as(home, what->label) : ret;
}

ret_t let_go() {
    pressed = nullptr;
    return RET_OK;
}

ret_t put_all_back(widget* home, put_back_to to, const char* name) {
    dev_obj* dev = current_device();
    if (dev == nullptr || edit_put_all_back(*dev, to) == 0) return RET_FAIL;
    return applied_as(home, name);
}

std::string rows_text(uint32_t first, uint32_t last) {
    const dev_obj* dev = current_device();
    if (dev == nullptr || shown().empty()) return "";
    const auto begin = shown().begin();
    const std::size_t end = std::min<std::size_t>(last + 1, shown().size());
    return change_list_text(*dev, {begin + first, begin + static_cast<std::ptrdiff_t>(end)});
}

ret_t go_to_row(widget* home, uint32_t index) {
    const image_difference* one = row_at(index);
    const family_pages* pages = current_pages();
    return one == nullptr || pages == nullptr ? RET_FAIL : field_go_to(home, *pages, one->what->key);
}

void bind_row(widget* home, widget* row) {
    const std::pair<const char*, put_back_to> buttons[] = {{"button_row_back", put_back_to::module},
                                                           {"button_row_default", put_back_to::defaults}};
    for (const auto& [name, to] : buttons) {
        widget* button = widget_lookup(row, name);
        widget_on(button, event_type::pointer_down, [row](const event&) {
            pressed = seen()[row];
            return RET_OK;
        });
        widget_on(button, event_type::pointer_up,
                  [](const event&) { return idle_queue(let_go); }); // after the click
        widget_on(button, event_type::blur, [](const event&) { return let_go(); });
        widget_on(button, event_type::click,
                  [home, row, to = to](const event&) { return put_back(home, row, to); });
    }
}

} // namespace

std::string change_note_text(const dev_obj& dev, std::size_t count) {
    const char* beside = dev.in_module ? "模块中的值" : "默认值（尚未读取模块）";
    const std::string what = count == 0 ? tk_format("与%s没有不同", beside)
                                        : tk_format("与%s相比，写入会改变 %d 项", beside, static_cast<int>(count));
    const std::string same = same_text(dev);
    return same.empty() ? what : what + "\n" + same;
}

std::string change_list_text(const dev_obj& dev, const std::vector<image_difference>& unwritten) {
    std::string text;
    for (const image_difference& one : unwritten)
        text += title_of(dev.of, *one.what) + "\t" + values_text(dev, one, "\t") + "\n";
    return text;
}

std::string change_lines_text(const dev_obj& dev, const std::vector<image_difference>& unwritten) {
    std::string text;
    for (const image_difference& one : unwritten)
        text += (text.empty() ? "" : "\n") + title_of(dev.of, *one.what) + "\n　　" + values_text(dev, one, "　");
    return text;
}

void change_list_show(widget* home, const dev_obj& dev, const std::vector<image_difference>& unwritten) {
    shown() = unwritten;
    const std::string count = unwritten.empty() ? "改动" : tk_format("改动 %d", static_cast<int>(unwritten.size()));
    widget_set_text_utf8(home_part(home, "tab_changes"), count.c_str());
    widget_set_text_utf8(home_part(home, "changes_note"), change_note_text(dev, unwritten.size()).c_str());
    for (const char* name : {"button_all_back", "button_copy_changes"})
        widget_set_enable(home_part(home, name), !unwritten.empty());
    widget_set_enable(home_part(home, "button_all_default"), differs_from_defaults(dev, unwritten));
    table_client_set_rows(home_part(home, "changes_table"), static_cast<uint32_t>(unwritten.size()));
}

ret_t change_list_open(widget* home) {
    widget_set_value_int(home_part(home, "tab_changes"), 1);
    return pages_set_active_by_name(home_part(home, "code_pages"), "changes_page");
}

void change_list_bind(widget* home, ret_t (*applied)(widget* home, const char* name)) {
    applied_as = applied;
    seen().clear(); // the rows of a window before
    widget* set = widget_need(home, "code_pages");
    const std::pair<const char*, const char*> tabs[] = {{"tab_code", "code_page"}, {"tab_changes", "changes_page"}};
    for (const auto& [tab, page] : tabs)
        widget_on(widget_need(home, tab), event_type::value_changed, [set, page = page](const event& what) {
            return widget_get_value_int(what.target) == 0 ? RET_OK : pages_set_active_by_name(set, page);
        });
    widget* table = widget_need(home, "changes_table");
    table_client_set_on_create_row(table, [home](uint32_t, widget* row) {
        bind_row(home, row);
        return RET_OK;
    });
    table_client_set_on_load_data(table, fill_row);
    table_client_set_choice(table, table_choice::range);
    table_client_set_on_take(table, [home](uint32_t index) { return go_to_row(home, index); });
    table_client_set_on_copy(
        table, [](table_rows rows) { return clip_board_set_text(rows_text(rows.first, rows.last).c_str()); });
    widget_on(widget_need(home, "button_copy_changes"), event_type::click, [](const event& what) {
        return copy_with_notice(what.target, rows_text(0, UINT32_MAX - 1).c_str());
    });
    widget_on(widget_need(home, "button_all_back"), event_type::click,
              [home](const event&) { return put_all_back(home, put_back_to::module, "全部还原"); });
    widget_on(widget_need(home, "button_all_default"), event_type::click,
              [home](const event&) { return put_all_back(home, put_back_to::defaults, "全部默认"); });
}
