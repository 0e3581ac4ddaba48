// What a port is, beside its name.
#include "serial/port_about.h"

#include "serial/port_list.h"
#include "sim/line.h"
#include "tests/support/scratch_folder.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/worker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#endif

using com::port_state;
using testing::ElementsAre;

namespace {

constexpr uint32_t patience_ms = 30000;
std::atomic<int> scans_asked{0};

class port_abouts_test : public testing::Test {
  protected:
    void SetUp() override {
        scans_asked = 0;
        idle_restart();
        idle_set_gui_thread();
        port_abouts_set_view([this](const port_abouts& answer) {
            seen = answer;
            ++answers;
        });
    }
    void TearDown() override {
        EXPECT_EQ(workers_stop_all(patience_ms), 0u);
        idle_dispatch();
        port_abouts_set_view({});
    }
    static void start() {
        port_abouts_start([] { ++scans_asked; });
    }
    bool answered(int times) {
        return idle_run_until([this, times] { return answers >= times; }, patience_ms);
    }

    port_abouts seen;
    int answers = 0;
};

TEST(port_about_text, says_the_device_and_what_is_in_the_way) {
    EXPECT_EQ(port_about_text({}), "");
    EXPECT_EQ(port_about_text({"Bench Adapter", port_state::free, {}}), "Bench Adapter");
    EXPECT_EQ(port_about_text({"Bench Adapter", port_state::taken, {}}), "Bench Adapter，被占用");
    EXPECT_EQ(port_about_text({"", port_state::forbidden, "sudo x"}), "无权限");
    EXPECT_EQ(port_about_text({"", port_state::ours, {}}), "已连接");
    EXPECT_EQ(port_about_text({"", port_state::absent, {}}), "不存在");
    EXPECT_EQ(port_about_text({"", port_state::no_port, {}}), "不是串口");
}

TEST_F(port_abouts_test, are_told_about_the_names_that_were_asked_for) {
    start();
    port_abouts_of({"COM250", "COM251"});
    ASSERT_TRUE(idle_run_until([this] { return seen.size() == 2; }, patience_ms));
    EXPECT_EQ(seen["COM250"], (port_about{"", port_state::absent, ""}));
    port_abouts_of({"COM250"});
    ASSERT_TRUE(idle_run_until([this] { return seen.size() == 1; }, patience_ms));
    EXPECT_EQ(scans_asked, 0) << "asking is no notice";
}

TEST_F(port_abouts_test, the_worker_ends_when_all_workers_are_asked_to) {
    start();
    const uint32_t alive = workers_running();
    start();
    EXPECT_EQ(workers_running(), alive) << "never more than one";
    EXPECT_EQ(workers_stop_all(patience_ms), 0u);
    start();
    port_abouts_of({"COM250"});
    ASSERT_TRUE(idle_run_until([this] { return !seen.empty(); }, patience_ms)) << "another one can be started";
}

#ifndef _WIN32 // only the system itself can make a port there

namespace fs = std::filesystem;

/// A folder in place of the root of all files, with an adapter in it.
class plugged_test : public port_abouts_test {
  protected:
    void SetUp() override {
        fs::create_directories(root / "dev");
        fs::create_directories(root / "sys/class/tty/ttyUSB3/device");
        std::ofstream(root / "sys/class/tty/ttyUSB3/device/product") << "Adapter\n";
        setenv("VKT_COM_ROOT", root.c_str(), 1);
        // The folders are looked for when a wait begins.
        port_abouts_test::SetUp();
    }
    void TearDown() override {
        port_abouts_test::TearDown();
        unsetenv("VKT_COM_ROOT");
        fs::remove_all(root);
    }
    fs::path root = scratch_folder("vkt_plugged");
    fs::path node = root / "dev/ttyUSB3";
};

TEST_F(plugged_test, a_notice_asks_for_a_scan_and_answers_again) {
    start();
    port_abouts_of({"COM14"});
    ASSERT_TRUE(idle_run_until([this] { return seen["COM14"].state == port_state::absent; }, patience_ms));
    ASSERT_TRUE(answered(1));
    EXPECT_EQ(seen["COM14"].device, "Adapter") << "what is known about it may outlive it";
    const int before = scans_asked;
    fs::create_symlink("/dev/null", node);
    ASSERT_TRUE(idle_run_until([&] { return scans_asked > before; }, patience_ms));
    ASSERT_TRUE(idle_run_until([this] { return seen["COM14"].state == port_state::free; }, patience_ms));
    EXPECT_EQ(seen["COM14"], (port_about{"Adapter", port_state::free, ""}));
    fs::remove(node);
    ASSERT_TRUE(idle_run_until([this] { return seen["COM14"].state == port_state::absent; }, patience_ms));
}

TEST_F(plugged_test, a_port_without_rights_comes_with_the_command_that_grants_them) {
    const std::unique_ptr<sim_line> line = sim_line_open("COM7");
    ASSERT_NE(line, nullptr);
    fs::create_symlink(line->path(), node);
    ASSERT_EQ(chmod(line->path().c_str(), 0), 0);
    const uid_t owner = geteuid();
    constexpr uid_t nobody = 65534;
    ASSERT_EQ(seteuid(owner == 0 ? nobody : owner), 0);
    const port_about found = port_about_ask("COM14");
    const port_about typed = port_about_ask(node);
    ASSERT_EQ(seteuid(owner), 0);
    EXPECT_EQ(found, (port_about{"Adapter", port_state::forbidden, "sudo chmod a+rw " + line->path()}));
    EXPECT_EQ(typed.state, port_state::forbidden);
    EXPECT_EQ(typed.grant, found.grant);
}

#endif

} // namespace
