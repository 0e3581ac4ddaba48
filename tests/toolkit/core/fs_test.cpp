#include "toolkit/core/fs.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;

/// Every test works in an empty folder of its own, whose name is not ASCII.
class fs_files : public testing::Test {
  protected:
    void SetUp() override {
        const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
        folder = "fs_" + name + "_\xE4\xB8\xAD\xE6\x96\x87";
        std::filesystem::remove_all(system_path());
        ASSERT_EQ(fs_create_dir(os_fs(), folder.c_str()), RET_OK);
    }
    void TearDown() override { std::filesystem::remove_all(system_path()); }
    std::filesystem::path system_path() const { return std::u8string(folder.begin(), folder.end()); }
    std::string path(const std::string& name) const { return folder + "/" + name; }
    std::string content(const std::string& name) const {
        std::string text;
        return fs_read_all(path(name).c_str(), &text) ? text : "(cannot be read)";
    }
    std::size_t files() const {
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(system_path())) count++;
        return count;
    }
    fs_file_ptr open(const std::string& name, const char* mode) const {
        return fs_file_ptr(fs_open_file(os_fs(), path(name).c_str(), mode));
    }
    std::vector<std::string> lines_of(const std::string& name, std::size_t max_bytes) const {
        std::vector<std::string> lines;
        const fs_file_ptr file = open(name, "rb");
        for (std::string line; fs_file_read_line(file.get(), &line, max_bytes);) lines.push_back(line);
        return lines;
    }
    std::string folder;
};

TEST_F(fs_files, tell_folders_from_files) {
    ASSERT_EQ(fs_append(path("a").c_str(), "x"), RET_OK);
    EXPECT_TRUE(fs_dir_exist(os_fs(), folder.c_str()));
    EXPECT_FALSE(fs_file_exist(os_fs(), folder.c_str()));
    EXPECT_TRUE(fs_file_exist(os_fs(), path("a").c_str()));
    EXPECT_FALSE(fs_dir_exist(os_fs(), path("a").c_str()));
    EXPECT_FALSE(fs_dir_exist(os_fs(), path("none").c_str()));
    EXPECT_FALSE(fs_file_exist(os_fs(), path("none").c_str()));
    EXPECT_FALSE(fs_file_exist(os_fs(), ""));
}

TEST_F(fs_files, a_missing_argument_is_refused) {
    std::string text;
    EXPECT_FALSE(fs_dir_exist(nullptr, "."));
    EXPECT_FALSE(fs_dir_exist(os_fs(), nullptr));
    EXPECT_FALSE(fs_file_exist(os_fs(), nullptr));
    EXPECT_EQ(fs_create_dir(os_fs(), nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(fs_remove_file(os_fs(), nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(fs_open_file(os_fs(), nullptr, "rb"), nullptr);
    EXPECT_EQ(fs_open_file(os_fs(), "x", nullptr), nullptr);
    EXPECT_EQ(fs_open_file(nullptr, "x", "rb"), nullptr);
    EXPECT_EQ(fs_file_write(nullptr, "x", 1), 0);
    EXPECT_EQ(fs_file_read(nullptr, &text, 1), -1);
    EXPECT_FALSE(fs_file_read_line(nullptr, &text, 10));
    EXPECT_EQ(fs_file_close(nullptr), RET_BAD_PARAMS);
    EXPECT_FALSE(fs_read_all(nullptr, &text));
    EXPECT_EQ(fs_write_whole(nullptr, ""), RET_BAD_PARAMS);
    EXPECT_EQ(fs_append(nullptr, ""), RET_BAD_PARAMS);
    const fs_file_ptr file = open("a", "wb+");
    EXPECT_EQ(fs_file_write(file.get(), nullptr, 1), 0);
    EXPECT_EQ(fs_file_read(file.get(), nullptr, 1), -1);
    EXPECT_EQ(fs_file_read(file.get(), nullptr, 0), 0);
    EXPECT_FALSE(fs_file_read_line(file.get(), nullptr, 10));
}

#ifdef __linux__
TEST_F(fs_files, a_read_that_the_system_refuses_is_no_end) {
    const fs_file_ptr file(fs_open_file(os_fs(), "/proc/self/mem", "rb")); // nothing is mapped at its beginning
    ASSERT_NE(file, nullptr);
    char byte = 0;
    EXPECT_EQ(fs_file_read(file.get(), &byte, 1), -1);
}
#endif

TEST_F(fs_files, a_folder_is_made_once_and_only_in_a_folder_that_exists) {
    EXPECT_EQ(fs_create_dir(os_fs(), path("sub").c_str()), RET_OK);
    EXPECT_EQ(fs_create_dir(os_fs(), path("sub").c_str()), RET_FAIL);
    EXPECT_EQ(fs_create_dir(os_fs(), path("none/sub").c_str()), RET_FAIL);
    ASSERT_EQ(fs_append(path("file").c_str(), ""), RET_OK);
    EXPECT_EQ(fs_create_dir(os_fs(), path("file").c_str()), RET_FAIL);
    EXPECT_EQ(fs_create_dir(os_fs(), path("file/sub").c_str()), RET_FAIL);
}

TEST_F(fs_files, removing_takes_files_only) {
    ASSERT_EQ(fs_append(path("a").c_str(), "x"), RET_OK);
    EXPECT_EQ(fs_remove_file(os_fs(), path("a").c_str()), RET_OK);
    EXPECT_EQ(fs_remove_file(os_fs(), path("a").c_str()), RET_FAIL);
    EXPECT_EQ(fs_remove_file(os_fs(), folder.c_str()), RET_FAIL);
    EXPECT_TRUE(fs_dir_exist(os_fs(), folder.c_str()));
}

TEST_F(fs_files, a_folder_never_opens) {
    for (const char* const mode : {"rb", "r", "wb", "a+"}) {
        EXPECT_EQ(fs_open_file(os_fs(), folder.c_str(), mode), nullptr) << mode;
    }
    std::string text = "kept";
    EXPECT_FALSE(fs_read_all(folder.c_str(), &text));
    EXPECT_EQ(text, "kept");
}

TEST_F(fs_files, a_mode_that_is_none_opens_nothing) {
    for (const char* const mode : {"", "x", "b", "+", "rz", "w,ccs=UTF-8"})
        EXPECT_EQ(open("a", mode), nullptr) << mode;
    EXPECT_FALSE(fs_file_exist(os_fs(), path("a").c_str()));
    EXPECT_EQ(open("missing", "rb"), nullptr);
    EXPECT_EQ(open("missing", "r+"), nullptr);
    EXPECT_EQ(open("none/missing", "wb+"), nullptr);
}

TEST_F(fs_files, bytes_are_written_as_given_in_every_mode) {
    const std::string bytes("a\r\n\n\x1A\0z", 7);
    for (const char* const mode : {"w", "wb", "wt", "w+", "wb+", "w+b"}) {
        fs_file_ptr file = open("a", mode);
        ASSERT_NE(file, nullptr) << mode;
        EXPECT_EQ(fs_file_write(file.get(), bytes.data(), bytes.size()), 7);
        EXPECT_EQ(fs_file_write(file.get(), nullptr, 0), 0);
        EXPECT_EQ(fs_file_close(file.release()), RET_OK);
        EXPECT_EQ(content("a"), bytes) << mode;
    }
}

TEST_F(fs_files, read_after_write_on_one_stream_and_the_other_way_round) {
    const fs_file_ptr file = open("a", "a+");
    ASSERT_NE(file, nullptr);
    fs_file_write(file.get(), "one\n", 4);
    char byte = 0;
    EXPECT_EQ(fs_file_read(file.get(), &byte, 1), 0) << "at the end";
    EXPECT_EQ(fs_file_write(file.get(), "two\n", 4), 4);
    EXPECT_EQ(fs_file_read(file.get(), &byte, 1), 0);
    EXPECT_EQ(fs_file_read(file.get(), &byte, 0), 0);
    EXPECT_EQ(content("a"), "one\n"
                            "two\n");
}

TEST_F(fs_files, opening_for_writing_empties_and_for_appending_does_not) {
    ASSERT_EQ(fs_append(path("a").c_str(), "old"), RET_OK);
    ASSERT_EQ(fs_append(path("a").c_str(), "new"), RET_OK);
    EXPECT_EQ(content("a"), "oldnew");
    open("a", "w+").reset();
    EXPECT_EQ(content("a"), "");
}

TEST_F(fs_files, the_last_byte_is_seen_before_something_is_appended) {
    const fs_file_ptr file = open("f", "a+");
    EXPECT_EQ(fs_file_last_byte(file.get()), -1) << "an empty file has none";
    EXPECT_EQ(fs_file_write(file.get(), "ab\xFF", 3), 3);
    EXPECT_EQ(fs_file_last_byte(file.get()), 0xFF);
    EXPECT_EQ(fs_file_write(file.get(), "c", 1), 1);
    EXPECT_EQ(fs_file_last_byte(file.get()), 'c');
    EXPECT_EQ(fs_file_last_byte(nullptr), -1);
    EXPECT_EQ(fs_file_last_byte(open("g", "wb").get()), -1) << "it cannot be read";
}

TEST_F(fs_files, a_write_to_a_file_opened_for_reading_fails) {
    ASSERT_EQ(fs_append(path("a").c_str(), "x"), RET_OK);
    fs_file_ptr file = open("a", "rb");
    EXPECT_EQ(fs_file_write(file.get(), "y", 1), 0);
    EXPECT_EQ(fs_file_close(file.release()), RET_FAIL);
    fs_file_ptr writer = open("b", "wb");
    char byte = 0;
    EXPECT_EQ(fs_file_read(writer.get(), &byte, 1), -1);
    std::string line;
    EXPECT_FALSE(fs_file_read_line(writer.get(), &line, 10));
}

TEST_F(fs_files, lines_come_without_their_ends) {
    ASSERT_EQ(fs_append(path("a").c_str(), "COM1\r\nCOM2\n\n\r\n\rx\r\ry\nlast"), RET_OK);
    EXPECT_THAT(lines_of("a", 100), ElementsAre("COM1", "COM2", "", "", "\rx\r\ry", "last"));
    ASSERT_EQ(fs_append(path("b").c_str(), ""), RET_OK);
    EXPECT_THAT(lines_of("b", 100), testing::IsEmpty());
    ASSERT_EQ(fs_append(path("c").c_str(), "a\r"), RET_OK);
    EXPECT_THAT(lines_of("c", 100), ElementsAre("a\r"));
}

TEST_F(fs_files, long_lines_are_cut_between_characters_and_the_rest_is_skipped) {
    ASSERT_EQ(fs_append(path("a").c_str(), "abc\r\nabcd\n" + std::string(10000, 'x') + "\r\nab\xE4\xB8\xAD\nend\n"),
              RET_OK);
    EXPECT_THAT(lines_of("a", 3), ElementsAre("abc", "abc", "xxx", "ab", "end"));
    EXPECT_THAT(lines_of("a", 0), ElementsAre("", "", "", "", ""));
    EXPECT_THAT(lines_of("a", SIZE_MAX).at(2), testing::SizeIs(10000));
}

TEST_F(fs_files, reading_all_takes_a_file_of_any_size_and_every_byte) {
    std::string bytes;
    for (int i = 0; i < 20000; i++) bytes.push_back(static_cast<char>(i % 256));
    ASSERT_EQ(fs_write_whole(path("a").c_str(), bytes), RET_OK);
    EXPECT_EQ(content("a"), bytes);
    std::string text;
    EXPECT_FALSE(fs_read_all(path("none").c_str(), &text));
}

TEST_F(fs_files, writing_whole_replaces_and_leaves_nothing_beside) {
    ASSERT_EQ(fs_write_whole(path("a").c_str(), "first and longer"), RET_OK);
    ASSERT_EQ(fs_write_whole(path("a").c_str(), "second"), RET_OK);
    EXPECT_EQ(content("a"), "second");
    EXPECT_EQ(files(), 1U);
}

TEST_F(fs_files, a_failed_whole_write_leaves_things_as_they_were) {
    ASSERT_EQ(fs_create_dir(os_fs(), path("taken").c_str()), RET_OK);
    EXPECT_EQ(fs_write_whole(path("taken").c_str(), "x"), RET_FAIL);
    EXPECT_TRUE(fs_dir_exist(os_fs(), path("taken").c_str()));
    EXPECT_EQ(fs_write_whole(path("none/a").c_str(), "x"), RET_FAIL);
    EXPECT_EQ(files(), 1U);
}

TEST_F(fs_files, appending_makes_the_file_but_never_its_folder) {
    EXPECT_EQ(fs_append(path("none/a").c_str(), "x"), RET_FAIL);
    EXPECT_FALSE(fs_dir_exist(os_fs(), path("none").c_str()));
}

TEST_F(fs_files, a_reader_sees_an_old_or_a_new_whole_while_others_write) {
    const std::string one(3000, '1');
    const std::string two(5000, '2');
    ASSERT_EQ(fs_write_whole(path("a").c_str(), one), RET_OK);
    const auto write = [this](const std::string& text) {
        for (int i = 0; i < 50; i++) EXPECT_EQ(fs_write_whole(path("a").c_str(), text), RET_OK);
    };
    std::thread first(write, one);
    std::thread second(write, two);
    int read = 0;
    for (int i = 0; i < 100; i++) {
        std::string text;
        if (!fs_read_all(path("a").c_str(), &text)) continue; // Windows refuses while the name changes hands
        EXPECT_TRUE(text == one || text == two) << text.size();
        read++;
    }
    first.join();
    second.join();
    EXPECT_GT(read, 0);
    EXPECT_EQ(files(), 1U);
}

#ifdef __linux__
TEST_F(fs_files, a_device_is_told_from_files_and_folders) {
    EXPECT_TRUE(fs_is_device(os_fs(), "/dev/null"));
    EXPECT_FALSE(fs_is_device(os_fs(), "/dev"));
    EXPECT_FALSE(fs_is_device(os_fs(), path("none").c_str()));
    ASSERT_EQ(fs_append(path("a").c_str(), "x"), RET_OK);
    EXPECT_FALSE(fs_is_device(os_fs(), path("a").c_str()));
    EXPECT_FALSE(fs_is_device(nullptr, "/dev/null"));
    EXPECT_FALSE(fs_is_device(os_fs(), nullptr));
}

TEST_F(fs_files, a_link_stays_and_what_it_leads_to_is_replaced) {
    const std::filesystem::path link = system_path() / "link";
    std::filesystem::create_directory(system_path() / "elsewhere");
    ASSERT_EQ(fs_write_whole(path("elsewhere/a").c_str(), "first"), RET_OK);
    std::filesystem::create_symlink("elsewhere/a", link);
    ASSERT_EQ(fs_write_whole(path("link").c_str(), "second"), RET_OK);
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(content("elsewhere/a"), "second");
    std::filesystem::remove(link);
    std::filesystem::create_symlink("nowhere/a", link);
    EXPECT_EQ(fs_write_whole(path("link").c_str(), "third"), RET_OK) << "it leads nowhere";
    EXPECT_EQ(content("link"), "third");
}

TEST_F(fs_files, a_file_that_is_replaced_keeps_its_rights) {
    using std::filesystem::perms;
    ASSERT_EQ(fs_write_whole(path("a").c_str(), "first"), RET_OK);
    for (const perms rights : {perms::owner_read | perms::owner_write, perms::owner_all | perms::group_read}) {
        std::filesystem::permissions(system_path() / "a", rights);
        ASSERT_EQ(fs_write_whole(path("a").c_str(), "second"), RET_OK);
        EXPECT_EQ(std::filesystem::status(system_path() / "a").permissions(), rights);
    }
    EXPECT_EQ(content("a"), "second");
    std::filesystem::permissions(system_path() / "a", perms::owner_read);
    ASSERT_EQ(fs_write_whole(path("a").c_str(), "third"), RET_OK);
    EXPECT_EQ(content("a"), "third");
    EXPECT_NE(std::filesystem::status(system_path() / "a").permissions() & perms::owner_write, perms::none);
    EXPECT_EQ(files(), 1U);
}

TEST_F(fs_files, a_device_is_written_into_and_not_replaced) {
    std::filesystem::create_symlink("/dev/full", system_path() / "device");
    EXPECT_EQ(fs_write_whole(path("device").c_str(), "x"), RET_FAIL);
    EXPECT_TRUE(std::filesystem::is_symlink(system_path() / "device"));
    EXPECT_EQ(files(), 1u);
}
TEST_F(fs_files, a_full_disk_is_told) { EXPECT_EQ(fs_append("/dev/full", "x"), RET_FAIL); }
#endif

} // namespace
