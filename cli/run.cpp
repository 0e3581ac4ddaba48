#include "cli/run.h"

#include "cli/arguments.h"
#include "session/session_run.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/log.h"

namespace {

/// While it lives, what rooms below say on the console goes nowhere: standard output is for results, and what they
/// say is said by errors again. There is no session log.
class quiet_rooms {
  public:
    quiet_rooms() : log_path_(session_log_path()) {
        session_log_path().clear();
        log_set_capture([](const std::string&, void*) {}, nullptr);
    }
    ~quiet_rooms() {
        log_set_capture(nullptr, nullptr);
        session_log_path() = log_path_;
    }
    quiet_rooms(const quiet_rooms&) = delete;
    quiet_rooms& operator=(const quiet_rooms&) = delete;

  private:
    const std::string log_path_;
};

} // namespace

int cli_run(const std::vector<std::string>& arguments, const cli_streams& streams) {
    cli_interrupt_clear();
    idle_set_gui_thread();
    cli_parsed parsed = arguments_parse(arguments);
    const cli_error no_output{.where = "standard output", .text = "cannot be written"};
    const cli_context with{parsed.options, streams};
    if (!parsed.error.empty()) return with.fail({.text = parsed.error});
    if (parsed.options.command == nullptr) {
        return streams.out(parsed.text) ? static_cast<int>(exit_good) : with.fail(no_output);
    }
    const quiet_rooms quiet;
    const int status = parsed.options.command->run(with);
    if (cli_output_is_lost()) return with.fail(no_output);
    // Some commands run until they are interrupted.
    if (status != exit_interrupted) return status;
    return with.fail({.status = exit_interrupted, .text = "interrupted"});
}
