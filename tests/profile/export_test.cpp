// What would be written, in its forms.
#include "profile/export.h"
#include "tests/support/session_fixture.h"

namespace {

constexpr const char* default_frame =
    "F7 F8 01 3C 01 08 01 00 08 00 00 00 00 08 FF FF FF FF 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 "
    "00 00 00 00 00 00 00 00 00 02 00 02 00 00 08 00 00 00 00 04 00 40 1A 0F 05 01 01 66";

std::string text_of(const char* model, export_form form, bool alternative = false) {
    return export_text(*dev_open(all_families, model), model, alternative, form);
}

std::size_t lines(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST(exports, frames_as_text) {
    EXPECT_EQ(text_of("VKT531A", export_form::frames), std::string(default_frame) + "\n");
    std::string without_blanks = default_frame;
    std::erase(without_blanks, ' ');
    EXPECT_EQ(text_of("VKT531A", export_form::hex), without_blanks + "\n");
    const std::string b = text_of("VKT610B", export_form::frames);
    EXPECT_EQ(lines(b), 34u);
    EXPECT_EQ(b.substr(0, 33), "AA 07 02 FF 00 01 00 00 00 1D 2C\n");
    EXPECT_EQ(text_of("VKT610B", export_form::frames, true).substr(0, 26), "AC 07 02 FF 00 01 00 00 00");
}

TEST(exports, a_c_array) {
    std::string items = default_frame;
    for (std::size_t at = 0; (at = items.find(' ', at)) != std::string::npos; at += 4) items.replace(at, 1, ", 0x");
    EXPECT_EQ(text_of("VKT531A", export_form::c_array),
              "/* VKT531A: what a write sends, 1 frame of 65 bytes */\n"
              "static const unsigned char vkt531a_frames[1][65] = {\n    {0x" +
                  items + "},\n};\n");
    EXPECT_THAT(text_of("VKT630B", export_form::c_array),
                testing::HasSubstr("vkt630b_frames[34][11] = {\n    {0xAA, 0x07, 0x02, 0xFF, 0x00, 0x01,"));
}

TEST(exports, binary) {
    const std::string bytes = text_of("VKT531A", export_form::binary);
    ASSERT_EQ(bytes.size(), 65u);
    EXPECT_EQ(bytes.substr(0, 5), std::string("\xF7\xF8\x01\x3C\x01", 5));
    EXPECT_EQ(text_of("VKT610B", export_form::binary).size(), 34u * 11);
}

TEST(exports, a_script_with_the_expected_answers) {
    EXPECT_EQ(text_of("VKT510A", export_form::script),
              "SEND " + text_of("VKT510A", export_form::frames).substr(0, 65 * 3 - 1) +
                  " EXPECT F7 F8 01 13 1D 00\n");
    const std::string b = text_of("VKT610B", export_form::script);
    EXPECT_EQ(lines(b), 34u);
    EXPECT_EQ(b.substr(0, b.find('\n')), "SEND AA 07 02 FF 00 01 00 00 00 1D 2C EXPECT AA 03 02 FF 80 A6 82");
}

// ---- against a module ----

class export_to_module : public session_test {};

/// The frames are what a session sends, and the answers are a module's.
TEST_F(export_to_module, is_what_a_session_sends) {
    for (const char* model_name : {"VKT510A", "VKT531A", "VKT610B"}) {
        SCOPED_TRACE(model_name);
        plug(model_name);
        connect();
        const std::size_t before = module->requests().size();
        std::vector<session_bytes> answers;
        ASSERT_TRUE(run(session_kind::write));
        ASSERT_TRUE(heard.logs.empty());
        auto sent = module->requests();
        sent.erase(sent.begin(), sent.begin() + static_cast<std::ptrdiff_t>(before));
        EXPECT_EQ(export_frames(*dev, false), sent);
        session().drop();
        dev.reset();
        module.reset();
    }
}

} // namespace
