// Commands against modules: what they print, how they end, and what the module received.
#include "tests/cli/cli_stage.h"
#include "tests/support/pattern.h"

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#endif

using sim::fault;

namespace {

using testing::HasSubstr;

class ports : public cli_stage {};

TEST_F(ports, are_listed_with_what_stands_behind_them) {
    plug("VKT531A");
    EXPECT_EQ(vkt({"ports"}), exit_good);
    EXPECT_THAT(out, HoldsPattern("(^|\n)COM7 +.* 可用\n"));
    EXPECT_EQ(vkt({"ports", "--json"}), exit_good);
    EXPECT_THAT(
        out, HoldsPattern(R"("name": "COM7", "device": "[^"]+", "description": "[^"]*", "can_be_opened": true)"));
}

TEST_F(ports, one_that_is_taken_says_so) {
    plug("VKT531A");
    com::fault_set(com::call::create_file, 0, 1000000, 5); // opening tries 101 times a port
    EXPECT_EQ(vkt({"ports"}), exit_good);
    EXPECT_THAT(out, HoldsPattern("(^|\n)COM7 +.* (被占用|无权限) \\(error 5\\)\n"));
    EXPECT_EQ(vkt({"ports", "--json"}), exit_good);
    EXPECT_THAT(out, HoldsPattern(R"x(^\{"ports": \[.*"name": "COM7", [^{]*"can_be_opened": false, )x"
                                  R"x("cause": "(被占用|无权限) \(error 5\)"\}.*\]\}\n$)x"));
}

/// A profile of the model with every value that can be changed off its default.
class every_model : public cli_stage, public testing::WithParamInterface<const char*> {};

TEST_P(every_model, a_read_is_what_the_module_holds) {
    plug(GetParam());
    std::vector<uint8_t> memory = module->memory();
    memory[memory.size() == 60 ? 4 : 4 * 5] = 3; // a CAN rate
    module->set_memory(memory);
    EXPECT_EQ(vkt({"read", "COM7", "-m", GetParam(), "-o", file("read.json")}), exit_good) << err;
    EXPECT_EQ(out + err, "");
    const auto read = profile_load(file("read.json"), all_families);
    ASSERT_TRUE(read.loaded);
    EXPECT_EQ(read.loaded->model, GetParam());
    const auto device = dev_open(all_families, GetParam());
    ASSERT_EQ(profile_apply(*read.loaded, *device), RET_OK);
    const std::size_t written = memory.size() == 60 ? 60 : 4 * 34;
    EXPECT_EQ(std::vector<uint8_t>(device->image.begin(), device->image.begin() + written),
              std::vector<uint8_t>(memory.begin(), memory.begin() + written));
    EXPECT_TRUE(comes_to_mode(memory.size() == 60 ? "" : "transfer"));
    EXPECT_EQ(vkt({"read", "COM7", "-m", GetParam()}), exit_good);
    EXPECT_EQ(out, content(file("read.json")));
}

TEST_P(every_model, a_write_is_what_show_shows) {
    plug(GetParam());
    const bool bytes = module->memory().size() == 60;
    const std::string rate = !bytes                                 ? "canfd2_speed_zc_vkt610b=3"
                             : GetParam() == std::string("VKT510A") ? "can_bps_vkt510a=3"
                                                                    : "can_baud_rate=3";
    const std::string path = profile_file(GetParam(), {rate});
    EXPECT_EQ(vkt({"show", path, "--hex"}), exit_good);
    const std::string shown = out;
    EXPECT_EQ(vkt({"write", path, "COM7"}), exit_good) << err;
    EXPECT_EQ(out, std::string("COM7: ") + GetParam() + " 写配置完成\n");
    std::string sent;
    for (const auto& frame : module->requests())
        if (bytes ? frame.size() == 65 : frame.size() == 11) sent += hex_list(frame, "%02X", "") + "\n";
    EXPECT_EQ(sent, shown);
    EXPECT_EQ(module->memory()[bytes ? 4 : 4 * 6], 3);
    EXPECT_EQ(vkt({"diff", path, "COM7"}), exit_good) << out;
    EXPECT_EQ(out, "一致\n");
}

TEST_P(every_model, a_check_finds_what_the_module_did_not_keep) {
    plug(GetParam());
    const std::string path = profile_file(GetParam());
    EXPECT_EQ(vkt({"write", path, "COM7", "--check"}), exit_good) << err;
    EXPECT_EQ(out, "一致\n");
    std::vector<uint8_t> memory = module->memory();
    const bool bytes = memory.size() == 60;
    memory[bytes ? 42 : 0] = bytes ? 3 : 0;
    module->set_memory(memory);
    EXPECT_EQ(vkt({"diff", path, "COM7"}), exit_different);
    EXPECT_THAT(out, HoldsPattern("^change_mode\\w*  转换参数  转换模式  .* → .*\n$"));
}

INSTANTIATE_TEST_SUITE_P(all, every_model,
                         testing::Values("VKT510A", "VKT530A", "VKT531A", "VKT610B", "VKT630B", "VKT631B"),
                         [](const auto& one) { return std::string(one.param); });

TEST_F(ports, a_check_that_fails_names_the_fields) {
    plug("VKT531A");
    // The module's answer to the read that follows says something else in byte 4 of the image.
    module->plan({.what = fault::patch, .after = 2, .argument = (4 + 4) * 256 + 3});
    EXPECT_EQ(vkt({"write", profile_file("VKT531A"), "COM7", "--check"}), exit_different);
    EXPECT_EQ(out, "can_baud_rate  CAN  波特率  125K bps → 20K bps\n");
}

TEST_F(ports, a_check_takes_no_account_of_what_is_always_written_the_same) {
    plug("VKT531A");
    const std::string path = profile_file("VKT531A");
    const sim::fault_plan plan{.what = fault::patch, .after = 2, .argument = (4 + 1) * 256 + 7};
    module->plan(plan);
    EXPECT_EQ(vkt({"write", path, "COM7", "--check"}), exit_good);
    EXPECT_EQ(out, "uart_bit_num  UART  数据位  8 位 → 7 位  (always written the same)\n");
    module->plan(plan);
    EXPECT_EQ(vkt({"program", path, "COM7", "--check"}), exit_good) << err;
    EXPECT_EQ(out, "COM7  pass\n");
}

TEST_F(ports, what_is_always_written_the_same_is_named_and_no_difference) {
    plug("VKT531A");
    std::vector<uint8_t> memory = module->memory();
    memory[1] = 7;
    module->set_memory(memory);
    EXPECT_EQ(vkt({"diff", profile_file("VKT531A"), "COM7"}), exit_good);
    EXPECT_EQ(out, "uart_bit_num  UART  数据位  8 位 → 7 位  (always written the same)\n");
    EXPECT_EQ(vkt({"diff", profile_file("VKT531A"), "COM7", "--json"}), exit_good);
    EXPECT_EQ(out, R"({"differences": [], "always_same": [{"key": "uart_bit_num", "left": "8", "right": "7"}]})"
                   "\n");
}

TEST_F(ports, a_value_that_cannot_be_written_is_read_and_named) {
    plug("VKT531A");
    std::vector<uint8_t> memory = module->memory();
    memory[53] = 200;
    module->set_memory(memory);
    EXPECT_EQ(vkt({"read", "COM7", "-m", "VKT531A", "-o", file("odd.json")}), exit_good);
    EXPECT_EQ(err, "vkt: COM7: change_star: 200 超出范围，应为 0–7\n");
    EXPECT_EQ(vkt({"show", file("odd.json")}), exit_usage);
}

TEST_F(ports, another_model_of_the_family_can_be_written) {
    plug("VKT530A");
    const std::string path = profile_file("VKT531A");
    EXPECT_EQ(vkt({"write", path, "COM7", "-m", "VKT530A"}), exit_good);
    EXPECT_EQ(err, "vkt: " + path + ": VKT531A -> VKT530A\n");
    EXPECT_EQ(module->count().writes, 1u);
    EXPECT_EQ(vkt({"write", path, "COM7", "-m", "VKT610B"}), exit_usage);
    EXPECT_EQ(err, "vkt: " + path + ": model: VKT531A 与 VKT610B 不是同一系列\n");
    EXPECT_EQ(module->count().writes, 1u);
}

TEST_F(ports, verbose_prints_every_frame) {
    plug("VKT531A");
    EXPECT_EQ(vkt({"-v", "read", "COM7", "-m", "VKT531A"}), exit_good);
    EXPECT_THAT(err,
                FitsPattern("COM7 +[0-9.]+ ms > F7 F8 02 04 0A 15 12 03 07\nCOM7 +[0-9.]+ ms < F7 F8 02 13 1E 00\n"
                            "COM7 +[0-9.]+ ms > F7 F8 03 00 0C\nCOM7 +[0-9.]+ ms < F7 F8 03 3C [0-9A-F ]+\n"));
    plug_other("VKT610B", "COM9");
    EXPECT_EQ(vkt({"-v", "read", "COM9", "-m", "VKT610B"}), exit_good);
    EXPECT_THAT(err, HasSubstr("> 63 6F 6E 66 69 67 00\n"));       // "config"
    EXPECT_THAT(err, HasSubstr("> 74 72 61 6E 73 66 65 72 00\n")); // "transfer"
}

TEST_F(ports, progress_shows_on_a_terminal_only) {
    plug("VKT531A");
    EXPECT_EQ(vkt({"read", "COM7", "-m", "VKT531A", "-o", file("a.json")}), exit_good);
    EXPECT_EQ(err, "");
    terminal = true;
    EXPECT_EQ(vkt({"read", "COM7", "-m", "VKT531A", "-o", file("a.json")}), exit_good);
    EXPECT_THAT(err, HasSubstr("COM7 100% 读配置完成"));
    EXPECT_TRUE(err.ends_with("\r\x1b[K"));
    for (const char* option : {"-q", "--json", "-v"}) {
        EXPECT_EQ(vkt({option, "read", "COM7", "-m", "VKT531A", "-o", file("a.json")}), exit_good);
        EXPECT_EQ(err.find('%'), std::string::npos);
    }
}

// ---- failures ----

struct failing {
    const char* name;
    const char* model;
    const char* command; ///< "read" or "write"
    fault what;
    uint32_t after; ///< good replies before
    int status;
    const char* line; ///< behind "vkt: COM7: "; a pattern
};
constexpr failing failures[] = {
    {"generic_no_answer", "VKT531A", "read", fault::silent, 0, exit_module, "接收验证应答: 等待读操作完成失败"},
    {"generic_bad_handshake", "VKT531A", "read", fault::bad_check, 0, exit_module,
     "验证产品标识: 获取读操作结果失败"},
    {"generic_short_handshake", "VKT531A", "read", fault::cut_short, 0, exit_good, ""},
    {"generic_no_image", "VKT531A", "read", fault::silent, 1, exit_module, "读配置: 等待读操作完成失败"},
    {"generic_bad_image", "VKT531A", "read", fault::bad_check, 1, exit_module, "检测配置: 检测配置失败"},
    {"generic_cut_image", "VKT531A", "read", fault::cut_short, 1, exit_module, "检测配置: 检测配置失败"},
    {"generic_foreign_image", "VKT531A", "read", fault::wrong_header, 1, exit_module, "检测配置: 校验配置失败"},
    {"generic_no_ack", "VKT531A", "write", fault::silent, 1, exit_module, "写配置: 等待读操作完成失败"},
    {"generic_bad_ack", "VKT531A", "write", fault::bad_check, 1, exit_module, "检测配置: 检测配置失败"},
    {"generic_refused", "VKT531A", "write", fault::refuse, 1, exit_module, "检测配置: 检测配置失败"},
    {"generic_foreign_ack", "VKT531A", "write", fault::wrong_header, 1, exit_module, "检测配置: 检测配置失败"},
    {"generic_pulled_connecting", "VKT531A", "read", fault::hang_up, 0, exit_port,
     "(发送|接收)验证.*: 已拔出 \\(error .*\\)"},
    {"generic_pulled_reading", "VKT531A", "read", fault::hang_up, 1, exit_port, "读配置: .*已拔出 \\(error .*\\)"},
    {"generic_pulled_in_reply", "VKT531A", "read", fault::hang_up_mid_reply, 1, exit_port,
     ".*已拔出 \\(error .*\\)"},
    {"a_no_answer", "VKT510A", "read", fault::silent, 0, exit_module, "接收验证应答: 等待读操作完成失败"},
    {"a_no_firmware", "VKT510A", "read", fault::silent, 1, exit_module, "接收读取应答: 等待读操作完成失败"},
    {"a_bad_firmware", "VKT510A", "read", fault::bad_check, 1, exit_module, "读取固件信息: 获取读操作结果失败"},
    {"a_bad_image", "VKT510A", "read", fault::bad_check, 2, exit_module, "检测配置: 检测配置失败"},
    {"a_refused", "VKT510A", "write", fault::refuse, 2, exit_module, "检测配置: 检测配置失败"},
    {"a_pulled_writing", "VKT510A", "write", fault::hang_up, 2, exit_port, "写配置: .*: 已拔出 \\(error .*\\)"},
    {"b_no_answer", "VKT610B", "read", fault::silent, 0, exit_module, "读配置: 读取写命令应答失败"},
    {"b_bad_image", "VKT610B", "read", fault::bad_check, 0, exit_module, "读配置: 应答帧校验失败"},
    {"b_foreign_image", "VKT610B", "read", fault::wrong_header, 0, exit_module, "读配置: 应答帧校验失败"},
    {"b_refused_first", "VKT610B", "write", fault::refuse, 0, exit_module, "写配置: 应答帧校验失败"},
    {"b_refused_last", "VKT610B", "write", fault::refuse, 33, exit_module, "写配置: 应答帧校验失败"},
    {"b_bad_ack", "VKT610B", "write", fault::bad_check, 12, exit_module, "写配置: 应答帧校验失败"},
    {"b_no_ack", "VKT610B", "write", fault::silent, 5, exit_module, "写配置: 读取写命令应答失败"},
    {"b_pulled_writing", "VKT610B", "write", fault::hang_up, 5, exit_port, "写配置: .*: 已拔出 \\(error .*\\)"},
};

class one_failure : public cli_stage, public testing::WithParamInterface<failing> {};

TEST_P(one_failure, has_its_line_and_status) {
    const failing& row = GetParam();
    plug(row.model);
    const std::string path = profile_file(row.model);
    const bool reads = row.command == std::string("read");
    const std::vector<std::string> words =
        reads ? std::vector<std::string>{"read", "COM7", "-m", row.model, "-o", file("r")}
              : std::vector<std::string>{"write", path, "COM7"};
    module->plan({.what = row.what, .after = row.after});
    EXPECT_EQ(vkt(words), row.status) << err;
    const std::string line = row.line[0] == '\0' ? "" : "vkt: COM7: " + std::string(row.line) + "\n";
    EXPECT_THAT(err, FitsPattern(line));
    EXPECT_EQ(out, "");
    EXPECT_EQ(std::filesystem::exists(file("r")), reads && row.status == exit_good);
}

INSTANTIATE_TEST_SUITE_P(all, one_failure, testing::ValuesIn(failures),
                         [](const auto& one) { return std::string(one.param.name); });

TEST_F(ports, a_failed_run_leaves_the_module_as_a_good_one_does) {
    plug("VKT610B");
    module->plan({.what = fault::refuse});
    EXPECT_EQ(vkt({"write", profile_file("VKT610B"), "COM7"}), exit_module);
    EXPECT_TRUE(comes_to_mode("transfer"));
    EXPECT_EQ(vkt({"write", profile_file("VKT610B"), "COM7", "--check"}), exit_good); // the port is free again
}

TEST_F(ports, a_module_that_cannot_be_left_is_an_error) {
    plug("VKT610B");
    const std::string path = profile_file("VKT610B");
    for (const bool program : {false, true}) {
        com::fault_clear();
        com::fault_set(com::call::write_file, 2, 1000000, 87); // behind "config" and the read
        const std::vector<std::string> words = program ? std::vector<std::string>{"program", path, "COM7"}
                                                       : std::vector<std::string>{"read", "COM7", "-m", "VKT610B"};
        if (program) {
            com::fault_clear();
            com::fault_set(com::call::write_file, 35, 1000000, 87); // "config" and 34 registers
        }
        EXPECT_EQ(vkt(words), exit_port);
        EXPECT_EQ(err, "vkt: COM7: 模式转换中: 写操作失败\n");
    }
    com::fault_clear();
    // What went wrong before that comes first.
    module->plan({.what = fault::bad_check});
    com::fault_set(com::call::write_file, 2, 1000000, 87);
    EXPECT_EQ(vkt({"read", "COM7", "-m", "VKT610B"}), exit_module);
    EXPECT_EQ(err, "vkt: COM7: 读配置: 应答帧校验失败\n");
}

#ifndef _WIN32 // where no file can have such a name
TEST_F(ports, a_profile_may_have_the_name_of_a_port) {
    plug("VKT531A");
    const std::string path = profile_file("VKT531A");
    const std::filesystem::path here = std::filesystem::current_path();
    std::filesystem::current_path(files);
    std::filesystem::copy_file(path, "COM7");
    EXPECT_EQ(vkt({"diff", path, "COM7"}), exit_good);
    EXPECT_EQ(out, "一致\n");
    EXPECT_EQ(module->received().size(), 0u);
    std::filesystem::current_path(here);
}
#endif

TEST_F(ports, what_names_no_port_is_a_file) {
    plug("VKT531A");
    const std::string path = profile_file("VKT531A");
    EXPECT_EQ(vkt({"diff", path, "none.json"}), exit_usage);
    EXPECT_EQ(err, "vkt: none.json: 文件不存在\n");
    EXPECT_EQ(module->received().size(), 0u);
}

TEST_F(ports, why_one_cannot_be_opened) {
    const std::vector<std::string> read = {"read", "COM7", "-m", "VKT531A"};
    EXPECT_EQ(vkt({"read", "COM499", "-m", "VKT531A"}), exit_port);
    EXPECT_EQ(err, "vkt: COM499: 开始连接: 串口打开失败: 不存在 (error 2)\n");
    EXPECT_EQ(vkt({"read", "COM999", "-m", "VKT531A"}), exit_port);
    EXPECT_EQ(err, "vkt: COM999: 开始连接: 串口号有误\n");
    plug("VKT531A");
    com::fault_set(com::call::create_file, 0, 101, 32);
    EXPECT_EQ(vkt(read), exit_port);
    EXPECT_EQ(err, "vkt: COM7: 开始连接: 串口打开失败: 被占用 (error 32)\n");
    com::fault_clear();
    com::fault_set(com::call::write_file, 0, 1, 87);
    EXPECT_EQ(vkt(read), exit_port);
    EXPECT_EQ(err, "vkt: COM7: 发送验证命令: 写配置命令失败: 系统错误 (error 87)\n");
    EXPECT_EQ(vkt(read), exit_good);
}

#ifndef _WIN32 // Wine opens a port twice, and knows no rights

TEST_F(ports, a_device_is_named_by_its_path) {
    plug("VKT531A");
    const std::string path = profile_file("VKT531A");
    EXPECT_EQ(vkt({"write", path, module->port_path()}), exit_good) << err;
    EXPECT_EQ(out, module->port_path() + ": VKT531A 写配置完成\n");
    EXPECT_EQ(vkt({"diff", path, module->port_path()}), exit_good) << err;
    EXPECT_EQ(out, "一致\n");
}

TEST_F(ports, one_that_another_program_holds) {
    plug("VKT531A");
    com_port holder;
    ASSERT_EQ(holder.open("\\\\.\\COM7"), RET_OK);
    EXPECT_EQ(vkt({"read", "COM7", "-m", "VKT531A"}), exit_port);
    EXPECT_EQ(err, "vkt: COM7: 开始连接: 串口打开失败: 被占用 (error 5)\n");
    EXPECT_EQ(vkt({"program", profile_file("VKT531A"), "COM7"}), exit_port);
    EXPECT_EQ(vkt({"ports"}), exit_good);
    EXPECT_THAT(out, HoldsPattern("(^|\n)COM7 +.* 被占用 \\(error 5\\)\n"));
    EXPECT_EQ(module->received().size(), 0u);
    holder.close();
    EXPECT_EQ(vkt({"read", "COM7", "-m", "VKT531A"}), exit_good);
}

TEST_F(ports, one_that_the_user_may_not_open) {
    plug("VKT531A");
    ASSERT_EQ(chmod(module->port_path().c_str(), 0), 0);
    const uid_t owner = getuid();
    constexpr uid_t nobody = 65534;
    if (owner == 0) {
        ASSERT_EQ(setresuid(nobody, nobody, 0), 0);
    }
    const int status = vkt({"read", "COM7", "-m", "VKT531A"});
    if (owner == 0) {
        ASSERT_EQ(setresuid(0, 0, 0), 0);
    }
    EXPECT_EQ(status, exit_port);
    EXPECT_EQ(err, "vkt: COM7: 开始连接: 串口打开失败: 无权限 (error 5)\n");
}

#endif

TEST_F(ports, an_error_as_json) {
    EXPECT_EQ(vkt({"--json", "read", "COM499", "-m", "VKT531A"}), exit_port);
    const std::string line = R"x({"error": {"where": "COM499", "step": "开始连接", "text": "串口打开失败", )x"
                             R"x("cause": "不存在 (error 2)", "status": 3}})x";
    EXPECT_EQ(err, line + "\n");
    plug("VKT531A");
    EXPECT_EQ(vkt({"--json", "write", profile_file("VKT531A"), "COM7"}), exit_good);
    EXPECT_EQ(out, "{\"port\": \"COM7\", \"model\": \"VKT531A\", \"frames\": 1}\n");
}

TEST_F(ports, an_interruption_ends_every_step_within_a_second) {
    port_timing_get().timeouts = {60000, 60000, 60000, 60000, 60000};
    session_timing_get().read_wait_ms = 60000;
    plug("VKT531A");
    for (const uint32_t after : {0u, 1u}) {
        const uint32_t before = module->count().requests();
        module->plan({.what = fault::silent, .after = after});
        std::chrono::steady_clock::time_point asked;
        std::thread user([&] {
            EXPECT_TRUE(module->wait_requests(before + after + 1, 20000));
            asked = std::chrono::steady_clock::now();
            cli_interrupt();
        });
        const int status = vkt({"read", "COM7", "-m", "VKT531A"});
        const auto ended = std::chrono::steady_clock::now();
        user.join();
        EXPECT_EQ(status, exit_interrupted);
        EXPECT_EQ(err, "vkt: interrupted\n");
        EXPECT_LT(ended - asked, std::chrono::seconds(1));
        com_port port;
        EXPECT_EQ(port.open("\\\\.\\COM7"), RET_OK); // it was closed
    }
}

TEST_F(ports, there_is_no_session_log_and_no_word_of_the_rooms_below) {
    plug("VKT510A");
    const std::string log = session_log_path();
    std::filesystem::remove_all(folder);
    EXPECT_EQ(vkt({"-q", "read", "COM7", "-m", "VKT510A"}), exit_good);
    EXPECT_EQ(out + err, "");
    EXPECT_FALSE(std::filesystem::exists(folder));
    EXPECT_EQ(session_log_path(), log);
}

} // namespace
