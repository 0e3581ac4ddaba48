// A run that goes on with every module that is plugged in: which are served, which are not, and how it ends.
#include "cli/program_timing.h"
#include "tests/cli/cli_stage.h"
#include "tests/support/pattern.h"

#include <condition_variable>
#include <mutex>
#include <sstream>
#include <thread>

using sim::fault;

namespace {

using testing::HasSubstr;

class waiting : public cli_stage {
  protected:
    void SetUp() override {
        cli_stage::SetUp();
        program_timing_get() = {.look_ms = 5, .settle_ms = 10, .open_patience_ms = 300};
        path = profile_file("VKT531A", {"can_baud_rate=500K"});
        on_error_text = [this](const std::string& text) {
            const std::lock_guard<std::mutex> hold(lock_);
            said_ += text;
            changed_.notify_all();
        };
    }
    void TearDown() override {
        program_timing_get() = {};
        cli_stage::TearDown();
    }

    /// Runs the command while `user` acts; then it is interrupted.
    int wait_while(const std::function<void()>& user, std::vector<std::string> words = {}) {
        std::thread hand([&] {
            user();
            cli_interrupt();
        });
        words.insert(words.begin(), {"program", path, "COM7", "--wait", "--check", "--journal", line_csv});
        const int status = vkt(words);
        hand.join();
        return status;
    }
    /// The user sees `text` for the `times`th time since the start.
    void see(const std::string& text, int times = 1) {
        std::unique_lock<std::mutex> hold(lock_);
        const auto seen = [&] {
            int count = 0;
            for (std::size_t at = said_.find(text); at != std::string::npos; at = said_.find(text, at + 1)) ++count;
            return count >= times;
        };
        EXPECT_TRUE(changed_.wait_for(hold, std::chrono::seconds(30), seen)) << text << "\n" << said_;
    }
    /// The command looks at its ports many times.
    static void let_it_look() {
        const uint32_t before = com::call_count(com::call::query_dos_device);
        while (com::call_count(com::call::query_dos_device) < before + 30) std::this_thread::yield();
    }
    void pull(sim::module_t& one) {
        one.hang_up();
#ifdef _WIN32
        // Here a port's name stays: its registry is made by hand.
        com::fault_set(com::call::query_dos_device, 0, 1000000, 2);
#endif
    }
    void plug_again(sim::module_t& one) {
        com::fault_clear();
        std::string why;
        EXPECT_TRUE(one.plug_in(&why)) << why;
    }
    std::vector<std::string> journal_lines() const {
        std::vector<std::string> lines;
        std::istringstream text(content(line_csv));
        for (std::string line; std::getline(text, line);) lines.push_back(line);
        return lines;
    }

    std::string path;
    const std::string line_csv = file("line.csv");
    const std::string passed = "COM7: VKT531A 通过\n";

  private:
    std::mutex lock_;
    std::condition_variable changed_;
    std::string said_;
};

TEST_F(waiting, one_module_after_the_other) {
    plug("VKT531A");
    const int status = wait_while([&] {
        for (int nth = 1; nth <= 3; ++nth) {
            see(passed, nth);
            pull(*module);
            let_it_look();
            if (nth == 2) module->set_memory(std::vector<uint8_t>(60, 0)); // another one
            if (nth < 3) plug_again(*module);
        }
    });
    EXPECT_EQ(status, exit_good) << err;
    EXPECT_EQ(out, "COM7  3 pass  0 fail\n");
    EXPECT_EQ(err, passed + passed + passed);
    EXPECT_EQ(module->count().writes, 3u);
    EXPECT_EQ(module->memory()[4], 12);
    const auto lines = journal_lines();
    ASSERT_EQ(lines.size(), 4u);
    for (std::size_t i = 1; i < lines.size(); ++i)
        EXPECT_THAT(lines[i], FitsPattern("[-0-9]{10} [:0-9]{8},COM7,VKT531A,,[0-9A-F]{8},pass,,"));
}

TEST_F(waiting, one_that_stays_is_served_once) {
    plug("VKT531A");
    colour = true;
    EXPECT_EQ(wait_while([&] {
                  see(passed);
                  let_it_look();
              }),
              exit_good);
    EXPECT_EQ(out, "COM7  1 \x1b[32mpass\x1b[0m  0 fail\n"); // no red where nothing failed
    EXPECT_EQ(module->count().writes, 1u);
    EXPECT_EQ(journal_lines().size(), 2u);
}

TEST_F(waiting, a_bad_one_that_stays_is_served_once) {
    plug("VKT531A");
    colour = true;
    module->plan({.what = fault::refuse, .after = 1, .times = 0xFFFFFFFF});
    EXPECT_EQ(wait_while([&] {
                  see("检测配置失败");
                  let_it_look();
              }),
              exit_module);
    EXPECT_EQ(out, "COM7  0 \x1b[32mpass\x1b[0m  1 \x1b[31mfail\x1b[0m\n");
    EXPECT_EQ(err, "vkt: COM7: 检测配置: 检测配置失败\n");
    EXPECT_EQ(module->count().writes, 1u);
    EXPECT_THAT(journal_lines().back(), testing::EndsWith(",fail,检测配置,检测配置失败"));
}

TEST_F(waiting, a_port_that_is_not_there_is_waited_for) {
    plug("VKT531A");
    pull(*module);
    EXPECT_EQ(wait_while([&] {
                  let_it_look();
                  EXPECT_EQ(module->count().requests(), 0u);
                  plug_again(*module);
                  see(passed);
              }),
              exit_good);
    EXPECT_EQ(err, passed);
    EXPECT_EQ(journal_lines().size(), 2u);
}

TEST_F(waiting, one_that_was_just_plugged_in_is_left_to_settle) {
    plug("VKT531A");
    program_timing_get().settle_ms = 300;
    const auto began = std::chrono::steady_clock::now();
    EXPECT_EQ(wait_while([&] { see(passed); }), exit_good);
    EXPECT_GE(std::chrono::steady_clock::now() - began, std::chrono::milliseconds(300));
}

TEST_F(waiting, one_that_is_there_already_is_served_at_once) {
    plug("VKT531A");
    program_timing_get() = {.look_ms = 3600000, .settle_ms = 0};
    EXPECT_EQ(wait_while([&] { see(passed); }), exit_good);
}

TEST_F(waiting, a_terminal_says_what_became_of_a_port_s_modules) {
    plug("VKT531A");
    terminal = true;
    module->plan({.what = fault::refuse, .after = 1});
    EXPECT_EQ(wait_while([&] {
                  see("\a");
                  pull(*module);
                  see("等待插入 (0 pass, 1 fail)");
                  plug_again(*module);
                  see("\a", 2);
                  pull(*module);
                  see("等待插入 (1 pass, 1 fail)");
              }),
              exit_module);
    EXPECT_EQ(out, "COM7  1 pass  1 fail\n");
}

TEST_F(waiting, nothing_ever_plugged_in_is_no_failure) {
    plug("VKT531A");
    pull(*module);
    EXPECT_EQ(wait_while([] { let_it_look(); }), exit_good);
    EXPECT_EQ(out, "COM7  0 pass  0 fail\n");
    EXPECT_EQ(err, "");
    EXPECT_EQ(journal_lines().size(), 1u);
}

TEST_F(waiting, one_that_is_pulled_meanwhile_failed_and_the_next_is_served) {
    plug("VKT531A");
    module->plan({.what = fault::hang_up, .after = 1});
    EXPECT_EQ(wait_while([&] {
                  see("已拔出");
                  pull(*module);
                  let_it_look();
                  plug_again(*module);
                  see(passed);
              }),
              exit_port);
    EXPECT_EQ(out, "COM7  1 pass  1 fail\n");
    const auto lines = journal_lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_THAT(lines[1], HasSubstr(",fail,写配置,"));
    EXPECT_THAT(lines[2], HasSubstr(",pass,"));
}

#ifndef _WIN32 // here one port alone can vanish
TEST_F(waiting, ports_are_served_each_at_its_own_time) {
    plug("VKT531A");
    sim::module_t& other = plug_other("VKT531A", "COM8");
    other.plan({.what = fault::silent, .times = 0xFFFFFFFF});
    EXPECT_EQ(wait_while(
                  [&] {
                      see(passed);
                      see("COM8: 接收验证应答");
                      pull(other);
                      let_it_look();
                      other.plan({});
                      plug_again(other);
                      see("COM8: VKT531A 通过");
                  },
                  {"COM8"}),
              exit_module);
    EXPECT_EQ(out, "COM7  1 pass  0 fail\nCOM8  1 pass  1 fail\n");
    EXPECT_EQ(module->count().writes, 1u);
}
#endif

TEST_F(waiting, an_interruption_with_a_module_under_way_is_none_of_the_good_ends) {
    port_timing_get().timeouts = {60000, 60000, 60000, 60000, 60000};
    plug("VKT531A");
    module->plan({.what = fault::silent});
    EXPECT_EQ(wait_while([&] { EXPECT_TRUE(module->wait_requests(1, 20000)); }), exit_interrupted);
    EXPECT_EQ(err, "vkt: interrupted\n");
    EXPECT_THAT(journal_lines().back(), HasSubstr(",interrupted,,"));
    EXPECT_EQ(out, "COM7  0 pass  0 fail\n");
    com_port port;
    EXPECT_EQ(port.open("\\\\.\\COM7"), RET_OK); // it was closed
}

// The system makes a device first and gives it its rights a moment later.
TEST_F(waiting, a_port_that_cannot_be_opened_yet_is_tried_again) {
    plug("VKT531A");
    com::fault_set(com::call::create_file, 0, 101, 5);
    EXPECT_EQ(wait_while([&] { see(passed); }), exit_good);
    EXPECT_EQ(err, passed);
    com::fault_clear();
    com::fault_set(com::call::create_file, 0, 1000000, 5);
    EXPECT_EQ(wait_while([&] {
                  see("串口打开失败");
                  let_it_look();
              }),
              exit_port);
    EXPECT_THAT(err, FitsPattern("vkt: COM7: 开始连接: 串口打开失败: .* \\(error 5\\)\n"));
    EXPECT_EQ(module->count().writes, 1u);
}

TEST_F(waiting, a_port_that_is_gone_again_when_it_is_opened_is_waited_for) {
    plug("VKT531A");
    program_timing_get().open_patience_ms = 0;
    com::fault_set(com::call::create_file, 0, 202, 2);
    EXPECT_EQ(wait_while([&] { see(passed); }), exit_good);
    EXPECT_EQ(err, passed);
    EXPECT_EQ(journal_lines().size(), 2u);
}

TEST_F(waiting, a_name_that_no_port_can_have_is_refused) {
    EXPECT_EQ(vkt({"program", path, "COM7", "COM999", "--wait"}), exit_usage);
    EXPECT_EQ(err, "vkt: COM999: 串口号有误\n");
    EXPECT_EQ(vkt({"program", profile_file("VKT610B"), "/dev/ttyUSB0", "--wait"}), exit_usage);
    EXPECT_EQ(err, "vkt: /dev/ttyUSB0: 串口号有误\n");
}

TEST_F(waiting, every_module_is_an_object_on_a_line) {
    plug("VKT510A");
    path = profile_file("VKT510A");
    EXPECT_EQ(wait_while(
                  [&] {
                      while (module->count().reads == 0) std::this_thread::yield();
                      while (content(line_csv).find(",pass,") == std::string::npos) std::this_thread::yield();
                      let_it_look();
                  },
                  {"--json"}),
              exit_good);
    EXPECT_EQ(out, R"({"port": "COM7", "result": "pass", "firmware": "02-00-01, 21-07", "step": "", "text": ""})"
                   "\n");
    EXPECT_EQ(err, "");
}

TEST_F(waiting, a_bell_rings_on_a_terminal_only) {
    plug("VKT531A");
    terminal = true;
    EXPECT_EQ(wait_while([&] {
                  see("COM7  等待插入\x1b");
                  see("\a");
                  pull(*module);
                  see("等待插入 (1 pass, 0 fail)");
              }),
              exit_good);
    EXPECT_EQ(std::count(err.begin(), err.end(), '\a'), 1);
    EXPECT_THAT(err, HasSubstr("\x1b[1A\r\x1b[KCOM7  [##################--]  90% "));
    EXPECT_TRUE(err.ends_with("\x1b[1A\r\x1b[J"));
    EXPECT_EQ(out, "COM7  1 pass  0 fail\n");
}

} // namespace
