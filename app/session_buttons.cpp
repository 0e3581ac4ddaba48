#include "app/session_buttons.h"

#include "app/devices.h"
#include "app/edits.h"
#include "app/model_switch.h"
#include "app/module_contents.h"
#include "app/progress.h"
#include "app/session_focus.h"
#include "app/session_results.h"
#include "app/ui_state.h"
#include "app/write_confirm.h"
#include "serial/port_list.h"
#include "shell/err_display.h"
#include "shell/navigator.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/text.h"

#include <algorithm>

namespace {

constexpr std::size_t port_text_max = 100;
constexpr const char* text_get = "获取配置.....";
constexpr const char* text_check = "校验.....";
constexpr const char* text_read = "读配置.....";

session_input input_of(widget* home, const family_pages& pages, const dev_obj& dev, session_kind kind) {
    const bool alternative = widget_get_value_int(widget_lookup(home, pages.code_mode)) > 0;
    session_input input = dev_session_input(dev, kind, alternative);
    input.port_text = tk_utf8_cut(widget_get_text_utf8(widget_lookup(home, "combo_box_ex_serial")), port_text_max);
    input.model = current_model();
    return input;
}

struct start_failure {
    session_kind kind;
    const char* shown;
};

// A thread that the system refuses to start is reported like the first step that it would have failed in.
constexpr start_failure start_failures[] = {
    {session_kind::connect, "串口打开失败"},
    {session_kind::read, "读配置命令失败"},
    {session_kind::write, "写配置命令失败"},
};

ret_t settle() {
    progress_settle();
    return RET_OK;
}

ret_t start(widget* home, const family_pages* pages, session_kind kind, module_check check = module_check::none) {
    dev_obj* dev = pages == nullptr ? nullptr : device_of(*pages);
    if (dev == nullptr) return idle_queue(settle); // after the report that is on its way
    const ret_t ret = dev->session.start(kind, input_of(home, *pages, *dev, kind));
    // What it reports is taken on this thread, later.
    if (ret == RET_OK) module_session_began(*dev, dev->session.last_run(), kind, check);
    if (ret == RET_OK) return ret;
    const std::string line = tk_format("\n%s\nsession thread not started!\n\n", current_model().c_str());
    for (const auto& row : start_failures)
        if (row.kind == kind) session_not_started(*pages, kind, line, row.shown);
    return ret;
}

bool connected() {
    const dev_obj* dev = current_device();
    return dev != nullptr && dev->session.connected();
}

ret_t transfer(widget* home, session_kind kind, const char* started_by, module_check check = module_check::none) {
    session_focus_keep(started_by);
    const uint8_t code = kind == session_kind::read ? operation::read : operation::write;
    ui_state_apply(home, ui_state::busy);
    progress_open_for_run();
    progress_post(10, text_get, code);
    return start(home, current_pages(), kind, check);
}

ret_t disconnected() {
    progress_settle();
    for (dev_obj* dev : devices()) dev_module_unknown(*dev);
    edits_show(navigator_find("home_page"));
    port_watcher_start();
    const ret_t ret = ui_state_apply(navigator_find("home_page"), ui_state::idle);
    session_focus_back();
    return ret;
}

/// A module that hears something when it is left; that is all there is to watch.
bool anybody_to_tell() {
    return std::ranges::any_of(
        devices(), [](const dev_obj* dev) { return !dev->of.leave.empty() && dev->session.port_open(); });
}

} // namespace

ret_t session_connect_pressed(widget* home) {
    session_focus_keep("button");
    ui_state_apply(home, ui_state::connecting);
    progress_open_for_run();
    progress_post(10, "开始连接.....", operation::connect);
    return start(home, model_selected(home), session_kind::connect);
}

ret_t session_disconnect_pressed(widget* home) {
    if (session_disconnector().running()) return RET_FAIL;
    session_focus_keep("button2");
    // The window opens before the first report can come.
    const bool watched = anybody_to_tell();
    if (watched) progress_open_for_run();
    ui_state_apply(home, ui_state::busy);
    std::vector<device_session*> sessions;
    for (dev_obj* dev : devices()) sessions.push_back(&dev->session);
    const auto report = [](const session_progress& p) { progress_post(p.percent, p.text, p.operation); };
    if (session_disconnector().start(std::move(sessions), report, [] { disconnected(); }) == RET_OK) return RET_OK;
    // Without a worker to tell the module, the ports are closed all the same.
    disconnected();
    return watched ? progress_post(100, text_transfer_write, operation::mode_change) : RET_FAIL;
}

ret_t session_read_pressed(widget* home) {
    if (!connected()) return err_display_show(text_connect_first);
    // Posted before the window opens, so it is not seen unless one is open already.
    progress_post(10, text_read, operation::read);
    return transfer(home, session_kind::read, "button_read");
}

ret_t session_write_pressed(widget* home) {
    if (!connected()) return err_display_show(text_connect_first);
    if (!write_confirmed(*current_device())) return RET_OK;
    return transfer(home, session_kind::write, "button_write");
}

ret_t session_check_pressed(widget* home) {
    if (!connected()) return err_display_show(text_connect_first);
    return transfer(home, session_kind::read, "button_check", module_check::by_hand);
}

ret_t session_check_after_write(widget* home) {
    ui_state_apply(home, ui_state::busy);
    progress_post(10, text_check, operation::read);
    return start(home, current_pages(), session_kind::read, module_check::after_write);
}

ret_t session_read_for_monitor(widget* home) { return transfer(home, session_kind::read, "button_data"); }
