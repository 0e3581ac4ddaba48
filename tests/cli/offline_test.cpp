// Commands that need no port: what they print, where, and how they end.
#include "tests/cli/cli_stage.h"
#include "tests/support/pattern.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class offline : public cli_stage {};

TEST_F(offline, without_a_command_the_help_fits_a_screen) {
    EXPECT_EQ(vkt({}), exit_good);
    EXPECT_THAT(out, StartsWith("usage: vkt COMMAND [ARGUMENTS]\n"));
    EXPECT_LE(std::count(out.begin(), out.end(), '\n'), 30);
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 110u) << line;
    const std::string help = out;
    EXPECT_EQ(vkt({"--help"}), exit_good);
    EXPECT_EQ(out, help);
    EXPECT_EQ(err, "");
}

TEST_F(offline, help_of_a_command) {
    EXPECT_EQ(vkt({"write", "--help"}), exit_good);
    EXPECT_THAT(out, StartsWith("usage: vkt write FILE PORT [--model MODEL] [--check] [--dry-run] [--ac]\n"));
    EXPECT_THAT(out, HasSubstr("\n\nwrite a profile into a module\nWith --check the module is read again "));
    EXPECT_THAT(out, HasSubstr("something else.\n\n  FILE              a profile\n"));
    EXPECT_THAT(out, HasSubstr("\n  -m,--model MODEL  the module's model\n"));
    EXPECT_THAT(out, HasSubstr("\n  --dry-run         print the frames, open no port\n"));
    EXPECT_THAT(out, testing::EndsWith("\n  -q,--quiet        nothing but errors\n"));
    EXPECT_EQ(vkt({"-h", "models"}), exit_good);
    EXPECT_THAT(out, StartsWith("usage: vkt models\n\nthe models that can be set up\n\n  --json "));
}

TEST_F(offline, options_that_need_no_command) {
    EXPECT_EQ(vkt({"--version"}), exit_good);
    EXPECT_EQ(out, program_version() + std::string("\n"));
    EXPECT_EQ(vkt({}), exit_good);
    const std::string help = out;
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"-h"}, {"--json"}, {"-q"}, {"-v"}, {"--make=nothing"}}) {
        EXPECT_EQ(vkt(words), exit_good) << words[0];
        EXPECT_EQ(out, help) << words[0];
    }
    EXPECT_EQ(vkt({"models"}), exit_good);
    const std::string models = out;
    EXPECT_EQ(vkt({"models", "--version"}), exit_good);
    EXPECT_EQ(out, models);
}

TEST_F(offline, words_behind_two_dashes_are_no_options) {
    EXPECT_EQ(vkt({"show", "--", "--jsno"}), exit_usage);
    EXPECT_EQ(err, "vkt: --jsno: 文件不存在\n");
    EXPECT_EQ(vkt({"show", "--jsno", "--", "a"}), exit_usage);
    EXPECT_EQ(err, "vkt: there is no option \"--jsno\"; did you mean \"--json\"?\n");
    EXPECT_EQ(vkt({"--jsno"}), exit_usage);
    EXPECT_EQ(err, "vkt: there is no option \"--jsno\"; did you mean \"--json\"?\n");
}

TEST_F(offline, unknown_words_suggest_the_nearest) {
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{"raed"}, "vkt: there is no command \"raed\"; did you mean \"read\"?\n"},
        {{"sned"}, "vkt: there is no command \"sned\"; did you mean \"send\"?\n"},
        {{"xyzzyx"}, "vkt: there is no command \"xyzzyx\"\n"},
        {{"read", "COM7", "--modle", "VKT531A"},
         "vkt: there is no option \"--modle\"; did you mean \"--model\"?\n"},
        {{"write", "a", "b", "--chek=1"}, "vkt: there is no option \"--chek\"; did you mean \"--check\"?\n"},
        {{"fields", "VKT513A"}, "vkt: there is no model \"VKT513A\"; did you mean \"VKT510A\"?\n"},
        {{"default", "VKT631C"}, "vkt: there is no model \"VKT631C\"; did you mean \"VKT631B\"?\n"},
    };
    for (const auto& [words, line] : rows) {
        EXPECT_EQ(vkt(words), exit_usage);
        EXPECT_EQ(err, line);
        EXPECT_EQ(out, "");
    }
}

TEST_F(offline, what_is_missing_or_too_much_is_said) {
    EXPECT_EQ(vkt({"read", "COM7"}), exit_usage);
    EXPECT_THAT(err, FitsPattern("vkt: .*--model is required\n"));
    EXPECT_EQ(vkt({"default"}), exit_usage);
    EXPECT_EQ(vkt({"models", "more"}), exit_usage);
    EXPECT_EQ(vkt({"--json", "read", "COM7"}), exit_usage);
    EXPECT_THAT(err, FitsPattern(R"(\{"error": \{"text": ".*--model is required", "status": 2\}\}\n)"));
}

TEST_F(offline, models) {
    EXPECT_EQ(vkt({"models"}), exit_good);
    EXPECT_EQ(out, "VKT510A  24 values  image of 60 bytes\nVKT531A  33 values  image of 60 bytes\n"
                   "VKT530A  33 values  image of 60 bytes\nVKT610B  46 values  image of 35 32-bit registers\n"
                   "VKT630B  46 values  image of 35 32-bit registers\n"
                   "VKT631B  46 values  image of 35 32-bit registers\n");
    EXPECT_EQ(vkt({"models", "--json"}), exit_good);
    EXPECT_EQ(out, R"({"models": ["VKT510A", "VKT531A", "VKT530A", "VKT610B", "VKT630B", "VKT631B"]})"
                   "\n");
}

TEST_F(offline, fields_of_every_model) {
    for (const family_descriptor* of : all_families)
        for (const family_model& one : of->models) {
            EXPECT_EQ(vkt({"fields", one.name}), exit_good);
            for (const field* row : fields_by_page(*of))
                EXPECT_THAT(out, HasSubstr(std::string("\n") + row->key + " "));
        }
    EXPECT_EQ(vkt({"fields", "VKT531A"}), exit_good);
    EXPECT_THAT(out, HoldsPattern("^KEY +PAGE +LABEL +DEFAULT +PLACE +RANGE\n"));
    EXPECT_THAT(out, HoldsPattern("\nchange_err_check +转换参数 +校验字节 +否 +byte 5 +否 \\| 是\n"));
    EXPECT_THAT(out, HoldsPattern(
                         "\ncan_filtration +CAN +滤波帧类型 +仅扩展滤波 +byte 9 +0=仅标准滤波 \\| 8=仅扩展滤波\n"));
    EXPECT_THAT(out, HoldsPattern("\nchange_star +转换参数 +起始位置 +0 字节 +byte 53 +0–7 字节\n"));
    EXPECT_EQ(vkt({"fields", "VKT630B"}), exit_good);
    EXPECT_THAT(out, HoldsPattern(" 0=400k \\| 1=500k \\| 2=800k \\| 3=1M \\| 4=2M \\| 5=4M \\| 6=5M \\(0–7\\)\n"));
    EXPECT_EQ(vkt({"fields", "VKT630B", "--json"}), exit_good);
    EXPECT_THAT(out, StartsWith(R"({"model": "VKT630B", "fields": [{"key": "change_mode_vkt610b", )"));
    EXPECT_THAT(
        out, HasSubstr(R"({"key": "spi_time_vkt610b", "page": "SPI", "label": "时间", "unit": "ms", "lowest": 0, )"
                       R"("highest": 255, "choices": [], "range": "1–256", "default": "10", )"
                       R"("place": "register 4, bits 8-15"})"));
}

TEST_F(offline, defaults_on_standard_output_and_in_a_file) {
    EXPECT_EQ(vkt({"default", "VKT610B"}), exit_good);
    EXPECT_EQ(out, profile_text(*profile_default(all_families, "VKT610B")));
    const std::string printed = out;
    EXPECT_EQ(vkt({"default", "VKT610B", "-o", file("d.json")}), exit_good);
    EXPECT_EQ(out + err, "");
    EXPECT_EQ(content(file("d.json")), printed);
    EXPECT_EQ(vkt({"default", "VKT610B", "-o", file("none/d.json")}), exit_usage);
    EXPECT_EQ(err, "vkt: " + file("none/d.json") + ": cannot be written\n");
}

// ---- show ----

TEST_F(offline, show_has_the_bytes_in_every_form) {
    const std::string path = profile_file("VKT531A", {"can_baud_rate=500K"});
    constexpr const char* frame =
        "F7 F8 01 3C 01 08 01 00 0C 00 00 00 00 08 FF FF FF FF 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
        "00 "
        "00 00 00 00 00 00 00 00 00 00 02 00 02 00 00 08 00 00 00 00 04 00 40 1A 0F 05 01 01 62";
    EXPECT_EQ(vkt({"show", path}), exit_good);
    EXPECT_EQ(out, std::string(frame) + "\n");
    const std::string pairs = out;
    EXPECT_EQ(vkt({"show", path, "--frames"}), exit_good);
    EXPECT_EQ(out, pairs);
    EXPECT_EQ(vkt({"show", path, "--hex"}), exit_good);
    EXPECT_THAT(out, StartsWith("F7F8013C0108"));
    EXPECT_EQ(vkt({"show", path, "--c"}), exit_good);
    EXPECT_THAT(out, HasSubstr("vkt531a_frames[1][65] = {\n    {0xF7, 0xF8, "));
    EXPECT_EQ(vkt({"show", path, "--binary", "-o", file("a.bin")}), exit_good);
    EXPECT_EQ(content(file("a.bin")).size(), 65u);
    EXPECT_EQ(vkt({"show", path, "--script"}), exit_good);
    EXPECT_EQ(out, "SEND " + std::string(frame) + " EXPECT F7 F8 01 13 1D 00\n");
    EXPECT_EQ(vkt({"show", path, "--json"}), exit_good);
    EXPECT_THAT(out, StartsWith(R"({"model": "VKT531A", "frames": ["F7F8013C0108)"));
}

TEST_F(offline, show_of_registers) {
    const std::string path = profile_file("VKT630B");
    EXPECT_EQ(vkt({"show", path}), exit_good);
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 34);
    EXPECT_THAT(out, StartsWith("AA 07 02 FF 00 01 00 00 00 1D 2C\n"));
    EXPECT_EQ(vkt({"show", path, "--ac"}), exit_good);
    EXPECT_THAT(out, StartsWith("AC 07 02 FF 00 01 00 00 00 "));
    EXPECT_EQ(vkt({"show", path, "--json", "--ac"}), exit_good);
    EXPECT_THAT(
        out, HoldsPattern(
                 R"(^\{"model": "VKT630B", "frames": \["AC0702[0-9A-F]{16}"(, "AC0702[0-9A-F]{16}"){33}\]\}\n$)"));
}

// ---- set ----

TEST_F(offline, set_changes_a_file_and_says_what) {
    const std::string path = profile_file("VKT531A");
    EXPECT_EQ(vkt({"set", path, "can_baud_rate=500K", "change_star=7", "can_scherm=7FF", "can_check=on"}),
              exit_good);
    EXPECT_EQ(out, "can_baud_rate: 125K bps → 500K bps\nchange_star: 0 字节 → 7 字节\n"
                   "can_scherm: FF FF FF FF → 00 00 07 FF\ncan_check: 否 → 是\n");
    const auto read = profile_load(path, all_families);
    ASSERT_TRUE(read.loaded);
    EXPECT_EQ(read.loaded->find("can_baud_rate")->value.number, 12u);
    EXPECT_EQ(read.loaded->find("can_scherm")->value.text, "00 00 07 FF");
    EXPECT_EQ(vkt({"set", path, "can_baud_rate=12"}), exit_good); // by its code, which it has already
    EXPECT_EQ(out, "");
}

TEST_F(offline, set_changes_nothing_when_one_value_is_wrong) {
    const std::string path = profile_file("VKT531A");
    const std::string before = content(path);
    EXPECT_EQ(vkt({"set", path, "can_baud_rate=500K", "change_star=8", "can_boud_rate=1", "change_len"}),
              exit_usage);
    EXPECT_EQ(err, "vkt: change_star=8: 超出范围，应为 0–7\n"
                   "vkt: can_boud_rate=1: VKT531A has no such key; did you mean \"can_baud_rate\"?\n"
                   "vkt: change_len: not of the form KEY=VALUE\n");
    EXPECT_EQ(out, "");
    EXPECT_EQ(content(path), before);
}

TEST_F(offline, set_into_another_file_with_a_note) {
    const std::string path = profile_file("VKT510A");
    const std::string before = content(path);
    EXPECT_EQ(vkt({"set", path, "--note", "夹具 3", "spi_time_vkt510a=9", "-o", file("b.json")}), exit_good);
    EXPECT_EQ(content(path), before);
    const auto read = profile_load(file("b.json"), all_families);
    EXPECT_EQ(read.loaded->note, "夹具 3");
    EXPECT_EQ(read.loaded->find("spi_time_vkt510a")->value.number, 9u);
    EXPECT_EQ(vkt({"set", path, "--note", std::string(1001, 'a')}), exit_usage);
    EXPECT_EQ(err, "vkt: --note: longer than 1000 bytes\n");
    EXPECT_EQ(content(path), before);
    EXPECT_EQ(vkt({"set", path, "--note", std::string(1000, 'a'), "--json", "spi_time_vkt510a=9"}), exit_good);
    EXPECT_EQ(out + err, "");
    EXPECT_EQ(profile_load(path, all_families).loaded->note, std::string(1000, 'a'));
    EXPECT_EQ(vkt({"set", path, "spi_time_vkt510a=8"}), exit_good); // the note stays
    EXPECT_EQ(profile_load(path, all_families).loaded->note, std::string(1000, 'a'));
}

// ---- bad files ----

TEST_F(offline, a_bad_profile_has_a_line_for_each_fault) {
    const std::string path = file("bad.json");
    ASSERT_EQ(fs_append(path.c_str(), R"({"format": 1, "model": "VKT531A", "values": {"a": 1, "change_star": 8}})"),
              RET_OK);
    for (const char* command : {"show", "set"}) {
        EXPECT_EQ(vkt({command, path}), exit_usage);
        EXPECT_EQ(err, "vkt: " + path + ": a: 未知的键\nvkt: " + path + ": change_star: 超出范围，应为 0–7\n");
        EXPECT_EQ(out, "");
    }
    EXPECT_EQ(vkt({"show", file("none.json")}), exit_usage);
    EXPECT_EQ(err, "vkt: " + file("none.json") + ": 文件不存在\n");
    EXPECT_EQ(vkt({"show", files.string()}), exit_usage);
    EXPECT_EQ(err, "vkt: " + files.string() + ": 是文件夹\n");
    EXPECT_EQ(vkt({"write", path, "COM7"}), exit_usage);
    EXPECT_EQ(vkt({"diff", path, "COM7"}), exit_usage);
}

// ---- diff ----

TEST_F(offline, diff_of_two_files) {
    const std::string a = profile_file("VKT531A");
    const std::string b = profile_file("VKT531A", {"can_baud_rate=500K", "can_check5=1"});
    EXPECT_EQ(vkt({"diff", a, a}), exit_good);
    EXPECT_EQ(out, "一致\n");
    EXPECT_EQ(vkt({"diff", a, b}), exit_different);
    EXPECT_EQ(out, "can_baud_rate  CAN  波特率    125K bps → 500K bps\n"
                   "can_check5     CAN  验收码 5  00 00 00 00 → 00 00 00 01\n");
    EXPECT_EQ(vkt({"diff", a, b, "--json"}), exit_different);
    EXPECT_EQ(out, R"({"differences": [{"key": "can_baud_rate", "left": "125K", "right": "500K"}, )"
                   R"({"key": "can_check5", "left": "00 00 00 00", "right": "00 00 00 01"}], "always_same": []})"
                   "\n");
    EXPECT_EQ(vkt({"-q", "diff", a, b}), exit_different);
    EXPECT_EQ(out + err, "");
}

TEST_F(offline, diff_within_a_family_only) {
    const std::string a = profile_file("VKT531A");
    EXPECT_EQ(vkt({"diff", a, profile_file("VKT530A")}), exit_good);
    const std::string other = profile_file("VKT510A");
    EXPECT_EQ(vkt({"diff", a, other}), exit_usage);
    EXPECT_EQ(err, "vkt: " + other + ": model: VKT510A 与 VKT531A 不是同一系列\n");
}

TEST_F(offline, dry_run_opens_no_port) {
    const std::string path = profile_file("VKT610B");
    ASSERT_EQ(vkt({"show", path}), exit_good);
    const std::string frames = out;
    com::fault_clear();
    EXPECT_EQ(vkt({"write", path, "COM7", "--dry-run"}), exit_good);
    EXPECT_EQ(out, frames);
    EXPECT_EQ(com::call_count(com::call::create_file), 0u);
}

// ---- what cannot be printed ----

TEST_F(offline, a_result_that_cannot_be_printed_is_an_error) {
    const std::string path = profile_file("VKT531A");
    accepts_output = false;
    const std::vector<std::string> rows[] = {{}, {"--help"}, {"models"}, {"default", "VKT531A"}, {"show", path}};
    for (const std::vector<std::string>& words : rows) {
        EXPECT_EQ(vkt(words), exit_usage);
        EXPECT_EQ(err, "vkt: standard output: cannot be written\n");
    }
    EXPECT_EQ(vkt({"-q", "models"}), exit_good);
    EXPECT_EQ(vkt({"default", "VKT531A", "-o", file("d.json")}), exit_good);
    accepts_output = true;
    EXPECT_EQ(vkt({"models"}), exit_good);
}

// ---- what is made from the same texts ----

TEST_F(offline, manual_page_and_completion_in_the_tree_are_the_programs) {
    EXPECT_EQ(vkt({"--make=man"}), exit_good);
    EXPECT_TRUE(out == content(VKT_SOURCE_TREE "/cli/vkt.1")) << "vkt --make=man > cli/vkt.1";
    EXPECT_EQ(vkt({"--make=completion"}), exit_good);
    EXPECT_TRUE(out == content(VKT_SOURCE_TREE "/cli/vkt.bash")) << "vkt --make=completion > cli/vkt.bash";
}

} // namespace
