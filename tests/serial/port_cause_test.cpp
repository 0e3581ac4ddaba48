// Why a port does not serve, in words.
#include "serial/port_cause.h"

#include <gtest/gtest.h>

namespace {

std::string open_line(DWORD error) { return port_cause_line("COM3", port_open_cause("\\\\.\\COM3", error)); }
std::string use_line(DWORD error) { return port_cause_line("COM3", port_use_cause(error)); }

std::string wanted(const char* words, DWORD error) {
    return "COM3: " + std::string(words) + " (error " + std::to_string(error) + ")\n";
}

TEST(port_cause, of_an_open) {
    for (const DWORD error : {2, 3, 433, 1167}) EXPECT_EQ(open_line(error), wanted("不存在", error));
    for (const DWORD error : {5, 32, 170}) EXPECT_EQ(open_line(error), wanted("被占用", error));
    EXPECT_EQ(open_line(31), "COM3: 系统错误 (error 31)\n");
    EXPECT_FALSE(port_open_cause("\\\\.\\COM3", 1167).lost) << "it was never there";
}

TEST(port_cause, of_a_use) {
    EXPECT_EQ(use_line(0), "");
    EXPECT_EQ(use_line(87), "COM3: 系统错误 (error 87)\n");
    EXPECT_FALSE(port_use_cause(87).lost);
    for (const DWORD error : {21, 22, 31, 109, 433, 995, 1167}) {
        EXPECT_EQ(use_line(error), wanted("已拔出", error));
        EXPECT_TRUE(port_use_cause(error).lost);
    }
}

#ifndef _WIN32 // there the system has no other word for a port that is taken
TEST(port_cause, what_is_no_port_says_so) {
    EXPECT_EQ(port_cause_line("/tmp", port_open_cause("/tmp", 5)), "/tmp: 不是串口 (error 5)\n");
}
#endif

} // namespace
