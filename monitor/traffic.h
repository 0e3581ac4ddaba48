// The traffic of one module at a time: it is put into transfer mode, what it receives becomes records, what is
// asked for is sent. A page owns one for the program's life and needs nothing else of the port.
#pragma once

#include "monitor/chunk.h"
#include "monitor/csv.h"
#include "monitor/record_queue.h"
#include "monitor/settings.h"
#include "session/device_session.h"
#include "toolkit/core/thread.h"
#include "toolkit/core/worker.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

/// Whether frames are received.
enum class traffic_run : uint8_t {
    run = 0,
    pause = 1, ///< a read that is under way is still shown
    stop = 2,  ///< receiving ends, until the next start
};

/// What became of the port.
enum class traffic_link : uint8_t {
    none,    ///< not started, or left
    waiting, ///< started; a session still has the port
    open,    ///< the port is held
    lost,    ///< held, but receiving has ended by itself: the module has vanished, or the system had no event
    closed,  ///< somebody closed the port
};

struct traffic_counters {
    uint64_t frames_received = 0;
    uint64_t frames_sent = 0;
    uint64_t sends_failed = 0;
    uint64_t bytes_read = 0; ///< those of frames, and all that are lost but the purged ones
    traffic_losses lost;
    uint64_t records_dropped = 0; ///< had to go because the queue was full
    uint64_t records_refused = 0; ///< there was no memory for them
    uint64_t lines_dropped = 0;   ///< of the record file
};

struct traffic_files {
    std::string settings = setting_path; ///< empty: none
    std::string csv = csv_path;          ///< empty: nothing is recorded
};

/// Everything but what says otherwise belongs to the GUI thread.
class traffic {
  public:
    explicit traffic(traffic_files files = {});
    /// Ends the workers, whatever they wait for; the module hears nothing.
    ~traffic();
    traffic(const traffic&) = delete;
    traffic& operator=(const traffic&) = delete;

    /// Takes the device's port, as soon as no session has it, and holds it until leave() is through; sends
    /// "transfer" and receives. `refresh` runs on the GUI thread after something has changed; asked for again while
    /// it is pending it still runs once. Makes the queue, of the settings' capacity, when there is none. The device
    /// must live until the traffic is left or destroyed. 0 (also when it was started before: then only `refresh`
    /// and `run` count), or -1: no memory, no threads, or the last leave is not through within
    /// session_timing::start_wait_ms.
    int start(device_session& device, std::function<void()> refresh, traffic_run run = traffic_run::run);
    /// Pauses, ends the read that is pending, restores the port's time-outs, lets a send that is under way end,
    /// sends "config", swallows what the module still had to say, gives the port back. `left`, if given, then runs
    /// on the GUI thread; `refresh` does not run from now on. Does not wait for any of that. RET_FAIL when it is
    /// not started or is being left already (nothing happens then).
    ret_t leave(std::function<void()> left = {});
    /// From leave() until the port is given back. Any thread.
    bool leaving() const { return leaving_; }

    void set_run(traffic_run run);
    traffic_run run() const;
    /// Whether frames carry a check value, from the next read and the next request on. Any thread.
    void set_check(bool check) { check_ = check; }
    bool check() const { return check_; }

    /// Gives a frame to the send thread, which records and sends it; the request is copied. RET_FAIL (and nothing
    /// is sent) while the one before is not done, and when the traffic is not started or is being left.
    ret_t request_send(const traffic_request& request);
    /// Whether what was requested has been sent, well or not. Already true when the refresh after a send runs. Any
    /// thread.
    bool send_done() const { return send_done_; }

    /// Drops all records.
    void clear();
    /// Records newest first; see record_queue. Empty before the first start.
    record_queue::look rows(std::size_t first, std::span<traffic_record> out) const;
    bool row(std::size_t row, traffic_record* out) const { return rows(row, std::span(out, 1)).copied == 1; }
    std::size_t size() const { return rows(0, {}).size; }
    bool numbered(uint64_t number, traffic_record* out) const;

    /// Since it was made.
    traffic_counters counters() const;
    /// Any thread.
    traffic_link link() const;
    /// Whether the module has vanished since the start, up to the end of leave(). Any thread.
    bool lost() const { return lost_; }

  private:
    using port_ptr = std::shared_ptr<port_lease>;

    bool make_queue();
    bool start_workers();
    bool start_entering(device_session& device);
    uint32_t enter(device_session& device);
    uint32_t depart(bool stop_entering, const std::function<void()>& left);
    void swallow_rest(port_lease& port);

    uint32_t receive();
    bool wait_to_run(port_lease& port);
    void lose();
    bool receive_once(port_lease& port, const port_event& event);
    bool go_on_after(port_lease& port, const io_result& failed);
    void purge_after_read(port_lease& port);
    void take_chunk(std::span<const uint8_t> chunk);

    uint32_t send();
    void send_request(const traffic_request& request, bool check);
    void transmit(std::span<const uint8_t> frame);

    port_ptr port_when_open();
    void set_link(traffic_link link);
    void open_link(port_ptr port);
    void purge(port_lease& port, DWORD flags);
    void ask_refresh();

    const traffic_files files_;
    const std::string refresh_key_;
    csv_recorder csv_;                    ///< the send thread's
    std::unique_ptr<record_queue> queue_; ///< there from the first start on
    std::vector<traffic_record> chunk_;   ///< the receive thread's
    int doubtful_ = 0;                    ///< the receive thread's: its last read ended as one of a lost port does
    std::function<void()> refresh_;       ///< the GUI thread's
    std::shared_ptr<int> alive_;          ///< what is posted does nothing once it is gone
    std::atomic<bool> check_{false}, send_done_{true}, leaving_{false}, lost_{false};

    mutable std::mutex lock_; ///< over the next block
    stop_condition changed_;
    traffic_run run_ = traffic_run::run;
    traffic_link link_ = traffic_link::none;
    port_ptr port_; ///< whoever uses it has a copy; the last one gives the port back
    traffic_request pending_;
    bool pending_check_ = false;

    std::mutex write_lock_; ///< one writes at a time
    std::mutex purge_lock_; ///< no two count the same bytes
    mutable std::mutex count_lock_;
    traffic_counters count_;

    struct semaphore_end {
        void operator()(tk_semaphore* semaphore) const { tk_semaphore_destroy(semaphore); }
    };
    std::unique_ptr<tk_semaphore, semaphore_end> semaphore_write_;

    worker sender_, receiver_, mode_, leaver_, sweeper_; // last: they use the others
};
