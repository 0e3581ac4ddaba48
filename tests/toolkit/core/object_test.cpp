#include "toolkit/core/object.h"

#include <gmock/gmock.h>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

tk_object_ptr make() { return tk_object_ptr(object_default_create()); }

TEST(object, starts_empty) {
    const tk_object_ptr object = make();
    EXPECT_THAT(tk_object_keys(object.get()), IsEmpty());
    EXPECT_FALSE(tk_object_has_prop(object.get(), "change_mode"));
}

TEST(object, every_type_reads_back) {
    const tk_object_ptr object = make();
    int target = 0;
    EXPECT_EQ(tk_object_set_prop_bool(object.get(), "bool", true), RET_OK);
    EXPECT_EQ(tk_object_set_prop_uint8(object.get(), "uint8", 255), RET_OK);
    EXPECT_EQ(tk_object_set_prop_int(object.get(), "int", -2147483647 - 1), RET_OK);
    EXPECT_EQ(tk_object_set_prop_uint32(object.get(), "uint32", 4294967295U), RET_OK);
    EXPECT_EQ(tk_object_set_prop_str(object.get(), "str", "转换"), RET_OK);
    EXPECT_EQ(tk_object_set_prop_pointer(object.get(), "pointer", &target), RET_OK);

    EXPECT_TRUE(tk_object_get_prop_bool(object.get(), "bool", false));
    EXPECT_EQ(tk_object_get_prop_uint8(object.get(), "uint8", 0), 255);
    EXPECT_EQ(tk_object_get_prop_int(object.get(), "int", 0), -2147483647 - 1);
    EXPECT_EQ(tk_object_get_prop_uint32(object.get(), "uint32", 0), 4294967295U);
    EXPECT_EQ(tk_object_get_prop_str(object.get(), "str", ""), "转换");
    EXPECT_EQ(tk_object_get_prop_pointer(object.get(), "pointer", nullptr), &target);
}

TEST(object, a_missing_key_gives_the_fallback) {
    const tk_object_ptr object = make();
    int target = 0;
    EXPECT_TRUE(tk_object_get_prop_bool(object.get(), "none", true));
    EXPECT_EQ(tk_object_get_prop_uint8(object.get(), "none", 7), 7);
    EXPECT_EQ(tk_object_get_prop_int(object.get(), "none", -7), -7);
    EXPECT_EQ(tk_object_get_prop_uint32(object.get(), "none", 70000U), 70000U);
    EXPECT_EQ(tk_object_get_prop_str(object.get(), "none", "x"), "x");
    EXPECT_EQ(tk_object_get_prop_str(object.get(), "none", nullptr), "");
    EXPECT_EQ(tk_object_get_prop_pointer(object.get(), "none", &target), &target);
}

TEST(object, a_missing_object_or_key_is_refused_by_setters_and_gives_the_fallback_from_getters) {
    const tk_object_ptr object = make();
    EXPECT_EQ(tk_object_set_prop_int(nullptr, "key", 1), RET_BAD_PARAMS);
    EXPECT_EQ(tk_object_set_prop_int(object.get(), nullptr, 1), RET_BAD_PARAMS);
    EXPECT_EQ(tk_object_set_prop_int(object.get(), "", 1), RET_BAD_PARAMS);
    EXPECT_EQ(tk_object_set_prop_str(object.get(), "key", nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(tk_object_get_prop_int(nullptr, "key", 5), 5);
    EXPECT_EQ(tk_object_get_prop_int(object.get(), nullptr, 5), 5);
    EXPECT_EQ(tk_object_get_prop_str(nullptr, "key", "f"), "f");
    EXPECT_FALSE(tk_object_has_prop(nullptr, "key"));
    EXPECT_FALSE(tk_object_has_prop(object.get(), nullptr));
    EXPECT_EQ(tk_object_remove_prop(nullptr, "key"), RET_BAD_PARAMS);
    EXPECT_EQ(tk_object_remove_prop(object.get(), nullptr), RET_BAD_PARAMS);
    EXPECT_THAT(tk_object_keys(nullptr), IsEmpty());
}

TEST(object, numbers_convert_by_their_low_bits) {
    const tk_object_ptr object = make();
    tk_object_set_prop_int(object.get(), "minus_one", -1);
    tk_object_set_prop_uint32(object.get(), "wide", 0x12345678U);
    tk_object_set_prop_uint32(object.get(), "round", 0x100U);
    tk_object_set_prop_bool(object.get(), "yes", true);
    EXPECT_EQ(tk_object_get_prop_uint8(object.get(), "minus_one", 0), 255);
    EXPECT_EQ(tk_object_get_prop_uint32(object.get(), "minus_one", 0), 4294967295U);
    EXPECT_EQ(tk_object_get_prop_uint8(object.get(), "wide", 0), 0x78);
    EXPECT_EQ(tk_object_get_prop_uint8(object.get(), "round", 9), 0);
    EXPECT_TRUE(tk_object_get_prop_bool(object.get(), "round", false)) << "bool is value != 0, not the low bit";
    EXPECT_EQ(tk_object_get_prop_int(object.get(), "yes", 0), 1);
}

TEST(object, numbers_read_as_decimal_text_and_texts_as_numbers) {
    const tk_object_ptr object = make();
    tk_object_set_prop_uint8(object.get(), "byte", 200);
    tk_object_set_prop_int(object.get(), "minus", -12);
    tk_object_set_prop_str(object.get(), "number", " 300 bytes");
    tk_object_set_prop_str(object.get(), "word", "many");
    EXPECT_EQ(tk_object_get_prop_str(object.get(), "byte", ""), "200");
    EXPECT_EQ(tk_object_get_prop_str(object.get(), "minus", ""), "-12");
    EXPECT_EQ(tk_object_get_prop_int(object.get(), "number", 0), 300);
    EXPECT_EQ(tk_object_get_prop_uint8(object.get(), "number", 0), 300 - 256);
    EXPECT_EQ(tk_object_get_prop_int(object.get(), "word", 5), 0);
}

TEST(object, a_pointer_reads_only_as_a_pointer) {
    const tk_object_ptr object = make();
    int target = 0;
    tk_object_set_prop_pointer(object.get(), "win", &target);
    tk_object_set_prop_int(object.get(), "number", 77);
    EXPECT_EQ(tk_object_get_prop_int(object.get(), "win", 3), 3);
    EXPECT_TRUE(tk_object_get_prop_bool(object.get(), "win", true));
    EXPECT_EQ(tk_object_get_prop_str(object.get(), "win", "f"), "f");
    EXPECT_EQ(tk_object_get_prop_pointer(object.get(), "number", nullptr), nullptr);
}

TEST(object, setting_again_replaces_value_and_type_and_keeps_the_order) {
    const tk_object_ptr object = make();
    tk_object_set_prop_int(object.get(), "b", 1);
    tk_object_set_prop_int(object.get(), "a", 2);
    tk_object_set_prop_str(object.get(), "b", "text");
    EXPECT_EQ(tk_object_get_prop_str(object.get(), "b", ""), "text");
    EXPECT_THAT(tk_object_keys(object.get()), ElementsAre("b", "a"));
}

TEST(object, a_removed_key_is_gone_and_comes_back_last) {
    const tk_object_ptr object = make();
    tk_object_set_prop_int(object.get(), "b", 1);
    tk_object_set_prop_int(object.get(), "a", 2);
    EXPECT_EQ(tk_object_remove_prop(object.get(), "b"), RET_OK);
    EXPECT_EQ(tk_object_remove_prop(object.get(), "b"), RET_FAIL);
    EXPECT_FALSE(tk_object_has_prop(object.get(), "b"));
    tk_object_set_prop_int(object.get(), "b", 3);
    EXPECT_THAT(tk_object_keys(object.get()), ElementsAre("a", "b"));
}

TEST(object, a_refused_key_keeps_its_value_until_all_are_allowed_again) {
    const tk_object_ptr object = make();
    tk_object_set_prop_int(object.get(), "key", 1);
    tk_object_refuse(object.get(), "key");
    EXPECT_EQ(tk_object_set_prop_int(object.get(), "key", 2), RET_FAIL);
    EXPECT_EQ(tk_object_set_prop_str(object.get(), "key", "x"), RET_FAIL);
    EXPECT_EQ(tk_object_set_prop_int(object.get(), "other", 2), RET_OK);
    EXPECT_EQ(tk_object_get_prop_int(object.get(), "key", 0), 1);
    tk_object_refuse(object.get(), nullptr);
    EXPECT_EQ(tk_object_set_prop_int(object.get(), "key", 2), RET_OK);
}

TEST(object, lives_until_its_last_reference_goes) {
    tk_object* const object = object_default_create();
    EXPECT_EQ(tk_object_ref(object), object);
    EXPECT_EQ(tk_object_unref(object), RET_OK);
    EXPECT_EQ(tk_object_set_prop_int(object, "alive", 1), RET_OK);
    EXPECT_EQ(tk_object_unref(object), RET_OK);
    EXPECT_EQ(tk_object_ref(nullptr), nullptr);
    EXPECT_EQ(tk_object_unref(nullptr), RET_BAD_PARAMS);
}

TEST(object, takes_sets_and_gets_from_many_threads) {
    const tk_object_ptr object = make();
    constexpr int rounds = 500;
    const auto work = [&object](int number) {
        const std::string own = "own" + std::to_string(number);
        for (int i = 0; i < rounds; i++) {
            tk_object* const held = tk_object_ref(object.get());
            tk_object_set_prop_int(held, own.c_str(), i);
            tk_object_set_prop_str(held, "shared", own.c_str());
            EXPECT_EQ(tk_object_get_prop_int(held, own.c_str(), -1), i);
            EXPECT_EQ(tk_object_get_prop_str(held, "shared", "").substr(0, 3), "own");
            tk_object_unref(held);
        }
    };
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; number++) threads.emplace_back(work, number);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(tk_object_keys(object.get()).size(), 5U);
    EXPECT_EQ(tk_object_get_prop_int(object.get(), "own3", 0), rounds - 1);
}

} // namespace
