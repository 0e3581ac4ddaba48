#include "cli/link.h"

#include "cli/families.h"
#include "cli/interrupt.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/text.h"

#include <utility>

namespace {

constexpr const char* text_connecting = "开始连接";
constexpr uint32_t leave_patience_ms = 300;
constexpr const char* clear_line = "\r\x1b[K";

/// "读配置....." without what a progress window adds.
std::string step_text(std::string text) {
    while (text.ends_with('.')) text.pop_back();
    return text;
}

/// "COM7: 不存在 (error 2)\n" without the port and the line end.
std::string cause_text(std::string cause, const std::string& port) {
    if (cause.ends_with('\n')) cause.pop_back();
    return cause.starts_with(port + ": ") ? cause.substr(port.size() + 2) : cause;
}

/// Runs on the command's thread unless the link is gone by then. Any thread.
void post(const std::weak_ptr<int>& alive, std::function<void()> job) {
    idle_queue([alive, job = std::move(job)] {
        if (!alive.expired()) job();
        return RET_OK;
    });
}

} // namespace

bool run_until(const std::function<bool()>& done) {
    const auto settled = [&done] { return cli_interrupted() || done(); };
    while (!idle_run_until(settled, 60000)) {
    }
    return !cli_interrupted();
}

module_link::module_link(const cli_context& with, std::string model, std::string port)
    : with_(with), model_(std::move(model)), port_(std::move(port)), alive_(std::make_shared<int>()),
      leaver_(std::make_unique<disconnector>()), dev_(dev_open(cli_families(), model_.c_str(), reports())) {}

// A module that is being left when the command is interrupted hears it out. A driver that hangs in it keeps what it
// uses: the process ends soon.
module_link::~module_link() {
    ended_ = nullptr;
    if (!idle_run_until([this] { return !leaver_->running(); }, leave_patience_ms)) {
        static_cast<void>(leaver_.release());
        static_cast<void>(dev_.release());
    }
    if (owns_line()) with_.streams.err(clear_line);
}

bool module_link::owns_line() const { return !show_ && !with_.options.verbose && with_.shows_progress(); }

session_reports module_link::reports() {
    const std::weak_ptr<int> alive = alive_;
    session_reports to{
        .progress = [this, alive](const session_progress& p) { post(alive, [this, p] { take_progress(p); }); },
        .failed = [this, alive](const session_failure& f) { post(alive, [this, f] { take_failure(f); }); },
        .image =
            [this, alive](uint32_t, const session_bytes& image) {
                post(alive, [this, image] {
                    if (!image.empty()) in_module_ = image;
                    dev_accept(*dev_, image);
                });
            },
        .firmware = [this, alive](const std::string& text) { post(alive, [this, text] { firmware_ = text; }); },
        .connected = [] {},
        .finished = [this, alive](uint32_t) { post(alive, [this] { end_session(); }); },
    };
    if (with_.options.verbose)
        to.moved = [this, alive, began = std::chrono::steady_clock::now()](const session_traffic& t) {
            const auto at = std::chrono::steady_clock::now() - began;
            const auto us = std::chrono::duration_cast<std::chrono::microseconds>(at).count();
            post(alive, [this, us, t] { take_traffic(us, t); });
        };
    return to;
}

void module_link::take_progress(const session_progress& progress) {
    step_ = step_text(progress.text);
    if (show_) show_(progress.percent, step_);
    if (owns_line())
        with_.streams.err(tk_format("%s%s %3u%% %s", clear_line, port_.c_str(), progress.percent, step_.c_str()));
}

void module_link::take_failure(const session_failure& failure) {
    failure_ = cli_error{.status = failure.at_port || failure.port_lost ? exit_port : exit_module,
                         .where = port_,
                         .step = step_,
                         .text = failure.text,
                         .cause = cause_text(failure.cause, port_),
                         .not_opened = failure.not_opened,
                         .absent = failure.absent,
                         .lost = failure.port_lost};
    end_session();
}

void module_link::take_traffic(int64_t at_us, const session_traffic& traffic) const {
    with_.streams.err(tk_format("%s %10.3f ms %s %s\n", port_.c_str(), static_cast<double>(at_us) / 1000,
                                traffic.sent ? ">" : "<", hex_list(traffic.bytes, "%02X", " ").c_str()));
}

// A failure may be followed by the session's good end; it counts all the same.
void module_link::end_session() {
    if (!ended_) return;
    dev_->session.join(dev_->session.last_run());
    end(std::exchange(failure_, std::nullopt));
}

void module_link::end(std::optional<cli_error> error) {
    if (const auto ended = std::exchange(ended_, nullptr)) ended(std::move(error));
}

void module_link::start(session_kind kind, bool alternative, std::function<void(std::optional<cli_error>)> ended) {
    if (kind == session_kind::connect) step_ = text_connecting;
    failure_.reset();
    ended_ = std::move(ended);
    session_input input = dev_session_input(*dev_, kind, alternative);
    input.port_text = port_;
    input.model = model_;
    if (dev_->session.start(kind, std::move(input)) == RET_OK) return;
    post(alive_, [this] { end(cli_error{exit_port, port_, step_, "session thread not started"}); });
}

void module_link::leave(std::function<void(std::optional<cli_error>)> ended) {
    ended_ = std::move(ended);
    const bool heard = !dev_->of.leave.empty();
    const std::weak_ptr<int> alive = alive_;
    const auto report = [this, alive](const session_progress& p) { post(alive, [this, p] { take_progress(p); }); };
    const auto done = [this, alive, heard] {
        post(alive, [this, heard] { // after the last report
            const bool good = !heard || step_ == text_mode_transfer;
            end(good ? std::nullopt
                     : std::optional(cli_error{exit_port, port_, step_text(text_mode_switch), step_}));
        });
    };
    if (leaver_->start({&dev_->session}, report, done) != RET_OK) done();
}

std::optional<cli_error> module_link::wait() {
    if (!run_until([this] { return waited_.has_value(); })) return cli_error{.status = exit_interrupted};
    return *std::exchange(waited_, std::nullopt);
}

std::optional<cli_error> module_link::run(session_kind kind, bool alternative) {
    start(kind, alternative, [this](std::optional<cli_error> error) { waited_.emplace(std::move(error)); });
    return wait();
}

std::optional<cli_error> module_link::run_leave() {
    leave([this](std::optional<cli_error> error) { waited_.emplace(std::move(error)); });
    return wait();
}
