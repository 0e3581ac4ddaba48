#include "app/progress.h"

#include "app/data_monitor.h"
#include "app/model_switch.h"
#include "app/navigator.h"
#include "serial/session.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/log.h"
#include "toolkit/ravel/window_manager.h"

#include <atomic>
#include <memory>

namespace {

constexpr const char* window_name = "progress";
constexpr uint32_t no_percentage = 0xFFFFFFFF;
constexpr uint8_t no_operation = 255;

struct status_row {
    uint8_t operation;
    const char* running;
    const char* finished; // null: the running text stays
};

constexpr status_row statuses[] = {
    {operation::connect, "   连接设备状态", nullptr},
    {operation::connect_failed, "   连接设备状态", "   连接失败"},
    {operation::write, "   写配置状态", "   写配置结束"},
    {operation::read, "   读取配置状态", "   读取配置结束"},
    {operation::mode_change, "   模式转换状态", "   模式转换结束"},
};

// Whether a progress window is open, for threads that may not look: refreshed whenever the GUI thread does look.
std::atomic<bool> window_open_flag{false};

bool window_is_open() {
    if (idle_is_gui_thread()) window_open_flag = navigator_find(window_name) != nullptr;
    return window_open_flag;
}

void status_show(widget* win, uint32_t percent, uint8_t code) {
    for (const auto& row : statuses) {
        if (row.operation != code) continue;
        const bool finished = percent == 100 && row.finished != nullptr;
        widget_set_text_utf8(widget_lookup(win, "label"), finished ? row.finished : row.running);
    }
    const bool failed = percent == 100 && code == operation::connect_failed;
    for (const char* name : {"label", "label3", "progress_bar"})
        widget_set_style_state(widget_lookup(win, name), failed ? "failed" : "");
}

void ok_show(widget* win, bool finished) {
    widget_set_visible(widget_lookup(win, "ok"), finished);
    widget_set_visible(widget_lookup(win, "hscroll_label"), !finished);
    if (finished) widget_set_focused(widget_lookup(win, "ok"));
}

ret_t ok_clicked(const event&) {
    const monitor_answer answer = data_monitor_finish();
    if (answer == monitor_answer::refused) return data_monitor_show_refusal();
    const ret_t ret = navigator_switch_to("home_page", true);
    window_is_open();
    return answer == monitor_answer::open ? navigator_to("data_page") : ret;
}

} // namespace

tk_object_ptr progress_report(uint32_t percent, const std::string& text, uint8_t operation) {
    tk_object_ptr report(object_default_create());
    if (window_is_open()) tk_object_set_prop_str(report.get(), "win", window_name);
    tk_object_set_prop_uint32(report.get(), "propgress_value", percent);
    tk_object_set_prop_str(report.get(), "text_name", text.c_str());
    tk_object_set_prop_uint8(report.get(), "flage", operation);
    return report;
}

ret_t progress_post(widget* /*window*/, uint32_t percent, const std::string& text, uint8_t operation) {
    const std::shared_ptr<tk_object> report = progress_report(percent, text, operation);
    return idle_queue([report] { return progress_update(report.get()); });
}

ret_t progress_update(const tk_object* report) {
    widget* win = tk_object_has_prop(report, "win") ? navigator_find(window_name) : nullptr;
    const uint32_t percent = tk_object_get_prop_uint32(report, "propgress_value", no_percentage);
    if (win == nullptr || percent == no_percentage || !tk_object_has_prop(report, "text_name"))
        return RET_INIT_FAILED;
    widget* bar = widget_lookup(win, "progress_bar");
    widget* step = widget_lookup(win, "label3");
    widget_set_visible(bar, true);
    widget_set_visible(step, true);
    widget_set_value_int(bar, static_cast<int32_t>(percent));
    widget_set_text_utf8(step, tk_object_get_prop_str(report, "text_name", "").c_str());
    status_show(win, percent, tk_object_get_prop_uint8(report, "flage", no_operation));
    if (percent == 100) model_page_refresh(navigator_find("home_page"));
    ok_show(win, percent == 100);
    progress_esc_refresh();
    return RET_OK;
}

ret_t progress_init(widget* win, const void* /*context*/) {
    RETURN_IF_NOT(win != nullptr, "win != NULL", __func__, RET_BAD_PARAMS);
    widget_set_prop_bool(win, "to_modal", false);
    widget_on(widget_lookup(win, "ok"), event_type::click, ok_clicked);
    window_open_flag = true;
    if (!session_any_running()) data_monitor_forget();
    ok_show(win, !session_any_running());
    progress_esc_refresh();
    return RET_OK;
}

ret_t progress_open_for_run() {
    data_monitor_forget();
    const ret_t ret = navigator_to(window_name);
    widget* win = navigator_find(window_name);
    if (win == nullptr) return RET_FAIL;
    ok_show(win, false);
    dialog_set_esc_closes(win, false);
    return ret;
}

void progress_settle() {
    widget* win = navigator_find(window_name);
    if (win != nullptr && !session_any_running()) ok_show(win, true);
    progress_esc_refresh();
}

void progress_esc_refresh() {
    widget* win = navigator_find(window_name);
    if (win != nullptr) dialog_set_esc_closes(win, !session_any_running());
}
