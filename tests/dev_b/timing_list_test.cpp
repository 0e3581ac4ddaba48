// Candidate files: their lines, the filters, and whatever else may stand in such a file.
#include "dev_b/timing_list.h"
#include "tests/support/console_capture.h"
#include "toolkit/core/fs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>

namespace {

/// A file of the running test, removed with it.
class list_file {
  public:
    explicit list_file(const std::string& content)
        : path_(std::string("list_") + testing::UnitTest::GetInstance()->current_test_info()->name() + ".txt") {
        EXPECT_EQ(fs_write_whole(path_.c_str(), content), RET_OK);
    }
    ~list_file() { fs_remove_file(os_fs(), path_.c_str()); }
    list_file(const list_file&) = delete;
    list_file& operator=(const list_file&) = delete;
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

struct read_result {
    ret_t result;
    std::vector<std::string> lines;
    std::size_t bad;
    std::string log;
};

read_result read_back(const std::string& content, const timing_filter& filter = {}) {
    const list_file file(content);
    console_capture log(LOG_LEVEL_DEBUG);
    read_result out{};
    timing_list list;
    list.add("left over from the last file");
    out.result = timing_list_read(file.path(), filter, &list, &out.bad);
    for (std::size_t i = 0; i < list.size(); ++i) out.lines.emplace_back(list.line(i));
    out.log = log.text();
    return out;
}

TEST(TimingListPath, NamesChannelPhaseDividerAndRate) {
    EXPECT_EQ(timing_list_folder(), "../tools/bps_data_list");
    EXPECT_EQ(timing_list_path("f", 1, timing_phase::nominal, 4, 500), "f/vkt610b_bps_canfd1_z_4_500.txt");
    EXPECT_EQ(timing_list_path("f", 2, timing_phase::data, 8, 5000), "f/vkt610b_bps_canfd2_c_8_5000.txt");
}

TEST(TimingLine, FiveFields) {
    const auto c = timing_line_parse("5-32-8-7-80.00");
    ASSERT_TRUE(c);
    EXPECT_EQ(c->brp, 5u);
    EXPECT_EQ(c->tseg1, 32u);
    EXPECT_EQ(c->tseg2, 8u);
    EXPECT_EQ(c->fields[3], "7");
    EXPECT_EQ(c->sample_point, 80.0);
    EXPECT_EQ(timing_item_text(*c), "BRP: 5, TSEGE1: 32, TSEGE2: 8, SMP: 80.00%");
}
TEST(TimingLine, FourthFieldMayBeAnything) { EXPECT_TRUE(timing_line_parse("5-32-8-sjw-80.00")); }
TEST(TimingLine, BlanksAroundFieldsDoNotCount) {
    const auto c = timing_line_parse(" 5 - 32 -8-8- 80.00\t");
    ASSERT_TRUE(c);
    EXPECT_EQ(timing_item_text(*c), "BRP: 5, TSEGE1: 32, TSEGE2: 8, SMP: 80.00%");
}
TEST(TimingLine, NumberShownAsItStands) {
    const auto c = timing_line_parse("005-32-8-8-80");
    ASSERT_TRUE(c);
    EXPECT_EQ(timing_item_text(*c), "BRP: 005, TSEGE1: 32, TSEGE2: 8, SMP: 80%");
}

class TimingLineBad : public testing::TestWithParam<const char*> {};
TEST_P(TimingLineBad, IsNoCandidate) { EXPECT_FALSE(timing_line_parse(GetParam())); }
INSTANTIATE_TEST_SUITE_P(Lines, TimingLineBad,
                         testing::Values("", "-", "----", "5", "5-32-8-8", "5-32-8-8-", "5-32-8-8-80.00-",
                                         "a-32-8-8-80", "5-b-8-8-80", "5-32-c-8-80", "5-32-8-8-d", "5-32-8-8-nan",
                                         "5-32-8-8-inf", "5-32-8-8-80.00%", "5x-32-8-8-80", "-5-32-8-8-80",
                                         "5.0-32-8-8-80", "4294967296-32-8-8-80", "+5-32-8-8-80", "5 32 8 8 80.00",
                                         "五-32-8-8-80"));

TEST(TimingLine, OneHundredBytesAreRead) {
    const std::string tail = "-32-8-8-80.00";
    EXPECT_TRUE(timing_line_parse(std::string(99 - tail.size(), '0') + "5" + tail));
    EXPECT_FALSE(timing_line_parse(std::string(100 - tail.size(), '0') + "5" + tail));
}

TEST(TimingFilter, EmptyEditsAreOff) {
    const timing_filter f = timing_filter_of({});
    EXPECT_FALSE(f.brp || f.tseg1 || f.tseg2 || f.sample_point);
}
TEST(TimingFilter, ANumberThatBeginsWithABlankIsOff) {
    const timing_filter f = timing_filter_of({" 5", "\t6", "7", ""});
    EXPECT_FALSE(f.brp);
    EXPECT_FALSE(f.tseg1);
    EXPECT_EQ(f.tseg2, 7);
}
TEST(TimingFilter, SamplePointIsCutNotRounded) {
    EXPECT_EQ(timing_filter_of({"", "", "", "79.999"}).sample_point, 79.99);
    EXPECT_EQ(timing_filter_of({"", "", "", "80"}).sample_point, 80.0);
    EXPECT_EQ(timing_filter_of({"", "", "", "junk"}).sample_point, 0.0);
    EXPECT_EQ(timing_filter_of({"", "", "", " "}).sample_point, 0.0);
}
TEST(TimingFilter, EachFieldIsComparedOnItsOwn) {
    const auto c = *timing_line_parse("5-32-8-7-80.00");
    EXPECT_TRUE(timing_matches({}, c));
    EXPECT_TRUE(timing_matches(timing_filter_of({"5", "32", "8", "80.001"}), c));
    EXPECT_TRUE(timing_matches(timing_filter_of({"5x", "", "", ""}), c));
    EXPECT_FALSE(timing_matches(timing_filter_of({"4", "", "", ""}), c));
    EXPECT_FALSE(timing_matches(timing_filter_of({"", "31", "", ""}), c));
    EXPECT_FALSE(timing_matches(timing_filter_of({"", "", "7", ""}), c));
    EXPECT_FALSE(timing_matches(timing_filter_of({"", "", "", "79.999"}), c));
    EXPECT_FALSE(timing_matches(timing_filter_of({"-5", "", "", ""}), c));
    EXPECT_FALSE(timing_matches(timing_filter_of({"junk", "", "", ""}), c));
}
TEST(TimingFilter, ANegativeNumberIsNotALargeField) {
    const auto c = *timing_line_parse("4294967295-32-8-7-80.00");
    EXPECT_FALSE(timing_matches(timing_filter_of({"-1", "", "", ""}), c));
}

TEST(TimingEdits, ValuesOfTheTexts) {
    const timing_values v = timing_values_of({"5", " 16 ", "x", ""});
    EXPECT_EQ(v.brp, 5u);
    EXPECT_EQ(v.tseg1, 16u);
    EXPECT_EQ(v.tseg2, 0u);
}

TEST(TimingListRead, MissingFileIsAnEmptyListWithoutAMessage) {
    console_capture log(LOG_LEVEL_DEBUG);
    timing_list list;
    list.add("old");
    std::size_t bad = 9;
    EXPECT_EQ(timing_list_read("no_such_list.txt", {}, &list, &bad), RET_FAIL);
    EXPECT_EQ(list.size(), 0u);
    EXPECT_EQ(bad, 0u);
    EXPECT_EQ(log.text(), "");
}
TEST(TimingListRead, AFolderIsNoFile) {
    timing_list list;
    EXPECT_EQ(timing_list_read(".", {}, &list), RET_FAIL);
    EXPECT_EQ(list.size(), 0u);
}
TEST(TimingListRead, EmptyFile) {
    const read_result r = read_back("");
    EXPECT_EQ(r.result, RET_OK);
    EXPECT_TRUE(r.lines.empty());
    EXPECT_EQ(r.bad, 0u);
    EXPECT_EQ(r.log, "");
}
TEST(TimingListRead, LinesInOrderWithEitherLineEndAndWithoutTheLast) {
    const read_result r = read_back("1-16-4-4-80.00\r\n2-8-2-2-80.00\n4-4-1-1-80.00");
    EXPECT_EQ(r.lines, (std::vector<std::string>{"1-16-4-4-80.00", "2-8-2-2-80.00", "4-4-1-1-80.00"}));
    EXPECT_EQ(r.bad, 0u);
}
TEST(TimingListRead, BadLinesAreCountedOnceInTheLogAndHideNothing) {
    const std::string too_long = std::string(87, '0') + "5-32-8-8-80.00"; // 101 bytes
    const read_result r =
        read_back("1-16-4-4-80.00\nshort-line\n\n" + too_long + "\n2-8-2-2-eighty\n2-8-2-2-80.00\n");
    EXPECT_EQ(r.result, RET_OK);
    EXPECT_EQ(r.lines, (std::vector<std::string>{"1-16-4-4-80.00", "2-8-2-2-80.00"}));
    EXPECT_EQ(r.bad, 4u);
    EXPECT_EQ(r.log, "list_BadLinesAreCountedOnceInTheLogAndHideNothing.txt: 4 lines are no candidates\n");
}
TEST(TimingListRead, ALineOfOneHundredBytesWithCarriageReturnIsGood) {
    const std::string longest = std::string(86, '0') + "5-32-8-8-80.00";
    ASSERT_EQ(longest.size(), 100u);
    const read_result r = read_back(longest + "\r\n" + longest + "x\r\n");
    EXPECT_EQ(r.lines, std::vector<std::string>{longest});
    EXPECT_EQ(r.bad, 1u);
}
TEST(TimingListRead, ALineAcrossTwoBlocksIsWhole) {
    std::string content;
    while (content.size() < 200000) content += "1-16-4-4-80.00\n"; // 15 bytes do not divide any block
    const read_result r = read_back(content);
    EXPECT_EQ(r.bad, 0u);
    EXPECT_EQ(r.lines, std::vector<std::string>(content.size() / 15, "1-16-4-4-80.00"));
}
TEST(TimingListRead, FilterKeepsWhatMatches) {
    const read_result r =
        read_back("1-16-4-4-80.00\n2-8-2-2-80.00\n1-15-5-5-75.00\n", timing_filter_of({"1", "", "", ""}));
    EXPECT_EQ(r.lines, (std::vector<std::string>{"1-16-4-4-80.00", "1-15-5-5-75.00"}));
}
/// `count` lines of 15 bytes, alternately of BRP 1 and 2.
std::string many_lines(int count) {
    std::string content;
    for (int i = 0; i < count / 2; ++i) content += "1-20-5-5-80.00\n2-12-3-3-80.00\n";
    return content;
}

TEST(TimingListReader, TenThousandLinesAreOnePiece) {
    const list_file file(many_lines(10000));
    timing_list_reader reader(file.path(), {});
    timing_list list;
    reader.read_on(&list);
    EXPECT_EQ(list.size(), 10000u);
    EXPECT_FALSE(reader.read_on(&list));
    EXPECT_EQ(list.size(), 10000u);
    EXPECT_FALSE(reader.read_on(&list)) << "the end stays the end";
}
TEST(TimingListReader, AMillionLinesComeInManyPieces) {
    const list_file file(many_lines(1000000));
    timing_list_reader reader(file.path(), {});
    timing_list list;
    std::size_t before = 0, most = 0;
    int pieces = 1;
    while (reader.read_on(&list)) {
        most = std::max(most, list.size() - before);
        before = list.size();
        ++pieces;
    }
    EXPECT_EQ(list.size(), 1000000u);
    EXPECT_EQ(list.line(999999), "2-12-3-3-80.00");
    EXPECT_GE(pieces, 50);
    EXPECT_LE(most, 20000u);
}
TEST(TimingListReader, BadLinesAreToldAtTheEnd) {
    const list_file file(many_lines(40000) + "junk");
    console_capture log(LOG_LEVEL_DEBUG);
    timing_list_reader reader(file.path(), {});
    timing_list list;
    ASSERT_TRUE(reader.read_on(&list));
    EXPECT_EQ(log.text(), "");
    while (reader.read_on(&list)) {
    }
    EXPECT_EQ(reader.bad_lines(), 1u);
    EXPECT_EQ(log.text(), file.path() + ": 1 lines are no candidates\n");
}
#ifdef __linux__
TEST(TimingListReader, AFileThatWasReadIsClosed) {
    const auto open_files = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    const list_file file("1-20-5-5-80.00\n");
    const auto before = open_files();
    timing_list_reader reader(file.path(), {});
    EXPECT_EQ(open_files(), before + 1);
    timing_list list;
    while (reader.read_on(&list)) {
    }
    EXPECT_EQ(open_files(), before);
}
#endif

TEST(TimingListReader, ThereMayBeNoFile) {
    timing_list_reader reader("no_such_list.txt", {});
    timing_list list;
    EXPECT_FALSE(reader.exists());
    EXPECT_FALSE(reader.read_on(&list));
}

TEST(TimingListRead, AMillionLines) {
    std::string content = "1-20-5-5-80.00\n2-12-3-3-80.00\n";
    for (int i = 0; i < 19; ++i) content += std::string(content);
    const list_file file(content);
    timing_list list;
    ASSERT_EQ(timing_list_read(file.path(), timing_filter_of({"2", "", "", ""}), &list), RET_OK);
    EXPECT_EQ(list.size(), 524288u);
    EXPECT_EQ(list.line(0), "2-12-3-3-80.00");
    EXPECT_EQ(list.line(524287), "2-12-3-3-80.00");
}
TEST(TimingListRead, OneLineOfAMillionBytesIsOneBadLine) {
    const read_result r = read_back(std::string(1000000, '7') + "\n1-16-4-4-80.00\n");
    EXPECT_EQ(r.lines, std::vector<std::string>{"1-16-4-4-80.00"});
    EXPECT_EQ(r.bad, 1u);
}
TEST(TimingListRead, BinaryFileWithAGoodLineInIt) {
    std::mt19937 random(610); // fixed seed: the same bytes in every run
    std::string junk;
    for (int i = 0; i < 300000; ++i) junk += static_cast<char>(random() & 0xFF);
    const read_result r = read_back(junk + "\n1-16-4-4-80.00\n" + junk);
    EXPECT_EQ(r.lines, std::vector<std::string>{"1-16-4-4-80.00"});
    EXPECT_GT(r.bad, 1000u);
}
TEST(TimingListRead, ZeroBytesDoNotEndALine) {
    using namespace std::string_literals;
    const read_result r = read_back("1-16-4-4-80.00\0\n1-16\0-4-4-80.00\n2-8-2-2-80.00\n"s);
    EXPECT_EQ(r.lines, std::vector<std::string>{"2-8-2-2-80.00"});
    EXPECT_EQ(r.bad, 2u);
}

} // namespace
