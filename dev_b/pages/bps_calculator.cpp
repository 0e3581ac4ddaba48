#include "dev_b/pages/bps_calculator.h"

#include "dev_b/pages/bps_error.h"
#include "dev_b/pages/bps_form.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/window_manager.h"
#include "toolkit/table_view/table_view.h"

#include <memory>

namespace {

constexpr int clock_mhz = 200;
constexpr int32_t none_chosen = -1; ///< as a selector's value

/// A phase's candidates.
struct candidates {
    timing_list list;
    timing_edits edits;                         ///< what the list was made for, or what a row of it filled in
    std::shared_ptr<timing_list_reader> reader; ///< while a long file is being read
};

struct calculator {
    dev_obj& dev;
    widget* dialog;
    int channel;
    std::array<bps_phase, 2> phases;
    std::array<candidates, 2> found;

    const bps_phase& of(timing_phase phase) const { return phases[timing_at(phase)]; }
    candidates& found_of(timing_phase phase) { return found[timing_at(phase)]; }
    const candidates& found_of(timing_phase phase) const { return found[timing_at(phase)]; }
};
using calculator_ptr = std::shared_ptr<calculator>;

// ---- what shows ----

/// Rate and sample point of what stands in the edits, marked when they are what was chosen and typed.
void show_result(const calculator& c, timing_phase phase) {
    const bps_phase& at = c.of(phase);
    const timing_edits edits = bps_edits_read(at);
    const timing_values values = timing_values_of(edits);
    const int32_t code = widget_get_value_int(at.divider);
    const uint64_t divider = code < 0 ? 0 : static_cast<uint64_t>(code) + 2;
    if (divider == 0 || !values.all_set()) {
        widget_set_style_state(at.result, "");
        widget_set_text_utf8(at.result, "计算值：—");
        return;
    }
    const bool good = timing_phase_valid(static_cast<uint32_t>(divider), values, widget_get_value_int(at.rate),
                                         timing_number(edits.sample_point));
    const std::string percent = timing_percent_text(timing_fraction(values) * 100);
    widget_set_style_state(at.result, good ? "ok" : "warning");
    widget_set_text_utf8(
        at.result,
        tk_format("计算值：%u kbit/s，采样点 %s %%", timing_rate_kbit(divider, values), percent.c_str()).c_str());
}

void show_clock(const calculator& c) {
    const int32_t code = widget_get_value_int(c.of(timing_phase::nominal).divider);
    const std::string text = code < 0 ? "时间份额时钟 —" : tk_format("时间份额时钟 %d MHz", clock_mhz / (code + 2));
    const std::string name = tk_format("canfd%d_label1_clock_c_vkt610b", c.channel);
    widget_set_text_utf8(widget_need(c.dialog, name.c_str()), text.c_str());
}

std::string count_text(const bps_phase& at, std::size_t count, bool more) {
    if (widget_get_value_int(at.divider) < 0 || widget_get_value_int(at.rate) < 0) return "请先选择时钟分频和速率";
    if (count == 0) return more ? "读取中…" : "没有候选";
    return tk_format("候选 %zu 条，单击一条填入左侧", count);
}

/// One piece of the file; the rest of a long one when nothing else is to be done.
void read_on(const calculator_ptr& c, timing_phase phase) {
    const bps_phase& at = c->of(phase);
    candidates& found = c->found_of(phase);
    const bool more = found.reader->read_on(&found.list);
    table_client_set_rows(at.list, static_cast<uint32_t>(found.list.size()));
    widget_set_text_utf8(at.count, count_text(at, found.list.size(), more).c_str());
    if (!more) return;
    idle_queue([weak = std::weak_ptr(c), reader = std::weak_ptr(found.reader), phase] {
        const calculator_ptr still = weak.lock();
        if (still != nullptr && !reader.expired()) read_on(still, phase); // no newer list has taken its place
        return RET_OK;
    });
}

void rebuild(const calculator_ptr& c, timing_phase phase) {
    const bps_phase& at = c->of(phase);
    candidates& found = c->found_of(phase);
    const int64_t divider = int64_t{widget_get_value_int(at.divider)} + 2;
    const std::string path =
        timing_list_path(timing_list_folder(), c->channel, phase, divider, widget_get_value_int(at.rate));
    found.edits = bps_edits_read(at);
    found.list.clear();
    table_client_choose(at.list, std::nullopt);
    found.reader = std::make_shared<timing_list_reader>(path, timing_filter_of(found.edits));
    read_on(c, phase);
    table_client_show_row(at.list, 0); // the best candidates stand first
    show_result(*c, phase);
}

// ---- the candidate list ----

ret_t show_item(const calculator& c, timing_phase phase, uint32_t index, widget* row) {
    const timing_list& list = c.found_of(phase).list;
    if (index >= list.size()) return RET_FAIL;
    const std::string_view line = list.line(index);
    widget* item = widget_lookup(row, "item");
    const bool here = widget_get_focused(c.of(phase).list);
    widget_set_style_state(item, !table_row_chosen(row) ? "" : here ? "current" : "chosen");
    widget_set_prop_str(item, "tips", std::string(line).c_str());
    const auto candidate = timing_line_parse(line);
    return widget_set_text_utf8(item, candidate ? timing_item_text(*candidate).c_str() : "");
}

/// Fills the edits and leaves the list as it is: one may choose on.
ret_t choose_item(calculator& c, timing_phase phase, int64_t index) {
    const timing_list& list = c.found_of(phase).list;
    if (index < 0 || index >= static_cast<int64_t>(list.size())) return RET_FAIL;
    const auto candidate = timing_line_parse(list.line(static_cast<std::size_t>(index)));
    if (!candidate) return RET_FAIL;
    const bps_phase& at = c.of(phase);
    const std::pair<widget*, std::size_t> fields[] = {
        {at.brp, 0}, {at.tseg1, 1}, {at.tseg2, 2}, {at.sample_point, 4}};
    for (const auto& [edit, field] : fields)
        widget_set_text_utf8(edit, std::string(candidate->fields[field]).c_str());
    c.found_of(phase).edits = bps_edits_read(at);
    show_result(c, phase);
    return RET_OK;
}

ret_t click_item(calculator& c, timing_phase phase, int64_t index) {
    widget* list = c.of(phase).list;
    if (index < 0) return RET_FAIL;
    const ret_t result = choose_item(c, phase, index); // before an edit is left that would filter the list
    table_client_choose(list, table_rows{static_cast<uint32_t>(index), static_cast<uint32_t>(index)});
    widget_set_focused(list);
    return result;
}

void attach_list(const calculator_ptr& c, timing_phase phase) {
    widget* list = c->of(phase).list;
    table_client_set_on_load_data(
        list, [c, phase](uint32_t index, widget* row) { return show_item(*c, phase, index, row); });
    table_client_set_on_create_row(list, [c, phase](uint32_t, widget* row) {
        widget_on(widget_lookup(row, "item"), event_type::click,
                  [c, phase, row](const event&) { return click_item(*c, phase, table_row_index(row)); });
        return RET_OK;
    });
    table_client_set_choice(list, table_choice::one);
    table_client_set_on_take(list, [c, phase](uint32_t index) { return choose_item(*c, phase, index); });
}

// ---- what the user does ----

ret_t change_divider(const calculator_ptr& c, timing_phase phase) {
    if (phase == timing_phase::nominal) {
        const int32_t code = widget_get_value_int(c->of(timing_phase::nominal).divider);
        widget_set_value_int(c->of(timing_phase::data).divider, code);
        show_clock(*c);
        rebuild(c, timing_phase::nominal);
    }
    rebuild(c, timing_phase::data);
    return RET_OK;
}

ret_t change_rate(const calculator_ptr& c, timing_phase phase) {
    const int32_t rate = widget_get_value_int(c->of(phase).rate);
    const ret_t result = bps_change_store(
        c->dev, [&](tk_object* props) { return timing_store_rate(props, c->channel, phase, rate); });
    rebuild(c, phase);
    return result;
}

/// The result follows every key, the list only what is done with.
void attach_edit(const calculator_ptr& c, timing_phase phase, widget* edit) {
    widget_on(edit, event_type::value_changing, [c, phase](const event&) {
        show_result(*c, phase);
        return RET_OK;
    });
    widget_on(edit, event_type::value_changed, [c, phase](const event&) {
        if (bps_edits_read(c->of(phase)) != c->found_of(phase).edits) rebuild(c, phase);
        return RET_OK;
    });
}

ret_t press_ok(const calculator& c) {
    const timing_form form = bps_form_read(c.dialog, c.channel);
    const uint8_t mode = timing_bus_mode(c.dev.props.get(), c.channel);
    if (timing_valid(form, mode)) {
        bps_change_store(c.dev, [&](tk_object* props) { return timing_store(props, c.channel, form, mode); });
        return dialog_quit(c.dialog, 0);
    }
    return bps_error_ask(c.dev) == bps_error_stored ? dialog_quit(c.dialog, bps_error_stored) : RET_OK;
}

void attach_phase(const calculator_ptr& c, timing_phase phase) {
    const bps_phase& at = c->of(phase);
    for (const auto& option : timing_dividers) combo_box_append_option(at.divider, option.value, option.text);
    for (const auto& option : timing_rates(phase)) combo_box_append_option(at.rate, option.value, option.text);
    widget_on(at.divider, event_type::value_changed, [c, phase](const event&) { return change_divider(c, phase); });
    widget_on(at.rate, event_type::value_changed, [c, phase](const event&) { return change_rate(c, phase); });
    for (widget* edit : at.edits()) attach_edit(c, phase, edit);
    attach_list(c, phase);
}

void attach(const calculator_ptr& c) {
    for (const auto phase : timing_phases) attach_phase(c, phase);
    const auto button = [&](const char* name) {
        return widget_need(c->dialog, tk_format("canfd%d_%s", c->channel, name).c_str());
    };
    widget_on(button("ok"), event_type::click, [c](const event&) { return press_ok(*c); });
    widget_on(button("back"), event_type::click, [c](const event&) { return dialog_quit(c->dialog, 0); });
}

// ---- opening ----

void load_phase(const bps_phase& at, const timing_loaded& loaded) {
    widget_set_value_int(at.rate, loaded.rate);
    widget_set_text_utf8(at.brp, std::to_string(loaded.values.brp).c_str());
    widget_set_text_utf8(at.tseg1, std::to_string(loaded.values.tseg1).c_str());
    widget_set_text_utf8(at.tseg2, std::to_string(loaded.values.tseg2).c_str());
    widget_set_text_utf8(at.sample_point, loaded.sample_point.c_str());
}

void enable_data(const bps_phase& data, bool on) {
    for (widget* w : {data.divider, data.rate, data.list}) widget_set_enable(w, on);
    for (widget* w : data.edits()) widget_set_enable(w, on);
}

// Both phases have one divider: what either of them loads with is the visible and the hidden selector's.
void load(const calculator& c) {
    const timing_opening opening = timing_open(c.dev.props.get(), c.channel);
    int32_t divider = opening.divider_word;
    for (const auto& loaded : opening.loaded)
        if (loaded) divider = loaded->divider_code;
    for (const auto phase : timing_phases) {
        const auto i = timing_at(phase);
        widget_set_value_int(c.phases[i].divider, divider);
        widget_set_value_int(c.phases[i].rate, opening.rate[i].value_or(none_chosen));
        // The channel's own rate, where the timing has none of those offered: it is stored already.
        if (widget_get_value_int(c.phases[i].rate) == none_chosen && opening.channel_rate[i])
            widget_set_value_int(c.phases[i].rate, *opening.channel_rate[i]);
        if (opening.loaded[i]) load_phase(c.phases[i], *opening.loaded[i]);
    }
    enable_data(c.of(timing_phase::data), opening.data_enabled);
}

} // namespace

uint32_t bps_calculator_open(dev_obj& dev, int channel) {
    widget* dialog = window_open(bps_window_name(channel));
    if (dialog == nullptr) return 0;
    const auto c = std::make_shared<calculator>(calculator{dev, dialog, channel, {}, {}});
    for (const auto phase : timing_phases) c->phases[timing_at(phase)] = bps_phase_find(dialog, channel, phase);
    attach(c);
    load(*c);
    widget_set_text_utf8(widget_need(dialog, "bps_title"), tk_format("CANFD%d 位定时", channel).c_str());
    show_clock(*c);
    for (const auto phase : timing_phases) rebuild(c, phase);
    const uint32_t code = dialog_modal(dialog);
    for (candidates& found : c->found) found.reader.reset();
    return code;
}
