// Runs commands of the program without windows in this process, with simulated modules on its ports.
#pragma once

#include "cli/run.h"
#include "profile/profile.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/session_fixture.h"

class cli_stage : public session_test {
  protected:
    void SetUp() override {
        session_test::SetUp();
        std::filesystem::create_directories(files);
    }
    void TearDown() override {
        others.clear();
        session_test::TearDown();
        std::error_code ignored;
        std::filesystem::remove_all(files, ignored);
    }

    /// Runs a command; what it printed is in `out` and `err`.
    int vkt(const std::vector<std::string>& arguments) {
        out.clear();
        err.clear();
        const cli_streams streams{[this](const std::string& text) { return out += text, accepts_output; },
                                  [this](const std::string& text) {
                                      err += text;
                                      if (on_error_text) on_error_text(text);
                                  },
                                  terminal, colour, [this] { return size; }};
        return cli_run(arguments, streams);
    }
    /// The defaults of a model in a file of its own, with settings; its path.
    std::string profile_file(const std::string& model_name, const std::vector<std::string>& settings = {}) {
        const std::string path = file(model_name + std::to_string(++made_) + ".json");
        EXPECT_EQ(vkt({"default", model_name, "-o", path}), exit_good) << err;
        std::vector<std::string> words = {"set", path};
        words.insert(words.end(), settings.begin(), settings.end());
        EXPECT_EQ(vkt(words), exit_good) << err;
        return path;
    }
    std::string file(const std::string& name) const { return (files / name).string(); }
    static std::string content(const std::string& path) {
        std::string text;
        return fs_read_all(path.c_str(), &text) ? text : "(cannot be read)";
    }
    /// The module hears a mode text when it comes to read it.
    bool comes_to_mode(const std::string& mode) {
        return idle_run_until([&] { return module->mode() == mode; }, session_patience_ms);
    }
    /// A module on another port.
    sim::module_t& plug_other(const std::string& model_name, const std::string& port) {
        sim::model which{};
        EXPECT_TRUE(sim::model_from_name(model_name, &which));
        std::string why;
        others.push_back(sim::module_start(which, port, &why));
        EXPECT_NE(others.back(), nullptr) << why;
        return *others.back();
    }

    std::string out, err;
    bool accepts_output = true;
    bool terminal = false;
    bool colour = false;
    terminal_size size{};
    std::function<void(const std::string&)> on_error_text;
    std::vector<std::unique_ptr<sim::module_t>> others;
    const std::filesystem::path files = scratch_folder("vkt_cli");

  private:
    int made_ = 0;
};
