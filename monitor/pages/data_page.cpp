#include "monitor/pages/data_page.h"

#include "monitor/pages/data_counts.h"
#include "monitor/pages/data_table.h"
#include "monitor/pages/send_form.h"
#include "shell/err_display.h"
#include "shell/navigator.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <memory>
#include <utility>

namespace {

constexpr const char* window_name = "data_page";
constexpr const char* text_still_sending = "上一帧还没有发送完，请稍后再试";
constexpr uint32_t counts_pace_ms = 200; ///< faster than that nobody reads

struct served {
    std::function<monitored_device()> device;
    std::function<void(bool)> left;
};
served& served_by() {
    static auto& by = *new served;
    return by;
}

/// One opening of the page.
class page {
  public:
    page(widget* win, traffic& with);
    ~page() { timers_end(); }
    page(const page&) = delete;
    page& operator=(const page&) = delete;
    ret_t start();

  private:
    widget* at(const char* name) const { return widget_need(win_, name); }
    template <typename F>
    void on(const char* name, event_type type, F handler) {
        widget_on(at(name), type, [this, handler](const event&) { return (this->*handler)(); });
    }
    void bind();
    void refresh();
    void show_link();
    void show_counts();
    void ask_counts();
    void show_copied(uint32_t copied, uint32_t chosen);
    void timers_end();

    /// Whether frames can be sent.
    bool usable() const { return link_ == traffic_link::open || link_ == traffic_link::waiting; }
    bool post(traffic_request* request);
    ret_t write();
    ret_t let_write(bool may);
    ret_t pause();
    ret_t clear();
    ret_t switch_periodic();
    void start_periodic();
    void end_periodic();
    ret_t tick();
    ret_t leave();

    widget* const win_;
    traffic& traffic_;
    monitored_device device_;
    send_form form_;
    std::unique_ptr<data_table> table_; ///< made when the traffic has its records
    periodic_sender periodic_;
    bool waits_ = false;  ///< the button, until the frame has been sent
    uint32_t timer_ = 0;  ///< of periodic sending
    uint32_t counts_ = 0; ///< timer that shows the counts next
    uint32_t copied_ = 0; ///< timer that takes the word of a copy away
    uint32_t leaving_ = 0;
    traffic_link link_ = traffic_link::none;
};

std::unique_ptr<page>& open_page() {
    static auto& open = *new std::unique_ptr<page>;
    return open;
}

std::unique_ptr<traffic>& the_traffic() {
    static auto& one = *new std::unique_ptr<traffic>;
    return one;
}

page::page(widget* win, traffic& with)
    : win_(win), traffic_(with), device_(served_by().device ? served_by().device() : monitored_device{}),
      form_(win, with, setting_path) {}

ret_t page::start() {
    const bool paused = tk_atoi(form_.setting(setting_paused, "0").c_str()) != 0;
    const int started = device_.session == nullptr ? -1
                                                   : traffic_.start(
                                                         *device_.session, [this] { refresh(); },
                                                         paused ? traffic_run::pause : traffic_run::run);
    widget_set_value_int(at(setting_paused), paused ? 1 : 0);
    table_ = std::make_unique<data_table>(
        traffic_, at("table_client"), [this](uint32_t copied, uint32_t chosen) { show_copied(copied, chosen); });
    bind();
    show_link();
    show_counts();
    if (started != 0) log_console("data_page: the traffic cannot be started\n");
    return RET_OK;
}

void page::bind() {
    on("button_back", event_type::click, &page::leave);
    on("button_write", event_type::click, &page::write);
    on("button_clear", event_type::click, &page::clear);
    on(setting_paused, event_type::value_changed, &page::pause);
    on("check_button_send_timer", event_type::value_changed, &page::switch_periodic);
    widget_set_visible(at("label_copied"), false); // an empty one would take room
    widget_set_text_utf8(at("label_device"), device_.name.c_str());
}

// ---- what shows ----

// The page may have been closed with everything else, at the program's end.
void page::refresh() {
    if (navigator_find(window_name) != win_ || table_ == nullptr) return;
    table_->refresh();
    if (traffic_.link() != link_) show_link();
    if (!usable() && timer_ != 0) {
        widget_set_value_int(at("check_button_send_timer"), 0);
        end_periodic();
    }
    if (waits_ && traffic_.send_done() && timer_ == 0 && leaving_ == 0) let_write(true);
    ask_counts();
}

void page::ask_counts() {
    if (counts_ == 0)
        counts_ = timer_add(
            [this] {
                counts_ = 0;
                if (navigator_find(window_name) == win_) show_counts();
                return RET_OK;
            },
            counts_pace_ms);
}

void page::show_link() {
    link_ = traffic_.link();
    const link_words words = data_link_words(link_, traffic_.leaving());
    widget_set_text_utf8(at("state_word"), words.text);
    for (const char* name : {"state_dot", "state_word"}) widget_set_style_state(at(name), words.style);
}

void page::show_counts() {
    const counts_texts texts = data_counts_texts(traffic_.counters(), traffic_.size(), periodic_.skipped());
    widget_set_text_utf8(at("label_counts"), texts.frames.c_str());
    widget_set_text_utf8(at("label_lost"), texts.lost.c_str());
    widget_set_tooltip(at("label_lost"), texts.lost.c_str());
}

void page::timers_end() {
    for (uint32_t* timer : {&timer_, &counts_, &copied_, &leaving_})
        if (const uint32_t id = std::exchange(*timer, 0); id != 0) timer_remove(id);
}

// ---- the table ----

void page::show_copied(uint32_t copied, uint32_t chosen) {
    const copied_words words = data_copied_words(copied, chosen);
    widget_set_text_utf8(at("label_copied"), words.text.c_str());
    widget_set_style_state(at("label_copied"), words.style);
    widget_set_visible(at("label_copied"), true);
    if (copied_ != 0) timer_remove(copied_);
    copied_ = timer_add(
        [this] {
            copied_ = 0;
            if (navigator_find(window_name) == win_) widget_set_visible(at("label_copied"), false);
            return RET_REMOVE;
        },
        data_copied_ms());
}

ret_t page::pause() {
    const bool paused = widget_get_value_int(at(setting_paused)) != 0;
    traffic_.set_run(paused ? traffic_run::pause : traffic_run::run);
    form_.store(setting_paused, paused ? "1" : "0");
    return RET_OK;
}

ret_t page::clear() {
    table_->clear();
    return RET_OK;
}

// ---- sending ----

/// False when the user was told what stands against it.
bool page::post(traffic_request* request) {
    if (!form_.compose(request)) return false;
    if (usable() && traffic_.request_send(*request) == RET_OK) return true;
    err_display_show(usable() ? text_still_sending : text_connect_first);
    return false;
}

ret_t page::write() {
    traffic_request request;
    if (!post(&request)) return RET_FAIL;
    return let_write(false);
}

ret_t page::let_write(bool may) {
    waits_ = !may;
    return widget_set_enable(at("button_write"), may);
}

ret_t page::switch_periodic() {
    if (widget_get_value_int(at("check_button_send_timer")) != 0)
        start_periodic();
    else if (timer_ != 0)
        end_periodic();
    return RET_OK;
}

void page::start_periodic() {
    const periodic_step step = form_.step();
    const uint32_t period_ms = form_.period_ms();
    form_.lock_periodic(true);
    traffic_request request;
    if (!post(&request)) {
        widget_set_value_int(at("check_button_send_timer"), 0);
        form_.lock_periodic(false);
        return;
    }
    let_write(false);
    periodic_.start(request, step);
    timer_ = timer_add([this] { return tick(); }, period_ms);
}

void page::end_periodic() {
    timer_remove(std::exchange(timer_, 0));
    let_write(true);
    form_.lock_periodic(false);
}

ret_t page::tick() {
    if (periodic_.tick(traffic_.send_done()))
        traffic_.request_send(periodic_.request());
    else
        ask_counts();
    return RET_REPEAT;
}

// ---- leaving ----

// The module gets its time to be back in configuration mode; the window lives on and takes no input.
ret_t page::leave() {
    traffic_.leave();
    if (timer_ != 0) {
        widget_set_value_int(at("check_button_send_timer"), 0);
        end_periodic();
    }
    leaving_ = timer_add(
        [this] {
            leaving_ = 0;
            idle_queue([] {
                open_page().reset();
                const ret_t ret = navigator_close(window_name);
                if (served_by().left) served_by().left(data_page_traffic().lost());
                return ret;
            });
            return RET_OK;
        },
        data_page_leave_ms());
    show_link();
    widget_set_enable(win_, false);
    return RET_OK;
}

} // namespace

uint32_t& data_page_leave_ms() {
    static uint32_t ms = 1500;
    return ms;
}

uint32_t& data_copied_ms() {
    static uint32_t ms = 5000;
    return ms;
}

void data_page_serve(std::function<monitored_device()> device, std::function<void(bool lost)> left) {
    served_by() = {std::move(device), std::move(left)};
}

ret_t data_page_init(widget* win, const void* /*context*/) {
    RETURN_IF_NOT(win != nullptr, "win != NULL", __func__, RET_BAD_PARAMS);
    open_page() = std::make_unique<page>(win, data_page_traffic());
    return open_page()->start();
}

traffic& data_page_traffic() {
    if (the_traffic() == nullptr) the_traffic() = std::make_unique<traffic>();
    return *the_traffic();
}

void data_page_forget() {
    open_page().reset();
    the_traffic().reset();
}
