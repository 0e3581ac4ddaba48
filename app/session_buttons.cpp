#include "app/session_buttons.h"

#include "app/err_display.h"
#include "app/model_switch.h"
#include "app/navigator.h"
#include "app/progress.h"
#include "app/session_news.h"
#include "app/ui_state.h"
#include "serial/port_list.h"
#include "serial/session.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/text.h"

namespace {

constexpr std::size_t port_text_max = 100;
constexpr const char* text_get = "获取配置.....";
constexpr const char* text_read = "读配置.....";

session_input input_of(widget* home, const family_pages& pages) {
    session_input input;
    input.port_text = tk_utf8_cut(widget_get_text_utf8(widget_lookup(home, "combo_box_ex_serial")), port_text_max);
    input.model = current_model();
    input.code_mode = widget_get_value_int(widget_lookup(home, pages.code_mode)) > 0;
    return input;
}

struct start_failure {
    session_kind kind;
    const char* shown;
};

// A thread that the system refuses to start is told like the first step that it would have failed in.
constexpr start_failure start_failures[] = {
    {session_kind::connect, "串口打开失败"},
    {session_kind::read, "读配置命令失败"},
    {session_kind::write, "写配置命令失败"},
};

ret_t settle() {
    progress_settle();
    return RET_OK;
}

ret_t start(widget* home, const family_pages* pages, session_kind kind) {
    if (pages == nullptr) return idle_queue(settle); // after the report that is on its way
    session_news_started(pages->of);
    const ret_t ret = session_start(pages->of, kind, input_of(home, *pages));
    if (ret == RET_OK) return ret;
    const std::string line = tk_format("\n%s\nsession thread not started!\n\n", current_model().c_str());
    for (const auto& row : start_failures)
        if (row.kind == kind) session_news_not_started(pages->of, line, row.shown, static_cast<uint8_t>(kind));
    return ret;
}

const family_pages* current_pages() {
    const model_row* row = model_find(current_model());
    return row == nullptr ? nullptr : family_pages_of(row->of);
}

ret_t transfer(widget* home, session_kind kind) {
    const uint8_t code = kind == session_kind::read ? operation::read : operation::write;
    ui_state_apply(home, ui_state::busy);
    progress_open_for_run();
    progress_post(home, 10, text_get, code);
    return start(home, current_pages(), kind);
}

bool disconnecting = false;

ret_t disconnected() {
    disconnecting = false;
    progress_settle();
    port_watcher_start();
    return ui_state_apply(navigator_find("home_page"), ui_state::idle);
}

} // namespace

ret_t session_connect_pressed(widget* home) {
    for (const family of : {family::generic, family::b, family::a})
        session_release_thread(&session_of(of).connect_thread);
    ui_state_apply(home, ui_state::connecting);
    progress_open_for_run();
    progress_post(home, 10, "开始连接.....", operation::connect);
    return start(home, model_selected(home), session_kind::connect);
}

ret_t session_disconnect_pressed(widget* home) {
    if (disconnecting) return RET_FAIL;
    // Only a B module is told to leave its configuration mode; that is all there is to watch. The window opens
    // before the first report can come.
    const bool told = session_of(family::b).port_open;
    if (told) progress_open_for_run();
    ui_state_apply(home, ui_state::busy);
    disconnecting = session_disconnect([] { disconnected(); }) == RET_OK;
    if (disconnecting) return RET_OK;
    // Without a worker to tell the module, the ports are closed all the same.
    disconnected();
    return told ? progress_post(home, 100, "写操作失败", operation::mode_change) : RET_FAIL;
}

ret_t session_read_pressed(widget* home) {
    if (!session_of(current_family()).connected) return err_display_show(text_connect_first);
    session_release_thread(&session_of(family::generic).read_thread);
    session_release_thread(&session_of(family::b).read_thread);
    // Posted before the window opens, so it is not seen unless one is open already.
    progress_post(home, 10, text_read, operation::read);
    return transfer(home, session_kind::read);
}

ret_t session_write_pressed(widget* home) {
    if (!session_of(current_family()).connected) return err_display_show(text_connect_first);
    session_release_thread(&session_of(family::generic).write_thread);
    // The connect thread's handle, not the write thread's: intended.
    session_release_thread(&session_of(family::b).connect_thread);
    return transfer(home, session_kind::write);
}

ret_t session_read_for_monitor(widget* home) { return transfer(home, session_kind::read); }
