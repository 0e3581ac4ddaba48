// Port texts and their device paths; the list's lines by position.
#include "serial/port_names.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

TEST(port_names, com_names_map_to_device_paths) {
    for (const bool typed : {true, false}) {
        EXPECT_EQ(port_path("COM0", typed), "\\\\.\\COM0");
        EXPECT_EQ(port_path("COM7", typed), "\\\\.\\COM7");
        EXPECT_EQ(port_path("COM12", typed), "\\\\.\\COM12");
        EXPECT_EQ(port_path("COM499", typed), "\\\\.\\COM499");
    }
}

TEST(port_name_before, sorts_letters_by_the_alphabet_and_numbers_by_their_size) {
    const std::vector<std::string> sorted = {"",
                                             "2COM3",
                                             "COM",
                                             "COM0",
                                             "COM2",
                                             "COM10",
                                             "COM11",
                                             "COM99",
                                             "COM99A",
                                             "COM100",
                                             "COM18446744073709551617",
                                             "LPT1"};
    for (std::size_t i = 0; i < sorted.size(); ++i)
        for (std::size_t j = 0; j < sorted.size(); ++j)
            EXPECT_EQ(port_name_before(sorted[i], sorted[j]), i < j) << sorted[i] << " and " << sorted[j];
    EXPECT_FALSE(port_name_before("COM02", "COM2") || port_name_before("COM2", "COM02"));
}

TEST(port_names, other_texts_with_a_leading_c_are_no_port) {
    for (const char* text :
         {"COM500", "C", "COM", "COM07", "COM-1", "CON", "COM 7", "COM4294967303", "com500", "Com07"})
        EXPECT_EQ(port_path(text, true), std::nullopt) << text;
    EXPECT_EQ(port_path("", true), std::nullopt);
    EXPECT_EQ(port_path("", false), std::nullopt);
}

TEST(port_names, other_texts_are_a_path_where_paths_may_be_typed) {
    EXPECT_EQ(port_path("\\\\.\\COM7", true), "\\\\.\\COM7");
    EXPECT_EQ(port_path("\\\\.\\COM7", false), "");
    EXPECT_EQ(port_path("com", true), "com");
    EXPECT_EQ(port_path("com7x", true), "com7x");
    EXPECT_EQ(port_path("comx7", true), "comx7");
    EXPECT_EQ(port_path("/dev/ttyUSB0", true), "/dev/ttyUSB0");
}

TEST(port_names, names_are_taken_in_any_case_and_with_blanks_around) {
    for (const bool typed : {true, false})
        for (const char* text : {"com7", "Com7", "coM7", " COM7", "COM7 ", "\t com7 \r\n"})
            EXPECT_EQ(port_path(text, typed), "\\\\.\\COM7") << text;
    EXPECT_EQ(port_path(" /dev/my port ", true), "/dev/my port") << "so are paths";
    EXPECT_EQ(port_path(" \t ", true), std::nullopt) << "blanks alone are no text";
    EXPECT_EQ(port_path(" \t ", false), std::nullopt);
}

TEST(port_names, only_the_first_hundred_bytes_count) {
    EXPECT_EQ(port_path(std::string(300, 'x'), true), std::string(100, 'x'));
    const std::string base(99, 'x');
    EXPECT_EQ(port_path(base + "串口", true), base) << "no half character";
}

TEST(port_names, lines_are_kept_by_position_and_are_no_names) {
    EXPECT_EQ(port_list_line(999), "");
    port_list_line_set(1000, "\\\\.\\COM12");
    EXPECT_EQ(port_list_line(1000), "\\\\.\\COM12");
    port_list_line_set(1000, "COM3");
    EXPECT_EQ(port_list_line(1000), "COM3");
    EXPECT_EQ(port_path("1000", true), "1000");
    EXPECT_EQ(port_path("1000", false), "");
}

TEST(port_names, any_thread_may_ask_while_another_keeps_lines) {
    std::thread loader([] {
        for (uint32_t i = 0; i < 500; i++) port_list_line_set(2000 + i, "COM3");
    });
    for (int i = 0; i < 500; i++) EXPECT_EQ(port_path("COM3", true), "\\\\.\\COM3");
    loader.join();
    EXPECT_EQ(port_list_line(2499), "COM3");
}

} // namespace
