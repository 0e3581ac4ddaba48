// What the reader of profiles makes of a JSON text, and where it stops.
#include "profile/json_tree.h"

#include <gtest/gtest.h>

namespace {

std::string nested(std::size_t levels) { return std::string(levels, '[') + std::string(levels, ']'); }

TEST(json_trees, have_four_levels_at_most) {
    EXPECT_TRUE(json_tree(nested(4)));
    EXPECT_FALSE(json_tree(nested(5)));
    EXPECT_TRUE(json_tree(R"({"a": {"b": {"c": {"d": 1}}}})"));
    EXPECT_FALSE(json_tree(R"({"a": {"b": {"c": {"d": {}}}}})"));
}

TEST(json_trees, have_a_thousand_values_at_most) {
    std::string list = "[1"; // the list is a value, too
    for (int i = 2; i < 1000; ++i) list += ",1";
    EXPECT_TRUE(json_tree(list + "]"));
    EXPECT_FALSE(json_tree(list + ",1]"));
}

TEST(json_trees, keep_keys_in_order_also_those_that_stand_twice) {
    const auto tree = json_tree(R"({"b": 1, "a": "x", "b": {"c": true}, "d": [1, 2], "e": false, "f": null})");
    ASSERT_TRUE(tree);
    EXPECT_EQ(tree->kind, json_kind::object);
    std::string keys;
    for (const json_node& one : tree->members) keys += one.key;
    EXPECT_EQ(keys, "babdef");
    EXPECT_EQ(tree->members[0].natural, 1u);
    EXPECT_EQ(tree->members[1].text, "x");
    ASSERT_EQ(tree->members[2].members.size(), 1u);
    EXPECT_EQ(tree->members[2].members[0].natural, 1u);
    EXPECT_EQ(tree->members[3].kind, json_kind::list);
    EXPECT_TRUE(tree->members[3].members.empty());
    EXPECT_EQ(tree->members[4].natural, 0u);
    EXPECT_EQ(tree->members[5].kind, json_kind::nothing);
}

TEST(json_trees, tell_kinds_of_numbers_apart) {
    EXPECT_EQ(json_tree("7")->kind, json_kind::natural);
    EXPECT_EQ(json_tree("-7")->kind, json_kind::number);
    EXPECT_EQ(json_tree("7.0")->kind, json_kind::number);
}

TEST(json_trees, are_made_of_whole_texts_only) {
    for (const std::string& text : {std::string(), std::string("{"), std::string("[]]"), std::string("1\0", 2)})
        EXPECT_FALSE(json_tree(text)) << text;
}

} // namespace
