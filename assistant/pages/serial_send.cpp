#include "assistant/pages/serial_send.h"

#include "assistant/pages/send_rows.h"
#include "assistant/pages/tail_table.h"
#include "shell/err_display.h"
#include "shell/navigator.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/hex_text.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/window_manager.h"

#include <algorithm>

namespace {

constexpr const char* window_name = "serial_send";
constexpr uint32_t exit_code = 1;
constexpr std::size_t entry_data_shown = 16;
constexpr std::size_t frame_bytes_shown = 16; ///< there is room for
constexpr const char* text_send_failed = "发送失败，请检查串口";
constexpr const char* text_no_thread = "创建线程失败";
constexpr const char* text_deaf = "创建线程失败，不能接收";
/// Why a frame is not sent, by assistant_start.
constexpr const char* not_sent_texts[] = {"", "上一帧还没有发送完，请稍后再试", "没有选择通道",
                                          "创建线程失败，本帧未发送"};
constexpr const char* text_choose_sent = "选择最近发送的帧";
constexpr int32_t no_entry = -1;
constexpr const char* text_still_making = "请稍候";
constexpr const char* text_not_connected = "未连接";
constexpr const char* text_port_lost = "　串口已断开"; ///< behind the module's name
constexpr const char* text_save_failed = "保存失败";
constexpr const char* text_copy_failed = "复制失败";

std::function<assistant_device()>& served() {
    static auto& by = *new std::function<assistant_device()>;
    return by;
}

std::unique_ptr<serial_assistant>& the_assistant() {
    static auto& one = *new std::unique_ptr<serial_assistant>;
    return one;
}

/// What stands in the form, from one opening to the next; the first one of a run shows the defaults.
std::optional<assistant_form>& kept_form() {
    static auto& form = *new std::optional<assistant_form>;
    return form;
}

/// What the dialog says of the last thing it did.
struct shown_result {
    std::string text;
    const char* state = "";
};

/// One opening of the dialog.
class dialog {
  public:
    dialog(widget* win, serial_assistant& with);
    dialog(const dialog&) = delete;
    dialog& operator=(const dialog&) = delete;
    ret_t start();

  private:
    struct binding {
        const char* name;
        event_type type;
        ret_t (dialog::*handler)();
    };
    static const binding bindings[];

    widget* at(const char* name) const { return widget_need(win_, name); }
    bool open() const { return navigator_find(window_name) == win_; }
    std::vector<tail_cell> byte_cells(uint32_t index) const;
    std::vector<tail_cell> frame_cells(uint32_t index) const;
    void refresh();
    void show_device();
    void show_result(const shown_result& result);
    ret_t make_text(const text_wish& wish, serial_assistant::text_made made,
                    std::function<shown_result(ret_t)> done);

    ret_t send();
    void sent(assistant_sent what);
    void offer_sent();
    ret_t take_sent();
    ret_t show_hex() { return show_as(byte_form::hex); }
    ret_t show_chars() { return show_as(byte_form::chars); }
    ret_t show_as(byte_form form);
    ret_t show_frame(uint32_t index) const;
    ret_t clear();
    ret_t copy();
    ret_t copy_rows(transcript_part part, table_rows rows);
    ret_t save();
    ret_t quit() { return dialog_quit(win_, exit_code); }

    widget* const win_;
    serial_assistant& assistant_;
    send_rows rows_;
    assistant_device device_;
    byte_form form_ = byte_form::hex;
    bool focused_ = false; ///< the send button, when it was pressed last
    tail_table bytes_, frames_;
    std::shared_ptr<int> alive_ = std::make_shared<int>(); ///< what comes later does nothing once it is gone
};

const dialog::binding dialog::bindings[] = {
    {"button_send", event_type::click, &dialog::send},
    {"button_exit", event_type::click, &dialog::quit},
    {"hex_flag", event_type::value_changed, &dialog::show_hex},
    {"char_flag", event_type::value_changed, &dialog::show_chars},
    {"combo_box_sent", event_type::value_changed, &dialog::take_sent},
    {"button_clear", event_type::click, &dialog::clear},
    {"button_copy", event_type::click, &dialog::copy},
    {"button_save", event_type::click, &dialog::save},
};

std::unique_ptr<dialog>& open_dialog() {
    static auto& one = *new std::unique_ptr<dialog>;
    return one;
}

dialog::dialog(widget* win, serial_assistant& with)
    : win_(win), assistant_(with), rows_(win, &kept_form()),
      bytes_(
          at("table_bytes"), [this](uint32_t index) { return byte_cells(index); },
          [this](table_rows rows) { return copy_rows(transcript_part::rows, rows); }),
      frames_(
          at("table_frames"), [this](uint32_t index) { return frame_cells(index); },
          [this](table_rows rows) { return copy_rows(transcript_part::frames, rows); }) {}

ret_t dialog::start() {
    for (const binding& row : bindings)
        widget_on(at(row.name), row.type, [this, &row](const event&) { return (this->*row.handler)(); });
    frames_.on_hold("bytes", [this](uint32_t index) { return show_frame(index); });
    if (served()) device_ = served()();
    const ret_t ret = assistant_.start(device_.session, [this] { refresh(); });
    offer_sent();
    show_as(byte_form::hex);
    if (ret != RET_OK) show_result({text_deaf, "failed"});
    refresh();
    return ret;
}

// ---- what shows ----

std::vector<tail_cell> dialog::byte_cells(uint32_t index) const {
    transcript_row row;
    if (assistant_.log().rows(index, std::span(&row, 1)) == 0) return {};
    const char* state = row.sent ? "tx" : "";
    return {{"time", row.first ? line_time_text(row.local_us) : ""},
            {"direction", row.first ? row_direction_text(row) : "", state},
            {"bytes", bytes_text(row.bytes(), form_), state}};
}

std::vector<tail_cell> dialog::frame_cells(uint32_t index) const {
    transcript_frame frame;
    if (!assistant_.log().frame(index, &frame)) return {};
    return {{"time", line_time_text(frame.local_us)},
            {"channel", frame_channel_text(frame)},
            {"id", frame_identifier_text(frame)},
            {"type", frame_type_text(frame)},
            {"bytes", frame_data_text(frame, frame_bytes_shown)}};
}

// The dialog may have been closed with everything else.
void dialog::refresh() {
    if (!open()) return;
    const transcript_counts now = assistant_.log().counts();
    bytes_.show(now.rows);
    frames_.show(now.frames);
    std::string text = tk_format("收 %zu 字节　发 %zu 字节　帧 %zu", now.received, now.sent, now.frames);
    if (now.frames_bad > 0) text += tk_format("　坏帧 %llu", static_cast<unsigned long long>(now.frames_bad));
    if (now.noise > 0) text += tk_format("　帧外 %llu 字节", static_cast<unsigned long long>(now.noise));
    if (now.dropped > 0) text += tk_format("　已满，丢弃 %llu 字节", static_cast<unsigned long long>(now.dropped));
    widget_set_text_utf8(at("label_counts"), text.c_str());
    widget_set_style_state(at("label_counts"), now.dropped > 0 ? "warning" : "");
    for (const char* name : {"button_clear", "button_copy", "button_save"})
        widget_set_enable(at(name), now.rows > 0);
    show_device();
}

void dialog::show_device() {
    const assistant_port port = assistant_.port();
    std::string text = port == assistant_port::closed ? text_not_connected : device_.name;
    if (port == assistant_port::lost) text += text_port_lost;
    widget_set_text_utf8(at("label_device"), text.c_str());
    widget_set_style_state(at("label_device"), port == assistant_port::lost ? "failed" : "");
}

void dialog::show_result(const shown_result& result) {
    widget* label = at("label_result");
    widget_set_text_utf8(label, result.text.c_str());
    widget_set_tooltip(label, result.text.c_str());
    widget_set_style_state(label, result.state);
}

/// One of the two is always on.
ret_t dialog::show_as(byte_form form) {
    form_ = form;
    widget_set_value_int(at("hex_flag"), form == byte_form::hex ? 1 : 0);
    widget_set_value_int(at("char_flag"), form == byte_form::chars ? 1 : 0);
    bytes_.refill();
    return RET_OK;
}

// ---- sending ----

ret_t dialog::send() {
    const assistant_form form = rows_.form();
    const traffic_wire frame = assistant_frame(form);
    const std::string shown = hex_pairs_from_bytes(frame.bytes());
    widget_set_text_utf8(at("edit_send_frame"), shown.c_str());
    const assistant_start how = assistant_.send(form, [this, alive = std::weak_ptr(alive_)](assistant_sent what) {
        if (!alive.expired()) sent(what);
    });
    if (how != assistant_start::started) return err_display_show(not_sent_texts[static_cast<std::size_t>(how)]);
    focused_ = widget_get_focused(at("button_send"));
    return widget_set_enable(at("button_send"), false);
}

void dialog::sent(assistant_sent what) {
    if (!open()) return;
    widget_set_enable(at("button_send"), true);
    if (focused_) widget_set_focused(at("button_send"));
    offer_sent();
    if (what == assistant_sent::written)
        return show_result({"已发送 " + line_time_text(time_stamp_now().local_us), "ok"});
    show_result({});
    err_display_post(what == assistant_sent::no_port ? text_connect_first : text_send_failed);
}

void dialog::offer_sent() {
    std::vector<std::pair<int32_t, std::string>> options{{no_entry, text_choose_sent}};
    for (const assistant_form& entry : assistant_.history()) {
        std::string data = tk_utf8_first(entry.data, entry_data_shown);
        if (data != entry.data) data += "…";
        options.emplace_back(static_cast<int32_t>(options.size()) - 1,
                             tk_format("%u  %s  %s  %s  %s", entry.identifier, data.c_str(),
                                       assistant_option_text(assistant_channels, entry.channel),
                                       assistant_option_text(assistant_formats, entry.format),
                                       assistant_option_text(assistant_speeds, entry.speed)));
    }
    combo_box_set_options(at("combo_box_sent"), options);
    widget_set_value_int(at("combo_box_sent"), no_entry); // so that each can be chosen, again and again
    widget_set_enable(at("combo_box_sent"), !assistant_.history().empty());
}

ret_t dialog::take_sent() {
    const int32_t chosen = widget_get_value_int(at("combo_box_sent"));
    const auto entries = assistant_.history();
    if (chosen < 0 || static_cast<std::size_t>(chosen) >= entries.size()) return RET_FAIL;
    rows_.show(entries[static_cast<std::size_t>(chosen)]);
    return widget_set_value_int(at("combo_box_sent"), no_entry);
}

// ---- what came in ----

ret_t dialog::show_frame(uint32_t index) const {
    transcript_frame frame;
    if (!assistant_.log().frame(index, &frame)) return RET_FAIL;
    return navigator_to_with_context("data_info", frame_data_text(frame).c_str());
}

ret_t dialog::clear() {
    assistant_.log().clear();
    bytes_.clear();
    frames_.clear();
    show_result({});
    refresh();
    return RET_OK;
}

ret_t dialog::copy() {
    return copy_rows(transcript_part::rows, bytes_.chosen().value_or(table_rows{0, UINT32_MAX}));
}

// The text is made on a thread: a full store gives some megabytes of it.
ret_t dialog::make_text(const text_wish& wish, serial_assistant::text_made made,
                        std::function<shown_result(ret_t)> done) {
    const auto shown = [this, alive = std::weak_ptr(alive_), done = std::move(done)](ret_t how) {
        const shown_result result = done(how);
        if (!alive.expired() && open()) show_result(result);
    };
    switch (assistant_.make_text(wish, std::move(made), shown)) {
    case assistant_start::started:
        return RET_OK;
    case assistant_start::busy:
        show_result({text_still_making, "warning"});
        return RET_FAIL;
    default:
        show_result({text_no_thread, "failed"});
        return RET_FAIL;
    }
}

ret_t dialog::copy_rows(transcript_part part, table_rows rows) {
    const auto text = std::make_shared<std::string>();
    const auto keep = [text](std::string made) {
        *text = std::move(made);
        return RET_OK;
    };
    const text_wish wish{part, rows.first, std::size_t{rows.last} - rows.first + 1, form_};
    return make_text(wish, keep, [text](ret_t ret) {
        if (ret != RET_OK) return shown_result{text_copy_failed, "failed"};
        clip_board_set_text(text->c_str());
        return shown_result{"已复制", "ok"};
    });
}

ret_t dialog::save() {
    std::string stamp = time_stamp_text(time_stamp_now().local_us);
    std::erase_if(stamp, [](char c) { return c == '-' || c == ':'; });
    std::ranges::replace(stamp, ' ', '_');
    const auto path = std::make_shared<std::string>("serial_send_" + stamp + ".txt");
    const auto write = [path](const std::string& text) { return fs_write_whole(path->c_str(), text); };
    return make_text({.form = form_}, write, [path](ret_t ret) {
        return ret == RET_OK ? shown_result{"已保存 " + *path, "ok"} : shown_result{text_save_failed, "failed"};
    });
}

} // namespace

void serial_send_serve(std::function<assistant_device()> device) { served() = std::move(device); }

ret_t serial_send_init(widget* win, const void* /*context*/) {
    RETURN_IF_NOT(win != nullptr, "win != NULL", __func__, RET_BAD_PARAMS);
    open_dialog() = std::make_unique<dialog>(win, serial_send_assistant());
    return open_dialog()->start();
}

serial_assistant& serial_send_assistant() {
    if (the_assistant() == nullptr) the_assistant() = std::make_unique<serial_assistant>();
    return *the_assistant();
}

void serial_send_forget() {
    open_dialog().reset();
    kept_form().reset();
    the_assistant().reset();
}
