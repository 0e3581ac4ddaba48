// Traffic on the command line: what is shown, what is sent, and that the module is left as it was found.
#include "cli/can_text.h"
#include "tests/cli/cli_stage.h"
#include "tests/support/pattern.h"
#include "toolkit/core/text.h"

#include <sstream>

using sim::fault;

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class traffic_commands : public cli_stage {
  protected:
    void SetUp() override {
        cli_stage::SetUp();
        plug("VKT610B");
        here_ = std::filesystem::current_path();
        std::filesystem::current_path(files); // nothing may be left where a command is run
    }
    void TearDown() override {
        EXPECT_TRUE(std::filesystem::is_empty(files));
        std::filesystem::current_path(here_);
        cli_stage::TearDown();
    }
    void module_sends(const std::string& plan) {
        sim::traffic_plan traffic;
        ASSERT_TRUE(sim::traffic_parse(plan, &traffic));
        module->set_traffic(traffic);
    }

  private:
    std::filesystem::path here_;
};

// Slow enough for a read to bring whole frames: one that straddles two reads is dropped on purpose.
TEST_F(traffic_commands, monitor_shows_what_the_module_reports_in_order) {
    module_sends("rate=40:count=20:first=1:channels=1,3:types=0,136:lengths=2");
    EXPECT_EQ(vkt({"monitor", "COM7", "--seconds", "2"}), exit_good) << err;
    std::istringstream lines(out);
    unsigned before = 0;
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_THAT(line, FitsPattern("[-0-9]+ [:0-9]+ uart[12]-can[12] rx 0x[0-9a-f]+ (标准帧-can|扩展帧-canfd) 2 "
                                      "[0-9A-F]{2} [0-9A-F]{2}"));
        const auto identifier = static_cast<unsigned>(std::stoul(line.substr(line.find("0x") + 2), nullptr, 16));
        EXPECT_GT(identifier, before);
        before = identifier;
    }
    EXPECT_GE(count, 10);
    EXPECT_LE(before, 20u);
    EXPECT_TRUE(comes_to_mode("transfer"));
}

TEST_F(traffic_commands, monitor_in_the_log_format_and_as_json) {
    module_sends("rate=40:count=8:first=291:channels=1:types=136:lengths=1");
    EXPECT_EQ(vkt({"monitor", "COM7", "--candump", "--seconds", "1"}), exit_good);
    EXPECT_THAT(out, FitsPattern("(\\([0-9]+\\.[0-9]{6}\\) can0 0000012[0-9A-F]##0[0-9A-F]{2}\n)+"));
    module_sends("rate=40:count=8:first=291:channels=2:types=0:lengths=1");
    EXPECT_EQ(vkt({"monitor", "COM7", "--candump", "--seconds", "1"}), exit_good);
    EXPECT_THAT(out, FitsPattern("(\\([0-9]+\\.[0-9]{6}\\) can1 12[0-9A-F]#[0-9A-F]{2}\n)+"));
    module_sends("rate=40:count=8:first=291:channels=1:types=0:lengths=1");
    EXPECT_EQ(vkt({"monitor", "COM7", "--json", "--seconds", "1"}), exit_good);
    EXPECT_THAT(out,
                FitsPattern(R"((\{"time_us": [0-9]+, "channel": "uart1-can1", "direction": "rx", "id": [0-9]+, )"
                            R"("extended": false, "fd": false, "data": "[0-9A-F]{2}"\}\n)+)"));
}

TEST_F(traffic_commands, monitor_ends_after_its_seconds) {
    EXPECT_EQ(vkt({"monitor", "COM7", "--seconds", "1"}), exit_good);
    EXPECT_EQ(out + err, "");
    EXPECT_TRUE(comes_to_mode("transfer"));
}

TEST_F(traffic_commands, monitor_counts_what_is_no_frame) {
    module_sends("rate=500:count=20:channels=1:types=0:lengths=2:errors=wrong_command:error_every=4");
    EXPECT_EQ(vkt({"monitor", "COM7", "--seconds", "1"}), exit_good);
    EXPECT_THAT(err, HoldsPattern("vkt: COM7: [0-9]+ frames, [1-9][0-9]* bytes in no frame, 0 frames not shown\n"));
}

TEST_F(traffic_commands, monitor_counts_a_single_byte) {
    std::thread user([&] {
        while (module->mode() != "transfer") std::this_thread::yield();
        module->babble({0x11});
    });
    EXPECT_EQ(vkt({"monitor", "COM7", "--seconds", "1"}), exit_good);
    user.join();
    EXPECT_EQ(err, "vkt: COM7: 0 frames, 1 bytes in no frame, 0 frames not shown\n");
}

TEST_F(traffic_commands, a_check_value_is_looked_for_where_it_is_asked_for) {
    for (const bool check : {true, false}) {
        module_sends("rate=20:count=10:channels=1:types=0:lengths=2:check=on");
        std::vector<std::string> words = {"monitor", "COM7", "--candump", "--seconds", "1"};
        if (check) words.emplace_back("--check");
        EXPECT_EQ(vkt(words), exit_good);
        EXPECT_THAT(out, FitsPattern(std::string("(.* can0 00[0-9A-F]#[0-9A-F]{") + (check ? "4" : "8") + "}\n)+"));
    }
}

TEST_F(traffic_commands, monitor_ends_when_nobody_reads_it_any_more) {
    module_sends("rate=40:count=1000:lengths=2");
    accepts_output = false;
    EXPECT_EQ(vkt({"monitor", "COM7"}), exit_usage);
    // On a busy machine a frame may straddle two reads, which is said too.
    EXPECT_THAT(err, FitsPattern("(vkt: COM7: .* in no frame, .*\n)?vkt: standard output: cannot be written\n"));
    EXPECT_TRUE(comes_to_mode("transfer"));
}

TEST_F(traffic_commands, a_module_that_is_pulled_ends_the_monitor) {
    std::thread user([&] {
        EXPECT_TRUE(module->wait_requests(1, 20000)); // the read; it goes to transfer mode next
        while (module->mode() != "transfer") std::this_thread::yield();
        module->hang_up();
    });
    EXPECT_EQ(vkt({"monitor", "COM7"}), exit_port);
    user.join();
    EXPECT_EQ(err, "vkt: COM7: 连接已断开\n");
}

TEST_F(traffic_commands, a_configuration_that_carries_no_traffic_is_refused) {
    std::vector<uint8_t> memory = module->memory();
    memory[8] = 0; // UART1 at 300 baud
    module->set_memory(memory);
    EXPECT_EQ(vkt({"monitor", "COM7"}), exit_module);
    EXPECT_THAT(err, FitsPattern("vkt: COM7: 读配置完成: 评估板不支持300.*\n"));
    EXPECT_EQ(vkt({"send", "COM7", "123#"}), exit_module);
    module->plan({.what = fault::bad_check});
    EXPECT_EQ(vkt({"monitor", "COM7"}), exit_module);
    EXPECT_EQ(err, "vkt: COM7: 读配置: 应答帧校验失败\n");
}

TEST_F(traffic_commands, other_families_have_no_traffic) {
    EXPECT_EQ(vkt({"monitor", "COM7", "-m", "VKT531A"}), exit_usage);
    EXPECT_EQ(err, "vkt: VKT531A has no transfer mode\n");
    EXPECT_EQ(vkt({"send", "COM7", "123#", "-m", "VKT510A"}), exit_usage);
    EXPECT_EQ(module->received().size(), 0u);
}

// ---- send ----

TEST_F(traffic_commands, send_once) {
    EXPECT_EQ(vkt({"send", "COM7", "123#1122"}), exit_good) << err;
    EXPECT_EQ(out, "COM7: 1 sent\n");
    ASSERT_TRUE(module->wait_traffic(0, 1, 10000));
    const std::vector<uint8_t> frame = {0xAA, 0x07, 0x04, 0x01, 0x00, 0x23, 0x01, 0x00, 0x00, 0x11, 0x22};
    const auto got = module->traffic_received();
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(std::vector<uint8_t>(got[0].frame.begin() + 1, got[0].frame.end()),
              std::vector<uint8_t>(frame.begin() + 1, frame.end()));
    EXPECT_TRUE(comes_to_mode("transfer"));
}

TEST_F(traffic_commands, send_many_on_a_channel) {
    EXPECT_EQ(
        vkt({"send", "COM7", "1ABCDEF0##0112233", "--every", "2ms", "--count", "20", "--channel", "5", "--json"}),
        exit_good)
        << err;
    EXPECT_EQ(out, "{\"port\": \"COM7\", \"sent\": 20}\n");
    ASSERT_TRUE(module->wait_traffic(0, 20, 10000));
    for (const sim::traffic_note& note : module->traffic_received()) {
        EXPECT_EQ(note.frame[3], 5);
        EXPECT_EQ(note.frame[4], 0x88);
    }
}

TEST_F(traffic_commands, send_keeps_its_pauses) {
    const auto began = std::chrono::steady_clock::now();
    EXPECT_EQ(vkt({"send", "COM7", "123#", "--every", "100ms", "--count", "4"}), exit_good);
    EXPECT_GE(std::chrono::steady_clock::now() - began, std::chrono::milliseconds(298));
    EXPECT_EQ(out, "COM7: 4 sent\n");
}

TEST_F(traffic_commands, send_with_a_check_value) {
    EXPECT_EQ(vkt({"send", "COM7", "123#1122"}), exit_good);
    EXPECT_EQ(vkt({"send", "COM7", "123#1122", "--check"}), exit_good);
    ASSERT_TRUE(module->wait_traffic(0, 2, 10000));
    const auto got = module->traffic_received();
    ASSERT_EQ(got.size(), 2u);
    EXPECT_EQ(got[1].frame.size(), got[0].frame.size() + 2);
}

TEST_F(traffic_commands, a_module_that_is_pulled_between_two_frames_ends_sending) {
    std::thread user([&] {
        EXPECT_TRUE(module->wait_traffic(0, 1, 20000));
        module->hang_up();
    });
    EXPECT_EQ(vkt({"send", "COM7", "123#", "--every", "1s", "--count", "1000000"}), exit_port);
    user.join();
    EXPECT_EQ(err, "vkt: COM7: 连接已断开\n");
}

TEST_F(traffic_commands, a_frame_that_cannot_be_sent_is_named) {
    std::thread user([&] {
        EXPECT_TRUE(module->wait_traffic(0, 2, 20000));
        com::fault_set(com::call::write_file, 0, 1000000, 87);
    });
    EXPECT_EQ(vkt({"send", "COM7", "123#", "--every", "1ms", "--count", "1000000"}), exit_port);
    user.join();
    EXPECT_THAT(err, FitsPattern("vkt: COM7: frame ([3-9]|[1-9][0-9]+): 写操作失败\n"));
    EXPECT_EQ(out, "");
}

TEST_F(traffic_commands, send_can_be_interrupted) {
    std::thread user([&] {
        EXPECT_TRUE(module->wait_traffic(0, 3, 20000));
        cli_interrupt();
    });
    EXPECT_EQ(vkt({"send", "COM7", "123#", "--every", "1ms", "--count", "1000000"}), exit_interrupted);
    user.join();
    EXPECT_THAT(out, FitsPattern("COM7: [1-9][0-9]* sent\n"));
    EXPECT_TRUE(comes_to_mode("transfer"));
}

TEST_F(traffic_commands, what_cannot_be_sent_is_said_before_anything) {
    const std::pair<const char*, const char*> rows[] = {
        {"123", "not of the form ID#DATA"},
        {"12x#11", "not of the form ID#DATA"},
        {"#11", "an identifier has 3 or 8 digits"},
        {"1234#11", "an identifier has 3 or 8 digits"},
        {"800#", "the identifier is above 7FF"},
        {"20000000#", "the identifier is above 1FFFFFFF"},
        {"123#1", "the data are no pairs of hex digits"},
        {"123#R", "the data are no pairs of hex digits"},
        {"123#112233445566778899", "no frame has 9 data bytes"},
        {"123##", "a digit of flags stands behind ##"},
        {"123##0112233445566778899", "no frame has 9 data bytes"},
    };
    for (const auto& [frame, why] : rows) {
        EXPECT_EQ(vkt({"send", "COM7", frame}), exit_usage);
        EXPECT_EQ(err, std::string("vkt: ") + frame + ": " + why + "\n");
    }
    EXPECT_EQ(vkt({"send", "COM7", "123#", "--every", "soon"}), exit_usage);
    EXPECT_EQ(err, "vkt: --every soon: not a time like 10ms or 1s\n");
    for (const char* option : {"--channel=6", "--channel=0", "--count=0", "--count=x"})
        EXPECT_EQ(vkt({"send", "COM7", "123#", option}), exit_usage) << option;
    EXPECT_EQ(module->received().size(), 0u);
}

} // namespace
