// What shows of a port without opening it.
#include "port_fixture.h"

#include "platform/port_state.h"
#include "tests/support/scratch_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#ifndef _WIN32
#include "platform/posix/port_names.h"
#include "platform/posix/port_rights.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

using state_test = port_test;
using com::port_state;

TEST_F(state_test, a_port_that_is_not_there_is_absent) {
    EXPECT_EQ(com::look_at_port(R"(\\.\COM250)"), port_state::absent);
    EXPECT_EQ(com::look_at_port("COM250"), port_state::absent);
    EXPECT_EQ(com::look_at_port(""), port_state::absent);
    EXPECT_EQ(com::port_grant_command("COM250"), "");
}

TEST_F(state_test, looking_opens_nothing) {
    std::vector<std::string> calls;
    com::watch_calls([&calls](const std::string& call) { calls.push_back(call); });
    com::look_at_port(port_path);
    com::watch_calls({});
    EXPECT_TRUE(calls.empty());
}

#ifdef _WIN32
TEST_F(state_test, a_port_that_is_there_is_free) { EXPECT_EQ(com::look_at_port(port_path), port_state::free); }
#else

TEST_F(state_test, who_has_a_port_open_shows) {
    EXPECT_EQ(com::look_at_port(port_path), port_state::ours);
    com::CloseHandle(port);
    port = INVALID_HANDLE_VALUE;
    EXPECT_EQ(com::look_at_port(port_path), port_state::free);
    EXPECT_EQ(com::look_at_port(line->path()), port_state::free) << "by the node's path, too";
    int ready[2];
    int done[2];
    ASSERT_EQ(pipe(ready) + pipe(done), 0);
    const pid_t other = fork();
    ASSERT_GE(other, 0);
    if (other == 0) {
        close(done[1]);
        const int fd = open(line->path().c_str(), O_RDWR | O_NOCTTY);
        char byte = flock(fd, LOCK_EX) == 0 ? 'y' : 'n';
        _exit(write(ready[1], &byte, 1) == 1 && read(done[0], &byte, 1) == 0 ? 0 : 1);
    }
    char locked = 'n';
    ASSERT_EQ(read(ready[0], &locked, 1), 1);
    EXPECT_EQ(locked, 'y');
    EXPECT_EQ(com::look_at_port(port_path), port_state::taken);
    for (const int fd : {ready[0], ready[1], done[0], done[1]}) close(fd);
    EXPECT_EQ(waitpid(other, nullptr, 0), other);
    EXPECT_EQ(com::look_at_port(port_path), port_state::free);
}

TEST_F(state_test, a_port_without_rights_is_forbidden_and_a_command_grants_them) {
    EXPECT_EQ(com::port_grant_command(port_path), "") << "there is nothing to grant";
    struct stat about {};
    ASSERT_EQ(stat(line->path().c_str(), &about) + chmod(line->path().c_str(), 0), 0);
    const uid_t owner = geteuid();
    constexpr uid_t nobody = 65534;
    ASSERT_EQ(seteuid(owner == 0 ? nobody : owner), 0);
    EXPECT_EQ(com::look_at_port(port_path), port_state::forbidden);
    EXPECT_EQ(com::port_grant_command(port_path), "sudo chmod a+rw " + line->path());
    ASSERT_EQ(seteuid(owner), 0);
}

TEST_F(state_test, what_is_no_port_says_so) {
    EXPECT_EQ(com::look_at_port("/tmp"), port_state::no_port);
    EXPECT_EQ(com::look_at_port("/dev/null/under"), port_state::absent);
    EXPECT_EQ(com::port_grant_command("/tmp"), "");
}

TEST(grant_command, is_a_place_in_the_group_that_may_or_else_rights_for_all) {
    using posix_com::grant_command;
    EXPECT_EQ(grant_command({.node = "/dev/ttyUSB0", .mode = 0660, .group = "dialout"}),
              "sudo usermod -aG dialout $USER");
    const std::string for_all = "sudo chmod a+rw /dev/ttyUSB0";
    EXPECT_EQ(grant_command({.node = "/dev/ttyUSB0", .mode = 0600, .group = "dialout"}), for_all);
    EXPECT_EQ(grant_command({.node = "/dev/ttyUSB0", .mode = 0620, .group = "tty"}), for_all);
    EXPECT_EQ(grant_command({.node = "/dev/ttyUSB0", .mode = 0660}), for_all) << "a group without a name";
    EXPECT_EQ(grant_command({.node = "/dev/ttyUSB0", .mode = 0660, .group = "root", .group_wide = true}), for_all);
    EXPECT_EQ(grant_command({.node = "/dev/ttyUSB0", .mode = 0660, .group = "dialout", .in_group = true}), for_all)
        << "that counts from the next login on only";
    EXPECT_EQ(grant_command({.node = "/tmp/it's $(x)/tty"}), "sudo chmod a+rw '/tmp/it'\\''s $(x)/tty'");
}

TEST(lock_holder, is_the_process_that_has_the_lock) {
    const std::string locks = "1: POSIX  ADVISORY  WRITE 4731 fe:00:11214885 0 0\n"
                              "2: FLOCK  ADVISORY  WRITE 10979 00:1a:4 0 EOF\n"
                              "2: -> FLOCK  ADVISORY  WRITE 777 00:1a:5 0 EOF\n"
                              "3: FLOCK  ADVISORY  READ 778 00:1a:6 0 EOF\n"
                              "4: FLOCK  ADVISORY  WRITE 0 00:1a:7 0 EOF\n";
    using posix_com::lock_holder;
    EXPECT_EQ(lock_holder(locks, makedev(0, 0x1a), 4), 10979);
    EXPECT_EQ(lock_holder(locks, makedev(0, 0x1b), 4), 0);
    EXPECT_EQ(lock_holder(locks, makedev(0, 0x1a), 5), 0) << "it waits for one";
    EXPECT_EQ(lock_holder(locks, makedev(0, 0x1a), 6), 778) << "a shared one is in the way, too";
    EXPECT_EQ(lock_holder(locks, makedev(0xfe, 0), 11214885), 0) << "another kind of lock";
    EXPECT_EQ(lock_holder(locks, makedev(0, 0x1a), 7), -1) << "somebody who cannot be seen from here";
    EXPECT_EQ(lock_holder("", makedev(0, 0x1a), 4), 0);
    EXPECT_EQ(lock_holder("FLOCK\n\n1: FLOCK", makedev(0, 0x1a), 4), 0);
}

/// A folder in place of the root of all files.
class root_test : public testing::Test {
  protected:
    void SetUp() override { setenv("VKT_COM_ROOT", root.c_str(), 1); }
    void TearDown() override {
        unsetenv("VKT_COM_ROOT");
        std::filesystem::remove_all(root);
    }
    std::filesystem::path root = scratch_folder("vkt_root");
};

TEST_F(root_test, has_the_nodes_of_the_rule_and_what_is_known_about_them) {
    std::filesystem::create_directories(root / "dev");
    std::filesystem::create_directories(root / "sys/class/tty/ttyUSB3/device");
    std::filesystem::create_directories(root / "by-id");
    std::ofstream(root / "dev/ttyUSB3") << "";
    std::filesystem::create_symlink(root / "dev/ttyUSB3", root / "by-id/adapter");
    std::ofstream(root / "sys/class/tty/ttyUSB3/device/manufacturer") << "Bench\n";
    std::ofstream(root / "sys/class/tty/ttyUSB3/device/product") << "Adapter\n";
    EXPECT_EQ(posix_com::port_name_node("COM14"), root / "dev/ttyUSB3");
    EXPECT_EQ(posix_com::port_names(), std::vector<std::string>{"COM14"});
    EXPECT_EQ(com::describe_port("COM14"), "Bench Adapter");
    com::map_port("COM77", root / "by-id/adapter");
    EXPECT_EQ(com::describe_port("COM77"), "Bench Adapter") << "by the node that the link leads to";
    com::map_port("COM77", "");
}

#endif

} // namespace
