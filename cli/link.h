// One module on one port: its device, and its sessions from start to end. Belongs to the thread that runs the
// command.
#pragma once

#include "cli/context.h"
#include "session/dev_obj.h"
#include "session/disconnect.h"

#include <chrono>
#include <memory>

class module_link {
  public:
    /// A device of the model with its defaults. Nothing is opened yet.
    module_link(const cli_context& with, std::string model, std::string port);
    /// Ends what runs, and closes the port; the module hears nothing unless it is being left.
    ~module_link();
    module_link(const module_link&) = delete;
    module_link& operator=(const module_link&) = delete;

    dev_obj& dev() { return *dev_; }
    const std::string& port() const { return port_; }
    /// The image of the last reply; empty: none yet.
    const session_bytes& in_module() const { return in_module_; }
    /// The last report's text.
    const std::string& last_report() const { return step_; }
    /// What the module said of its firmware; empty: nothing yet.
    const std::string& firmware() const { return firmware_; }
    /// From now on `show` hears of every report, and the link itself shows nothing.
    void show_progress(std::function<void(uint32_t percent, const std::string& step)> show) {
        show_ = std::move(show);
    }

    /// Starts a session; `ended` is called on this thread when it is over, with what went wrong, if anything. An
    /// interruption is no end: the link is destroyed then.
    void start(session_kind kind, bool alternative, std::function<void(std::optional<cli_error>)> ended);
    /// Tells the module that it is left, where its family has something to say, and closes the port.
    void leave(std::function<void(std::optional<cli_error>)> ended);

    /// The same, waiting for the end. An error, or nothing when all went well; with status exit_interrupted and no
    /// text when the command was interrupted.
    std::optional<cli_error> run(session_kind kind, bool alternative = false);
    std::optional<cli_error> run_leave();

  private:
    session_reports reports();
    bool owns_line() const;
    void take_progress(const session_progress& progress);
    void take_failure(const session_failure& failure);
    void take_traffic(int64_t at_us, const session_traffic& traffic) const;
    void end_session();
    void end(std::optional<cli_error> error);
    std::optional<cli_error> wait();

    const cli_context& with_;
    const std::string model_;
    const std::string port_;
    std::shared_ptr<int> alive_;
    std::string step_;
    std::string firmware_;
    std::function<void(uint32_t, const std::string&)> show_; ///< null: on a terminal, on a line of the link's own
    session_bytes in_module_;
    std::optional<cli_error> failure_;
    std::function<void(std::optional<cli_error>)> ended_; ///< null: nothing runs
    std::optional<std::optional<cli_error>> waited_;
    std::unique_ptr<disconnector> leaver_;
    std::unique_ptr<dev_obj> dev_; // last: its session posts to the others
};

/// Runs the command's thread's queue until `done`; false when the command was interrupted before.
bool run_until(const std::function<bool()>& done);
