// Many modules at once: one profile into the module on each port, side by side.
#include "cli/commands.h"
#include "cli/journal.h"
#include "cli/link.h"
#include "cli/profiles.h"
#include "cli/run.h"
#include "profile/compare.h"

#include <algorithm>
#include <set>

namespace {

/// One port's module, from its connect to its last word.
class program_port {
  public:
    program_port(const cli_context& with, const profile& from, std::string port)
        : with_(with), link_(std::make_unique<module_link>(with, from.model, std::move(port))) {
        static_cast<void>(profile_apply(from, link_->dev()));
        written_ = link_->dev().image;
        steps_ = {session_kind::connect, session_kind::write};
        if (with.options.check) steps_.push_back(session_kind::read);
    }

    /// Goes through the sessions; `ended` is called once, when the module has been left.
    void start(std::function<void()> ended) {
        ended_ = std::move(ended);
        next();
    }

    bool done() const { return done_; }
    const std::string& port() const { return link_->port(); }
    /// What went wrong; nothing for a module that is good.
    const std::optional<cli_error>& error() const { return error_; }
    /// Of a module that tells it when it is read; else empty.
    std::string firmware() const {
        const family_descriptor& of = link_->dev().of;
        if (of.kept_at_restore == nullptr || link_->in_module().empty()) return "";
        const field* row = field_find(of.fields, of.kept_at_restore);
        return row == nullptr ? "" : value_shown(*row, value_of(*row, link_->dev().props.get()));
    }

  private:
    void next() {
        if (at_ == steps_.size()) {
            compare();
            return leave();
        }
        link_->start(steps_[at_++], with_.options.alternative, [this](std::optional<cli_error> error) {
            error_ = std::move(error);
            error_ ? leave() : next();
        });
    }

    void compare() {
        if (!with_.options.check) return;
        std::string keys;
        for (const image_difference& one : image_differences(link_->dev().of, written_, link_->in_module()))
            if (!one.always_same) keys += std::string(keys.empty() ? "" : " ") + one.what->key;
        if (!keys.empty()) error_ = cli_error{exit_different, link_->port(), "校验", "不一致: " + keys};
    }

    void leave() {
        if (!link_->dev().session.connected()) return end();
        link_->leave([this](std::optional<cli_error> error) {
            if (!error_) error_ = std::move(error);
            end();
        });
    }

    void end() {
        done_ = true;
        ended_();
    }

    const cli_context& with_;
    std::vector<uint8_t> written_;
    std::vector<session_kind> steps_;
    std::size_t at_ = 0;
    bool done_ = false;
    std::optional<cli_error> error_;
    std::function<void()> ended_;
    std::unique_ptr<module_link> link_; // last: it calls the others
};

class program_run {
  public:
    program_run(const cli_context& with, const profile& from)
        : with_(with), from_(from), checksum_(checksum_of(profile_text(from))), journal_(with.options.journal) {}

    int run() {
        std::set<std::string> named;
        for (const std::string& port : with_.options.ports)
            if (!named.insert(port).second) return with_.fail({.where = port, .text = "named twice"});
        // Before the first module is touched.
        if (!journal_.open()) return with_.fail({.where = with_.options.journal, .text = "cannot be written"});
        for (const std::string& port : with_.options.ports)
            ports_.push_back(std::make_unique<program_port>(with_, from_, port));
        for (const auto& port : ports_) port->start([this, one = port.get()] { note(*one); });
        const auto all_done = [this] {
            return std::all_of(ports_.begin(), ports_.end(), [](const auto& port) { return port->done(); });
        };
        if (!run_until(all_done)) {
            for (const auto& port : ports_)
                if (!port->done()) add_line(*port, "interrupted", {});
            return exit_interrupted;
        }
        print_table();
        return status_;
    }

  private:
    /// A module is done: its line, at once.
    void note(const program_port& port) {
        const std::optional<cli_error>& error = port.error();
        add_line(port, error ? "fail" : "pass", error.value_or(cli_error{}));
        if (!error) return with_.note(port.port() + ": " + from_.model + " 通过");
        static_cast<void>(with_.fail(*error));
        status_ = std::max(status_, error->status);
    }

    void add_line(const program_port& port, const char* result, const cli_error& error) {
        const std::string text = error.text + (error.cause.empty() ? "" : ": " + error.cause);
        if (journal_.add({port.port(), from_.model, port.firmware(), checksum_, result, error.step, text})) return;
        status_ = std::max<int>(status_, with_.fail({.where = with_.options.journal, .text = "cannot be written"}));
    }

    void print_table() const {
        std::vector<std::vector<std::string>> rows;
        std::vector<std::string> members;
        for (const auto& port : ports_) {
            const cli_error error = port->error().value_or(cli_error{});
            const char* result = port->error() ? "fail" : "pass";
            rows.push_back({port->port(), result, port->firmware(), error.step, error.text});
            json_object member;
            member.add("port", port->port()).add("result", result).add("firmware", port->firmware());
            members.push_back(member.add("step", error.step).add("text", error.text).text());
        }
        json_object result;
        result.add("model", from_.model).add("profile", checksum_).add_json("modules", json_list(members));
        with_.print(with_.options.json ? result.text() + "\n" : table_text(rows));
    }

    const cli_context& with_;
    const profile& from_;
    const std::string checksum_;
    const journal journal_;
    int status_ = exit_good;
    std::vector<std::unique_ptr<program_port>> ports_; // last: they call the others
};

} // namespace

int run_program(const cli_context& with) {
    int status = exit_good;
    const std::optional<profile> from = profile_asked(with, with.options.profile, &status);
    return from ? program_run(with, *from).run() : status;
}
