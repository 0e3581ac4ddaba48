// Files that are no profiles, or not good ones: each fault has its line, and nothing of the file counts.
#include "profile/profile.h"
#include "tests/support/session_fixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> refusals(const std::string& text, const family_descriptor* for_family = nullptr) {
    const profile_read_result read = profile_parse(text, all_families, for_family);
    EXPECT_EQ(read.loaded.has_value(), read.refusals.empty());
    std::vector<std::string> lines;
    for (const profile_refusal& one : read.refusals) lines.push_back(profile_refusal_line(one));
    return lines;
}

/// A profile of a model with these values.
std::string of_model(const std::string& model, const std::string& values) {
    return R"({"format": 1, "model": ")" + model + R"(", "values": {)" + values + "}}";
}

struct bad_value {
    const char* what;
    const char* model;
    const char* values;
    const char* line;
};
constexpr bad_value bad_values[] = {
    {"unknown", "VKT531A", R"("nobody": 1)", "nobody: 未知的键"},
    {"another_familys", "VKT531A", R"("uart_bps_vkt510a": 1)", "uart_bps_vkt510a: 未知的键"},
    {"the_modules_own", "VKT610B", R"("version": 1)", "version: 未知的键"},
    {"twice", "VKT531A", R"("change_star": 1, "change_star": 1)", "change_star: 重复"},
    {"number_as_text", "VKT531A", R"("change_star": "1")", "change_star: 类型不对，应为不带符号的整数"},
    {"negative", "VKT531A", R"("change_star": -1)", "change_star: 类型不对，应为不带符号的整数"},
    {"negative_zero", "VKT531A", R"("change_star": -0)", "change_star: 类型不对，应为不带符号的整数"},
    {"float", "VKT531A", R"("change_star": 1.0)", "change_star: 类型不对，应为不带符号的整数"},
    {"exponent", "VKT531A", R"("change_star": 1e0)", "change_star: 类型不对，应为不带符号的整数"},
    {"flag_for_number", "VKT531A", R"("change_star": true)", "change_star: 类型不对，应为不带符号的整数"},
    {"null", "VKT531A", R"("change_star": null)", "change_star: 类型不对，应为不带符号的整数"},
    {"list", "VKT531A", R"("change_star": [1])", "change_star: 类型不对，应为不带符号的整数"},
    {"number_for_flag", "VKT531A", R"("can_check": 1)", "can_check: 类型不对，应为 true 或 false"},
    {"number_for_text", "VKT531A", R"("change_err_check": 1)", "change_err_check: 类型不对，应为文本"},
    {"object_for_text", "VKT531A", R"("change_fh": {"value": 1})", "change_fh: 类型不对，应为文本"},
    {"above", "VKT531A", R"("change_star": 8)", "change_star: 超出范围，应为 0–7"},
    {"far_above", "VKT531A", R"("change_star": 256)", "change_star: 超出范围，应为 0–7"},
    {"beyond_32_bits", "VKT531A", R"("change_star": 4294967296)", "change_star: 超出范围，应为 0–7"},
    {"beyond_64_bits", "VKT531A", R"("change_star": 18446744073709551616)",
     "change_star: 类型不对，应为不带符号的整数"},
    {"below", "VKT531A", R"("uart_bit_num": 7)", "uart_bit_num: 超出范围，应为 8–8"},
    {"no_choice", "VKT531A", R"("can_filtration": 3)", "can_filtration: 超出范围，应为 仅标准滤波 | 仅扩展滤波"},
    {"no_such_text", "VKT531A", R"("change_err_check": "也许")", "change_err_check: 超出范围，应为 否 | 是"},
    {"short_hex", "VKT531A", R"("can_scherm": "FF FF FF")",
     "can_scherm: 应为 4 个字节的十六进制数，如 00 00 00 00"},
    {"no_hex", "VKT531A", R"("can_scherm": "FF FF FF FG")",
     "can_scherm: 应为 4 个字节的十六进制数，如 00 00 00 00"},
    {"no_blanks", "VKT531A", R"("can_scherm": "FF-FF-FF-FF")",
     "can_scherm: 应为 4 个字节的十六进制数，如 00 00 00 00"},
    {"mask_above", "VKT610B", R"("canfd1_scherm_vkt610b": 2048)",
     "canfd1_scherm_vkt610b: 超出范围，应为 00 00 00 00–00 00 07 FF"},
    {"text_of_another", "VKT531A", R"("can_baud_rate": {"value": 12, "text": "125K"})",
     "can_baud_rate: 名称与数值不符，12 是 500K"},
    {"text_no_text", "VKT531A", R"("can_baud_rate": {"value": 12, "text": 12})",
     "can_baud_rate: 名称与数值不符，12 是 500K"},
    {"text_alone", "VKT531A", R"("can_baud_rate": {"text": "500K"})", "can_baud_rate: 缺少 value"},
    {"value_twice", "VKT531A", R"("can_baud_rate": {"value": 12, "value": 12})", "can_baud_rate.value: 重复"},
    {"more_beside", "VKT531A", R"("can_baud_rate": {"value": 12, "unit": "bps"})", "can_baud_rate.unit: 未知的键"},
};

class one_bad_value : public testing::TestWithParam<bad_value> {};

TEST_P(one_bad_value, has_its_line) {
    EXPECT_THAT(refusals(of_model(GetParam().model, GetParam().values)), ElementsAre(GetParam().line));
}

INSTANTIATE_TEST_SUITE_P(all, one_bad_value, testing::ValuesIn(bad_values),
                         [](const auto& one) { return std::string(one.param.what); });

TEST(refusals, every_fault_is_said) {
    EXPECT_THAT(refusals(of_model("VKT531A", R"("a": 1, "change_star": 8, "can_check": 0, "change_len": 9)")),
                ElementsAre("a: 未知的键", "change_star: 超出范围，应为 0–7",
                            "can_check: 类型不对，应为 true 或 false", "change_len: 超出范围，应为 0–8"));
}

TEST(refusals, a_text_of_any_length_has_a_line_that_can_be_read) {
    const std::string at_most(100, 'k');
    EXPECT_THAT(refusals(of_model("VKT531A", '"' + at_most + "\": 1")), ElementsAre(at_most + ": 未知的键"));
    EXPECT_THAT(refusals(of_model("VKT531A", '"' + at_most + "k\": 1")), ElementsAre(at_most + "…: 未知的键"));
    EXPECT_THAT(refusals(of_model("VKT531A", '"' + at_most.substr(1) + "键\": 1")),
                ElementsAre(at_most.substr(1) + "…: 未知的键"));
    EXPECT_THAT(refusals(of_model(at_most + "k", "")), ElementsAre("model: 未知型号 " + at_most + "…"));
}

TEST(refusals, of_the_file_as_a_whole) {
    constexpr const char* no_json = "不是配置文件（JSON 文本不完整或有误）";
    EXPECT_THAT(refusals(""), ElementsAre("文件为空"));
    EXPECT_THAT(refusals("hello"), ElementsAre(no_json));
    EXPECT_THAT(refusals("{\"note\": \"\xFF\"}"), ElementsAre(no_json));
    EXPECT_THAT(refusals(std::string("{}\0", 3)), ElementsAre(no_json));
    EXPECT_THAT(refusals(std::string(500000, '[')), ElementsAre(no_json));
    EXPECT_THAT(refusals("[]"), ElementsAre("不是 JSON 对象"));
    EXPECT_THAT(refusals("{}"), ElementsAre("format: 缺少"));
    EXPECT_THAT(refusals(R"({"format": 2, "model": "VKT531A", "values": {}})"), ElementsAre("format: 应为 1"));
    EXPECT_THAT(refusals(R"({"format": "1", "model": "VKT531A", "values": {}})"), ElementsAre("format: 应为 1"));
    EXPECT_THAT(refusals(R"({"format": 1, "values": {}})"), ElementsAre("model: 缺少"));
    EXPECT_THAT(refusals(R"({"format": 1, "model": 531, "values": {}})"), ElementsAre("model: 类型不对，应为文本"));
    EXPECT_THAT(refusals(of_model("VKT999Z", "")), ElementsAre("model: 未知型号 VKT999Z"));
    EXPECT_THAT(refusals(R"({"format": 1, "model": "VKT531A"})"), ElementsAre("values: 缺少"));
    EXPECT_THAT(refusals(R"({"format": 1, "model": "VKT531A", "values": []})"),
                ElementsAre("values: 类型不对，应为对象"));
    EXPECT_THAT(refusals(R"({"format": 1, "model": "VKT531A", "more": 1, "values": {}})"),
                ElementsAre("more: 未知的键"));
    EXPECT_THAT(refusals(R"({"format": 1, "format": 1, "model": "VKT531A", "values": {}})"),
                ElementsAre("format: 重复"));
    EXPECT_THAT(refusals(R"({"format": 1, "model": "VKT531A", "note": 1, "values": {}})"),
                ElementsAre("note: 类型不对，应为文本"));
    EXPECT_THAT(refusals(R"({"format": 1, "model": "VKT531A", "values": {}, "note": ")" +
                         std::string(profile_note_max + 1, 'a') + "\"}"),
                ElementsAre("note: 过长（最多 1000 字节）"));
}

TEST(refusals, another_familys_model_but_not_another_model_of_the_family) {
    EXPECT_THAT(refusals(of_model("VKT510A", ""), &generic_family),
                ElementsAre("model: VKT510A 与 VKT531A 不是同一系列"));
    EXPECT_THAT(refusals(of_model("VKT530A", ""), &generic_family), ElementsAre());
    EXPECT_EQ(profile_parse(of_model("VKT530A", ""), all_families, &generic_family).loaded->model, "VKT530A");
}

TEST(refusals, a_file_that_is_cut_anywhere) {
    for (const char* model : {"VKT510A", "VKT531A", "VKT610B"}) {
        const std::string whole = profile_text(*profile_default(all_families, model));
        for (std::size_t size = 0; size + 1 < whole.size(); size++) // without its line end it is whole
            ASSERT_FALSE(profile_parse(whole.substr(0, size), all_families).loaded) << size;
    }
}

TEST(refusals, a_million_values_take_no_time) {
    std::string values = "\"a\": 1";
    while (values.size() < 900000) values += ",\"a\": 1";
    EXPECT_THAT(refusals(of_model("VKT531A", values)), ElementsAre(HasSubstr("不是配置文件")));
}

} // namespace
