#include "app/ui_state.h"

namespace {

struct state_row {
    ui_state state;
    bool connect, disconnect, transfer, defaults, selectors;
    const char* word;
    const char* style; // state of the style sheet, for the dot and the word
};

// clang-format off
constexpr state_row states[] = {
    // state               connect disconn. transfer defaults selectors
    {ui_state::idle,       true,   false,   false,   true,    true,   "未连接",  "idle"},
    {ui_state::connecting, false,  false,   false,   false,   false,  "连接中…", "busy"},
    {ui_state::connected,  false,  true,    true,    true,    false,  "已连接",  "ok"},
    {ui_state::busy,       false,  false,   false,   false,   false,  "读写中…", "busy"},
    {ui_state::lost,       false,  true,    true,    true,    false,  "连接已断开", "failed"},
};
// clang-format on

struct rule {
    const char* name;
    bool state_row::*enabled;
};

constexpr rule rules[] = {
    {"button", &state_row::connect},
    {"button2", &state_row::disconnect},
    {"button_read", &state_row::transfer},
    {"button_write", &state_row::transfer},
    {"button_check", &state_row::transfer},
    {"button_default", &state_row::defaults},
    {"combo_box_ex_dev", &state_row::selectors},
    {"combo_box_ex_serial", &state_row::selectors},
};

ui_state current = ui_state::idle;

} // namespace

ret_t ui_state_apply(widget* home, ui_state state) {
    if (home == nullptr) return RET_FAIL;
    current = state;
    const state_row& row = states[static_cast<std::size_t>(state)];
    for (const auto& r : rules) widget_set_enable(widget_lookup(home, r.name), row.*r.enabled);
    widget_set_text_utf8(widget_lookup(home, "state_word"), row.word);
    for (const char* name : {"state_dot", "state_word"})
        widget_set_style_state(widget_lookup(home, name), row.style);
    return RET_OK;
}

ui_state ui_state_get() { return current; }
