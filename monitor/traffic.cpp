#include "monitor/traffic.h"

#include "serial/mode_text.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <new>

namespace {

constexpr uint32_t traffic_stack_bytes = 0x100000;
constexpr int swallow_rounds = 40; ///< of session_timing::quiet_ms: a module that never stops cannot hold the port

} // namespace

traffic::traffic(traffic_files files)
    : files_(std::move(files)), refresh_key_(tk_format("traffic %p", static_cast<void*>(this))), csv_(files_.csv),
      alive_(std::make_shared<int>()) {}

traffic::~traffic() = default;

// ---- start ----

bool traffic::make_queue() {
    if (queue_ != nullptr) return true;
    std::string text, said;
    if (!files_.settings.empty()) setting_read(files_.settings.c_str(), setting_fifo_size, &text);
    const std::size_t capacity = record_capacity_of(text, &said);
    if (!said.empty()) log_console(said);
    try {
        queue_ = std::make_unique<record_queue>(capacity);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

int traffic::start(device_session& device, std::function<void()> refresh, traffic_run run) {
    if (leaving_ && !leaver_.wait_ended(session_timing_get().start_wait_ms)) return -1;
    if (!make_queue()) return -1;
    if (semaphore_write_ == nullptr) semaphore_write_.reset(tk_semaphore_create(0));
    if (semaphore_write_ == nullptr) return -1;
    refresh_ = std::move(refresh);
    set_run(run);
    const traffic_link before = link();
    if (before == traffic_link::lost || before == traffic_link::closed) return 0;
    if (before == traffic_link::none) {
        lost_ = false;
        set_link(traffic_link::waiting);
    }
    if (start_workers() && (before != traffic_link::none || start_entering(device))) return 0;
    if (before == traffic_link::none) {
        receiver_.request_stop();
        receiver_.join();
        set_link(traffic_link::none);
    }
    return -1;
}

bool traffic::start_workers() {
    const auto running = [](worker* one, const char* name, worker::work work) {
        const worker_plan plan{.name = name, .priority = 4, .stack_bytes = traffic_stack_bytes};
        return one->running() || one->start(plan, std::move(work)) == RET_OK;
    };
    return running(&sender_, "can_data_write_entry", [this] { return send(); }) &&
           running(&receiver_, "can_data_read_entry", [this] { return receive(); });
}

bool traffic::start_entering(device_session& device) {
    return mode_.start({.name = "work_mode_entry"}, [this, &device] { return enter(device); }) == RET_OK;
}

// The write lock is taken before the port is there for others: "transfer" goes first.
uint32_t traffic::enter(device_session& device) {
    const auto port = std::make_shared<port_lease>(device.take_port(INFINITE));
    if (!*port) {
        set_link(traffic_link::closed);
        return 0;
    }
    const std::lock_guard guard(write_lock_);
    open_link(port);
    mode_text_write(*port, mode_transfer);
    return 0;
}

// ---- leave ----

ret_t traffic::leave(std::function<void()> left) {
    const traffic_link before = link();
    if (before == traffic_link::none || leaving_.exchange(true)) return RET_FAIL;
    refresh_ = {};
    set_run(traffic_run::pause);
    leaver_.join();
    const auto work = [this, before, left = std::move(left)] {
        return depart(before == traffic_link::waiting, left);
    };
    if (leaver_.start({.name = "work_mode_entry"}, work) == RET_OK) return RET_OK;
    return static_cast<ret_t>(work()); // no thread to be had: better late than never
}

uint32_t traffic::depart(bool stop_entering, const std::function<void()>& left) {
    if (stop_entering) mode_.request_stop();
    receiver_.request_stop();
    mode_.wait_ended(wait_for_ever);
    receiver_.wait_ended(wait_for_ever);
    port_ptr port;
    {
        std::unique_lock guard(lock_);
        changed_.wait(guard, worker_stop_token(), wait_for_ever, [this] { return send_done_.load(); });
        port = std::exchange(port_, nullptr);
    }
    if (port != nullptr) {
        const std::lock_guard guard(write_lock_);
        mode_text_write(*port, mode_config);
        swallow_rest(*port);
    }
    port = nullptr; // whoever still uses it, at the program's end, gives it back
    set_link(traffic_link::none);
    leaving_ = false;
    if (left)
        idle_queue([alive = std::weak_ptr(alive_), left] {
            if (!alive.expired()) left();
            return RET_OK;
        });
    return RET_OK;
}

// A session would take it for a reply.
void traffic::swallow_rest(port_lease& port) {
    for (int round = 0; round < swallow_rounds; ++round) {
        DWORD error = 0;
        if (!worker_sleep_ms(session_timing_get().quiet_ms)) return;
        const DWORD waiting = port.waiting(&error).value_or(0);
        if (port_lost_error(error)) lost_ = true;
        if (waiting == 0) return;
        purge(port, PURGE_RXCLEAR);
    }
}

// ---- what the page asks ----

void traffic::set_run(traffic_run run) {
    {
        const std::lock_guard guard(lock_);
        run_ = run;
    }
    changed_.notify_all();
    if (run == traffic_run::stop) receiver_.request_stop();
}

traffic_run traffic::run() const {
    const std::lock_guard guard(lock_);
    return run_;
}

ret_t traffic::request_send(const traffic_request& request) {
    if (leaving_ || link() == traffic_link::none || !send_done_.exchange(false)) return RET_FAIL;
    {
        const std::lock_guard guard(lock_);
        pending_ = request;
        pending_check_ = check_;
    }
    return tk_semaphore_post(semaphore_write_.get());
}

void traffic::clear() {
    if (queue_ == nullptr) return;
    auto gone = queue_->clear();
    if (sweeper_.running()) return; // two at once: this one takes the caller's time
    static_cast<void>(sweeper_.start({.name = "traffic_sweeper"}, [gone = std::move(gone)]() mutable {
        gone.reset();
        return 0u;
    }));
}

record_queue::look traffic::rows(std::size_t first, std::span<traffic_record> out) const {
    return queue_ != nullptr ? queue_->rows(first, out) : record_queue::look{};
}

bool traffic::numbered(uint64_t number, traffic_record* out) const {
    return queue_ != nullptr && queue_->numbered(number, out);
}

traffic_counters traffic::counters() const {
    traffic_counters now;
    {
        const std::lock_guard guard(count_lock_);
        now = count_;
    }
    if (queue_ != nullptr) now.records_dropped = queue_->dropped();
    now.lines_dropped = csv_.dropped();
    return now;
}

traffic_link traffic::link() const {
    const std::lock_guard guard(lock_);
    return link_;
}

// ---- shared ----

void traffic::lose() {
    lost_ = true;
    set_link(traffic_link::lost);
}

// Whoever has a closed port must let go of it, or its owner waits.
void traffic::set_link(traffic_link link) {
    port_ptr let_go; // outside the lock
    {
        const std::lock_guard guard(lock_);
        link_ = link;
        if (link == traffic_link::closed) let_go.swap(port_);
    }
    changed_.notify_all();
    ask_refresh();
}

void traffic::open_link(port_ptr port) {
    {
        const std::lock_guard guard(lock_);
        port_.swap(port);
    }
    set_link(traffic_link::open);
}

traffic::port_ptr traffic::port_when_open() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, worker_stop_token(), wait_for_ever, [this] { return link_ != traffic_link::waiting; });
    return port_;
}

void traffic::purge(port_lease& port, DWORD flags) {
    const std::lock_guard guard(purge_lock_);
    const DWORD waiting = port.waiting().value_or(0);
    if (!port.purge(flags)) return;
    const std::lock_guard counting(count_lock_);
    count_.lost[traffic_loss::purged] += waiting;
}

void traffic::ask_refresh() {
    idle_queue_once(refresh_key_, [this, alive = std::weak_ptr(alive_)] {
        if (!alive.expired() && refresh_) refresh_();
        return RET_OK;
    });
}
