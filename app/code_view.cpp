#include "app/code_view.h"

#include "app/devices.h"
#include "fields/code_marks.h"
#include "shell/navigator.h"

#include <algorithm>

namespace {

/// What is on show, and what of it the user points at. One window, one view.
struct view_state {
    const family_pages* pages = nullptr;
    code_shown shown;
    std::string own_tooltip;
    const field* under_pointer = nullptr; ///< on a page
    const field* with_keyboard = nullptr; ///< likewise
    image_bits under_text_pointer;        ///< in the text
};

view_state& view() {
    static auto& one = *new view_state;
    return one;
}

widget* box_of(widget* home) { return widget_lookup(home, "mledit"); }

const dev_obj* shown_device() { return view().pages == nullptr ? nullptr : device_of(*view().pages); }

/// The pointer counts before the keyboard.
std::vector<const field*> at_hand(const dev_obj& dev) {
    if (view().under_text_pointer.count != 0) return fields_among(dev.of, view().under_text_pointer);
    const field* one = view().under_pointer != nullptr ? view().under_pointer : view().with_keyboard;
    const bool of_this = one != nullptr && field_find(dev.of.fields, one->key) != nullptr;
    return of_this ? std::vector{one} : std::vector<const field*>{};
}

void show_marks(widget* box) {
    const dev_obj* dev = shown_device();
    if (dev == nullptr) return;
    const std::span<const uint8_t> reference =
        dev->in_module ? std::span<const uint8_t>(dev->in_module->bytes) : std::span<const uint8_t>();
    mledit_set_marks(box, code_marks(*dev, reference, view().shown, at_hand(*dev)));
}

void show_tooltip(widget* box) {
    const dev_obj* dev = shown_device();
    const std::string told = dev == nullptr ? "" : bits_told(*dev, view().under_text_pointer);
    widget_set_tooltip(box, told.empty() ? view().own_tooltip.c_str() : told.c_str());
}

ret_t text_pointed(const event& what) {
    const dev_obj* dev = shown_device();
    if (dev == nullptr) return RET_OK;
    const image_bits bits = bits_at_text(dev->of, view().shown, what.offset);
    if (bits == view().under_text_pointer) return RET_OK;
    view().under_text_pointer = bits;
    show_tooltip(what.target);
    show_marks(what.target);
    return RET_OK;
}

bool has_page(const family_pages& pages, std::string_view key) {
    const auto shows = [key](const page_row& row) { return row.what->key != nullptr && key == row.what->key; };
    return std::ranges::any_of(pages.tables,
                               [&](const page_table* table) { return std::ranges::any_of(table->rows, shows); });
}

/// Goes to the field of the digit; where that is none, or on no page, to another of its byte or register.
ret_t text_clicked(widget* home, code_view_go_to go_to, const event& what) {
    const dev_obj* dev = shown_device();
    if (dev == nullptr) return RET_OK;
    const family_pages& pages = *view().pages;
    for (const image_bits bits :
         {bits_of_digit(view().shown, what.offset), bits_at_text(dev->of, view().shown, what.offset)})
        for (const field* row : fields_among(dev->of, bits))
            if (has_page(pages, row->key)) return go_to(home, pages, row->key);
    return RET_OK;
}

void field_pointed_at(dev_obj& dev, const field& what, event_type how) {
    const bool by_pointer = how == event_type::pointer_enter || how == event_type::pointer_leave;
    const bool comes = how == event_type::pointer_enter || how == event_type::focus;
    const field*& at = by_pointer ? view().under_pointer : view().with_keyboard;
    if (!comes && at != &what) return; // another one came before this one was left
    at = comes ? &what : nullptr;
    if (&dev == shown_device()) show_marks(box_of(navigator_find("home_page")));
}

} // namespace

void code_view_bind(widget* home, code_view_go_to go_to) {
    widget* box = widget_need(home, "mledit");
    view() = {};
    view().own_tooltip = widget_get_prop_str(box, "toolTip", "");
    widget_on(box, event_type::text_hover, text_pointed);
    widget_on(box, event_type::text_click,
              [home, go_to](const event& what) { return text_clicked(home, go_to, what); });
    page_on_pointed(field_pointed_at);
}

ret_t code_view_show(widget* home, const family_pages& pages, const dev_obj& dev, bool restored) {
    widget* box = box_of(home);
    widget* form = widget_lookup(home, pages.code_mode);
    if (box == nullptr || form == nullptr) return RET_FAIL;
    code_shown now;
    now.text = pages.of->code_text(dev, {widget_get_value_int(form) != 0, restored}, &now.spans);
    const ret_t ret = widget_set_text_utf8(box, now.text.c_str());
    view().pages = &pages;
    view().shown = std::move(now);
    view().under_text_pointer = bits_at_text(dev.of, view().shown, mledit_get_hovered(box));
    show_tooltip(box);
    show_marks(box);
    return ret;
}

void code_view_refresh(widget* home, const family_pages& pages) {
    if (view().pages == &pages) show_marks(box_of(home));
}
