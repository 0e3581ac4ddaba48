#include "toolkit/core/conf_json.h"

#include "tests/support/scratch_folder.h"
#include "toolkit/core/date_time.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/log.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <string>
#include <utility>

namespace {

class conf : public testing::Test {
  protected:
    void SetUp() override {
        folder_ = scratch_folder("vkt_conf");
        std::filesystem::create_directories(folder_);
        path = (folder_ / "setting.json").string();
        log_set_log_level(LOG_LEVEL_WARN);
        log_set_capture([](const std::string& line, void* to) { *static_cast<std::string*>(to) += line; }, &said);
    }
    void TearDown() override {
        log_set_capture(nullptr, nullptr);
        log_set_log_level(LOG_LEVEL_ERROR);
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    conf_json_ptr load(const std::string& text) {
        EXPECT_EQ(fs_write_whole(path.c_str(), text), RET_OK);
        return conf_json_load(path.c_str());
    }
    /// Expects a text to be refused with one line.
    void expect_refused(const std::string& text, const std::string& why) {
        said.clear();
        EXPECT_EQ(load(text), nullptr) << text.substr(0, 40);
        EXPECT_EQ(said, path + " " + why + "\n") << text.substr(0, 40);
    }
    std::string content() {
        std::string text;
        return fs_read_all(path.c_str(), &text) ? text : "(none)";
    }
    std::size_t files() {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder_), {}));
    }

    std::string path;
    std::string said;

  private:
    std::filesystem::path folder_;
};

TEST_F(conf, is_saved_in_the_order_in_which_keys_were_set) {
    const conf_json_ptr one = conf_json_create(path.c_str());
    EXPECT_EQ(content(), "(none)") << "nothing is written before";
    EXPECT_EQ(conf_json_set_str(one.get(), "fifo_size", "5000"), RET_OK);
    EXPECT_EQ(conf_json_set_str(one.get(), "combo_box_type_1", "标准帧"), RET_OK);
    EXPECT_EQ(conf_json_set_bool(one.get(), "b", true), RET_OK);
    EXPECT_EQ(conf_json_set_int(one.get(), "a", -1), RET_OK);
    EXPECT_EQ(conf_json_set_uint(one.get(), "u", 4294967295U), RET_OK);
    EXPECT_EQ(conf_json_set_double(one.get(), "d", 0.5), RET_OK);
    EXPECT_EQ(conf_json_set_int(one.get(), "fifo_size", 7), RET_OK) << "in its old place";
    ASSERT_EQ(conf_json_save_as(one.get(), nullptr), RET_OK);
    EXPECT_EQ(content(), "{\n"
                         "    \"fifo_size\": 7,\n"
                         "    \"combo_box_type_1\": \"标准帧\",\n"
                         "    \"b\": true,\n"
                         "    \"a\": -1,\n"
                         "    \"u\": 4294967295,\n"
                         "    \"d\": 0.5\n"
                         "}\n");
    EXPECT_EQ(files(), 1u) << "nothing is left beside it";
}

TEST_F(conf, reads_back_what_was_saved) {
    const conf_json_ptr one = conf_json_create(nullptr);
    conf_json_set_str(one.get(), "text", "a \"quoted\"\n\\ text");
    conf_json_set_double(one.get(), "third", 1.0 / 3);
    ASSERT_EQ(conf_json_save_as(one.get(), path.c_str()), RET_OK);
    const conf_json_ptr back = conf_json_load(path.c_str());
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(conf_json_get_str(back.get(), "text", ""), "a \"quoted\"\n\\ text");
    EXPECT_EQ(conf_json_get_double(back.get(), "third", 0), 1.0 / 3);
    EXPECT_EQ(said, "");
}

TEST_F(conf, what_nobody_knows_stays) {
    const conf_json_ptr one = load(R"({"z": [1, {"y": null}], "mine": "1", "a": {"deep": [[]]}, "n": null})");
    ASSERT_NE(one, nullptr);
    conf_json_set_str(one.get(), "mine", "2");
    ASSERT_EQ(conf_json_save_as(one.get(), path.c_str()), RET_OK);
    std::string bare;
    for (char c : content())
        if (c != ' ' && c != '\n') bare += c;
    EXPECT_EQ(bare, R"({"z":[1,{"y":null}],"mine":"2","a":{"deep":[[]]},"n":null})");
}

TEST_F(conf, missing_keys_give_the_fallback) {
    const conf_json_ptr one = conf_json_create(nullptr);
    for (const conf_json* from :
         {static_cast<const conf_json*>(one.get()), static_cast<const conf_json*>(nullptr)}) {
        for (const char* key : {"none", "", static_cast<const char*>(nullptr)}) {
            EXPECT_FALSE(conf_json_has(from, key));
            EXPECT_TRUE(conf_json_get_bool(from, key, true));
            EXPECT_EQ(conf_json_get_int(from, key, -3), -3);
            EXPECT_EQ(conf_json_get_uint(from, key, 3), 3u);
            EXPECT_EQ(conf_json_get_double(from, key, 1.5), 1.5);
            EXPECT_EQ(conf_json_get_str(from, key, "f"), "f");
            EXPECT_EQ(conf_json_get_str(from, key, nullptr), "");
        }
    }
}

TEST_F(conf, numbers_read_as_what_they_fit) {
    const conf_json_ptr one =
        load(R"({"one": 1, "zero": 0, "minus": -5, "large": 4294967295, "larger": 4294967296, "half": -2.9})");
    ASSERT_NE(one, nullptr);
    const conf_json* c = one.get();
    EXPECT_TRUE(conf_json_has(c, "zero"));
    EXPECT_TRUE(conf_json_get_bool(c, "one", false));
    EXPECT_FALSE(conf_json_get_bool(c, "zero", true));
    EXPECT_EQ(conf_json_get_int(c, "minus", 9), -5);
    EXPECT_EQ(conf_json_get_uint(c, "minus", 9), 9u);
    EXPECT_EQ(conf_json_get_uint(c, "large", 9), 4294967295U);
    EXPECT_EQ(conf_json_get_int(c, "large", 9), 9);
    EXPECT_EQ(conf_json_get_uint(c, "larger", 9), 9u);
    EXPECT_EQ(conf_json_get_double(c, "larger", 9), 4294967296.0);
    EXPECT_EQ(conf_json_get_int(c, "half", 9), -2);
    EXPECT_EQ(conf_json_get_str(c, "half", ""), "-2.9");
    EXPECT_EQ(conf_json_get_str(c, "large", ""), "4294967295");
}

TEST_F(conf, texts_and_bools_read_as_numbers_where_they_are_one) {
    const conf_json_ptr one = load(R"({"fifo": "5000", "off": "0", "on": "1", "yes": "true", "no": "false",
        "word": "5000x", "blank": "", "hex": "0x10", "inf": "inf", "far": "1e400", "t": true, "f": false,
        "half": "0.5", "list": [1], "object": {"a": 1}, "nothing": null})");
    ASSERT_NE(one, nullptr);
    const conf_json* c = one.get();
    EXPECT_EQ(conf_json_get_int(c, "fifo", 9), 5000);
    EXPECT_EQ(conf_json_get_uint(c, "fifo", 9), 5000u);
    EXPECT_EQ(conf_json_get_double(c, "half", 9), 0.5);
    for (const char* key : {"word", "blank", "hex", "inf", "far", "list", "object", "nothing"}) {
        EXPECT_EQ(conf_json_get_int(c, key, 9), 9) << key;
        EXPECT_EQ(conf_json_get_uint(c, key, 9), 9u) << key;
        EXPECT_EQ(conf_json_get_double(c, key, 9), 9) << key;
        EXPECT_TRUE(conf_json_get_bool(c, key, true)) << key;
        EXPECT_FALSE(conf_json_get_bool(c, key, false)) << key;
    }
    for (const char* key : {"on", "yes", "t"}) EXPECT_TRUE(conf_json_get_bool(c, key, false)) << key;
    for (const char* key : {"off", "no", "f"}) EXPECT_FALSE(conf_json_get_bool(c, key, true)) << key;
    EXPECT_EQ(conf_json_get_int(c, "t", 9), 1);
    EXPECT_EQ(conf_json_get_str(c, "t", ""), "true");
    EXPECT_EQ(conf_json_get_str(c, "f", ""), "false");
    for (const char* key : {"list", "object", "nothing"}) EXPECT_EQ(conf_json_get_str(c, key, "g"), "g") << key;
}

TEST_F(conf, what_cannot_be_set_is_refused) {
    const conf_json_ptr one = conf_json_create(nullptr);
    EXPECT_EQ(conf_json_set_bool(nullptr, "k", true), RET_BAD_PARAMS);
    EXPECT_EQ(conf_json_set_int(one.get(), nullptr, 1), RET_BAD_PARAMS);
    EXPECT_EQ(conf_json_set_uint(one.get(), "", 1), RET_BAD_PARAMS);
    EXPECT_EQ(conf_json_set_str(one.get(), "k", nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(conf_json_set_double(one.get(), "k", std::numeric_limits<double>::infinity()), RET_BAD_PARAMS);
    EXPECT_EQ(conf_json_set_double(one.get(), "k", std::numeric_limits<double>::quiet_NaN()), RET_BAD_PARAMS);
    EXPECT_FALSE(conf_json_has(one.get(), "k"));
    ASSERT_EQ(conf_json_save_as(one.get(), path.c_str()), RET_OK);
    EXPECT_EQ(content(), "{}\n");
}

TEST_F(conf, bytes_that_are_no_text_do_not_spoil_the_file) {
    const conf_json_ptr one = conf_json_create(path.c_str());
    conf_json_set_str(one.get(), "k",
                      "a\xFF"
                      "b");
    EXPECT_EQ(conf_json_get_str(one.get(), "k", ""), "a\xFF"
                                                     "b");
    ASSERT_EQ(conf_json_save_as(one.get(), nullptr), RET_OK);
    const conf_json_ptr back = conf_json_load(path.c_str());
    EXPECT_EQ(conf_json_get_str(back.get(), "k", ""), "a\uFFFDb");
}

TEST_F(conf, files_that_are_no_object_are_refused_with_one_line) {
    EXPECT_EQ(conf_json_load(path.c_str()), nullptr);
    EXPECT_EQ(said, path + " cannot be opened\n");
    expect_refused("", "is empty");
    for (const char* text : {" ", "{", "{\"a\": 1", "{\"a\": 1}}", "{'a': 1}", "{\"a\": 1,}", "// note\n{}",
                             "setting", "{\"a\": 1e400}", "{\"a\": \"\xFF\"}", "{\"a\": \"line\nbreak\"}"})
        expect_refused(text, "is no JSON text");
    expect_refused(std::string("{\"a\"\0: 1}", 9), "is no JSON text");
    for (const char* text : {"[]", "[{\"a\": 1}]", "\"a\"", "1", "null"}) expect_refused(text, "is no JSON object");
    said.clear();
    EXPECT_EQ(conf_json_load(nullptr), nullptr);
    EXPECT_EQ(said, " cannot be opened\n");
}

TEST_F(conf, a_folder_is_refused) {
    std::filesystem::create_directories(path);
    EXPECT_EQ(conf_json_load(path.c_str()), nullptr);
    EXPECT_EQ(said, path + " cannot be opened\n");
    const conf_json_ptr one = conf_json_create(path.c_str());
    EXPECT_EQ(conf_json_save_as(one.get(), nullptr), RET_FAIL);
    EXPECT_EQ(files(), 1u) << "nothing is left beside it";
}

#ifdef __linux__
TEST_F(conf, a_device_is_refused_unread) {
    EXPECT_EQ(conf_json_load("/dev/zero"), nullptr);
    EXPECT_EQ(said, "/dev/zero is no file\n");
}
#endif

TEST_F(conf, without_a_line_the_caller_says_why) {
    const char* why = nullptr;
    EXPECT_EQ(conf_json_load_quietly(path.c_str(), &why), nullptr);
    EXPECT_STREQ(why, "cannot be opened");
    EXPECT_EQ(said, "");
    ASSERT_EQ(conf_json_save_as(conf_json_create(path.c_str()).get(), nullptr), RET_OK);
    EXPECT_NE(conf_json_load_quietly(path.c_str(), &why), nullptr);
    EXPECT_EQ(why, nullptr);
}

TEST_F(conf, a_byte_order_mark_and_white_space_do_not_matter) {
    const conf_json_ptr one = load("\xEF\xBB\xBF\r\n\t {\"a\" :\n1 } \r\n");
    EXPECT_EQ(conf_json_get_int(one.get(), "a", 0), 1);
}

TEST_F(conf, a_key_that_stands_twice_has_its_last_value) {
    const conf_json_ptr one = load(R"({"a": 1, "b": 2, "a": 3})");
    EXPECT_EQ(conf_json_get_int(one.get(), "a", 0), 3);
}

/// `count` keys in one object.
std::string many_keys(uint32_t count) {
    std::string text = "{";
    for (uint32_t i = 0; i < count; i++) text += (i == 0 ? "\"k" : ",\"k") + std::to_string(i) + "\":0";
    return text + "}";
}

TEST_F(conf, keys_are_limited_but_not_what_stands_in_texts) {
    const conf_json_ptr most = load(many_keys(conf_json_max_keys));
    EXPECT_TRUE(conf_json_has(most.get(), "k4999"));
    expect_refused(many_keys(conf_json_max_keys + 1), "has too many keys or levels");
    const std::string colons(conf_json_max_keys + 1, ':');
    const conf_json_ptr text = load("{\"a\\\\\\\"" + colons + "\": \"" + colons + "\"}");
    EXPECT_TRUE(conf_json_has(text.get(), ("a\\\"" + colons).c_str()));
}

TEST_F(conf, levels_are_limited) {
    const auto nested = [](std::size_t levels) {
        return "{\"a\":" + std::string(levels - 1, '[') + std::string(levels - 1, ']') + "}";
    };
    const conf_json_ptr deepest = load(nested(conf_json_max_depth));
    ASSERT_NE(deepest, nullptr);
    EXPECT_EQ(conf_json_save_as(deepest.get(), nullptr), RET_OK);
    expect_refused(nested(conf_json_max_depth + 1), "has too many keys or levels");
    expect_refused("{\"a\":" + std::string(500000, '['), "has too many keys or levels");
    std::string side_by_side = "{\"a\":[";
    for (int i = 0; i < 100; i++) side_by_side += "[],";
    EXPECT_NE(load(side_by_side + "[]]}"), nullptr);
}

TEST_F(conf, a_file_of_ten_megabytes_is_refused_at_once) {
    const std::string large(conf_json_max_bytes - 8, ' ');
    EXPECT_NE(load("{\"a\":1}" + large), nullptr) << "this one just fits";
    const int64_t start = time_now_ms();
    expect_refused("{\"a\":1}" + std::string(10 * 1024 * 1024, ' '), "is too large");
    expect_refused("{\"a\":1}" + large + "  ", "is too large");
    EXPECT_LT(time_now_ms() - start, 10000);
}

TEST_F(conf, a_failed_save_leaves_the_old_file) {
    const conf_json_ptr one = load("{\"a\": 1}");
    EXPECT_EQ(conf_json_save_as(nullptr, path.c_str()), RET_BAD_PARAMS);
    EXPECT_EQ(conf_json_save_as(one.get(), (path + "/none/file").c_str()), RET_FAIL);
    EXPECT_EQ(conf_json_save_as(conf_json_create(nullptr).get(), nullptr), RET_FAIL);
    EXPECT_EQ(content(), "{\"a\": 1}");
}

TEST_F(conf, nothing_is_saved_that_could_not_be_read_again) {
    const conf_json_ptr one = load("{\"a\": 1}");
    conf_json_set_str(one.get(), "b", std::string(conf_json_max_bytes, 'x').c_str());
    EXPECT_EQ(conf_json_save_as(one.get(), nullptr), RET_FAIL);
    EXPECT_EQ(said, path + " would be too large\n");
    EXPECT_EQ(content(), "{\"a\": 1}");
    conf_json_set_str(one.get(), "b", "");
    for (uint32_t i = 2; i < conf_json_max_keys; i++) conf_json_set_int(one.get(), std::to_string(i).c_str(), 0);
    EXPECT_EQ(conf_json_save_as(one.get(), nullptr), RET_OK);
    EXPECT_NE(conf_json_load(path.c_str()), nullptr);
    conf_json_set_int(one.get(), "one more", 0);
    EXPECT_EQ(conf_json_save_as(one.get(), nullptr), RET_FAIL);
}

} // namespace
