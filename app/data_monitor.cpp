#include "app/data_monitor.h"

#include "app/err_display.h"
#include "app/model_switch.h"
#include "app/session_buttons.h"
#include "config/dev_obj.h"
#include "serial/session.h"

#include <algorithm>

namespace {

constexpr const char* text_rates = "评估板不支持300、1.5M、3M、3.5M、6M波特率收发数据，请更换波特率后重试";

// UART codes of 300, 1.5M, 3M, 3.5M and 6M baud.
constexpr uint8_t refused_rates[] = {0, 16, 19, 20, 23};

bool requested = false;

bool rate_refused(uint8_t code) {
    return std::find(std::begin(refused_rates), std::end(refused_rates), code) != std::end(refused_rates);
}

// UART2 counts even where only UART1 is in use.
bool rates_refused(const tk_object* props) {
    const uint8_t protocol = tk_object_get_prop_uint8(props, "change_protcol_vkt610b", 0);
    const uint8_t channel = tk_object_get_prop_uint8(props, "change_can_channel_vkt610b", 0);
    const bool checked = (protocol == 0 && channel <= 1) || (protocol == 1 && channel == 1);
    return checked && (rate_refused(tk_object_get_prop_uint8(props, "uart1_bps_vkt610b", 0)) ||
                       rate_refused(tk_object_get_prop_uint8(props, "uart2_bps_vkt610b", 0)));
}

} // namespace

ret_t data_monitor_pressed(widget* home) {
    const family_pages* pages = model_selected(home);
    if (pages == nullptr) return RET_FAIL;
    const session_context& session = session_of(pages->of);
    const bool connected = pages->of == family::generic ? session.port_open : session.connected;
    if (!connected) return err_display_show(text_connect_first);
    if (!pages->data_monitor) return RET_OK;
    const ret_t ret = session_read_for_monitor(home);
    requested = ret == RET_OK;
    return ret;
}

void data_monitor_forget() { requested = false; }

monitor_answer data_monitor_finish() {
    if (current_family() != family::b || !requested) return monitor_answer::home;
    requested = false;
    const dev_obj* dev = dev_get(family::b);
    return dev != nullptr && rates_refused(dev->props) ? monitor_answer::refused : monitor_answer::open;
}

ret_t data_monitor_show_refusal() { return err_display_show(text_rates); }
