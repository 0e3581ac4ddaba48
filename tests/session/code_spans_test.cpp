// Where the code view's text has the image's bytes, in every form.
#include "dev_a/family.h"
#include "dev_b/family.h"
#include "dev_generic/family.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace {

constexpr const family_descriptor* families[] = {&vkt510a_family, &generic_family, &vkt610b_family};
constexpr code_form forms[] = {{false, false}, {false, true}, {true, false}, {true, true}};

struct written {
    std::string text;
    code_spans spans;
};

written write(const dev_obj& dev, code_form form) {
    written out;
    out.text = dev.of.code_text(dev, form, &out.spans);
    return out;
}

std::size_t place_of(const code_spans& spans, std::size_t byte) {
    for (const code_span& span : spans)
        if (byte >= span.image_at && byte < span.image_at + span.count)
            return span.text_at + 2 * (byte - span.image_at);
    return 0;
}

class spans_of_all : public testing::TestWithParam<const family_descriptor*> {};

TEST_P(spans_of_all, the_digits_at_a_bytes_place_are_that_byte) {
    const family_descriptor& of = *GetParam();
    const auto dev = dev_open(families, of.device);
    std::mt19937 random(20261122);
    for (int round = 0; round < 50; round++) {
        for (uint8_t& byte : dev->image) byte = static_cast<uint8_t>(random());
        for (const code_form form : forms) {
            const written now = write(*dev, form);
            EXPECT_EQ(now.text, of.code_text(*dev, form, nullptr));
            std::vector<int> seen(of.image_size);
            for (const code_span& span : now.spans)
                for (std::size_t i = 0; i < span.count; i++) {
                    char digits[3];
                    std::snprintf(digits, sizeof(digits), "%02X", dev->image[span.image_at + i]);
                    ASSERT_EQ(now.text.substr(span.text_at + 2 * i, 2), digits) << span.image_at + i;
                    seen[span.image_at + i]++;
                }
            // The version, which no write sends, is the last register.
            const std::size_t sent = of.of_registers ? of.image_size - 4 : of.image_size;
            for (std::size_t i = 0; i < of.image_size; i++) ASSERT_EQ(seen[i], i < sent ? 1 : 0) << i;
        }
    }
}

TEST_P(spans_of_all, stand_in_the_order_of_the_text) {
    const auto dev = dev_open(families, GetParam()->device);
    for (const code_form form : forms) {
        const written now = write(*dev, form);
        for (std::size_t i = 1; i < now.spans.size(); i++)
            ASSERT_GE(now.spans[i].text_at, now.spans[i - 1].text_at + 2 * now.spans[i - 1].count);
    }
}

INSTANTIATE_TEST_SUITE_P(families, spans_of_all, testing::ValuesIn(families),
                         [](const auto& one) { return std::string(one.param->device); });

// Text (generic, shown): "F7 F8 01 3C 01 08 ..", three characters a byte, 12 of them in front of the image.
TEST(code_spans, of_a_line_of_bytes) {
    for (const family_descriptor* of : {&generic_family, &vkt510a_family}) {
        const auto dev = dev_open(families, of->device);
        const written now = write(*dev, {});
        EXPECT_EQ(now.text.substr(0, 18), "F7 F8 01 3C 01 08 ");
        EXPECT_EQ(place_of(now.spans, 0), 12U);
        EXPECT_EQ(place_of(now.spans, 1), 15U);
        EXPECT_EQ(place_of(now.spans, 42), 138U); // the conversion mode
        EXPECT_EQ(place_of(now.spans, 59), 189U);
        EXPECT_EQ(now.text.size(), 194U) << "59 is followed by a blank and the check byte";
        EXPECT_EQ(now.spans.size(), 60U);
    }
}

// "{0xF7, 0xF8, 0x01, 0x3C, 0x01, ..": six characters a byte and one before them; no comma after every tenth.
TEST(code_spans, of_a_list) {
    const auto dev = dev_open(families, generic_family.device);
    const written now = write(*dev, {.alternative = true});
    EXPECT_EQ(now.text.substr(25, 6), "0x01, ");
    EXPECT_EQ(place_of(now.spans, 0), 27U);
    EXPECT_EQ(place_of(now.spans, 9), 81U);
    EXPECT_EQ(place_of(now.spans, 10), 86U) << "behind an item without a comma";
    EXPECT_EQ(place_of(now.spans, 42), 275U);
}

// "  F7 F8 01 3C   01 08 ..": two blanks in front, two more behind the head and behind every tenth.
TEST(code_spans, of_restored_defaults) {
    const auto dev = dev_open(families, generic_family.device);
    const written now = write(*dev, {.restored = true});
    EXPECT_EQ(now.text.substr(0, 19), "  F7 F8 01 3C   01 ");
    EXPECT_EQ(place_of(now.spans, 0), 16U);
    EXPECT_EQ(place_of(now.spans, 10), 48U);
}

// "寄存器 00 的配置指令: AA0702FF00010000001D2C\n": 30 bytes before the command's 22 digits, 10 of them before the
// value's, 53 bytes a line.
TEST(code_spans, of_register_lines) {
    const auto dev = dev_open(families, vkt610b_family.device);
    const written now = write(*dev, {});
    EXPECT_EQ(now.text.substr(0, 53), "寄存器 00 的配置指令: AA0702FF00010000001D2C\n");
    ASSERT_EQ(now.spans.size(), 34U);
    EXPECT_EQ(now.spans[0], (code_span{.text_at = 40, .image_at = 0, .count = 4}));
    EXPECT_EQ(now.spans[1], (code_span{.text_at = 93, .image_at = 4, .count = 4}));
    EXPECT_EQ(now.spans[33], (code_span{.text_at = 1789, .image_at = 132, .count = 4}));
    EXPECT_EQ(write(*dev, {.alternative = true}).spans, now.spans);
}

} // namespace
