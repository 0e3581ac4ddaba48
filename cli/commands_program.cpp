// Many modules at once: one profile into the module on each port, side by side.
#include "cli/commands.h"
#include "cli/interrupt.h"
#include "cli/journal.h"
#include "cli/port_device.h"
#include "cli/profiles.h"
#include "cli/program_board.h"
#include "cli/program_timing.h"
#include "cli/program_visit.h"
#include "serial/port_names.h"
#include "toolkit/core/date_time.h"
#include "toolkit/core/idle.h"

#include <algorithm>
#include <set>

program_timing& program_timing_get() {
    static program_timing timing;
    return timing;
}

namespace {

constexpr const char* text_absent = "等待插入";

enum class slot_state : uint8_t {
    absent,
    plugged, ///< since a moment
    busy,
    done, ///< its module stays until the port has gone away
};

/// A port and what has become of the modules on it.
struct program_slot {
    std::string port;
    slot_state state = slot_state::absent;
    int64_t plugged_ms = 0; ///< when the port came
    bool gone = false;      ///< it was not there for a moment since then
    unsigned passed = 0;
    unsigned failed = 0;
    std::optional<cli_error> error{}; ///< of the last module
    std::string firmware{};           ///< of the last module
    std::unique_ptr<program_visit> visit{};
};

class program_run {
  public:
    program_run(const cli_context& with, const profile& from)
        : with_(with), from_(from), checksum_(checksum_of(profile_text(from))), journal_(with.options.journal) {}

    int run() {
        // Before the first module is touched.
        if (const std::optional<cli_error> error = refusal()) return with_.fail(*error);
        board_ = std::make_unique<program_board>(with_, with_.options.ports);
        for (const std::string& port : with_.options.ports) slots_.push_back({.port = port});
        const bool ended = with_.options.wait ? work_until_interrupted() : work_once();
        board_.reset();
        if (!ended) status_ = exit_interrupted;
        if (!ended && !with_.options.wait) return status_;
        print_end();
        return status_;
    }

  private:
    std::optional<cli_error> refusal() const {
        std::set<std::string> named;
        for (const std::string& port : with_.options.ports) {
            if (!named.insert(port_identity(port)).second) return cli_error{.where = port, .text = "named twice"};
            const std::optional<std::string> path = port_path(port, from_.of->typed_paths);
            if (with_.options.wait && (!path || path->empty())) // it would be waited for in vain
                return cli_error{.where = port, .text = text_bad_port_name};
        }
        if (!journal_.open()) return cli_error{.where = with_.options.journal, .text = "cannot be written"};
        return std::nullopt;
    }

    bool work_once() {
        for (std::size_t i = 0; i < slots_.size(); ++i) start(i);
        const auto done = [](const program_slot& slot) { return slot.visit->done(); };
        const bool ended = run_until([&] { return std::all_of(slots_.begin(), slots_.end(), done); });
        note_interrupted();
        return ended;
    }

    /// False when a module was under way.
    bool work_until_interrupted() {
        for (std::size_t i = 0; i < slots_.size(); ++i) show_absent(i);
        look();
        const uint32_t looks = timer_add([this] { return look(), RET_REPEAT; }, program_timing_get().look_ms);
        static_cast<void>(run_until([] { return false; }));
        timer_remove(looks);
        return !note_interrupted();
    }

    /// Looks at which ports are there.
    void look() {
        for (std::size_t i = 0; i < slots_.size(); ++i) look_at(i);
    }

    void look_at(std::size_t at) {
        program_slot& slot = slots_[at];
        const bool present = com::port_present(slot.port);
        slot.gone = slot.gone || !present;
        if (slot.state == slot_state::busy) return;
        if (slot.gone && slot.state != slot_state::absent) show_absent(at);
        if (slot.state == slot_state::absent && present) {
            slot.state = slot_state::plugged;
            slot.plugged_ms = time_now_ms();
            slot.gone = false;
        }
        const bool settled = time_now_ms() - slot.plugged_ms >= program_timing_get().settle_ms;
        if (slot.state == slot_state::plugged && settled) start(at);
    }

    void show_absent(std::size_t at) {
        program_slot& slot = slots_[at];
        slot.state = slot_state::absent;
        slot.visit.reset();
        board_->set(at, board_state::waiting, text_absent + counts(slot));
    }

    void start(std::size_t at) {
        program_slot& slot = slots_[at];
        slot.state = slot_state::busy;
        slot.visit = std::make_unique<program_visit>(with_, from_, slot.port);
        slot.visit->link().show_progress([this, at](uint32_t percent, const std::string& step) {
            // A session that is broken off still reports while the run goes down.
            if (board_ != nullptr) board_->set(at, board_state::working, step, percent);
        });
        slot.visit->start([this, at] { note(at); });
    }

    /// A port that vanished again, or whose rights the system has not set yet, is tried again.
    bool tried_again(const program_slot& slot, const cli_error& error) const {
        if (!with_.options.wait || !error.not_opened) return false;
        return error.absent || time_now_ms() - slot.plugged_ms < program_timing_get().open_patience_ms;
    }

    /// A module is done: its line, at once.
    void note(std::size_t at) {
        if (board_ == nullptr) return; // the run goes down
        program_slot& slot = slots_[at];
        slot.error = slot.visit->error();
        slot.firmware = slot.visit->firmware();
        if (slot.error && tried_again(slot, *slot.error)) {
            slot.state = slot.error->absent ? slot_state::absent : slot_state::plugged;
            return;
        }
        slot.state = slot_state::done;
        const cli_error error = slot.error.value_or(cli_error{});
        (slot.error ? slot.failed : slot.passed) += 1;
        if (slot.error) status_ = std::max(status_, error.status);
        board_->set(at, slot.error ? board_state::bad : board_state::good,
                    slot.error ? error.step + ": " + error.text : "");
        board_->print_above([&] {
            add_line(slot, slot.error ? "fail" : "pass", error);
            if (slot.error)
                static_cast<void>(with_.fail(error));
            else
                with_.note(slot.port + ": " + from_.model + " 通过");
            if (with_.options.wait && with_.shows_progress()) with_.streams.err("\a");
        });
        if (with_.options.wait && with_.options.json) with_.print(json_of(slot).text() + "\n");
    }

    void add_line(const program_slot& slot, const char* result, const cli_error& error) {
        const std::string text = error.text + (error.cause.empty() ? "" : ": " + error.cause);
        if (journal_.add({slot.port, from_.model, slot.firmware, checksum_, result, error.step, text})) return;
        status_ = std::max<int>(status_, with_.fail({.where = with_.options.journal, .text = "cannot be written"}));
    }

    /// Lines for the modules that an interruption left under way; whether there were any.
    bool note_interrupted() {
        bool any = false;
        for (const program_slot& slot : slots_) {
            if (slot.state != slot_state::busy) continue;
            any = true;
            board_->print_above([&] { add_line(slot, "interrupted", {}); });
        }
        return any;
    }

    static std::string counts(const program_slot& slot) {
        if (slot.passed + slot.failed == 0) return "";
        return " (" + std::to_string(slot.passed) + " pass, " + std::to_string(slot.failed) + " fail)";
    }

    static json_object json_of(const program_slot& slot) {
        const cli_error error = slot.error.value_or(cli_error{});
        json_object member;
        member.add("port", slot.port).add("result", slot.error ? "fail" : "pass").add("firmware", slot.firmware);
        return member.add("step", error.step).add("text", error.text);
    }

    void print_end() const {
        if (!with_.options.json) return with_.print(table_text(rows()));
        if (with_.options.wait) return; // each module had its line
        std::vector<std::string> members;
        for (const program_slot& slot : slots_) members.push_back(json_of(slot).text());
        json_object result;
        result.add("model", from_.model).add("profile", checksum_).add_json("modules", json_list(members));
        with_.print(result.text() + "\n");
    }

    std::vector<std::vector<std::string>> rows() const {
        std::vector<std::vector<std::string>> rows;
        for (const program_slot& slot : slots_) {
            std::vector<std::string> row = {slot.port};
            if (with_.options.wait) {
                row.push_back(std::to_string(slot.passed) + " " + result_word(true, with_.streams.colour));
                const bool colour = with_.streams.colour && slot.failed > 0;
                row.push_back(std::to_string(slot.failed) + " " + result_word(false, colour));
            } else {
                const cli_error error = slot.error.value_or(cli_error{});
                for (const std::string& cell :
                     {result_word(!slot.error, with_.streams.colour), slot.firmware, error.step, error.text})
                    row.push_back(cell);
            }
            rows.push_back(row);
        }
        return rows;
    }

    const cli_context& with_;
    const profile& from_;
    const std::string checksum_;
    const journal journal_;
    int status_ = exit_good;
    std::unique_ptr<program_board> board_;
    std::vector<program_slot> slots_; // last: their visits call the others
};

} // namespace

int run_program(const cli_context& with) {
    int status = exit_good;
    const std::optional<profile> from = profile_asked(with, with.options.profile, &status);
    return from ? program_run(with, *from).run() : status;
}
