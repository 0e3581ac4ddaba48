// Texts of the command line apart from any command: frames, times, tables, suggestions, errors, the journal's
// lines.
#include "cli/can_text.h"
#include "cli/context.h"
#include "cli/journal.h"
#include "tests/support/pattern.h"
#include "tests/support/scratch_folder.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/text.h"

#include <gmock/gmock.h>

#include <chrono>

namespace {

using bytes = std::vector<uint8_t>;

// ---- frames ----

TEST(can_texts, what_a_frame_s_text_says_is_in_the_request) {
    struct row {
        const char* text;
        uint32_t identifier, format, protocol;
        bytes data;
    };
    const row rows[] = {
        {"123#1122", 0x123, 0, 0, {0x11, 0x22}},
        {"7FF#", 0x7FF, 0, 0, {}},
        {"7ff#aB.cD", 0x7FF, 0, 0, {0xAB, 0xCD}},
        {"000#0102030405060708", 0, 0, 0, {1, 2, 3, 4, 5, 6, 7, 8}},
        {"00000123#5A", 0x123, 1, 0, {0x5A}},
        {"1FFFFFFF#00", 0x1FFFFFFF, 1, 0, {0}},
        {"123##0", 0x123, 0, 1, {}},
        {"123##F22.33", 0x123, 0, 1, {0x22, 0x33}},
        {"00000800##1000102030405060708090A0B", 0x800, 1, 1, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}},
    };
    for (const row& one : rows) {
        traffic_request request{.channel = 3};
        EXPECT_EQ(can_request(one.text, &request), "") << one.text;
        EXPECT_EQ(request.channel, 3u);
        EXPECT_EQ(request.identifier, one.identifier) << one.text;
        EXPECT_EQ(request.format, one.format) << one.text;
        EXPECT_EQ(request.protocol, one.protocol) << one.text;
        EXPECT_EQ(bytes(request.bytes().begin(), request.bytes().end()), one.data) << one.text;
    }
}

TEST(can_texts, what_is_refused_changes_nothing) {
    for (const char* text : {"800#", "20000000#", "12~#", "123#1~", "123##", "123##g", "123#1g", "123##0123"}) {
        traffic_request request{.identifier = 99, .length = 7};
        EXPECT_NE(can_request(text, &request), "") << text;
        EXPECT_EQ(request.identifier, 99u);
        EXPECT_EQ(request.length, 7u);
    }
}

traffic_record record_of(uint32_t channel, uint32_t identifier, uint32_t kind, const bytes& data) {
    traffic_request request{.channel = channel, .identifier = identifier, .format = kind, .protocol = kind};
    request.length = static_cast<uint32_t>(data.size());
    std::copy(data.begin(), data.end(), request.data.begin());
    return record_sent(request, time_stamp_now());
}

TEST(can_texts, of_a_record_as_lines) {
    const traffic_record standard = record_of(0, 0x23, 0, {0x11, 0xAF});
    const traffic_record extended = record_of(4, 0x23, 1, {});
    EXPECT_EQ(can_line(standard), record_time_text(standard) + " uart1-can1 tx 0x23 标准帧-can 2 11 AF\n");
    EXPECT_EQ(can_line(extended), record_time_text(extended) + " spi1-can2 tx 0x23 扩展帧-canfd 0\n");
    EXPECT_THAT(can_log_line(standard), FitsPattern("\\([0-9]+\\.[0-9]{6}\\) can0 023#11AF\n"));
    EXPECT_THAT(can_log_line(extended), FitsPattern("\\([0-9]+\\.[0-9]{6}\\) can4 00000023##0\n"));
    EXPECT_THAT(can_json_line(standard),
                FitsPattern(R"(\{"time_us": [0-9]+, "channel": "uart1-can1", "direction": "tx", "id": 35, )"
                            R"("extended": false, "fd": false, "data": "11AF"\}\n)"));
    EXPECT_THAT(can_json_line(extended),
                FitsPattern(R"(\{"time_us": [0-9]+, "channel": "spi1-can2", "direction": "tx", "id": 35, )"
                            R"("extended": true, "fd": true, "data": ""\}\n)"));
}

/// Seconds since 1970 UTC.
double now_s() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

TEST(can_texts, the_time_is_the_record_s_own) {
    traffic_record record = record_of(0, 1, 0, {});
    record.at.steady_us -= 100'000'000;
    const auto seconds_of = [](const std::string& line, std::size_t at) { return std::stod(line.substr(at)); };
    EXPECT_NEAR(seconds_of(can_log_line(record), 1), now_s() - 100, 20);
    const std::string json = can_json_line(record);
    EXPECT_NEAR(seconds_of(json, json.find(": ") + 2) / 1e6, now_s() - 100, 20);
}

TEST(durations, in_two_units) {
    EXPECT_EQ(duration_ms("10ms"), 10);
    EXPECT_EQ(duration_ms("10"), 10);
    EXPECT_EQ(duration_ms("1.5s"), 1500);
    EXPECT_EQ(duration_ms("0"), 0);
    EXPECT_EQ(duration_ms("86400s"), 86'400'000);
    for (const char* bad : {"", "ms", "-1ms", "1m", "1e9s", "nan", "inf", "1 s", "86401s", "86400001"})
        EXPECT_FALSE(duration_ms(bad)) << bad;
}

// ---- tables ----

TEST(tables, an_empty_column_takes_no_room) {
    EXPECT_EQ(table_text({{"a", "", "c"}, {"long", "", "d"}}), "a     c\nlong  d\n");
    EXPECT_EQ(table_text({{"a", "", "c"}, {"b", "写", "d"}, {"e", "x"}}), "a      c\nb  写  d\ne  x\n");
    EXPECT_EQ(table_text({{"\x1b[32ma\x1b[0m", "b"}, {"cc", "d"}}), "\x1b[32ma\x1b[0m   b\ncc  d\n");
    EXPECT_EQ(table_text({{"", "b", "", ""}, {"a", "", "", "d"}}), "   b\na     d\n");
    EXPECT_EQ(table_text({}), "");
}

TEST(suggestions, are_near_and_no_other_word_altogether) {
    const std::vector<std::string> words = {"models", "read", "ports", "configuration"};
    const auto suggests = [&words](const char* typed) {
        const std::string text = did_you_mean(typed, words);
        const std::size_t at = text.find('"');
        return at == std::string::npos ? "" : text.substr(at + 1, text.rfind('"') - at - 1);
    };
    EXPECT_EQ(suggests("raed"), "read");  // swapped
    EXPECT_EQ(suggests("rea"), "read");   // left out
    EXPECT_EQ(suggests("reads"), "read"); // too much
    EXPECT_EQ(suggests("reat"), "read");  // changed
    EXPECT_EQ(suggests("erxd"), "read");  // swapped at its head, and changed
    EXPECT_EQ(suggests("modlex"), "models");
    EXPECT_EQ(suggests("mdls"), "models"); // two left out
    EXPECT_EQ(suggests("xreadx"), "read"); // two too much
    EXPECT_EQ(suggests("parss"), "ports"); // two of five
    EXPECT_EQ(suggests("paths"), "");      // three of five
    EXPECT_EQ(suggests("konfigurazzon"), "configuration");
    EXPECT_EQ(suggests("konvigurazzonx"), ""); // five of fourteen
    EXPECT_EQ(suggests(""), "");
    EXPECT_EQ(did_you_mean("raed", words), "; did you mean \"read\"?");
    EXPECT_EQ(did_you_mean("ab", {"cd", "x"}), ""); // nothing of it would be left
    EXPECT_EQ(did_you_mean("xbcd", {"abcx", "abcd", "abce"}), "; did you mean \"abcd\"?");
}

TEST(errors, have_only_what_there_is_to_say) {
    EXPECT_EQ(error_line({.where = "COM7", .step = "s", .text = "t", .cause = "c"}), "vkt: COM7: s: t: c\n");
    EXPECT_EQ(error_line({.text = "t"}), "vkt: t\n");
    EXPECT_EQ(error_json({.status = 3, .where = "COM7", .text = "a \"b\""}),
              R"({"error": {"where": "COM7", "text": "a \"b\"", "status": 3}})"
              "\n");
}

// ---- the journal ----

TEST(journals, values_with_a_comma_a_quote_or_a_line_end_stand_in_quotes) {
    const std::filesystem::path folder = scratch_folder("vkt_journal");
    std::filesystem::create_directories(folder);
    const std::string path = (folder / "line.csv").string();
    const journal lines(path);
    ASSERT_TRUE(lines.open());
    ASSERT_TRUE(lines.open()); // the heading once
    EXPECT_TRUE(lines.add({"COM7", "a,b", "c\"d", "e\nf", "g\rh", "ij", ""}));
    std::string text;
    EXPECT_TRUE(fs_read_all(path.c_str(), &text));
    EXPECT_THAT(text, FitsPattern("time,port,model,firmware,profile,result,step,text\n"
                                  "[-0-9]{10} [:0-9]{8},COM7,\"a,b\",\"c\"\"d\",\"e\nf\",\"g\rh\",ij,\n"));
    const journal none("");
    EXPECT_TRUE(none.open());
    EXPECT_TRUE(none.add({}));
    EXPECT_FALSE(journal((folder / "absent" / "line.csv").string()).add({}));
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

TEST(checksums, are_those_of_everybody) { EXPECT_EQ(checksum_of("123456789"), "CBF43926"); }

} // namespace
