// The settings file.
#include "monitor/settings.h"

#include "tests/support/scratch_folder.h"
#include "toolkit/core/fs.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <thread>

using testing::HasSubstr;

namespace {

const char* const usual_text = R"({
    "fifo_size": "5000",
    "combo_box_ex_channel": "uart1-can1",
    "combo_box_type_1": "标准帧",
    "combo_box_type_2": "CAN",
    "combo_box_ex_data_len": "8",
    "edit_can_id": "1",
    "edit_data": "00 11 22 33 44 55 66 77",
    "check_button_read_puase": "0"
}
)";

class settings : public testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::create_directories(folder);
        path = (folder / "setting.json").string();
    }
    void TearDown() override {
        std::error_code ignored;
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(folder, ignored);
    }
    void put(const std::string& text) const { ASSERT_EQ(fs_write_whole(path.c_str(), text), RET_OK); }
    std::string content() const {
        std::string text;
        fs_read_all(path.c_str(), &text);
        return text;
    }
    /// What is read, "-1" for nothing.
    std::string read(const char* key) const {
        std::string text = "before";
        if (setting_read(path.c_str(), key, &text) == 0) return text;
        EXPECT_EQ(text, "before");
        return "-1";
    }
    int write(const char* key, const char* text) const { return setting_write(path.c_str(), key, text); }

    const std::filesystem::path folder = scratch_folder("vkt_settings");
    std::string path;
};

TEST_F(settings, a_missing_file_is_made) {
    EXPECT_EQ(read("fifo_size"), "5000");
    EXPECT_EQ(content(), usual_text);
    EXPECT_EQ(read("combo_box_ex_channel"), "uart1-can1");
    EXPECT_EQ(read("combo_box_type_1"), "标准帧");
    EXPECT_EQ(read("combo_box_type_2"), "CAN");
    EXPECT_EQ(read("combo_box_ex_data_len"), "8");
    EXPECT_EQ(read("edit_can_id"), "1");
    EXPECT_EQ(read("edit_data"), "00 11 22 33 44 55 66 77");
    EXPECT_EQ(read("check_button_read_puase"), "0");
    for (const char* key : {"combo_box_ex_crc_mode", "edit_id_add", "edit_data_add", "edit_timer",
                            "check_button_id_add", "check_button_data_add"})
        EXPECT_EQ(read(key), "-1") << key;
}

TEST_F(settings, it_lies_in_the_working_directory) { EXPECT_STREQ(setting_path, "./setting.json"); }

TEST_F(settings, missing_arguments_are_refused) {
    std::string text;
    EXPECT_EQ(setting_read(nullptr, "a", &text), -1);
    EXPECT_EQ(setting_read(path.c_str(), nullptr, &text), -1);
    EXPECT_EQ(setting_read(path.c_str(), "a", nullptr), -1);
    EXPECT_EQ(setting_write(nullptr, "a", "b"), -1);
    EXPECT_EQ(setting_write(path.c_str(), nullptr, "b"), -1);
    EXPECT_EQ(setting_write(path.c_str(), "a", nullptr), -1);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(write("", "b"), -1);
}

TEST_F(settings, a_write_keeps_order_and_foreign_keys) {
    put(R"({"z": {"deep": [1, 2]}, "edit_data": "00", "other": null, "a": 1.5})");
    EXPECT_EQ(write("edit_data", "11 22"), 0);
    EXPECT_EQ(write("edit_timer", "100"), 0);
    EXPECT_EQ(write("edit_data", "33"), 0);
    EXPECT_EQ(content(), R"({
    "z": {
        "deep": [
            1,
            2
        ]
    },
    "edit_data": "33",
    "other": null,
    "a": 1.5,
    "edit_timer": "100"
}
)");
    EXPECT_EQ(read("edit_timer"), "100");
}

TEST_F(settings, a_write_without_a_file_starts_from_the_usual_one) {
    EXPECT_EQ(write("edit_can_id", "7FF"), 0);
    EXPECT_EQ(read("edit_can_id"), "7FF");
    EXPECT_EQ(read("fifo_size"), "5000");
}

TEST_F(settings, what_is_no_text_reads_as_one_where_it_can) {
    put(R"({"number": 5000, "yes": true, "empty": "", "null": null, "list": ["1"], "object": {"a": "1"}})");
    EXPECT_EQ(read("number"), "5000");
    EXPECT_EQ(read("yes"), "true");
    EXPECT_EQ(read("empty"), "");
    for (const char* key : {"null", "list", "object", "absent", ""}) EXPECT_EQ(read(key), "-1") << key;
}

TEST_F(settings, a_file_that_cannot_be_loaded_is_made_anew) {
    for (const std::string& text :
         {std::string(), std::string("no json"), std::string("[1, 2]"), std::string("\"5000\""),
          std::string("{\"a\":"), std::string("\xff\xfe{}"), std::string(10 * 1024 * 1024, ' '),
          "{\"a\": \"" + std::string(10 * 1024 * 1024, 'x') + "\"}", std::string(100000, '[')}) {
        put(text);
        EXPECT_EQ(read("edit_can_id"), "1") << text.substr(0, 20);
        EXPECT_EQ(content(), usual_text);
    }
}

TEST_F(settings, a_folder_of_that_name_is_left_alone) {
    std::filesystem::create_directories(path);
    EXPECT_EQ(read("fifo_size"), "-1");
    EXPECT_EQ(write("fifo_size", "1"), -1);
    EXPECT_TRUE(std::filesystem::is_directory(path));
    EXPECT_TRUE(std::filesystem::is_empty(path)) << "nothing is left beside";
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
}

// Whether a read-only file may be replaced is for the system to say.
TEST_F(settings, a_read_only_file_is_read_and_stays_whole) {
    ASSERT_EQ(read("fifo_size"), "5000");
    std::filesystem::permissions(path, std::filesystem::perms::owner_read);
    const int written = write("fifo_size", "7");
    EXPECT_EQ(read("fifo_size"), written == 0 ? "7" : "5000");
    EXPECT_EQ(read("edit_can_id"), "1");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

TEST_F(settings, without_a_folder_nothing_is_read) {
    path = (folder / "absent" / "setting.json").string();
    EXPECT_EQ(read("fifo_size"), "-1");
    EXPECT_EQ(write("fifo_size", "1"), -1);
}

TEST_F(settings, a_long_text_is_cut_between_characters) {
    EXPECT_EQ(write("edit_data", std::string(600, 'a').c_str()), 0);
    EXPECT_EQ(read("edit_data"), std::string(499, 'a'));
    std::string wide;
    for (int i = 0; i < 200; ++i) wide += "帧";
    EXPECT_EQ(write("edit_data", wide.c_str()), 0);
    EXPECT_EQ(read("edit_data"), wide.substr(0, 498));
    EXPECT_THAT(content(), HasSubstr(wide)) << "the file has all of it";
}

TEST_F(settings, two_that_write_lose_nothing) {
    constexpr int rounds = 40;
    const auto writes = [this](const char* key) {
        for (int i = 1; i <= rounds; ++i) ASSERT_EQ(write(key, std::to_string(i).c_str()), 0);
    };
    std::thread one(writes, "one");
    std::thread two(writes, "two");
    one.join();
    two.join();
    EXPECT_EQ(read("one"), "40");
    EXPECT_EQ(read("two"), "40");
}

} // namespace
