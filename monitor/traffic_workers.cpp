// What the receive and the send thread do.
#include "monitor/traffic.h"

#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <utility>

namespace {

constexpr std::size_t read_bytes = 1024;
constexpr DWORD read_interval_ms = 10;
constexpr DWORD read_multiplier_ms = 10;
constexpr uint32_t look_at_paused_ms = 500;
constexpr int chances = 5;
constexpr uint32_t chance_ms = 20;
constexpr const char* text_gone = "The port is gone, receiving has ended: error code %lu\n";
constexpr uint32_t look_again_ms = 100; ///< after a read that failed, or ended without reason

struct io_words {
    const char* start; ///< with the error
    const char* wait;
    const char* result;
};
constexpr io_words read_words = {"Async read operation failed with error code: %lu\n",
                                 "Wait for async read operation failed\n",
                                 "Get overlapped result for async read failed\n"};
constexpr io_words write_words = {"Async write operation failed with error code: %lu\n",
                                  "Wait for async write operation failed\n",
                                  "Get overlapped result for async write failed\n"};

void say_failure(const io_result& failed, const io_words& words) {
    if (failed.step == io_step::create_event) log_console("Create write event failed\n");
    if (failed.step == io_step::start)
        log_console(tk_format(words.start, static_cast<unsigned long>(failed.error)));
    if (failed.step == io_step::wait) log_console(words.wait);
    if (failed.step == io_step::result) log_console(words.result);
}

/// The port's time-outs are those of traffic as long as it lives.
class traffic_timeouts {
  public:
    explicit traffic_timeouts(port_lease& port) : port_(port), saved_(port.timeouts()) {
        const COMMTIMEOUTS now = saved_.value_or(port_timing_get().timeouts);
        static_cast<void>(port_.set_timeouts({read_interval_ms, read_multiplier_ms, 0,
                                              now.WriteTotalTimeoutMultiplier, now.WriteTotalTimeoutConstant}));
    }
    ~traffic_timeouts() {
        if (saved_) static_cast<void>(port_.set_timeouts(*saved_));
    }
    traffic_timeouts(const traffic_timeouts&) = delete;
    traffic_timeouts& operator=(const traffic_timeouts&) = delete;

  private:
    port_lease& port_;
    const std::optional<COMMTIMEOUTS> saved_;
};

} // namespace

// ---- receiving ----

uint32_t traffic::receive() {
    const port_event event;
    const port_ptr port = port_when_open();
    if (port == nullptr) return 0;
    if (!event.valid()) {
        log_console("Create read event failed\n");
        lose();
        return 0;
    }
    doubtful_ = 0;
    while (wait_to_run(*port) && receive_once(*port, event)) {
    }
    return 0;
}

/// Until it may read; a port that vanishes in a pause is noticed then.
bool traffic::wait_to_run(port_lease& port) {
    const auto may_go = [this] { return run_ != traffic_run::pause; };
    for (;;) {
        std::unique_lock guard(lock_);
        if (changed_.wait(guard, worker_stop_token(), look_at_paused_ms, may_go) || worker_should_stop())
            return run_ == traffic_run::run && !worker_should_stop();
        guard.unlock();
        DWORD error = 0;
        if (port.waiting(&error) || !port_lost_error(error)) continue;
        log_console(tk_format(text_gone, static_cast<unsigned long>(error)));
        lose();
        return false;
    }
}

/// False when receiving has ended.
bool traffic::receive_once(port_lease& port, const port_event& event) {
    std::array<uint8_t, read_bytes> buffer{};
    io_result read;
    const int64_t begin = time_now_ms();
    {
        const traffic_timeouts timeouts(port);
        port.clear_errors();
        read = port.read_with(event, buffer, INFINITE);
        if (read.ok()) purge_after_read(port);
    }
    if (!read.ok()) return go_on_after(port, read);
    doubtful_ = 0;
    if (read.bytes > 0) {
        take_chunk(std::span(buffer).first(read.bytes));
        ask_refresh();
    } else if (time_now_ms() - begin < look_again_ms) {
        return worker_sleep_ms(look_again_ms);
    }
    return true;
}

// Some systems take a read whose bytes the send thread's purge took away for the end of the port. So a port that
// still answers gets some more chances, and is lost when they fail too.
bool traffic::go_on_after(port_lease& port, const io_result& failed) {
    if (worker_should_stop()) return false;
    const bool lost = port_lost_error(failed.error);
    if (!lost || doubtful_ == 0) say_failure(failed, read_words);
    if (failed.step == io_step::stopped) {
        set_link(traffic_link::closed);
        return false;
    }
    if (!lost) return worker_sleep_ms(look_again_ms);
    if (doubtful_++ < chances && port.waiting()) return worker_sleep_ms(chance_ms);
    lose();
    return false;
}

// What is just being sent is not taken away from under its write.
void traffic::purge_after_read(port_lease& port) {
    const std::unique_lock nobody_writes(write_lock_, std::try_to_lock);
    purge(port, nobody_writes ? PURGE_TXCLEAR | PURGE_RXCLEAR : PURGE_RXCLEAR);
}

void traffic::take_chunk(std::span<const uint8_t> chunk) {
    chunk_.clear();
    const traffic_losses lost = chunk_take(chunk, check_, time_stamp_now(), &chunk_);
    const std::size_t refused = queue_->append(chunk_);
    const std::lock_guard guard(count_lock_);
    count_.bytes_read += chunk.size();
    count_.frames_received += chunk_.size();
    count_.lost += lost;
    count_.records_refused += refused;
}

// ---- sending ----

uint32_t traffic::send() {
    while (tk_semaphore_wait(semaphore_write_.get(), wait_for_ever) == RET_OK) {
        traffic_request request;
        bool check = false;
        {
            const std::lock_guard guard(lock_);
            request = pending_;
            check = pending_check_;
        }
        send_request(request, check);
        {
            const std::lock_guard guard(lock_);
            send_done_ = true;
        }
        changed_.notify_all();
        ask_refresh();
    }
    return 0;
}

// The line is stored without a lock: a slow disk must hold up neither receiving nor the page.
void traffic::send_request(const traffic_request& request, bool check) {
    const traffic_record record = record_sent(request, time_stamp_now());
    csv_.add(record);
    const std::size_t refused = queue_->append(std::span(&record, 1));
    const traffic_wire wire = traffic_frame_build(request, check);
    if (!wire.bytes().empty()) transmit(wire.bytes());
    const std::lock_guard guard(count_lock_);
    count_.records_refused += refused;
}

void traffic::transmit(std::span<const uint8_t> frame) {
    io_result written{io_step::stopped, 0, 0};
    if (const port_ptr port = port_when_open()) {
        const std::lock_guard guard(write_lock_);
        port->clear_errors();
        written = port->write(frame);
        say_failure(written, write_words);
        DWORD error = 0;
        if (!written.ok() && !port->waiting(&error) && port_lost_error(error)) lose();
        purge(*port, PURGE_TXCLEAR | PURGE_RXCLEAR);
    }
    const std::lock_guard guard(count_lock_);
    (written.ok() ? count_.frames_sent : count_.sends_failed)++;
}
