// The system's notices of ports that come and go.
#include "platform/port_watch.h"

#include "platform/com_port.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

namespace {

using com::port_watch;
using end = com::port_watch::end;

constexpr uint32_t long_ms = 10000;
constexpr uint32_t soon_ms = 1; ///< for what was noticed before the wait, and for what is never noticed

TEST(port_watch_waits, end_by_time_and_by_wake) {
    port_watch watch;
    EXPECT_EQ(watch.wait(soon_ms), end::timed_out);
    watch.wake();
    EXPECT_EQ(watch.wait(UINT32_MAX), end::woken) << "a wake before the wait counts";
    EXPECT_EQ(watch.wait(soon_ms), end::timed_out) << "once";
    std::thread other([&watch] { watch.wake(); });
    EXPECT_EQ(watch.wait(UINT32_MAX), end::woken);
    other.join();
}

#ifndef _WIN32 // only the system itself can make a port there

namespace fs = std::filesystem;

class port_watch_test : public testing::Test {
  protected:
    void SetUp() override {
        fs::create_directories(root / "dev");
        fs::create_directories(root / "ports");
        setenv("VKT_COM_ROOT", root.c_str(), 1);
    }
    void TearDown() override {
        unsetenv("VKT_COM_ROOT");
        com::map_port("COM77", "");
        fs::remove_all(root);
    }
    void make(const std::string& name) const { std::ofstream(root / name) << ""; }
    static void drain(port_watch* watch) {
        while (watch->wait(soon_ms) == end::noticed) {
        }
    }

    fs::path root = scratch_folder("vkt_watch");
};

TEST_F(port_watch_test, an_adapter_that_comes_and_goes_is_noticed) {
    port_watch watch;
    make("dev/ttyUSB3");
    EXPECT_EQ(watch.wait(long_ms), end::noticed);
    drain(&watch);
    fs::remove(root / "dev/ttyUSB3");
    EXPECT_EQ(watch.wait(long_ms), end::noticed);
    drain(&watch);
    EXPECT_EQ(watch.wait(soon_ms), end::timed_out);
}

TEST_F(port_watch_test, rights_that_change_are_noticed) {
    make("dev/ttyACM0");
    port_watch watch;
    fs::permissions(root / "dev/ttyACM0", fs::perms::none);
    EXPECT_EQ(watch.wait(long_ms), end::noticed);
}

TEST_F(port_watch_test, what_is_no_port_is_not_noticed) {
    port_watch watch;
    for (const char* name : {"dev/tty3", "dev/ttyUSB", "dev/ttyUSBx", "dev/null", "ports/ttyUSB3"}) make(name);
    EXPECT_EQ(watch.wait(soon_ms), end::timed_out);
}

TEST_F(port_watch_test, a_notice_waits_for_the_wait_and_a_wake_does_not_take_it) {
    port_watch watch;
    make("dev/ttyUSB3");
    watch.wake();
    EXPECT_EQ(watch.wait(long_ms), end::woken);
    EXPECT_EQ(watch.wait(long_ms), end::noticed);
}

TEST_F(port_watch_test, a_name_given_by_hand_is_noticed_in_its_folder_and_at_its_target) {
    make("ports/target");
    com::map_port("COM77", root / "dev/by-hand");
    fs::create_symlink(root / "ports/target", root / "dev/by-hand");
    port_watch watch;
    make("ports/other");
    EXPECT_EQ(watch.wait(soon_ms), end::timed_out);
    fs::permissions(root / "ports/target", fs::perms::none);
    EXPECT_EQ(watch.wait(long_ms), end::noticed);
    drain(&watch);
    fs::remove(root / "dev/by-hand");
    EXPECT_EQ(watch.wait(long_ms), end::noticed);
    drain(&watch);
    fs::create_symlink(root / "ports/target", root / "dev/by-hand");
    EXPECT_EQ(watch.wait(long_ms), end::noticed);
}

TEST_F(port_watch_test, a_folder_that_comes_later_is_watched_from_then_on) {
    com::map_port("COM77", root / "by-id/usb-adapter");
    port_watch watch;
    EXPECT_EQ(watch.wait(soon_ms), end::timed_out);
    fs::create_directories(root / "by-id");
    EXPECT_EQ(watch.wait(long_ms), end::noticed) << "who knows what is in it";
    make("by-id/usb-adapter");
    EXPECT_EQ(watch.wait(long_ms), end::noticed);
    drain(&watch);
    fs::remove_all(root / "by-id");
    EXPECT_EQ(watch.wait(long_ms), end::noticed);
}

#endif

} // namespace
