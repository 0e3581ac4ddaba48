#include "dev_b/pages/bps_form.h"

#include "toolkit/core/text.h"

const char* bps_window_name(int channel) {
    return channel == 2 ? "page_vkt610b_bps_canfd2" : "page_vkt610b_bps_canfd1";
}

bps_phase bps_phase_find(widget* dialog, int channel, timing_phase phase) {
    const char letter = phase == timing_phase::nominal ? 'z' : 'c';
    const auto by_channel = [&](const char* name) {
        return widget_need(dialog, tk_format("canfd%d_%s_%c", channel, name, letter).c_str());
    };
    bps_phase out;
    out.divider = by_channel("div");
    out.rate = widget_need(dialog, tk_format("combo_box_ex_bps_%c_vkt610b_canfd%d", letter, channel).c_str());
    out.sample_point = widget_need(dialog, tk_format("canfd%d_edit_smp_%c_vkt610b", channel, letter).c_str());
    out.brp = by_channel("brp");
    out.tseg1 = by_channel("tseg1");
    out.tseg2 = by_channel("tseg2");
    out.list = widget_need(dialog, tk_format("list_view_%c", letter).c_str());
    out.result = by_channel("result");
    out.count = by_channel("count");
    return out;
}

timing_edits bps_edits_read(const bps_phase& phase) {
    return {widget_get_text_utf8(phase.brp), widget_get_text_utf8(phase.tseg1), widget_get_text_utf8(phase.tseg2),
            widget_get_text_utf8(phase.sample_point)};
}

timing_form bps_form_read(widget* dialog, int channel) {
    timing_form out;
    for (const auto phase : timing_phases) {
        const bps_phase widgets = bps_phase_find(dialog, channel, phase);
        const timing_edits edits = bps_edits_read(widgets);
        const auto i = timing_at(phase);
        if (phase == timing_phase::nominal) out.divider_code = widget_get_value_int(widgets.divider);
        out.values[i] = timing_values_of(edits);
        out.rate[i] = widget_get_value_int(widgets.rate);
        out.sample_point[i] = timing_number(edits.sample_point);
    }
    return out;
}

ret_t bps_change_store(dev_obj& dev, const std::function<ret_t(tk_object* props)>& work) {
    const ret_t result = work(dev.props.get());
    static_cast<void>(dev_encode(dev));
    dev_show(dev);
    dev_edited(dev, {.name = "位定时计算"});
    return result;
}
