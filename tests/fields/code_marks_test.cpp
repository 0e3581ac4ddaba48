// The fields behind the code view's text: marks and words. Places in the text are counted by hand.
#include "dev_a/family.h"
#include "dev_b/family.h"
#include "dev_b/fields.h"
#include "dev_generic/family.h"
#include "dev_generic/fields.h"
#include "fields/code_marks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const family_descriptor* families[] = {&vkt510a_family, &generic_family, &vkt610b_family};
constexpr auto differs = text_mark_kind::differs;
constexpr auto at_hand = text_mark_kind::at_hand;

struct opened {
    std::unique_ptr<dev_obj> dev;
    std::vector<uint8_t> reference;
    code_shown shown;

    explicit opened(const family_descriptor& of) : dev(dev_open(families, of.device)), reference(dev->image) {
        show();
    }
    void show(bool alternative = false) {
        shown.spans.clear();
        shown.text = dev->of.code_text(*dev, {.alternative = alternative}, &shown.spans);
    }
    std::vector<text_mark> marks(std::initializer_list<const field*> hand = {}) const {
        return code_marks(*dev, reference, shown, std::span(hand.begin(), hand.size()));
    }
    std::string told(int32_t offset) const { return bits_told(*dev, bits_at_text(dev->of, shown, offset)); }
};

TEST(code_marks, of_bytes_that_were_edited) {
    opened on(generic_family);
    EXPECT_THAT(on.marks(), IsEmpty());
    on.dev->image[42] = 3;
    on.dev->image[44] = 9;
    on.show();
    EXPECT_THAT(on.marks(), ElementsAre(text_mark{138, 2, differs}, text_mark{144, 2, differs}));
    on.show(true);
    EXPECT_THAT(on.marks(), ElementsAre(text_mark{275, 2, differs}, text_mark{287, 2, differs}));
    on.reference.clear();
    EXPECT_THAT(on.marks(), IsEmpty()) << "what the module holds is not known";
}

TEST(code_marks, not_of_what_a_write_never_changes) {
    opened on(generic_family);
    on.dev->image[1] = 9; // always the same
    on.show();
    EXPECT_THAT(on.marks(), IsEmpty());
}

TEST(code_marks, of_register_lines) {
    opened on(vkt610b_family);
    on.dev->image[0] ^= 1;
    on.dev->image[4 * 5] = 3;
    on.dev->image[4 * 5 + 1] = 3;
    on.show();
    EXPECT_THAT(on.marks(), ElementsAre(text_mark{0, 52, differs}, text_mark{265, 52, differs})) << "a line once";
}

TEST(code_marks, of_the_fields_at_hand) {
    opened bytes(generic_family);
    EXPECT_THAT(bytes.marks({&generic_field::change_mode}), ElementsAre(text_mark{138, 2, at_hand}));
    EXPECT_THAT(bytes.marks({&generic_field::mask}), ElementsAre(text_mark{42, 11, at_hand})) << "four bytes";
    opened registers(vkt610b_family);
    using channel = vkt610b_field::canfd<1>;
    EXPECT_THAT(registers.marks({&channel::data_rate}), ElementsAre(text_mark{307, 2, at_hand}));
    EXPECT_THAT(registers.marks({&channel::standard_mask}), ElementsAre(text_mark{411, 8, at_hand}));
    EXPECT_THAT(registers.marks({&vkt610b_field::version}), IsEmpty()) << "no write sends it";
    registers.dev->image[0] ^= 1;
    EXPECT_THAT(registers.marks({&vkt610b_field::change_mode}),
                ElementsAre(text_mark{0, 52, differs}, text_mark{40, 2, at_hand}));
}

TEST(code_words, say_page_field_place_digits_and_meaning) {
    const opened on(generic_family);
    EXPECT_EQ(on.told(138), "转换参数 · 转换模式　字节 42　02 = 透明带标识转换");
    EXPECT_EQ(on.told(139), on.told(138));
    EXPECT_EQ(on.told(45), "CAN · 屏蔽码　字节 10–13　FF FF FF FF");
    EXPECT_EQ(on.told(144), "UART · 帧间隔　字节 44　02 = 2 bit");
    EXPECT_EQ(on.told(15), "UART · 数据位　字节 1　08 = 8 位");
    EXPECT_EQ(on.told(30), "字节 6　保留");
    EXPECT_EQ(on.told(0), "") << "the frame's head";
    EXPECT_EQ(on.told(140), "") << "a blank";
    EXPECT_EQ(on.told(-1), "");
    EXPECT_EQ(on.told(9999), "");
}

TEST(code_words, of_registers_name_every_bit) {
    const opened on(vkt610b_family);
    EXPECT_EQ(on.told(40), "转换参数 · 转换模式　寄存器 00 位 0–7　01 = 自定义带校验转换");
    EXPECT_EQ(on.told(42), "寄存器 00 位 8–15　保留");
    EXPECT_EQ(on.told(0), "转换参数 · 转换模式　寄存器 00 位 0–7　01 = 自定义带校验转换\n寄存器 00 位 8–31　保留");
    // Register 5, byte 2: 2 bits each of bus and filter mode, two switches, two bits without a name.
    EXPECT_EQ(on.told(265 + 44), "CAN FD1 · 总线模式　寄存器 05 位 16–17　2 = CAN+CAN FD 模式\n"
                                 "CAN FD1 · 滤波模式　寄存器 05 位 18–19　2 = 标准帧、扩展帧滤波\n"
                                 "CAN FD1 · 速率切换 BRS　寄存器 05 位 20　1\n"
                                 "CAN FD1 · 自定义位定时　寄存器 05 位 21　0\n"
                                 "寄存器 05 位 22–23　保留");
    EXPECT_EQ(on.told(53 * 0x1B), "自定义位定时 · 时钟分频　寄存器 1B　00040004");
}

TEST(code_words, a_digit_is_half_a_byte) {
    const opened on(vkt610b_family);
    EXPECT_EQ(bits_of_digit(on.shown, 40), (image_bits{4, 4}));
    EXPECT_EQ(bits_of_digit(on.shown, 41), (image_bits{0, 4}));
    EXPECT_EQ(bits_of_digit(on.shown, 47), (image_bits{24, 4}));
    EXPECT_EQ(bits_of_digit(on.shown, 48).count, 0U) << "the check";
    EXPECT_EQ(bits_of_digit(on.shown, -1).count, 0U);
}

class marks_of_all : public testing::TestWithParam<const family_descriptor*> {};

/// Every field leads to digits that lead back to it.
TEST_P(marks_of_all, fields_and_text_find_each_other) {
    const opened on(*GetParam());
    for (const field& row : on.dev->of.fields) {
        if (row.key == nullptr || row.place.bits == 0 || row.key == std::string_view("version")) continue;
        const std::vector<text_mark> marks = on.marks({&row});
        ASSERT_EQ(marks.size(), 1U) << row.key;
        const image_bits at = bits_at_text(on.dev->of, on.shown, marks[0].offset);
        EXPECT_THAT(fields_among(on.dev->of, at), testing::Contains(&row)) << row.key;
    }
}

/// Edits are marked where, and only where, the digits differ from the reference's.
TEST_P(marks_of_all, marks_are_where_digits_differ) {
    std::mt19937 random(20261123);
    opened on(*GetParam());
    const family_descriptor& of = on.dev->of;
    const std::string before = on.shown.text;
    for (int round = 0; round < 200; round++) {
        on.dev->image = on.reference;
        for (int edits = 0; edits < 3; edits++) {
            const std::vector<const field*> rows = fields_by_page(of);
            const field& row = *rows[random() % rows.size()];
            if (value_is_text(row)) continue;
            const uint32_t number = static_cast<uint32_t>(random()) %
                                    (field_highest(row) == UINT32_MAX ? UINT32_MAX : field_highest(row) + 1);
            ASSERT_EQ(value_store(row, {number}, on.dev->props.get()), RET_OK);
        }
        of.encode(*on.dev);
        on.show();
        std::vector<bool> marked(on.shown.text.size());
        for (const text_mark& mark : on.marks())
            for (int32_t i = 0; i < mark.length; i++) marked[static_cast<std::size_t>(mark.offset + i)] = true;
        for (const code_span& span : on.shown.spans)
            for (std::size_t i = 0; i < span.count; i++) {
                const std::size_t digit = span.text_at + 2 * i;
                const bool differ = on.shown.text.substr(digit, 2) != before.substr(digit, 2);
                EXPECT_TRUE(!differ || (marked[digit] && marked[digit + 1])) << digit;
                EXPECT_TRUE(of.of_registers || differ || !marked[digit]) << digit;
            }
    }
}

INSTANTIATE_TEST_SUITE_P(families, marks_of_all, testing::ValuesIn(families),
                         [](const auto& one) { return std::string(one.param->device); });

} // namespace
