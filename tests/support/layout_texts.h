// What a layout shows beside a widget: the caption before it and the unit behind it.
#pragma once

#include "toolkit/ravel/widget.h"

#include <string>
#include <vector>

struct layout_texts {
    std::string label;
    std::string unit;
};

/// Of the widget `name` below `root`. A check box carries its label itself. A unit may also stand in the title of
/// the card, in wide brackets at its end: it holds for all edits of the card.
inline layout_texts layout_texts_of(widget* root, const std::string& name) {
    std::vector<widget*> all;
    widget_foreach(root, [&all](widget* w) {
        all.push_back(w);
        return RET_OK;
    });
    const auto begins = [](widget* w, const char* head) { return widget_name(w).rfind(head, 0) == 0; };
    const std::string open = "（", close = "）";
    layout_texts out;
    std::string title_unit;
    for (std::size_t i = 0; i < all.size(); i++) {
        if (begins(all[i], "title_")) {
            const std::string title = widget_get_text_utf8(all[i]);
            const std::size_t at = title.rfind(open);
            title_unit.clear();
            if (at != std::string::npos && title.ends_with(close))
                title_unit = title.substr(at + open.size(), title.size() - at - open.size() - close.size());
        }
        if (widget_name(all[i]) != name) continue;
        if (widget_type(all[i]) == "check_button") return {widget_get_text_utf8(all[i]), ""};
        if (i > 0 && begins(all[i - 1], "caption_")) out.label = widget_get_text_utf8(all[i - 1]);
        out.unit =
            i + 1 < all.size() && begins(all[i + 1], "unit_") ? widget_get_text_utf8(all[i + 1]) : title_unit;
        return out;
    }
    return out;
}
