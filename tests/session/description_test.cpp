// Every value of every family is described: a person can read it, and its default is among what can be set.
#include "tests/support/session_fixture.h"

#include <set>

namespace {

class described : public testing::TestWithParam<const family_descriptor*> {
  protected:
    /// Calls `visit` for every row with a key.
    static void for_keys(const std::function<void(const field& row)>& visit) {
        std::size_t seen = 0;
        for (const field& row : GetParam()->fields) {
            if (row.key == nullptr) continue;
            SCOPED_TRACE(row.key);
            visit(row);
            seen++;
        }
        EXPECT_GT(seen, 20U);
    }
    static bool is_number(const field& row) {
        return row.form == value_form::number || row.form == value_form::flag || row.form == value_form::word;
    }
};

TEST_P(described, every_value_has_a_label) {
    for_keys([](const field& row) { EXPECT_STRNE(row.label, ""); });
}

TEST_P(described, every_default_is_a_choice) {
    std::size_t seen = 0;
    for_keys([&](const field& row) {
        if (row.choices.empty()) return;
        seen++;
        EXPECT_TRUE(std::any_of(row.choices.begin(), row.choices.end(), [&](const choice_option& choice) {
            return is_number(row) ? choice.value == static_cast<int32_t>(row.number)
                                  : std::string(choice.text) == row.text;
        }));
    });
    EXPECT_GT(seen, 4U);
}

TEST_P(described, every_choice_and_every_default_is_within_the_bounds) {
    for_keys([](const field& row) {
        if (!is_number(row)) return;
        EXPECT_LE(row.lowest, row.number);
        EXPECT_LE(row.number, field_highest(row));
        for (const choice_option& choice : row.choices) {
            EXPECT_LE(row.lowest, static_cast<uint32_t>(choice.value));
            EXPECT_LE(static_cast<uint32_t>(choice.value), field_highest(row));
        }
    });
}

TEST_P(described, choices_differ_in_value_and_text) {
    for_keys([](const field& row) {
        for (const choice_option& one : row.choices)
            for (const choice_option& other : row.choices)
                if (&one != &other) {
                    EXPECT_NE(one.value, other.value);
                    EXPECT_STRNE(one.text, other.text);
                }
    });
}

TEST_P(described, every_value_belongs_to_a_page_and_no_two_to_one_row) {
    std::set<std::pair<int, int>> taken;
    for_keys([&](const field& row) {
        EXPECT_LT(row.shown.page, GetParam()->pages.size());
        const bool first = row.shown.row == 0 || taken.emplace(row.shown.page, row.shown.row).second;
        EXPECT_TRUE(first);
    });
}

INSTANTIATE_TEST_SUITE_P(all, described, testing::ValuesIn(all_families),
                         [](const auto& one) { return std::string(one.param->device); });

} // namespace
