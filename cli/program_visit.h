// One module's visit: a profile into the module on a port, from its connect to its last word.
#pragma once

#include "cli/link.h"
#include "profile/profile.h"

class program_visit {
  public:
    /// Nothing is opened yet.
    program_visit(const cli_context& with, const profile& from, const std::string& port);

    /// Goes through the sessions; `ended` is called once, when the module has been left, and must not destroy the
    /// visit.
    void start(std::function<void()> ended);

    module_link& link() { return link_; }
    bool done() const { return done_; }
    /// What went wrong; nothing for a module that is good.
    const std::optional<cli_error>& error() const { return error_; }
    /// What the module said of its firmware; may be empty.
    const std::string& firmware() const { return link_.firmware(); }

  private:
    void next();
    void compare();
    void leave();
    void end();

    const cli_context& with_;
    std::vector<uint8_t> written_;
    std::vector<session_kind> steps_;
    std::size_t at_ = 0;
    bool done_ = false;
    std::optional<cli_error> error_;
    std::function<void()> ended_;
    module_link link_; // last: it calls the others
};
