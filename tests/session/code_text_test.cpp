// What the code view shows is what a write sends, in every form, whatever the store holds.
#include "dev_a/family.h"
#include "dev_b/family.h"
#include "dev_generic/family.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace {

constexpr const family_descriptor* families[] = {&vkt510a_family, &generic_family, &vkt610b_family};
constexpr int rounds = 100;

/// The bytes of a text: pairs of hex digits that no digit or letter touches, or long runs of them. A "0x" before a
/// pair does not count, nor do two digits that stand for a register's number.
session_bytes bytes_of(const std::string& text) {
    const auto digit = [&text](std::size_t i) {
        const char c = i < text.size() ? text[i] : ' ';
        return c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
    };
    constexpr std::string_view number_head = "寄存器 ";
    session_bytes out;
    for (std::size_t i = 0; i < text.size();) {
        if (text.compare(i, 2, "0x") == 0) {
            i += 2;
        } else if (text.compare(i, number_head.size(), number_head) == 0) {
            i += number_head.size() + 2;
        } else if (digit(i) >= 0 && digit(i + 1) >= 0) {
            out.push_back(static_cast<uint8_t>(16 * digit(i) + digit(i + 1)));
            i += 2;
        } else {
            EXPECT_LT(digit(i), 0) << "half a byte in " << text;
            i++;
        }
    }
    return out;
}

session_bytes joined(const std::vector<session_bytes>& frames) {
    session_bytes out;
    for (const session_bytes& frame : frames) out.insert(out.end(), frame.begin(), frame.end());
    return out;
}

/// Any value that a page or a reply can leave behind a key, and some that none can.
void shake(const field& row, tk_object* props, std::mt19937& random) {
    const uint32_t any = static_cast<uint32_t>(random());
    switch (row.form) {
    case value_form::number:
        tk_object_set_prop_uint8(props, row.key, static_cast<uint8_t>(any));
        break;
    case value_form::flag:
        tk_object_set_prop_bool(props, row.key, any % 2 != 0);
        break;
    case value_form::word:
        tk_object_set_prop_uint32(props, row.key, any);
        break;
    case value_form::yes_no:
        tk_object_set_prop_str(props, row.key, any % 2 != 0 ? "是" : "否");
        break;
    default: {
        constexpr std::string_view characters = "0123456789abcdefABCDEF gz-";
        std::string text;
        for (uint32_t i = 0; i < any % 16; i++) text += characters[random() % characters.size()];
        tk_object_set_prop_str(props, row.key, text.c_str());
    }
    }
    if (any % 29 == 0) tk_object_remove_prop(props, row.key);
}

class code_text : public testing::TestWithParam<const family_descriptor*> {};

TEST_P(code_text, shows_the_bytes_that_a_write_sends) {
    const family_descriptor& of = *GetParam();
    const auto dev = dev_open(families, of.device);
    ASSERT_NE(dev, nullptr);
    std::mt19937 random(20250929);
    std::array<session_bytes, 2> last;
    for (int round = 0; round < rounds; round++) {
        for (const field& row : of.fields)
            if (row.key != nullptr) shake(row, dev->props.get(), random);
        ASSERT_EQ(dev_encode(*dev), RET_OK);
        for (const bool alternative : {false, true}) {
            const session_bytes sent = joined(dev_session_input(*dev, session_kind::write, alternative).requests);
            for (const bool restored : {false, true})
                ASSERT_EQ(bytes_of(of.code_text(*dev, {.alternative = alternative, .restored = restored}, nullptr)),
                          sent)
                    << round;
            ASSERT_NE(sent, last[alternative]) << "the store reaches the bytes";
            last[alternative] = sent;
        }
    }
}

TEST_P(code_text, and_a_write_sends_what_a_reply_brought) {
    const family_descriptor& of = *GetParam();
    const auto dev = dev_open(families, of.device);
    std::mt19937 random(20251001);
    for (int round = 0; round < rounds; round++) {
        std::vector<uint8_t> image(of.image_size);
        for (uint8_t& byte : image) byte = static_cast<uint8_t>(random());
        dev_accept(*dev, image);
        for (const bool alternative : {false, true})
            ASSERT_EQ(bytes_of(of.code_text(*dev, {.alternative = alternative}, nullptr)),
                      joined(dev_session_input(*dev, session_kind::write, alternative).requests));
    }
}

INSTANTIATE_TEST_SUITE_P(families, code_text, testing::ValuesIn(families),
                         [](const auto& one) { return std::string(one.param->device); });

} // namespace
