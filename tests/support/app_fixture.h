// The whole application in a test: toolkit up, a tree of its own to run in, the home page open, a simulated module.
#pragma once

#include "app/devices.h"
#include "platform/com_port.h"
#include "session/session_run.h"
#include "shell/navigator.h"
#include "sim/module.h"
#include "toolkit/ravel/ravel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class app_test : public ::testing::Test {
  protected:
    static constexpr const char* port_name = "COM7";
    static constexpr uint32_t patience_ms = 30000;

    void SetUp() override;
    void TearDown() override;

    /// Runs the event loop until `done`; false after patience_ms.
    static bool wait(const std::function<bool()>& done);
    /// Runs what is queued.
    static void settle();

    /// The home page, the progress window, the message window; null while not open.
    static widget* home() { return navigator_find("home_page"); }
    static widget* progress() { return navigator_find("progress"); }
    static widget* message() { return navigator_find("err_display"); }
    /// A widget of the home page by name.
    static widget* at(const char* name) { return widget_lookup(home(), name); }
    static std::string text(widget* window, const char* name);
    static bool enabled(const char* name) { return widget_get_enable(at(name)); }
    static bool visible(const char* name) { return widget_get_visible(at(name)); }
    /// The device of a family whose model was chosen.
    static dev_obj& device(const family_pages& of) { return *device_of(of); }
    /// The buttons by letter where enabled: c(onnect) d(isconnect) r(ead) w(rite) f (defaults) m(odel) p(ort).
    static std::string buttons();

    // What a person does.
    static void click(widget* window, const char* name);
    static void pick(const char* combo, const char* option);
    static void type(const char* edit, const char* text);

    /// Starts a module of the model on port_name, chooses model and port.
    void plug(const std::string& model);
    /// Presses a session button, waits until the run has finished, answers the step text of the progress window.
    std::string run(const char* button);
    /// Closes the finished progress window.
    static void press_ok();
    /// Chooses the port, connects well, closes the progress window.
    void connect(const std::string& model = "VKT531A");

    /// What was written to the log and the console since the test began.
    static std::string said();
    static void said_clear();
    /// From the next loop on: waits for the message window, keeps its text, presses its "ok".
    void answer_message();
    std::string message_seen;
    /// Puts a layout beside those of the program, for this test.
    void add_layout(const char* name, const std::string& body, bool dialog, const std::string& properties = "");
    static std::filesystem::path tree();
    /// Ends the process at once; its tree goes with it.
    [[noreturn]] static void end_process(int status);
    static std::string file_text(const std::filesystem::path& path);

    std::unique_ptr<sim::module_t> module;

  private:
    std::vector<std::filesystem::path> layouts_;
    std::string message_failed_;
};
