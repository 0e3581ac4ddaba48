// Runs sessions of a device against a simulated module and keeps what they report, in order.
#pragma once

#include "dev_a/family.h"
#include "dev_b/family.h"
#include "dev_generic/family.h"
#include "platform/com_port.h"
#include "session/disconnect.h"
#include "sim/module.h"
#include "toolkit/core/date_time.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/idle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

inline constexpr uint32_t session_patience_ms = 30000;
inline constexpr const family_descriptor* all_families[] = {&vkt510a_family, &generic_family, &vkt610b_family};

/// What became of one session.
struct session_record {
    std::vector<std::string> events; ///< "20/0 text" for a report, "buttons", "image", "finished", "failed 1 text"
    std::vector<std::string> logs;   ///< log line of each failure
    std::vector<std::string> causes; ///< of each failure
    bool port_was_free = true;       ///< whenever a failure was reported
    std::string thread_name;         ///< as the system keeps it, of the session that reported last
    bool operator==(const session_record&) const = default;
};

class session_test : public ::testing::Test {
  protected:
    static constexpr const char* port_name = "COM7";

    void SetUp() override;
    void TearDown() override;

    /// Starts a module of the model on port_name and makes a device of its family, if there is none yet.
    void plug(const std::string& model_name);
    /// A good connect; what it reported is forgotten.
    void connect();
    /// Starts a session as the home page does. RET_FAIL when it could not be started.
    ret_t start(session_kind kind, const std::string& port_text = port_name, bool alternative = false);
    /// Starts a session and pumps the queue until its thread has ended. False when it could not be started.
    bool run(session_kind kind, const std::string& port_text = port_name, bool alternative = false);
    /// Disconnects and waits for its end.
    void disconnect();
    /// What notes progress in `heard`.
    std::function<void(const session_progress&)> progress_report();
    /// A session of this kind runs on a thread of this name.
    void expect_thread_name(session_kind kind, const std::string& name);
    /// Pumps until no session runs and every job has run.
    void settle();
    bool port_is_free() { return dev->session.port_free(); }
    device_session& session() { return dev->session; }
    tk_object* props() { return dev->props.get(); }
    std::string session_log();

    std::string model;
    std::unique_ptr<sim::module_t> module;
    session_record heard;
    std::unique_ptr<dev_obj> dev;
    disconnector leaver;
    std::filesystem::path folder;

    /// What keeps everything in `heard` and gives images to `dev`.
    session_reports reports();

  private:
    void note(std::string event);
};
