#include "app/progress.h"

#include "app/devices.h"
#include "app/last_session.h"
#include "app/model_switch.h"
#include "app/session_focus.h"
#include "app/settings.h"
#include "session/session_texts.h"
#include "shell/err_display.h"
#include "shell/navigator.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/log.h"
#include "toolkit/ravel/window_manager.h"

#include <atomic>
#include <utility>

namespace {

constexpr const char* window_name = "progress";
constexpr uint32_t close_after_ms = 1000; // where the user wants that
constexpr const char* text_no_session = "还没有与模块通信";

// GUI thread only.
progress_finish& finish_wanted() {
    static auto& wanted = *new progress_finish;
    return wanted;
}

// The window closes by itself when this fires; 0 while it does not.
uint32_t close_timer = 0;

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

// The state that the style sheet shows of a run. A module that is left reports its failures as an end like others.
const char* style_of(const progress_report& report) {
    if (report.percent != 100) return "";
    if (report.operation == operation::connect_failed) return "failed";
    return report.operation == operation::mode_change && report.text != text_mode_transfer ? "" : "ok";
}

void status_show(widget* win, const progress_report& report) {
    for (const auto& row : statuses) {
        if (row.operation != report.operation) continue;
        const bool finished = report.percent == 100 && row.finished != nullptr;
        widget_set_text_utf8(widget_lookup(win, "label"), finished ? row.finished : row.running);
    }
    const std::string style = style_of(report);
    for (const char* name : {"label", "label3"})
        widget_set_style_state(widget_lookup(win, name), style == "failed" ? "failed" : "");
    widget_set_style_state(widget_lookup(win, "progress_bar"), style.c_str());
}

void state_show(widget* win, const progress_report& report) {
    widget_set_value_int(widget_lookup(win, "progress_bar"), static_cast<int32_t>(report.percent));
    widget_set_text_utf8(widget_lookup(win, "label3"), report.text.c_str());
    status_show(win, report);
}

/// Between two sessions: the last one's end, its steps and bytes. During a session: none of them.
void last_session_show(widget* win, bool shown) {
    const progress_report* report = shown ? last_session_report() : nullptr;
    widget_set_visible(widget_lookup(win, "progress_bar"), !shown || report != nullptr);
    for (const char* name : {"steps", "button_copy_steps"})
        widget_set_visible(widget_lookup(win, name), report != nullptr);
    widget_set_text_utf8(widget_lookup(win, "label3"), shown ? text_no_session : "");
    if (report == nullptr) return;
    state_show(win, *report);
    widget_set_text_utf8(widget_lookup(win, "steps"), last_session_text().c_str());
}

ret_t steps_copy(const event& what) {
    widget* win = widget_get_window(what.target);
    return clip_board_set_text(widget_get_text_utf8(widget_lookup(win, "steps")).c_str());
}

void ok_show(widget* win, bool finished) {
    widget_set_visible(widget_lookup(win, "ok"), finished);
    widget_set_visible(widget_lookup(win, "hscroll_label"), !finished);
    if (finished) widget_set_focused(widget_lookup(win, "ok"));
}

ret_t focus_back() {
    session_focus_back();
    return RET_OK;
}

void stay() { timer_remove(std::exchange(close_timer, 0)); }

ret_t ok_clicked(const event&) {
    stay();
    const progress_finish finish = std::exchange(finish_wanted(), {});
    if (finish.refusal)
        if (const char* why = finish.refusal()) return err_display_show(why);
    const ret_t ret = navigator_switch_to("home_page", true);
    window_is_open();
    session_focus_back();
    return finish.then ? finish.then() : ret;
}

/// A run that went well leaves as its "ok" does, a moment after it was seen.
void close_soon(const progress_report& report) {
    stay();
    if (!settings_get().close_progress || style_of(report) != std::string_view("ok")) return;
    const auto close = [] {
        close_timer = 0;
        if (navigator_find(window_name) != nullptr) ok_clicked({});
        return RET_REMOVE;
    };
    close_timer = timer_add(close, close_after_ms);
}

} // namespace

ret_t progress_post(uint32_t percent, const std::string& text, uint8_t operation) {
    const progress_report report{window_is_open(), percent, text, operation};
    return idle_queue([report] { return progress_update(report); });
}

ret_t progress_update(const progress_report& report) {
    widget* win = report.window_open ? navigator_find(window_name) : nullptr;
    if (win == nullptr) return RET_INIT_FAILED;
    last_session_step(report);
    last_session_show(win, false);
    widget_set_visible(widget_lookup(win, "label3"), true);
    state_show(win, report);
    if (report.percent == 100) model_page_refresh(navigator_find("home_page"));
    ok_show(win, report.percent == 100);
    progress_esc_refresh();
    close_soon(report);
    return RET_OK;
}

void progress_then(progress_finish finish) { finish_wanted() = std::move(finish); }

ret_t progress_init(widget* win, const void* /*context*/) {
    RETURN_IF_NOT(win != nullptr, "win != NULL", __func__, RET_BAD_PARAMS);
    widget_set_prop_bool(win, "to_modal", false);
    widget_on(widget_need(win, "ok"), event_type::click, ok_clicked);
    widget_on(widget_need(win, "button_copy_steps"), event_type::click, steps_copy);
    widget_on(win, event_type::request_close, [](const event&) { return idle_queue(focus_back); }); // by Esc
    window_open_flag = true;
    stay();
    if (!session_any_running()) progress_then({});
    last_session_show(win, !session_any_running());
    ok_show(win, !session_any_running());
    progress_esc_refresh();
    return RET_OK;
}

ret_t progress_open_for_run() {
    progress_then({});
    last_session_begin();
    const ret_t ret = navigator_to(window_name);
    widget* win = navigator_find(window_name);
    if (win == nullptr) return RET_FAIL;
    last_session_show(win, false);
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
