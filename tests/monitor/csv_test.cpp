// Lines of the record file.
#include "monitor/csv.h"

#include "tests/support/console_capture.h"
#include "tests/support/scratch_folder.h"
#include "toolkit/core/fs.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#ifndef _WIN32
#include <csignal>
#include <sys/resource.h>
#endif

using testing::EndsWith;

namespace {

constexpr int64_t afternoon_us = 1759153523123456; // 2025-09-29 13:45:23

traffic_record sent(std::size_t size) {
    traffic_request request{.channel = 3, .identifier = 0x7FF, .length = static_cast<uint32_t>(size)};
    for (std::size_t i = 0; i < size; ++i) request.data[i] = static_cast<uint8_t>(i * 3);
    return record_sent(request, {afternoon_us, 0});
}

TEST(csv_line, has_its_fields_and_a_blank_after_every_byte) {
    EXPECT_EQ(csv_line(sent(3)), "2025-09-29 13:45:23,spi1-can1,0x7ff,标准帧-can,tx,3,0x00 0x03 0x06 \n");
}

TEST(csv_line, without_data) {
    EXPECT_EQ(csv_line(sent(0)), "2025-09-29 13:45:23,spi1-can1,0x7ff,标准帧-can,tx,0,\n");
}

TEST(csv_line, of_values_without_names) {
    EXPECT_EQ(csv_line(record_sent({.channel = 9, .identifier = 1, .format = 7, .protocol = 8}, {})),
              "1970-01-01 00:00:00,未知,0x01,未知-未知,tx,0,\n");
}

TEST(csv_line, the_longest_fits) {
    traffic_record record = sent(64);
    record.identifier = 0xFFFFFFFF;
    record.format = record.protocol = 1;
    const std::string line = csv_line(record);
    EXPECT_THAT(line, EndsWith("0xba 0xbd \n"));
    EXPECT_EQ(std::ranges::count(line, ' '), 65);
    EXPECT_LE(line.size(), 499u);
}

class csv_file : public testing::Test {
  protected:
    void SetUp() override { std::filesystem::create_directories(folder); }
    void TearDown() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    std::string content() const {
        std::string text;
        fs_read_all(path.c_str(), &text);
        return text;
    }
    const std::filesystem::path folder = scratch_folder("vkt_csv");
    const std::string path = (folder / "can_record_data.csv").string();
};

TEST_F(csv_file, lines_are_appended_to_what_is_there) {
    ASSERT_EQ(fs_append(path.c_str(), "an older line\n"), RET_OK);
    csv_recorder csv(path);
    csv.add(sent(1));
    EXPECT_EQ(content(), "an older line\n" + csv_line(sent(1))) << "it can be read at once";
    csv.add(sent(2));
    EXPECT_EQ(content(), "an older line\n" + csv_line(sent(1)) + csv_line(sent(2)));
    EXPECT_EQ(csv.dropped(), 0u);
}

TEST_F(csv_file, lines_that_cannot_be_stored_are_counted_and_said_once) {
    std::filesystem::create_directories(path);
    csv_recorder csv(path);
    console_capture console;
    for (int i = 0; i < 3; ++i) csv.add(sent(1));
    EXPECT_EQ(csv.dropped(), 3u);
    EXPECT_EQ(console.take(), path + " cannot be written: lines are dropped\n");
    std::filesystem::remove(path);
    csv.add(sent(2));
    EXPECT_EQ(content(), csv_line(sent(2)));
    EXPECT_EQ(csv.dropped(), 3u);
    EXPECT_EQ(console.take(), "");
}

TEST_F(csv_file, the_folder_is_not_made) {
    csv_recorder csv((folder / "absent" / "file.csv").string());
    console_capture console;
    csv.add(sent(1));
    EXPECT_EQ(csv.dropped(), 1u);
    EXPECT_FALSE(std::filesystem::exists(folder / "absent"));
}

#ifndef _WIN32
TEST_F(csv_file, a_full_disk_drops_lines) {
    std::filesystem::create_symlink("/dev/full", path);
    csv_recorder csv(path);
    console_capture console;
    csv.add(sent(1));
    csv.add(sent(1));
    EXPECT_EQ(csv.dropped(), 2u);
    EXPECT_EQ(console.take(), path + " cannot be written: lines are dropped\n");
    std::filesystem::remove(path);
    csv.add(sent(2));
    EXPECT_EQ(content(), csv_line(sent(2)));
}

/// While it lives no file grows beyond so many bytes: a disk that is full from there on.
class disk_of {
  public:
    explicit disk_of(std::uintmax_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit now{static_cast<rlim_t>(bytes), before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &now);
    }
    ~disk_of() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    disk_of(const disk_of&) = delete;
    disk_of& operator=(const disk_of&) = delete;

  private:
    rlimit before_{};
    void (*handler_)(int);
};

TEST_F(csv_file, of_a_line_that_was_stored_in_part_the_next_one_is_apart) {
    csv_recorder csv(path);
    console_capture console;
    csv.add(sent(1));
    const std::string first = content();
    for (const std::uintmax_t room : {10u, 12u}) { // the second time within the line end that comes first
        const disk_of full(first.size() + room);
        csv.add(sent(1));
    }
    EXPECT_EQ(csv.dropped(), 2u);
    const std::string torn = content();
    EXPECT_EQ(torn, first + csv_line(sent(1)).substr(0, 10) + "\n" + csv_line(sent(1)).substr(0, 1));
    for (int i = 2; i < 4; ++i) csv.add(sent(static_cast<std::size_t>(i)));
    EXPECT_EQ(content(), torn + "\n" + csv_line(sent(2)) + csv_line(sent(3)));
}

TEST_F(csv_file, of_a_line_of_which_nothing_was_stored_no_empty_line_is_left) {
    csv_recorder csv(path);
    console_capture console;
    csv.add(sent(1));
    const std::string first = content();
    {
        const disk_of full(first.size());
        csv.add(sent(1));
        csv.add(sent(1));
    }
    EXPECT_EQ(csv.dropped(), 2u);
    EXPECT_EQ(content(), first);
    for (int i = 2; i < 4; ++i) csv.add(sent(static_cast<std::size_t>(i)));
    EXPECT_EQ(content(), first + csv_line(sent(2)) + csv_line(sent(3)));
}

TEST_F(csv_file, an_older_file_without_a_line_end_is_gone_on_with_as_it_is) {
    ASSERT_EQ(fs_append(path.c_str(), "older"), RET_OK);
    csv_recorder csv(path);
    csv.add(sent(1));
    EXPECT_EQ(content(), "older" + csv_line(sent(1)));
}
#endif

} // namespace
