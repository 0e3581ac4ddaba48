#include "platform/system.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

#ifndef _WIN32
#include "platform/posix/command_line.h"

#include <unistd.h>
#endif

namespace {

TEST(system_test, cpu_time_grows_with_work) {
    const int64_t before = platform_cpu_ms();
    const auto start = std::chrono::steady_clock::now();
    volatile unsigned work = 0;
    while (platform_cpu_ms() < before + 50 && std::chrono::steady_clock::now() - start < std::chrono::seconds(20))
        for (int i = 0; i < 100000; i++) work = work + 1;
    EXPECT_GE(platform_cpu_ms(), before + 50);
}

TEST(system_test, resident_memory_grows_with_use) {
    const int64_t before = platform_resident_kib();
    EXPECT_GT(before, 500);
    std::string much(64U << 20U, 'x');
    EXPECT_GT(platform_resident_kib(), before + 32 * 1024) << much.size();
}

#ifndef _WIN32

TEST(system_test, settings_belong_where_the_variables_say) {
    const struct {
        const char *own, *config, *home, *folder;
    } cases[] = {
        {"/own", "/config", "/me", "/own"},
        {"", "/config", "/me", "/config/vktcfgtools"},
        {"", "", "/me", "/me/.config/vktcfgtools"},
        {"", "relative", "/me", "/me/.config/vktcfgtools"},
        {"", "", "", ""},
    };
    const char* const names[] = {"VKT_SETTINGS", "XDG_CONFIG_HOME", "HOME"};
    std::string before[3];
    for (int i = 0; i < 3; i++) before[i] = std::getenv(names[i]) == nullptr ? "" : std::getenv(names[i]);
    for (const auto& row : cases) {
        setenv(names[0], row.own, 1);
        setenv(names[1], row.config, 1);
        setenv(names[2], row.home, 1);
        EXPECT_EQ(platform_settings_folder(), row.folder);
    }
    for (int i = 0; i < 3; i++) setenv(names[i], before[i].c_str(), 1);
}

TEST(system_test, debugger_output_goes_to_standard_error_when_wanted) {
    ::testing::internal::CaptureStderr();
    platform_debugger_output("unwanted\n");
    setenv("VKT_DEBUGGER_LOG", "1", 1);
    platform_debugger_output("wanted\n");
    platform_debugger_output(nullptr);
    unsetenv("VKT_DEBUGGER_LOG");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "wanted\n");
}

TEST(system_death_test, exit_flushes_and_runs_nothing) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto leave = [] {
        std::atexit([] { std::fputs("handler", stderr); });
        std::fputs("flushed", ::fdopen(::dup(STDERR_FILENO), "w")); // standard error itself is written at once
        platform_exit_now(7);
    };
    EXPECT_EXIT(leave(), ::testing::ExitedWithCode(7), "flushed$");
}

std::wstring joined(std::initializer_list<const char*> arguments) {
    return command_line_join(static_cast<int>(arguments.size()), arguments.begin());
}

TEST(command_line_test, arguments_are_joined_with_blanks) {
    EXPECT_EQ(joined({}), L"");
    EXPECT_EQ(joined({"1024", "600", "true"}), L"1024 600 true");
}

TEST(command_line_test, arguments_with_blanks_are_quoted) {
    EXPECT_EQ(joined({"a b", "c"}), L"\"a b\" c");
    EXPECT_EQ(joined({"", "c\td"}), L"\"\" \"c\td\"");
}

TEST(command_line_test, quotes_of_the_user_stay_as_they_are) {
    EXPECT_EQ(joined({"\"800\"", "480"}), L"\"800\" 480");
    EXPECT_EQ(joined({"\"800", "480"}), L"\"800 480");
    EXPECT_EQ(joined({"\"800\" 480"}), L"\"800\" 480");
}

TEST(command_line_test, utf8_is_read_whatever_the_locale) {
    EXPECT_EQ(joined({"\xE4\xB8\xB2\xE5\x8F\xA3"}), L"\x4E32\x53E3");
    EXPECT_EQ(joined({"\xC3\xA9\xF0\x9F\x98\x80"}), L"\x00E9\x1F600");
}

TEST(command_line_test, bytes_that_are_no_utf8_become_replacement_characters) {
    EXPECT_EQ(joined({"a\x80z"}), L"a\xFFFDz");
    EXPECT_EQ(joined({"\xC0\xAF"}), L"\xFFFD\xFFFD") << "overlong";
    EXPECT_EQ(joined({"\xED\xA0\x80"}), L"\xFFFD") << "surrogate";
    EXPECT_EQ(joined({"\xF4\x90\x80\x80"}), L"\xFFFD") << "past the last character";
    EXPECT_EQ(joined({"\xE4\xB8"}), L"\xFFFD") << "cut short";
}

TEST(command_line_test, the_bounds_of_utf8_are_exact) {
    const std::pair<const char*, const wchar_t*> bounds[] = {
        {"\x7F", L"\x007F"},
        {"\xC2\x80", L"\x0080"},
        {"\xC1\xBF", L"\xFFFD\xFFFD"},
        {"\xDF\xBF", L"\x07FF"},
        {"\xE0\xA0\x80", L"\x0800"},
        {"\xE0\x9F\xBF", L"\xFFFD"},
        {"\xED\x9F\xBF", L"\xD7FF"},
        {"\xED\xBF\xBF", L"\xFFFD"}, // the last surrogate
        {"\xEE\x80\x80", L"\xE000"},
        {"\xEF\xBF\xBF", L"\xFFFF"},
        {"\xF0\x90\x80\x80", L"\x10000"},
        {"\xF0\x8F\xBF\xBF", L"\xFFFD"},
        {"\xF4\x8F\xBF\xBF", L"\x10FFFF"},
        {"\xF5\x80\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD"},
    };
    for (const auto& [bytes, text] : bounds) EXPECT_EQ(joined({bytes}), text);
}

#endif

} // namespace
