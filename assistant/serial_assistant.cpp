#include "assistant/serial_assistant.h"

#include "toolkit/core/idle.h"
#include "toolkit/core/text.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::size_t read_bytes = 100;
constexpr DWORD read_wait_ms = 1000; ///< what is read waits in the queue already
constexpr std::size_t rows_at_once = 256;

} // namespace

assistant_timing& assistant_timing_get() {
    static assistant_timing& timing = *new assistant_timing; // workers may outlive the main function
    return timing;
}

serial_assistant::serial_assistant(std::string history)
    : refresh_key_(tk_format("assistant %p", static_cast<void*>(this))), history_(std::move(history)),
      alive_(std::make_shared<int>()) {}

serial_assistant::~serial_assistant() = default;

ret_t serial_assistant::start(device_session* device, std::function<void()> refresh) {
    if (device != nullptr && device != device_) {
        receiver_ = worker(); // wherever it waits
        device_ = device;
        lost_ = false;
    }
    refresh_ = std::move(refresh);
    const auto running = [](worker* one, const char* name, worker::work work) {
        return one->running() || one->start({.name = name}, std::move(work)) == RET_OK;
    };
    return running(&receiver_, "assistant_entry", [this] { return receive(); }) &&
                   running(&analyser_, "assistant_data_analyse_entry", [this] { return analyse(); })
               ? RET_OK
               : RET_FAIL;
}

// ---- receiving ----

// Whoever has just opened a port wants it first, so a look comes after a pause. One that has vanished does not come
// back without being opened again.
uint32_t serial_assistant::receive() {
    device_session* device = device_;
    if (device == nullptr) return 0;
    const assistant_timing& timing = assistant_timing_get();
    for (uint64_t opening = 0; (opening = device->wait_port_opened(opening)) != 0;) {
        show_port(false);
        std::optional<std::size_t> came = 0;
        while (came && worker_sleep_ms(*came > 0 ? timing.after_read_ms : timing.look_again_ms))
            came = receive_all();
        show_port(device->port_open());
    }
    return 0;
}

void serial_assistant::show_port(bool lost) {
    lost_ = lost;
    ask_refresh();
}

assistant_port serial_assistant::port() const {
    const device_session* device = device_;
    if (device == nullptr || !device->port_open()) return assistant_port::closed;
    return lost_ ? assistant_port::lost : assistant_port::open;
}

/// Reads until nothing more waits, so that no queue runs over meanwhile. How much came; nothing when there is no
/// port any more.
std::optional<std::size_t> serial_assistant::receive_all() {
    looks_++;
    const auto first = receive_once();
    for (auto last = first; last == read_bytes && !worker_should_stop();) last = receive_once();
    return first;
}

// The port is held for as long as it takes to fetch what has come in already: whoever wants it gets it at once.
std::optional<std::size_t> serial_assistant::receive_once() {
    device_session& device = *device_;
    std::array<uint8_t, read_bytes> buffer{};
    io_result read;
    {
        port_lease port = device.take_port(0);
        if (!port) return device.port_open() ? std::optional<std::size_t>(0) : std::nullopt;
        const auto waiting = port.waiting();
        if (!waiting || *waiting == 0) return waiting;
        read = port.read(std::span(buffer).first(std::min<std::size_t>(*waiting, buffer.size())), read_wait_ms);
        // Before the port is free: what is sent next stands behind it.
        if (read.ok()) log_.received(std::span(buffer).first(read.bytes), time_stamp_now());
    }
    return read.ok() ? read.bytes : 0;
}

/// Looks at what was received, and has it shown.
uint32_t serial_assistant::analyse() {
    uint64_t seen = 0;
    while (log_.wait_received(&seen)) {
        while (log_.walk() && !worker_should_stop()) {
        }
        ask_refresh();
    }
    return 0;
}

// ---- sending ----

/// Starts what is under way from then on.
assistant_start serial_assistant::run(worker* on, const char* name, worker::work work, bool* under_way) {
    static_cast<void>(on->join());
    *under_way = on->start({.name = name}, std::move(work)) == RET_OK;
    return *under_way ? assistant_start::started : assistant_start::no_thread;
}

assistant_start serial_assistant::send(const assistant_form& form, std::function<void(assistant_sent)> done) {
    const traffic_wire wire = assistant_frame(form);
    if (wire.size == 0) return assistant_start::no_frame;
    if (sending_) return assistant_start::busy;
    const auto work = [this, form, wire, done = std::move(done)] {
        const assistant_sent what = write(wire.bytes());
        post([this, form, what, done] {
            sending_ = false;
            if (what == assistant_sent::written) static_cast<void>(history_.add(form)); // it says itself what fails
            if (done) done(what);
        });
        return static_cast<uint32_t>(what);
    };
    return run(&sender_, "assistant_send_entry", work, &sending_);
}

assistant_sent serial_assistant::write(std::span<const uint8_t> frame) {
    device_session* device = device_;
    if (device == nullptr) return assistant_sent::no_port;
    port_lease port = device->take_port(assistant_timing_get().port_wait_ms);
    if (!port) return assistant_sent::no_port;
    port.clear_errors();
    if (!port.write(frame).ok()) return assistant_sent::failed;
    log_.sent(frame, time_stamp_now()); // before the port is free: an answer stands behind it
    ask_refresh();
    return assistant_sent::written;
}

// ---- texts ----

assistant_start serial_assistant::make_text(const text_wish& wish, text_made made,
                                            std::function<void(ret_t)> done) {
    if (making_) return assistant_start::busy;
    const uint64_t clears = log_.counts().clears;
    const auto work = [this, wish, clears, made = std::move(made), done = std::move(done)] {
        std::string text = wish.part == transcript_part::rows ? text_of_rows(wish) : text_of_frames(wish);
        // What was broken off, or cleared meanwhile, is no text.
        const bool whole = !worker_should_stop() && log_.counts().clears == clears;
        const ret_t ret = whole ? made(std::move(text)) : RET_FAIL;
        post([this, ret, done] {
            making_ = false;
            if (done) done(ret);
        });
        return 0u;
    };
    return run(&maker_, "assistant_text", work, &making_);
}

std::string serial_assistant::text_of_rows(const text_wish& wish) const {
    std::string text;
    std::array<transcript_row, rows_at_once> rows;
    for (std::size_t done = 0; done < wish.count && !worker_should_stop();) {
        const std::size_t wanted = std::min(rows.size(), wish.count - done);
        const std::size_t got = log_.rows(wish.first + done, std::span(rows).first(wanted));
        for (const transcript_row& row : std::span(rows).first(got)) text += row_line(row, wish.form);
        done += got;
        if (got < wanted) break;
    }
    return text;
}

std::string serial_assistant::text_of_frames(const text_wish& wish) const {
    std::string text;
    transcript_frame frame;
    for (std::size_t i = 0; i < wish.count && !worker_should_stop() && log_.frame(wish.first + i, &frame); ++i)
        text += frame_line(frame);
    return text;
}

// ---- posting ----

void serial_assistant::ask_refresh() {
    idle_queue_once(refresh_key_, [this, alive = std::weak_ptr(alive_)] {
        if (!alive.expired() && refresh_) refresh_();
        return RET_OK;
    });
}

void serial_assistant::post(std::function<void()> what) {
    idle_queue([alive = std::weak_ptr(alive_), what = std::move(what)] {
        if (!alive.expired()) what();
        return RET_OK;
    });
}
