// Many modules at once: all of them are served, whatever becomes of one, and the journal says what happened.
#include "cli/journal.h"
#include "tests/cli/cli_stage.h"
#include "tests/support/pattern.h"
#include "toolkit/core/text.h"

#include <random>
#include <sstream>

using sim::fault;

namespace {

using testing::HasSubstr;

class many_modules : public cli_stage {
  protected:
    std::vector<std::string> journal_lines() const {
        std::vector<std::string> lines;
        std::istringstream text(content(file("line.csv")));
        for (std::string line; std::getline(text, line);) lines.push_back(line);
        return lines;
    }
    const std::string line_csv = file("line.csv");
};

TEST_F(many_modules, three_side_by_side) {
    plug("VKT531A");
    plug_other("VKT531A", "COM8");
    plug_other("VKT531A", "COM9");
    const std::string path = profile_file("VKT531A", {"can_baud_rate=500K"});
    EXPECT_EQ(vkt({"program", path, "COM7", "COM8", "COM9", "--check", "--journal", line_csv}), exit_good) << err;
    EXPECT_EQ(out, "COM7  pass\nCOM8  pass\nCOM9  pass\n");
    EXPECT_EQ(module->memory()[4], 12);
    for (const auto& other : others) EXPECT_EQ(other->memory()[4], 12);
    const std::string tail = ",VKT531A,," + checksum_of(content(path)) + ",pass,,";
    const auto lines = journal_lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], "time,port,model,firmware,profile,result,step,text");
    for (std::size_t i = 1; i < lines.size(); ++i)
        EXPECT_THAT(lines[i], FitsPattern("[-0-9]{10} [:0-9]{8},COM[789]" + tail));
}

TEST_F(many_modules, a_bad_one_does_not_stop_the_others) {
    plug("VKT610B");
    plug_other("VKT610B", "COM8").plan({.what = fault::refuse, .after = 3});
    const std::string path = profile_file("VKT610B");
    EXPECT_EQ(vkt({"program", path, "COM7", "COM8", "COM499", "--check", "--journal", line_csv}), exit_module);
    EXPECT_THAT(out, FitsPattern("COM7 +pass +V1.1.2 24年10月\nCOM8 +fail +写配置 +应答帧校验失败\nCOM499 +fail "
                                 "+开始连接 +串口打开失败\n"));
    EXPECT_THAT(err, HasSubstr("vkt: COM8: 写配置: 应答帧校验失败\n"));
    EXPECT_THAT(err, HasSubstr("vkt: COM499: 开始连接: 串口打开失败: 不存在 (error 2)\n"));
    EXPECT_EQ(journal_lines().size(), 4u);
    EXPECT_TRUE(comes_to_mode("transfer"));
    EXPECT_EQ(vkt({"program", path, "COM7", "COM8", "--json"}), exit_good);
    EXPECT_THAT(out, testing::StartsWith(R"({"model": "VKT610B", "profile": ")"));
    EXPECT_THAT(out, HasSubstr(R"({"port": "COM8", "result": "pass", "firmware": "", "step": "", "text": ""})"));
}

TEST_F(many_modules, a_failure_as_json_and_in_the_journal_has_its_step_and_cause) {
    plug("VKT531A");
    const std::string path = profile_file("VKT531A");
    EXPECT_EQ(vkt({"--json", "program", path, "COM499", "COM7", "--journal", line_csv}), exit_port);
    EXPECT_EQ(out, R"({"model": "VKT531A", "profile": ")" + checksum_of(content(path)) +
                       R"(", "modules": [{"port": "COM499", "result": "fail", "firmware": "", "step": "开始连接", )"
                       R"("text": "串口打开失败"}, {"port": "COM7", "result": "pass", "firmware": "", "step": "", )"
                       R"("text": ""}]})"
                       "\n");
    EXPECT_THAT(content(line_csv), HasSubstr(",fail,开始连接,串口打开失败: 不存在 (error 2)\n"));
    EXPECT_EQ(module->count().reads, 0u); // nobody asked for a check
}

#ifndef _WIN32
TEST_F(many_modules, a_journal_that_is_full_is_an_error_of_its_own) {
    plug("VKT531A");
    const std::string path = profile_file("VKT531A");
    EXPECT_EQ(vkt({"program", path, "COM7", "--journal", "/dev/full"}), exit_usage);
    EXPECT_EQ(out, "COM7  pass\n");
    EXPECT_EQ(err, "vkt: /dev/full: cannot be written\nCOM7: VKT531A 通过\n");
    EXPECT_EQ(vkt({"program", path, "COM499", "--journal", "/dev/full"}), exit_port); // the higher one
}
#endif

TEST_F(many_modules, the_firmware_is_stated_as_the_window_states_it) {
    plug("VKT510A");
    EXPECT_EQ(vkt({"program", profile_file("VKT510A"), "COM7", "--journal", line_csv}), exit_good) << err;
    EXPECT_EQ(out, "COM7  pass  02-00-01, 21-07\n");
    EXPECT_THAT(journal_lines().back(), HasSubstr(",COM7,VKT510A,\"02-00-01, 21-07\","));
    EXPECT_THAT(session_log(), testing::IsEmpty());
    module.reset();
    plug("VKT610B");
    const std::string path = profile_file("VKT610B");
    EXPECT_EQ(vkt({"program", path, "COM7", "--check", "--journal", line_csv}), exit_good) << err;
    EXPECT_THAT(journal_lines().back(), HasSubstr(",COM7,VKT610B,V1.1.2 24年10月,"));
    // Without a read it is not known, nor from a module that has none.
    EXPECT_EQ(vkt({"program", path, "COM7", "--journal", line_csv}), exit_good) << err;
    EXPECT_THAT(journal_lines().back(), HasSubstr(",COM7,VKT610B,,"));
    std::vector<uint8_t> memory = module->memory();
    std::fill(memory.begin() + 4 * 34, memory.end(), uint8_t{0});
    module->set_memory(memory);
    EXPECT_EQ(vkt({"program", path, "COM7", "--check", "--journal", line_csv}), exit_good) << err;
    EXPECT_THAT(journal_lines().back(), HasSubstr(",COM7,VKT610B,,"));
}

TEST_F(many_modules, a_check_that_fails_names_the_fields) {
    plug("VKT531A");
    module->plan({.what = fault::patch, .after = 2, .argument = (4 + 4) * 256 + 3});
    EXPECT_EQ(vkt({"program", profile_file("VKT531A"), "COM7", "--check", "--journal", line_csv}), exit_different);
    EXPECT_EQ(err, "vkt: COM7: 校验: 不一致: can_baud_rate\n");
    EXPECT_THAT(journal_lines().back(), testing::EndsWith(",fail,校验,不一致: can_baud_rate"));
}

TEST_F(many_modules, what_is_wrong_is_said_before_the_first_is_touched) {
    plug("VKT531A");
    const std::string path = profile_file("VKT531A");
    EXPECT_EQ(vkt({"program", path, "COM7", "COM7"}), exit_usage);
    EXPECT_EQ(err, "vkt: COM7: named twice\n");
    EXPECT_EQ(vkt({"program", path, "COM7", "com7"}), exit_usage);
    EXPECT_EQ(err, "vkt: com7: named twice\n");
    EXPECT_EQ(vkt({"program", path, "COM499", "COM498", "COM499"}), exit_usage);
    EXPECT_EQ(err, "vkt: COM499: named twice\n");
    EXPECT_EQ(vkt({"program", path, "COM7", "--journal", file("none/line.csv")}), exit_usage);
    EXPECT_EQ(err, "vkt: " + file("none/line.csv") + ": cannot be written\n");
    EXPECT_EQ(vkt({"program", file("none.json"), "COM7"}), exit_usage);
    EXPECT_EQ(vkt({"program", path}), exit_usage);
    EXPECT_EQ(module->received().size(), 0u);
}

#ifndef _WIN32
TEST_F(many_modules, a_port_named_by_its_path_too_is_named_twice) {
    plug("VKT531A");
    EXPECT_EQ(vkt({"program", profile_file("VKT531A"), "COM7", module->port_path()}), exit_usage);
    EXPECT_EQ(err, "vkt: " + module->port_path() + ": named twice\n");
    EXPECT_EQ(module->received().size(), 0u);
}
#endif

TEST_F(many_modules, an_interruption_is_in_the_journal) {
    port_timing_get().timeouts = {60000, 60000, 60000, 60000, 60000};
    session_timing_get().read_wait_ms = 60000;
    plug("VKT531A");
    plug_other("VKT531A", "COM8").plan({.what = fault::silent});
    std::thread user([&] {
        EXPECT_TRUE(others[0]->wait_requests(1, 20000));
        while (module->count().writes == 0) std::this_thread::yield();
        cli_interrupt();
    });
    EXPECT_EQ(vkt({"program", profile_file("VKT531A"), "COM7", "COM8", "--journal", line_csv}), exit_interrupted);
    user.join();
    EXPECT_THAT(content(line_csv), HoldsPattern(",COM8,VKT531A,,[0-9A-F]{8},interrupted,,\n"));
    EXPECT_EQ(out, ""); // no table of half a run
}

TEST_F(many_modules, two_hundred_ports_that_are_not_there) {
    std::vector<std::string> words = {"program", profile_file("VKT531A")};
    for (int n = 300; n < 500; ++n) words.push_back(tk_format("COM%d", n));
    EXPECT_EQ(vkt(words), exit_port);
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 200);
}

/// What a module counted since `before` and holds is what its line says.
void expect_agreement(const std::string& line, const sim::module_t& module, const sim::counters& before,
                      uint8_t rate) {
    const auto says = [&line](const char* text) { return line.find(text) != std::string::npos; };
    const sim::counters now = module.count();
    const bool asked = now.handshakes == before.handshakes + 1;
    const bool wrote = now.writes == before.writes + 1;
    const bool read = now.reads == before.reads + 1;
    EXPECT_TRUE(asked) << line;
    EXPECT_NE(says(",pass,"), says(",fail,")) << line;
    if (says(",pass,")) {
        EXPECT_TRUE(wrote && read && module.memory()[4] == rate) << line;
    }
    if (says(",fail,发送验证命令,") || says(",fail,接收验证应答,") || says(",fail,验证产品标识,")) {
        EXPECT_FALSE(wrote || read) << line;
    }
    if (says(",fail,写配置,")) {
        EXPECT_TRUE(wrote && !read) << line;
    }
    if (says(",fail,读配置,") || says(",fail,校验,")) {
        EXPECT_TRUE(wrote && read) << line;
    }
    // A line without a fault of the step's name would agree with anything.
    EXPECT_TRUE(says(",pass,") || says("验证") || says("配置") || says(",校验,")) << line;
}

/// What the modules themselves counted is the judge.
TEST_F(many_modules, the_journal_of_a_hundred_agrees_with_the_modules) {
    constexpr int rounds = 34;
    constexpr fault faults[] = {fault::none,    fault::silent,       fault::bad_check,        fault::refuse,
                                fault::hang_up, fault::wrong_header, fault::hang_up_mid_reply};
    std::mt19937 random(20260411);
    plug("VKT531A");
    plug_other("VKT531A", "COM8");
    plug_other("VKT531A", "COM9");
    sim::module_t* modules[] = {module.get(), others[0].get(), others[1].get()};
    std::size_t line = 0;
    for (int round = 0; round < rounds; ++round) {
        std::vector<sim::counters> before;
        const uint8_t rate = static_cast<uint8_t>(1 + random() % 15);
        const std::string path = profile_file("VKT531A", {"can_baud_rate=" + std::to_string(rate)});
        for (sim::module_t* one : modules) {
            std::vector<uint8_t> memory = one->memory();
            memory[4] = 0;
            one->set_memory(memory);
            std::string why;
            if (one->port_path().empty()) one->plug_in(&why);
            EXPECT_EQ(why, "");
            const auto after = static_cast<uint32_t>(random() % 3); // the handshake, the write, the read
            one->plan({.what = faults[random() % std::size(faults)], .after = after});
            before.push_back(one->count());
        }
        vkt({"-q", "program", path, "COM7", "COM8", "COM9", "--check", "--journal", line_csv});
        const auto lines = journal_lines();
        ASSERT_EQ(lines.size(), 1 + 3u * static_cast<std::size_t>(round + 1));
        for (std::size_t i = line + 1; i < lines.size(); ++i) {
            const std::size_t which = lines[i].find(",COM8,") != std::string::npos   ? 1
                                      : lines[i].find(",COM9,") != std::string::npos ? 2
                                                                                     : 0;
            expect_agreement(lines[i], *modules[which], before[which], rate);
        }
        line = lines.size() - 1;
    }
    EXPECT_GE(line, 100u);
}

} // namespace
