#include "port_fixture.h"
#include "tests/support/scratch_folder.h"

#ifndef _WIN32
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

using open_test = port_test;

DWORD error_of_opening(const char* path) {
    com::SetLastError(0);
    const HANDLE opened = open_path(path);
    if (opened == INVALID_HANDLE_VALUE) return com::GetLastError();
    com::CloseHandle(opened);
    return 0;
}

TEST(open_path_test, absent_port_is_not_found) {
    EXPECT_EQ(error_of_opening(R"(\\.\COM250)"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(error_of_opening("COM6"), ERROR_FILE_NOT_FOUND);
}

TEST(open_path_test, no_path_is_refused) {
    EXPECT_NE(error_of_opening(""), 0U);
    EXPECT_NE(error_of_opening(R"(\\.\)"), 0U);
}

TEST(open_path_test, folder_is_access_denied) {
    // Under Wine COM20 is registered as a folder.
    com::map_port("COM20", "/tmp");
    EXPECT_EQ(error_of_opening(R"(\\.\COM20)"), ERROR_ACCESS_DENIED);
    com::map_port("COM20", "");
}

TEST(open_path_test, port_of_two_digits_needs_the_prefix) {
    const auto line = sim_line_open("COM12");
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(error_of_opening(R"(\\.\COM12)"), 0U);
    EXPECT_EQ(error_of_opening("COM12"), ERROR_FILE_NOT_FOUND);
}

TEST_F(open_test, bare_name_and_lower_case_open_too) {
    com::CloseHandle(port);
    port = INVALID_HANDLE_VALUE;
    EXPECT_EQ(error_of_opening("COM7"), 0U);
    EXPECT_EQ(error_of_opening("com7"), 0U);
}

TEST_F(open_test, closed_port_can_be_opened_again_at_once) {
    for (int i = 0; i < 20; i++) {
        transfer pending;
        pending.read(port, 1);
        ASSERT_TRUE(com::CloseHandle(port));
        port = open_path(port_path);
        ASSERT_NE(port, INVALID_HANDLE_VALUE) << i << " " << com::GetLastError();
    }
}

TEST_F(open_test, serial_settings_of_the_module_are_accepted) {
    DCB state{};
    state.BaudRate = 9600;
    state.ByteSize = 8;
    state.Parity = NOPARITY;
    state.StopBits = TWOSTOPBITS;
    EXPECT_TRUE(com::SetupComm(port, 1024, 1024));
    EXPECT_TRUE(com::SetCommState(port, &state)) << com::GetLastError();
    EXPECT_TRUE(com::PurgeComm(port, PURGE_TXCLEAR | PURGE_RXCLEAR));
}

TEST_F(open_test, timeouts_are_kept_as_they_were_set) {
    set_timeouts(1000, 500, 1001, 501, 1002);
    COMMTIMEOUTS t{};
    ASSERT_TRUE(com::GetCommTimeouts(port, &t));
    EXPECT_EQ(t.ReadIntervalTimeout, 1000U);
    EXPECT_EQ(t.ReadTotalTimeoutMultiplier, 500U);
    EXPECT_EQ(t.ReadTotalTimeoutConstant, 1001U);
    EXPECT_EQ(t.WriteTotalTimeoutMultiplier, 501U);
    EXPECT_EQ(t.WriteTotalTimeoutConstant, 1002U);
}

#ifndef _WIN32 // Wine opens a port twice, and has no device nodes

TEST_F(open_test, taken_port_is_access_denied_until_it_is_closed) {
    EXPECT_EQ(error_of_opening(port_path), ERROR_ACCESS_DENIED);
    EXPECT_EQ(error_of_opening(line->path().c_str()), ERROR_ACCESS_DENIED);
    com::CloseHandle(port);
    EXPECT_EQ(error_of_opening(port_path), 0U);
    port = INVALID_HANDLE_VALUE;
}

TEST_F(open_test, device_node_opens_by_its_path) {
    com::CloseHandle(port);
    port = open_path(line->path().c_str());
    EXPECT_NE(port, INVALID_HANDLE_VALUE) << com::GetLastError();
}

TEST_F(open_test, forbidden_port_is_access_denied) {
    com::CloseHandle(port);
    port = INVALID_HANDLE_VALUE;
    ASSERT_EQ(chmod(line->path().c_str(), 0), 0);
    const uid_t owner = geteuid();
    constexpr uid_t nobody = 65534;
    ASSERT_EQ(seteuid(owner == 0 ? nobody : owner), 0);
    EXPECT_EQ(error_of_opening(port_path), ERROR_ACCESS_DENIED);
    ASSERT_EQ(seteuid(owner), 0);
}

TEST_F(open_test, why_a_port_is_denied) {
    errno = EACCES; // of something else
    EXPECT_EQ(com::why_denied(port_path), com::denial::taken);
    EXPECT_EQ(com::why_denied("/tmp"), com::denial::no_port);
    EXPECT_EQ(com::why_denied("/dev/null/under"), com::denial::taken) << "nothing else is known";
}

using OpenDeathTest = open_test;
TEST_F(OpenDeathTest, why_a_forbidden_port_is_denied) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto as_nobody = [this] {
        constexpr uid_t nobody = 65534;
        const bool ready = chmod(line->path().c_str(), 0) == 0 && (getuid() != 0 || setuid(nobody) == 0);
        _exit(ready && com::why_denied(line->path()) == com::denial::forbidden ? 0 : 1);
    };
    EXPECT_EXIT(as_nobody(), testing::ExitedWithCode(0), "");
}

TEST_F(open_test, vanished_port_does_not_open) {
    com::CloseHandle(port);
    port = INVALID_HANDLE_VALUE;
    line->hang_up();
    EXPECT_EQ(error_of_opening(port_path), ERROR_FILE_NOT_FOUND);
}

TEST(open_path_test, things_that_are_no_terminal_are_access_denied) {
    const std::string file = scratch_folder("not_a_port").string();
    std::FILE* made = std::fopen(file.c_str(), "wb");
    ASSERT_NE(made, nullptr);
    std::fclose(made);
    EXPECT_EQ(error_of_opening(file.c_str()), ERROR_ACCESS_DENIED);
    EXPECT_EQ(error_of_opening("/dev/null"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(error_of_opening("/tmp"), ERROR_ACCESS_DENIED);
    std::remove(file.c_str());
    EXPECT_EQ(error_of_opening(file.c_str()), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(error_of_opening("not_a_port"), ERROR_FILE_NOT_FOUND);
}

TEST(open_path_test, paths_that_lead_nowhere_are_not_found) {
    const std::filesystem::path link = scratch_folder("to_itself");
    std::filesystem::create_symlink(link, link);
    EXPECT_EQ(error_of_opening(link.c_str()), ERROR_FILE_NOT_FOUND);
    std::filesystem::remove(link);
    EXPECT_EQ(error_of_opening("/dev/null/under"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(error_of_opening(("/" + std::string(5000, 'x')).c_str()), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(error_of_opening(nullptr), ERROR_PATH_NOT_FOUND);
}

TEST_F(open_test, without_room_for_one_more_file_it_says_so) {
    const auto other = sim_line_open("COM12");
    ASSERT_NE(other, nullptr);
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const int next = ::open("/dev/null", O_RDONLY);
    ::close(next);
    rlimit none = usual;
    none.rlim_cur = static_cast<rlim_t>(next);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const DWORD error = error_of_opening(R"(\\.\COM12)");
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
    EXPECT_EQ(error, ERROR_TOO_MANY_OPEN_FILES);
}

TEST_F(open_test, impossible_line_settings_are_refused) {
    DCB good{};
    good.BaudRate = 115200;
    good.ByteSize = 8;
    EXPECT_TRUE(com::SetCommState(port, &good));
    const auto refused = [&](auto change) {
        DCB bad = good;
        change(bad);
        com::SetLastError(0);
        return !com::SetCommState(port, &bad) && com::GetLastError() == ERROR_INVALID_PARAMETER;
    };
    EXPECT_TRUE(refused([](DCB& s) { s.BaudRate = 0; }));
    EXPECT_TRUE(refused([](DCB& s) { s.ByteSize = 4; }));
    EXPECT_TRUE(refused([](DCB& s) { s.ByteSize = 9; }));
    EXPECT_TRUE(refused([](DCB& s) { s.Parity = 5; }));
    EXPECT_TRUE(refused([](DCB& s) { s.StopBits = 3; }));
    EXPECT_TRUE(refused([](DCB& s) { s.StopBits = ONE5STOPBITS; }));
    EXPECT_FALSE(com::SetCommState(port, nullptr));
    EXPECT_FALSE(com::SetCommTimeouts(port, nullptr));
    EXPECT_FALSE(com::GetCommTimeouts(port, nullptr));
    EXPECT_TRUE(com::SetCommState(port, &good)) << "a refused record must not cost the port";
}

TEST_F(open_test, creating_a_port_is_refused) {
    constexpr DWORD create_new = 1;
    EXPECT_EQ(com::CreateFileA(port_path, GENERIC_READ, 0, nullptr, create_new, 0, nullptr), INVALID_HANDLE_VALUE);
    EXPECT_EQ(com::GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(open_test, a_port_has_no_model) {
    EXPECT_EQ(com::CreateFileA(port_path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, port), INVALID_HANDLE_VALUE);
    EXPECT_EQ(com::GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(open_test, handle_without_the_right_refuses_the_direction) {
    const auto open_for = [this](DWORD access) {
        com::CloseHandle(port);
        port = com::CreateFileA(port_path, access, 0, nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
        EXPECT_NE(port, INVALID_HANDLE_VALUE);
    };
    transfer t;
    open_for(GENERIC_READ);
    t.write(port, {1});
    EXPECT_EQ(t.error, ERROR_ACCESS_DENIED);
    send({5});
    t.read(port, 1);
    EXPECT_EQ(t.finish(port), 1U);
    open_for(GENERIC_WRITE);
    t.read(port, 1);
    EXPECT_EQ(t.error, ERROR_ACCESS_DENIED);
    t.write(port, {6});
    EXPECT_EQ(t.finish(port), 1U);
    EXPECT_EQ(receive(1), bytes_t{6});
}

#endif

} // namespace
