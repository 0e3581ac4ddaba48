#include "toolkit/core/text.h"

#include <gtest/gtest.h>

namespace {

TEST(text, atoi_reads_the_integer_at_the_start) {
    EXPECT_EQ(tk_atoi("1280"), 1280);
    EXPECT_EQ(tk_atoi(" \t-12px"), -12);
    EXPECT_EQ(tk_atoi("+7"), 7);
    EXPECT_EQ(tk_atoi("007"), 7);
    EXPECT_EQ(tk_atoi("0x10"), 0);
    EXPECT_EQ(tk_atoi(""), 0);
    EXPECT_EQ(tk_atoi("-"), 0);
    EXPECT_EQ(tk_atoi("- 5"), 0);
    EXPECT_EQ(tk_atoi("+-5"), 0);
    EXPECT_EQ(tk_atoi("abc"), 0);
    EXPECT_EQ(tk_atoi(nullptr), 0);
}

TEST(text, atoi_holds_to_the_range) {
    EXPECT_EQ(tk_atoi("2147483647"), 2147483647);
    EXPECT_EQ(tk_atoi("2147483648"), 2147483647);
    EXPECT_EQ(tk_atoi("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(tk_atoi("-99999999999999999999999999"), -2147483647 - 1);
}

TEST(text, atob_looks_at_the_first_character) {
    for (const char* const yes : {"true", "True", "TRUE", "t", "yes", "Yes", "1", "10"})
        EXPECT_TRUE(tk_atob(yes)) << yes;
    for (const char* const no : {"false", "no", "0", "", " true", "on", "2"}) EXPECT_FALSE(tk_atob(no)) << no;
    EXPECT_FALSE(tk_atob(nullptr));
}

TEST(text, strtoll_goes_as_far_as_there_are_digits) {
    const char* end = nullptr;
    const char* const hex = "1fg";
    EXPECT_EQ(tk_strtoll(hex, &end, 16), 0x1F);
    EXPECT_EQ(end, hex + 2);
    const char* const none = "zz";
    EXPECT_EQ(tk_strtoll(none, &end, 16), 0);
    EXPECT_EQ(end, none);
    const char* const blanks = "   ";
    EXPECT_EQ(tk_strtoll(blanks, &end, 16), 0);
    EXPECT_EQ(end, blanks);
    EXPECT_EQ(tk_strtoll(" 7", nullptr, 16), 7);
    EXPECT_EQ(tk_strtoll("-fF", nullptr, 16), -255);
    EXPECT_EQ(tk_strtoll("Zz", nullptr, 36), 35 * 36 + 35);
    EXPECT_EQ(tk_strtoll("1012", &end, 2), 5);
    EXPECT_STREQ(end, "2");
}

TEST(text, strtoll_takes_0x_only_before_a_hex_digit) {
    const char* end = nullptr;
    EXPECT_EQ(tk_strtoll("0x1A", nullptr, 16), 0x1A);
    EXPECT_EQ(tk_strtoll("-0X1a", nullptr, 16), -0x1A);
    EXPECT_EQ(tk_strtoll("0x", &end, 16), 0);
    EXPECT_STREQ(end, "x");
    EXPECT_EQ(tk_strtoll("0xg", &end, 16), 0);
    EXPECT_STREQ(end, "xg");
    EXPECT_EQ(tk_strtoll("0x1", &end, 10), 0);
    EXPECT_STREQ(end, "x1");
}

TEST(text, strtoll_never_fails) {
    const char* end = "untouched";
    EXPECT_EQ(tk_strtoll(nullptr, &end, 16), 0);
    EXPECT_EQ(end, nullptr);
    for (const int base : {-1, 0, 1, 37}) EXPECT_EQ(tk_strtoll("1", nullptr, base), 0) << base;
    EXPECT_EQ(tk_strtoll("9223372036854775807", nullptr, 10), INT64_MAX);
    EXPECT_EQ(tk_strtoll("9223372036854775808", nullptr, 10), INT64_MAX);
    EXPECT_EQ(tk_strtoll("-9223372036854775808", nullptr, 10), INT64_MIN);
    EXPECT_EQ(tk_strtoll("-9223372036854775809", nullptr, 10), INT64_MIN);
    EXPECT_EQ(tk_strtoll("ffffffffffffffffffff", &end, 16), INT64_MAX);
    EXPECT_STREQ(end, "");
}

TEST(text, utf8_and_wide_characters_convert_both_ways) {
    const std::wstring wide = L"A\u00E9\u4E2D\U0001F600z";
    const std::string utf8 = "A\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80z";
    EXPECT_EQ(str_from_wstr(wide), utf8);
    EXPECT_EQ(wstr_from_str(utf8), wide);
    EXPECT_EQ(str_from_wstr(L""), "");
    EXPECT_EQ(wstr_from_str(""), L"");
    EXPECT_EQ(wstr_from_str(std::string("a\0b", 3)), std::wstring(L"a\0b", 3));
}

TEST(text, the_bounds_of_utf8_are_exact) {
    const std::pair<const char*, const wchar_t*> characters[] = {
        {"\x7F", L"\x007F"},
        {"\xC2\x80", L"\x0080"},
        {"\xDF\xBF", L"\x07FF"},
        {"\xE0\xA0\x80", L"\x0800"},
        {"\xE1\x80\x80", L"\x1000"},
        {"\xED\x9F\xBF", L"\xD7FF"},
        {"\xEE\x80\x80", L"\xE000"},
        {"\xEF\xBF\xBF", L"\xFFFF"},
        {"\xF0\x90\x80\x80", L"\U00010000"},
        {"\xF1\x80\x80\x80", L"\U00040000"},
        {"\xF4\x8F\xBF\xBF", L"\U0010FFFF"},
    };
    for (const auto& [utf8, wide] : characters) {
        EXPECT_EQ(wstr_from_str(utf8), wide);
        EXPECT_EQ(str_from_wstr(wide), utf8);
    }
    for (const char* none : {"\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80"})
        EXPECT_EQ(wstr_from_str(none), std::wstring(std::string(none).size(), L'\xFFFD'));
}

TEST(text, what_is_no_utf8_becomes_the_replacement_character) {
    EXPECT_EQ(wstr_from_str("a\xFFz"), L"a\uFFFDz");
    EXPECT_EQ(wstr_from_str("\x80"), L"\uFFFD");
    EXPECT_EQ(wstr_from_str("\xE4\xB8"), L"\uFFFD") << "cut short";
    EXPECT_EQ(wstr_from_str("\xE4\xB8z"), L"\uFFFDz");
    EXPECT_EQ(wstr_from_str("\xC0\xAF"), L"\uFFFD\uFFFD") << "over-long";
    EXPECT_EQ(wstr_from_str("\xE0\x80\x80").front(), L'\uFFFD') << "over-long";
    EXPECT_EQ(wstr_from_str("\xED\xA0\x80").front(), L'\uFFFD') << "a surrogate";
    EXPECT_EQ(wstr_from_str("\xF4\x90\x80\x80").front(), L'\uFFFD') << "beyond the last character";
    EXPECT_EQ(wstr_from_str("\xF5\x80\x80\x80").front(), L'\uFFFD');
}

TEST(text, lone_surrogates_become_the_replacement_character) {
    EXPECT_EQ(str_from_wstr(std::wstring{static_cast<wchar_t>(0xD800), L'x'}), "\xEF\xBF\xBDx");
    EXPECT_EQ(str_from_wstr(std::wstring{static_cast<wchar_t>(0xDC00)}), "\xEF\xBF\xBD");
}

TEST(text, format_makes_a_text_of_any_length) {
    EXPECT_EQ(tk_format("%s:%d condition(%s) failed!\n", "f", 12, "win != NULL"),
              "f:12 condition(win != NULL) failed!\n");
    EXPECT_EQ(tk_format("%s", ""), "");
    const std::string expected(5000, 'x');
    EXPECT_EQ(tk_format("%s", expected.c_str()), expected);
    EXPECT_EQ(tk_format("%5.1f%%", 99.95), "100.0%");
}

TEST(text, cut_stays_between_characters) {
    const std::string text = "a\xE4\xB8\xAD"
                             "b";
    EXPECT_EQ(tk_utf8_cut(text, 0), "");
    EXPECT_EQ(tk_utf8_cut(text, 1), "a");
    EXPECT_EQ(tk_utf8_cut(text, 2), "a");
    EXPECT_EQ(tk_utf8_cut(text, 3), "a");
    EXPECT_EQ(tk_utf8_cut(text, 4), "a\xE4\xB8\xAD");
    EXPECT_EQ(tk_utf8_cut(text, 5), text);
    EXPECT_EQ(tk_utf8_cut(text, 500), text);
    for (std::size_t bytes : {1, 2, 3, 4}) EXPECT_EQ(tk_utf8_cut("a\xF0\x9F\x98\x80", bytes), "a") << bytes;
    EXPECT_EQ(tk_utf8_cut("\x80\x80\x80\x80\x80\x80", 5), "\x80\x80\x80\x80\x80")
        << "no UTF-8: cut where it stands";
}

TEST(text, characters_are_counted_and_not_their_bytes) {
    EXPECT_EQ(tk_utf8_heads(""), "");
    EXPECT_EQ(tk_utf8_heads("a中\xC3\xA9z\xF0\x9F\x98\x80"), "a\xE4\xC3z\xF0");
    EXPECT_EQ(tk_utf8_heads("\x80\x80"), "\x80") << "no UTF-8";
}

TEST(text, the_first_characters_are_whole_ones) {
    const std::string text = "a中\xF0\x9F\x98\x80z";
    EXPECT_EQ(tk_utf8_first(text, 0), "");
    EXPECT_EQ(tk_utf8_first(text, 1), "a");
    EXPECT_EQ(tk_utf8_first(text, 2), "a中");
    EXPECT_EQ(tk_utf8_first(text, 3), "a中\xF0\x9F\x98\x80");
    EXPECT_EQ(tk_utf8_first(text, 4), text);
    EXPECT_EQ(tk_utf8_first(text, 5), text);
    EXPECT_EQ(tk_utf8_first("\x80\x80z", 1), "\x80\x80") << "no UTF-8";
}

} // namespace
