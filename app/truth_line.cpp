#include "app/truth_line.h"

#include "app/change_list.h"
#include "app/devices.h"
#include "app/edit_marks.h"
#include "app/field_place.h"
#include "app/home_parts.h"
#include "toolkit/core/text.h"

namespace {

/// "14:32"
std::string clock_of(const date_time_t& at) { return tk_format("%02d:%02d", at.hour, at.minute); }

const char* style_of(const dev_obj& dev, std::size_t unwritten, std::size_t refused) {
    if (refused != 0) return "failed";
    if (unwritten != 0) return "warning";
    return dev.in_module ? "ok" : "";
}

} // namespace

std::string truth_line_text(const dev_obj& dev, std::size_t unwritten, std::size_t refused) {
    if (refused != 0) return tk_format("有 %d 项输入未被接受", static_cast<int>(refused));
    const std::string count = tk_format("%d 项未写入", static_cast<int>(unwritten));
    if (dev.in_module) return unwritten == 0 ? "与模块一致 " + clock_of(dev.in_module->at) : count;
    return unwritten == 0 ? "默认值，尚未读取" : count + "，尚未读取";
}

void truth_line_show(widget* home, const family_pages& pages, dev_obj& dev, std::size_t unwritten) {
    const std::size_t refused = marks_refused(home, pages).size();
    widget* line = home_part(home, "truth_line");
    widget_set_text_utf8(line, truth_line_text(dev, unwritten, refused).c_str());
    widget_set_style_state(line, style_of(dev, unwritten, refused));
}

ret_t truth_line_pressed(widget* home) {
    const family_pages* pages = current_pages();
    if (pages == nullptr) return RET_FAIL;
    const auto refused = marks_refused(home, *pages);
    return refused.empty() ? change_list_open(home) : field_go_to(home, *pages, refused.front()->key);
}
