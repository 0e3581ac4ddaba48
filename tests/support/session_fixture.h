// Runs sessions against a simulated module and keeps what they report, in order.
#pragma once

#include "config/cfg_image.h"
#include "config/dev_obj.h"
#include "platform/com_port.h"
#include "serial/b_ops.h"
#include "serial/session.h"
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

/// What became of one session.
struct session_record {
    std::vector<std::string> events; ///< "20/0 text" for a report, "buttons", "image", "finished", "failed 1 text"
    std::vector<std::string> logs;   ///< char_log of each failure
    bool lock_was_free = true;       ///< whenever a failure was reported
    bool operator==(const session_record&) const = default;
};

class session_test : public ::testing::Test {
  protected:
    static constexpr const char* port_name = "COM7";

    void SetUp() override;
    void TearDown() override;

    /// Starts a module of the model on port_name and makes the model's family the one under test.
    void plug(const std::string& model_name);
    /// A good connect; what it reported is forgotten.
    void connect();
    /// Starts a session and pumps the queue until its thread has ended. False when it could not be started.
    bool run(session_kind kind, const std::string& port_text = port_name, bool code_mode = false);
    /// Pumps until no session runs and every job has run.
    void settle();
    bool lock_is_free();
    session_context& context() { return session_of(of); }
    std::string session_log();

    family of = family::generic;
    std::string model;
    std::unique_ptr<sim::module_t> module;
    session_record heard;
    std::filesystem::path folder;

  private:
    void listen();
};
