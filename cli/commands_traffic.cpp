// CAN traffic of a module in transfer mode: shown as it comes, and sent.
#include "cli/can_text.h"
#include "cli/commands.h"
#include "cli/interrupt.h"
#include "cli/link.h"
#include "cli/profiles.h"
#include "monitor/traffic.h"
#include "profile/json_text.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/text.h"

#include <array>

namespace {

constexpr uint32_t leave_patience_ms = 5000;
constexpr uint32_t interrupted_patience_ms = 300; ///< of each of the two steps of leaving
constexpr uint32_t send_patience_ms = 5000;       ///< for one frame

/// A module from its connect to the end of its traffic.
class traffic_visit {
  public:
    explicit traffic_visit(const cli_context& with)
        : with_(with), link_(with, with.options.model.empty() ? "VKT610B" : with.options.model, with.options.port),
          engine_({.settings = "", .csv = ""}) {}

    /// Connects, reads what the module is set to, and puts it into transfer mode, as the window does.
    std::optional<cli_error> open(std::function<void()> refresh) {
        for (const session_kind kind : {session_kind::connect, session_kind::read})
            if (auto error = link_.run(kind)) return error;
        if (const char* why = link_.dev().of.monitor_refusal(link_.dev()))
            return cli_error{exit_module, link_.port(), link_.last_report(), why};
        engine_.set_check(with_.options.check);
        if (engine_.start(link_.dev().session, std::move(refresh)) != 0)
            return cli_error{.status = exit_port, .where = link_.port(), .text = "traffic not started"};
        const auto opened = [this] { return engine_.link() != traffic_link::waiting; };
        if (!run_until(opened)) return cli_error{.status = exit_interrupted};
        return lost();
    }

    std::optional<cli_error> lost() const {
        if (engine_.link() == traffic_link::open) return std::nullopt;
        return cli_error{.status = exit_port, .where = link_.port(), .text = "连接已断开"};
    }

    /// Puts the module back into configuration mode and leaves it, for a moment also after an interruption.
    std::optional<cli_error> close() {
        const uint32_t patience = cli_interrupted() ? interrupted_patience_ms : leave_patience_ms;
        bool left = false;
        if (engine_.leave([&left] { left = true; }) == RET_OK)
            static_cast<void>(idle_run_until([&left] { return left; }, patience));
        if (!left || engine_.lost()) return std::nullopt;
        std::optional<std::optional<cli_error>> ended;
        link_.leave([&ended](std::optional<cli_error> error) { ended.emplace(std::move(error)); });
        static_cast<void>(idle_run_until([&ended] { return ended.has_value(); }, patience));
        return ended ? *ended : std::nullopt;
    }

    traffic& engine() { return engine_; }
    const std::string& port() const { return link_.port(); }

  private:
    const cli_context& with_;
    module_link link_;
    traffic engine_; // ends before the link whose port it holds
};

/// The status of what was done, and of leaving after it.
int finish(const cli_context& with, traffic_visit& run, std::optional<cli_error> error) {
    const std::optional<cli_error> left = run.close();
    if (!error) error = left;
    if (cli_interrupted()) return exit_interrupted;
    return error ? with.fail(*error) : static_cast<int>(exit_good);
}

/// False, and the error's status in `status`, for a model without traffic.
bool has_traffic(const cli_context& with, int* status) {
    if (with.options.model.empty()) return true;
    const family_descriptor* of = model_asked(with, with.options.model, status);
    if (of == nullptr) return false;
    if (of->monitor_refusal != nullptr) return true;
    *status = with.fail({.text = with.options.model + " has no transfer mode"});
    return false;
}

} // namespace

int run_monitor(const cli_context& with) {
    int status = exit_good;
    if (!has_traffic(with, &status)) return status;
    traffic_visit run(with);
    uint64_t shown = 0;
    uint64_t missed = 0;
    const auto refresh = [&] {
        const uint64_t newest = run.engine().rows(0, {}).appended;
        std::string text;
        traffic_record record;
        for (; shown < newest; ++shown) {
            if (run.engine().numbered(shown + 1, &record))
                text += with.options.candump ? can_log_line(record)
                        : with.options.json  ? can_json_line(record)
                                             : can_line(record);
            else
                ++missed;
        }
        if (!text.empty()) with.print(text);
    };
    std::optional<cli_error> error = run.open(refresh);
    if (!error) {
        const int64_t until = time_now_ms() + with.options.seconds * 1000;
        run_until([&] {
            error = run.lost();
            return error || (with.options.seconds > 0 && time_now_ms() >= until);
        });
    }
    const int ended = finish(with, run, error);
    refresh(); // what came in while it was left
    const traffic_counters counts = run.engine().counters();
    if (counts.lost.all() + missed > 0)
        with.note(tk_format("vkt: %s: %llu frames, %llu bytes in no frame, %llu frames not shown",
                            run.port().c_str(), static_cast<unsigned long long>(counts.frames_received),
                            static_cast<unsigned long long>(counts.lost.all()),
                            static_cast<unsigned long long>(missed)));
    return ended;
}

int run_send(const cli_context& with) {
    int status = exit_good;
    traffic_request request;
    const auto refuse = [&](const std::string& word, const std::string& why) {
        return with.fail({.where = word, .text = why});
    };
    if (const std::string why = can_request(with.options.frame, &request); !why.empty())
        return refuse(with.options.frame, why);
    const auto every = duration_ms(with.options.every);
    if (!every) return refuse("--every " + with.options.every, "not a time like 10ms or 1s");
    request.channel = static_cast<uint32_t>(with.options.channel - 1);
    if (!has_traffic(with, &status)) return status;
    traffic_visit run(with);
    std::optional<cli_error> error = run.open([] {});
    const int64_t began = time_now_ms();
    for (int64_t n = 0; !error && n < with.options.count; ++n) {
        if (!run_until([&] { return time_now_ms() >= began + n * *every; })) break;
        error = run.lost();
        if (error) break;
        const int64_t until = time_now_ms() + send_patience_ms;
        static_cast<void>(run.engine().request_send(request));
        if (!run_until([&] { return run.engine().send_done() || time_now_ms() >= until; })) break;
        if (!run.engine().send_done() || run.engine().counters().sends_failed > 0)
            error = cli_error{exit_port, run.port(), tk_format("frame %lld", static_cast<long long>(n + 1)),
                              text_transfer_write};
    }
    const auto sent = static_cast<int64_t>(run.engine().counters().frames_sent);
    status = finish(with, run, error);
    if (status != exit_good && !cli_interrupted()) return status;
    json_object result;
    result.add("port", run.port()).add("sent", sent);
    with.print(with.options.json ? result.text() + "\n"
                                 : tk_format("%s: %lld sent\n", run.port().c_str(), static_cast<long long>(sent)));
    return status;
}
