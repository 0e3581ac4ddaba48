#include "app/command_line.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

struct split_case {
    const char* name;
    const char* line;
    std::vector<std::string> tokens; // after "ravel.exe"
};

class split : public testing::TestWithParam<split_case> {};

TEST_P(split, gives_the_tokens) {
    std::vector<std::string> expected = {"ravel.exe"};
    expected.insert(expected.end(), GetParam().tokens.begin(), GetParam().tokens.end());
    EXPECT_EQ(command_line_split(GetParam().line), expected);
}

INSTANTIATE_TEST_SUITE_P(
    command_line, split,
    testing::Values(split_case{"empty", "", {}}, split_case{"blanks_only", "   ", {}},
                    split_case{"one", "1024", {"1024"}},
                    split_case{"three", "1024 600 true", {"1024", "600", "true"}},
                    split_case{"many_blanks", "  1024   600 ", {"1024", "600"}},
                    split_case{"quoted_first", "\"800\" 480", {"800", "480"}},
                    split_case{"blanks_inside_quotes", "\"a b  c\" d", {"a b  c", "d"}},
                    split_case{"empty_quotes", "\"\" 480", {"", "480"}},
                    split_case{"unclosed_quote_ends_the_scan", "800 \"480 true", {"800"}},
                    split_case{"only_a_quote", "\"", {}},
                    split_case{"quote_inside_a_token_stays", "80\"0 480", {"80\"0", "480"}},
                    split_case{"token_right_after_a_quoted_one", "\"800\"480", {"800", "480"}},
                    split_case{"six_at_most", "1 2 3 4 5 6 7 8", {"1", "2", "3", "4", "5", "6"}},
                    split_case{"six_with_a_quoted_seventh", "1 2 3 4 5 6 \"7", {"1", "2", "3", "4", "5", "6"}},
                    split_case{"utf8", "宽 高", {"宽", "高"}}),
    [](const auto& test) { return test.param.name; });

TEST(command_line_options, no_arguments_give_the_defaults) {
    const auto options = command_line_options_of({"ravel.exe"});
    EXPECT_EQ(options.width, 1280);
    EXPECT_EQ(options.height, 750);
    EXPECT_FALSE(options.console);
}

TEST(command_line_options, width_height_and_console) {
    const auto options = command_line_options_of({"ravel.exe", "1024", "600", "true", "ignored"});
    EXPECT_EQ(options.width, 1024);
    EXPECT_EQ(options.height, 600);
    EXPECT_TRUE(options.console);
}

TEST(command_line_options, what_is_absent_keeps_its_default) {
    const struct {
        std::vector<std::string> arguments;
        int width, height;
        bool console;
    } rows[] = {
        {{}, 1280, 750, false},
        {{"ravel.exe"}, 1280, 750, false},
        {{"ravel.exe", "1024"}, 1024, 750, false},
        {{"ravel.exe", "1024", "600"}, 1024, 600, false},
        {{"ravel.exe", "1024", "600", "true"}, 1024, 600, true},
    };
    for (const auto& row : rows) {
        const auto options = command_line_options_of(row.arguments);
        EXPECT_EQ(options.width, row.width) << row.arguments.size();
        EXPECT_EQ(options.height, row.height) << row.arguments.size();
        EXPECT_EQ(options.console, row.console) << row.arguments.size();
    }
}

TEST(command_line_options, text_that_is_no_number_is_zero) {
    const auto options = command_line_options_of({"ravel.exe", "wide", "", "no"});
    EXPECT_EQ(options.width, 0);
    EXPECT_EQ(options.height, 0);
    EXPECT_FALSE(options.console);
}

} // namespace
