#include "sim/module.h"

#include "sim/traffic_talk.h"
#include "sim/wire.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace sim {

namespace {

using clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using microseconds = std::chrono::microseconds;

constexpr int silence_ms = 500;          ///< a frame whose rest stays away this long is none
constexpr microseconds byte_time{1146};  ///< 11 bits at 9600 baud
constexpr microseconds spin_below{5000}; ///< shorter waits than this need more than poll's milliseconds

/// A reply waiting for its time, or partly sent.
struct outgoing {
    clock::time_point due;
    reply what;
    std::size_t sent = 0;
};

class module_impl final : public module_t {
  public:
    module_impl(model m, std::string name, request_watcher watcher)
        : of_(tribe_of(m)), name_(std::move(name)), watcher_(std::move(watcher)), memory_(factory_memory(of_)),
          reader_(of_) {}
    ~module_impl() override {
        {
            const std::lock_guard<std::mutex> hold(lock_);
            stop_ = true;
        }
        hang_up();
        if (thread_.joinable()) thread_.join();
    }
    void start() {
        thread_ = std::thread([this] { run(); });
    }

    void plan(const fault_plan& p) override {
        const std::lock_guard<std::mutex> hold(lock_);
        plan_ = p;
    }
    bytes memory() const override {
        const std::lock_guard<std::mutex> hold(lock_);
        return memory_;
    }
    void set_memory(const bytes& content) override {
        const std::lock_guard<std::mutex> hold(lock_);
        std::copy_n(content.begin(), std::min(content.size(), memory_.size()), memory_.begin());
    }
    counters count() const override {
        const std::lock_guard<std::mutex> hold(lock_);
        counters now = count_;
        now.traffic_sent = talk_.sent_count();
        now.traffic_received = talk_.received_count();
        now.traffic_overrun = talk_.overrun();
        return now;
    }
    bytes received() const override {
        const std::lock_guard<std::mutex> hold(lock_);
        return received_;
    }
    std::vector<bytes> requests() const override {
        const std::lock_guard<std::mutex> hold(lock_);
        return requests_;
    }
    std::string mode() const override {
        const std::lock_guard<std::mutex> hold(lock_);
        return mode_;
    }
    void set_mode(const std::string& mode) override {
        const std::lock_guard<std::mutex> hold(lock_);
        be_in(mode);
    }
    bool wait_requests(uint32_t n, int timeout_ms) const override {
        std::unique_lock<std::mutex> hold(lock_);
        return changed_.wait_for(hold, milliseconds(timeout_ms), [&] { return count_.requests() >= n; });
    }
    void set_traffic(const traffic_plan& plan) override { talk_.set_plan(plan); }
    std::vector<traffic_note> traffic_sent() const override { return talk_.sent(); }
    std::vector<traffic_note> traffic_received() const override { return talk_.received(); }
    bool wait_traffic(uint32_t sent, uint32_t received, int timeout_ms) const override {
        return talk_.wait(sent, received, timeout_ms);
    }
    void babble(const bytes& content) override {
        if (const auto line = line_now()) line->write(content.data(), content.size());
    }
    void hang_up() override {
        const auto line = line_now();
        if (line != nullptr) line->hang_up();
        const std::lock_guard<std::mutex> hold(lock_);
        if (line_ == line) line_ = nullptr;
        changed_.notify_all();
    }
    bool plug_in(std::string* why) override {
        hang_up();
        std::shared_ptr<sim_line> line = sim_line_open(name_, why);
        if (line == nullptr) return false;
        const std::lock_guard<std::mutex> hold(lock_);
        line_ = std::move(line);
        changed_.notify_all();
        return true;
    }
    std::string port_path() const override {
        const auto line = line_now();
        return line == nullptr ? std::string() : line->path();
    }
    void set_paced(bool paced) override {
        const std::lock_guard<std::mutex> hold(lock_);
        paced_ = paced;
    }

  private:
    std::shared_ptr<sim_line> line_now() const {
        const std::lock_guard<std::mutex> hold(lock_);
        return line_;
    }

    void run() {
        for (;;) {
            std::shared_ptr<sim_line> line;
            {
                std::unique_lock<std::mutex> hold(lock_);
                changed_.wait(hold, [&] { return stop_ || line_ != nullptr; });
                if (stop_) return;
                line = line_;
            }
            reader_.clear();
            waiting_.clear();
            talk_.line_is_new();
            serve(*line);
            line->hang_up();
            const std::lock_guard<std::mutex> hold(lock_);
            if (line_ == line) line_ = nullptr;
        }
    }

    /// Until the line is taken away.
    void serve(sim_line& line) {
        uint8_t chunk[512];
        for (;;) {
            if (!send_due(line) || !talk_.send(line)) return;
            const int n = line.read(chunk, sizeof chunk, wait_ms());
            if (n < 0) return;
            if (n > 0) {
                last_byte_ = clock::now();
                take_in(chunk, static_cast<std::size_t>(n));
            } else if (reader_.partial() && clock::now() - last_byte_ >= milliseconds(silence_ms)) {
                while (reader_.partial()) {
                    reader_.give_up();
                    take_requests();
                }
            }
        }
    }

    int wait_ms() const {
        clock::time_point until = clock::time_point::max();
        if (!waiting_.empty()) until = waiting_.front().due;
        if (reader_.partial()) until = std::min(until, last_byte_ + milliseconds(silence_ms));
        until = std::min(until, talk_.due());
        if (until == clock::time_point::max()) return -1;
        const auto left = until - clock::now();
        if (left <= clock::duration::zero()) return 0;
        if (left < spin_below && !waiting_.empty()) {
            std::this_thread::sleep_until(until);
            return 0;
        }
        return static_cast<int>(std::chrono::duration_cast<milliseconds>(left).count()) + 1;
    }

    /// Sends what is due; false when the line is gone or its time has come.
    bool send_due(sim_line& line) {
        while (!waiting_.empty() && waiting_.front().due <= clock::now()) {
            outgoing& out = waiting_.front();
            const bytes& data = out.what.data;
            const bool at_once = out.what.gap_us == 0;
            const std::size_t size = at_once ? data.size() : std::min<std::size_t>(1, data.size() - out.sent);
            if (size > 0 && !line.write(data.data() + out.sent, size)) return false;
            out.sent += size;
            out.due += microseconds(out.what.gap_us);
            if (out.sent < data.size()) continue;
            if (out.what.hang_up_after) {
                if (watcher_) watcher_("unplugged", {});
                return false;
            }
            waiting_.erase(waiting_.begin());
        }
        return true;
    }

    void take_in(const uint8_t* data, std::size_t size) {
        {
            const std::lock_guard<std::mutex> hold(lock_);
            received_.insert(received_.end(), data, data + size);
        }
        reader_.feed(data, size);
        take_requests();
    }

    void take_requests() {
        request asked;
        while (next_request(&asked)) {
            // Before it counts: who waits for the count may already look at what the watcher wrote.
            if (watcher_) watcher_(request_kind_name(asked.kind), asked.frame);
            const std::lock_guard<std::mutex> hold(lock_);
            respond(asked);
            count_in(asked);
            changed_.notify_all();
        }
    }

    bool next_request(request* asked) {
        const std::lock_guard<std::mutex> hold(lock_);
        const bool transfer = mode_ == "transfer";
        reader_.set_transfer(transfer, talk_.check());
        if (!reader_.next(asked)) return false;
        if (transfer && asked->kind != request_kind::mode_text && asked->kind != request_kind::traffic)
            asked->kind = request_kind::unknown;
        return true;
    }

    /// With the lock held.
    void be_in(const std::string& mode) {
        mode_ = mode;
        talk_.set_transfer(of_ == tribe::b && mode_ == "transfer");
    }

    void count_in(const request& asked) {
        switch (asked.kind) {
        case request_kind::handshake:
            count_.handshakes++;
            break;
        case request_kind::firmware:
            count_.firmware_reads++;
            break;
        case request_kind::read:
            count_.reads++;
            break;
        case request_kind::write:
            count_.writes++;
            break;
        case request_kind::unknown:
            count_.unknown++;
            return;
        case request_kind::traffic:
            talk_.take(asked.frame);
            return;
        case request_kind::mode_text:
            count_.mode_texts++;
            be_in(asked.frame[0] == 'c' ? "config" : "transfer");
            return;
        }
        requests_.push_back(asked.frame);
    }

    /// The fault for the next reply, by the plan.
    fault next_fault() {
        if (plan_.what == fault::none) return fault::none;
        if (plan_.after > 0) {
            plan_.after--;
            return fault::none;
        }
        if (plan_.times == 0) return fault::none;
        if (plan_.times != 0xFFFFFFFFu) plan_.times--;
        return plan_.what;
    }

    /// With the lock held.
    void respond(const request& asked) {
        if (asked.kind == request_kind::mode_text || asked.kind == request_kind::traffic ||
            asked.kind == request_kind::unknown)
            return;
        const fault now = next_fault();
        if (now == fault::silent) return;
        reply made = now == fault::refuse ? refusal(of_, asked) : answer(of_, asked, &memory_);
        if (now == fault::empty) return;
        if (paced_) made.gap_us = static_cast<uint32_t>(byte_time.count());
        if (now != fault::none) spoil(of_, plan_, &made);
        outgoing out{clock::now() + milliseconds(made.delay_ms), std::move(made), 0};
        // The first byte is there when its last bit is: a request of n bytes, then one byte of the reply.
        if (paced_) out.due += byte_time * (static_cast<int64_t>(asked.frame.size()) + 1);
        // A reply that has begun is finished first: the line carries one at a time.
        const auto from = waiting_.begin() + (!waiting_.empty() && waiting_.front().sent > 0 ? 1 : 0);
        const auto at = std::upper_bound(from, waiting_.end(), out.due,
                                         [](clock::time_point due, const outgoing& o) { return due < o.due; });
        waiting_.insert(at, std::move(out));
    }

    const tribe of_;
    const std::string name_;
    const request_watcher watcher_;
    mutable std::mutex lock_; ///< over everything up to the next blank line
    mutable std::condition_variable changed_;
    bytes memory_, received_;
    std::vector<bytes> requests_;
    counters count_;
    fault_plan plan_;
    std::string mode_;
    bool paced_ = false, stop_ = false;
    std::shared_ptr<sim_line> line_; ///< null while unplugged

    traffic_talk talk_;

    // The module's thread only.
    request_reader reader_;
    std::vector<outgoing> waiting_; ///< by due time
    clock::time_point last_byte_;
    std::thread thread_;
};

struct model_row {
    model what;
    const char* name;
};
constexpr model_row model_rows[] = {
    {model::vkt510a, "VKT510A"}, {model::vkt530a, "VKT530A"}, {model::vkt531a, "VKT531A"},
    {model::vkt610b, "VKT610B"}, {model::vkt630b, "VKT630B"}, {model::vkt631b, "VKT631B"},
};

} // namespace

bool model_from_name(const std::string& name, model* out) {
    for (const model_row& row : model_rows)
        if (name == row.name) {
            *out = row.what;
            return true;
        }
    return false;
}

std::unique_ptr<module_t> module_start(model m, const std::string& com_name, std::string* why,
                                       request_watcher watcher) {
    auto made = std::make_unique<module_impl>(m, com_name, std::move(watcher));
    if (!made->plug_in(why)) return nullptr;
    made->start();
    return made;
}

} // namespace sim
