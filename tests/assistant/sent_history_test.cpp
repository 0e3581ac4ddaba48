// The frames that were sent last.
#include "assistant/sent_history.h"

#include "tests/support/console_capture.h"
#include "tests/support/scratch_folder.h"
#include "toolkit/core/fs.h"

namespace {

class history_of : public ::testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::create_directories(folder);
        path = (folder / "serial_send.json").string();
    }
    void TearDown() override { std::filesystem::remove_all(folder); }
    static assistant_form form(uint32_t identifier) {
        return {.channel = 4, .format = 8, .speed = 128, .identifier = identifier, .data = "11 22"};
    }

    static std::string text_of(const std::string& file) {
        std::string text;
        EXPECT_TRUE(fs_read_all(file.c_str(), &text));
        return text;
    }

    const std::filesystem::path folder = scratch_folder("vkt_history");
    std::string path;
};

TEST_F(history_of, an_entry_is_one_text) {
    EXPECT_EQ(sent_entry_text(form(291)), "4 8 128 291 11 22");
    assistant_form read;
    ASSERT_TRUE(sent_entry_read("4 8 128 291 11 22", &read));
    EXPECT_EQ(read, form(291));
    ASSERT_TRUE(sent_entry_read("1 0 0 4096 ", &read));
    EXPECT_EQ(read.data, "");
}

TEST_F(history_of, what_no_form_gives_is_refused) {
    const assistant_form before = form(7);
    assistant_form read = before;
    for (const char* text : {"", "1", "1 0 0 1", "0 0 0 1 11", "6 0 0 1 11", "1 1 0 1 11", "1 0 1 1 11",
                             "1 0 0 4097 11", "1 8 0 1073741825 ", "1 0 0 99999999999 11", "-1 0 0 1 11",
                             "x 0 0 1 11", "1  0 0 1 11", "1 0 0 1 11223344556677889"})
        EXPECT_FALSE(sent_entry_read(text, &read)) << text;
    EXPECT_EQ(read, before);
}

TEST_F(history_of, the_data_are_limited_in_characters) {
    assistant_form read;
    std::string data;
    for (int i = 0; i < 16; ++i) data += "中";
    ASSERT_TRUE(sent_entry_read("1 0 0 1 " + data, &read));
    EXPECT_EQ(read.data, data);
    EXPECT_FALSE(sent_entry_read("1 0 0 1 1" + data, &read));
    EXPECT_TRUE(sent_entry_read("1 0 128 1 1" + data, &read));
}

TEST_F(history_of, the_last_twenty_newest_first_and_after_a_restart) {
    {
        sent_history history(path);
        EXPECT_TRUE(history.entries().empty());
        for (uint32_t i = 0; i < 21; ++i) EXPECT_EQ(history.add(form(i)), RET_OK);
    }
    EXPECT_THAT(text_of(path), testing::HasSubstr(R"("sent_1": "4 8 128 20 11 22")"));
    EXPECT_THAT(text_of(path), testing::HasSubstr(R"("sent_20": "4 8 128 1 11 22")"));
    const sent_history history(path);
    ASSERT_EQ(history.entries().size(), 20u);
    EXPECT_EQ(history.entries().front(), form(20));
    EXPECT_EQ(history.entries().back(), form(1));
}

TEST_F(history_of, one_that_is_sent_again_comes_to_the_front) {
    sent_history history(path);
    for (const uint32_t i : {1u, 2u, 3u, 1u}) history.add(form(i));
    ASSERT_EQ(history.entries().size(), 3u);
    EXPECT_EQ(history.entries()[0], form(1));
    EXPECT_EQ(history.entries()[1], form(3));
}

TEST_F(history_of, a_damaged_file_gives_what_is_whole_in_it) {
    ASSERT_EQ(
        fs_write_whole(path.c_str(), R"({"sent_1": "9 9", "sent_2": "1 0 0 5 AA", "sent_3": [1], "other": "x"})"),
        RET_OK);
    sent_history history(path);
    ASSERT_EQ(history.entries().size(), 1u);
    EXPECT_EQ(history.entries()[0].identifier, 5u);
    history.add(form(6));
    EXPECT_THAT(text_of(path), testing::HasSubstr("other"));
    ASSERT_EQ(fs_write_whole(path.c_str(), "no json"), RET_OK);
    EXPECT_TRUE(sent_history(path).entries().empty());
}

TEST_F(history_of, a_file_that_cannot_be_written_is_reported_once_and_the_entries_are_kept) {
    const std::filesystem::path missing = folder / "missing";
    const std::string file = (missing / "serial_send.json").string();
    const std::string line = file + " cannot be written: the frames sent last are kept until the program ends\n";
    sent_history history(file);
    console_capture console(LOG_LEVEL_ERROR);
    EXPECT_EQ(history.add(form(1)), RET_FAIL);
    EXPECT_EQ(console.take(), line);
    EXPECT_EQ(history.add(form(2)), RET_FAIL);
    EXPECT_EQ(console.take(), "");
    ASSERT_EQ(history.entries().size(), 2u);
    EXPECT_EQ(history.entries()[0], form(2));

    std::filesystem::create_directories(missing);
    EXPECT_EQ(history.add(form(3)), RET_OK);
    EXPECT_EQ(sent_history(file).entries().size(), 3u) << "all of them are in the file then";
    std::filesystem::remove_all(missing);
    console.take();
    EXPECT_EQ(history.add(form(4)), RET_FAIL);
    EXPECT_EQ(console.take(), line) << "this is another failure";
}

TEST_F(history_of, the_file_is_replaced_whole) {
    sent_history history(path);
    ASSERT_EQ(history.add(form(1)), RET_OK);
    const std::string before = text_of(path), other = (folder / "other").string();
    std::filesystem::create_hard_link(path, other);
    ASSERT_EQ(history.add(form(2)), RET_OK);
    EXPECT_EQ(text_of(other), before) << "what a reader has open stays what it was";
    std::filesystem::remove(path);
    std::filesystem::create_directories(std::filesystem::path(path) / "in the way");
    EXPECT_EQ(history.add(form(3)), RET_FAIL);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 2) << "nothing is left beside it";
}

} // namespace
