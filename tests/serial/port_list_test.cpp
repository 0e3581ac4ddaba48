// The port list: its text, the one-shot load, the watcher, and the probe for write permission.
#include "serial/port_list.h"

#include "platform/com_port.h"
#include "serial/port_names.h"
#include "tests/support/console_capture.h"
#include "tests/support/scratch_folder.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/text.h"
#include "toolkit/core/worker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

using testing::Contains;
using testing::ElementsAre;

namespace {

constexpr uint32_t patience_ms = 30000;
constexpr const char* list_file = "com_list.txt";

std::string content(const char* path) {
    std::string text;
    return fs_read_all(path, &text) ? text : "(none)";
}

class port_list : public testing::Test {
  protected:
    void SetUp() override {
        com::fault_clear();
        idle_restart();
        idle_set_gui_thread();
        before_ = std::filesystem::current_path();
        folder_ = scratch_folder("vkt_ports");
        std::filesystem::create_directories(folder_);
        std::filesystem::current_path(folder_);
        port_list_set_view({.reset = [this] { shown.assign(1, "reset"); },
                            .append =
                                [this](uint32_t index, const std::string& name) {
                                    shown.push_back(tk_format("%u %s", index, name.c_str()));
                                },
                            .finished = [this] { ++finished; },
                            .no_permission = [this] { ++refused; }});
    }
    void TearDown() override {
        EXPECT_EQ(workers_stop_all(patience_ms), 0u);
        idle_dispatch();
        port_list_set_view({});
        com::fault_clear();
        port_watcher_period_ms() = 60000;
        std::filesystem::current_path(before_);
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    bool load() {
        const int before = finished;
        port_list_load_start();
        return idle_run_until([&] { return finished > before; }, patience_ms);
    }

    std::vector<std::string> shown;
    int finished = 0;
    int refused = 0;
    console_capture console;

  private:
    std::filesystem::path before_, folder_;
};

TEST(port_list_text, names_below_ten_stay_bare) {
    EXPECT_EQ(port_list_text({"COM3", "COM9", "COM10", "COM12", "LPT1", "NUL", "C:"}),
              "COM3\nCOM9\n\\\\.\\COM10\n\\\\.\\COM12\nLPT1\n");
}

TEST(port_list_text, all_digits_of_a_name_count_and_never_overflow) {
    EXPECT_EQ(port_list_text({"COM", "2COM3", "COM4294967296", "COM99999999999999999999999", "XLPT7Y"}),
              "COM\n\\\\.\\2COM3\n\\\\.\\COM4294967296\n\\\\.\\COM99999999999999999999999\nXLPT7Y\n");
}

TEST(port_list_text, nothing_gives_nothing) { EXPECT_EQ(port_list_text({}), ""); }

TEST(port_shown_name, only_a_real_prefix_is_dropped) {
    EXPECT_EQ(port_shown_name("\\\\.\\COM12"), "COM12");
    EXPECT_EQ(port_shown_name("COM3"), "COM3");
    EXPECT_EQ(port_shown_name("LPT1"), "LPT1");
    EXPECT_EQ(port_shown_name("\\\\.\\"), "");
    EXPECT_EQ(port_shown_name("\\\\."), "\\\\.");
    EXPECT_EQ(port_shown_name(""), "");
}

TEST_F(port_list, lines_are_cut_at_100_bytes_and_may_be_empty) {
    EXPECT_EQ(port_list_lines(), std::nullopt);
    std::ofstream(list_file, std::ios::binary) << "COM3\n\n" << std::string(5000, 'C') << "\r\nCOM4";
    const auto lines = port_list_lines();
    ASSERT_TRUE(lines.has_value());
    EXPECT_THAT(*lines, ElementsAre("COM3", "", std::string(100, 'C'), "COM4"));
}

TEST_F(port_list, a_scan_writes_the_list) {
    EXPECT_EQ(port_scan(), 0);
    EXPECT_NE(content(list_file), "(none)");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 1) << "nothing is left beside it";
}

TEST_F(port_list, a_scan_without_names_fails_and_leaves_an_empty_list) {
    std::ofstream(list_file) << "COM3\n";
    com::fault_set(com::call::query_dos_device, 0, 1, 5);
    EXPECT_EQ(port_scan(), -1);
    EXPECT_EQ(content(list_file), "");
    EXPECT_EQ(com::call_count(com::call::query_dos_device), 1u);
}

TEST_F(port_list, a_buffer_that_is_too_small_is_asked_again_once) {
    com::fault_set(com::call::query_dos_device, 0, 1, 122);
    EXPECT_EQ(port_scan(), 0);
    com::fault_clear();
    com::fault_set(com::call::query_dos_device, 0, 2, 122);
    EXPECT_EQ(port_scan(), -1);
    EXPECT_EQ(com::call_count(com::call::query_dos_device), 2u);
}

TEST_F(port_list, names_have_room_for_65535_bytes_each_time) {
    std::vector<std::string> calls;
    com::watch_calls([&calls](const std::string& call) { calls.push_back(call); });
    com::fault_set(com::call::query_dos_device, 0, 1, 122);
    EXPECT_EQ(port_scan(), 0);
    com::watch_calls({});
    EXPECT_THAT(calls, ElementsAre("QueryDosDeviceA 65535", "QueryDosDeviceA 65535"));
}

TEST_F(port_list, a_list_that_cannot_be_written_fails) {
    std::filesystem::create_directories(std::filesystem::path(list_file) / "in_the_way");
    EXPECT_EQ(port_scan(), -1);
    EXPECT_EQ(com::call_count(com::call::query_dos_device), 0u);
    EXPECT_EQ(console.text(), "") << "no name is printed that reaches no list";
    EXPECT_TRUE(load()) << "the load says that it has finished all the same";
    EXPECT_TRUE(shown.empty());
}

TEST_F(port_list, a_load_answers_whether_there_was_a_list) {
    EXPECT_EQ(port_list_load(), 0u);
    std::filesystem::remove(list_file);
    std::filesystem::create_directories(list_file);
    EXPECT_EQ(port_list_load(), 1u);
}

TEST_F(port_list, no_port_at_all_empties_the_list) {
    com::fault_set(com::call::query_dos_device, 0, 1, 5);
    ASSERT_TRUE(load());
    EXPECT_THAT(shown, ElementsAre("reset"));
}

TEST_F(port_list, a_load_shows_the_scanned_lines_by_position) {
    ASSERT_TRUE(load());
    ASSERT_FALSE(shown.empty());
    EXPECT_EQ(shown[0], "reset");
    const auto lines = port_list_lines();
    ASSERT_TRUE(lines.has_value());
    ASSERT_EQ(shown.size(), lines->size() + 1);
    for (std::size_t i = 0; i < lines->size(); ++i) {
        EXPECT_EQ(shown[i + 1], std::to_string(i) + " " + port_shown_name((*lines)[i]));
        EXPECT_EQ(port_list_line(static_cast<uint32_t>(i)), (*lines)[i]);
    }
    EXPECT_EQ(refused, 0);
    EXPECT_FALSE(std::filesystem::exists("authority"));
}

TEST_F(port_list, each_press_scans_again) {
    ASSERT_TRUE(load());
    const uint32_t before = com::call_count(com::call::query_dos_device);
    ASSERT_TRUE(load());
    EXPECT_EQ(com::call_count(com::call::query_dos_device), before + 1);
}

TEST_F(port_list, a_press_while_one_loads_does_nothing) {
    port_list_load_start();
    port_list_load_start();
    ASSERT_TRUE(idle_run_until([this] { return finished > 0; }, patience_ms));
    EXPECT_EQ(com::call_count(com::call::query_dos_device), 1u);
    EXPECT_EQ(finished, 1);
}

TEST_F(port_list, a_folder_that_refuses_files_is_told) {
    EXPECT_EQ(authority_check(), 0);
    std::filesystem::create_directories(std::filesystem::path("authority") / "in_the_way");
    EXPECT_EQ(authority_check(), -1);
    ASSERT_TRUE(load());
    EXPECT_EQ(refused, 1);
    EXPECT_THAT(shown, Contains("reset")) << "the list comes all the same";
}

TEST_F(port_list, the_watcher_does_not_probe_the_folder) {
    std::filesystem::create_directories(std::filesystem::path("authority") / "in_the_way");
    port_watcher_period_ms() = 1;
    port_watcher_start();
    ASSERT_TRUE(idle_run_until([] { return com::call_count(com::call::query_dos_device) >= 3; }, patience_ms));
    EXPECT_EQ(workers_stop_all(patience_ms), 0u);
    idle_dispatch();
    EXPECT_EQ(refused, 0);
}

#ifdef __linux__
/// Names of this process's threads, as the system knows them.
std::vector<std::string> thread_names() {
    std::vector<std::string> names;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string name;
        std::getline(std::ifstream(task.path() / "comm"), name);
        names.push_back(name);
    }
    return names;
}

TEST_F(port_list, threads_have_their_names) {
    port_watcher_start();
    EXPECT_TRUE(
        idle_run_until([] { return std::ranges::count(thread_names(), "com_get_entry2") == 1; }, patience_ms));
    std::vector<std::string> names;
    com::watch_calls([&names](const std::string& call) {
        if (call.starts_with("QueryDosDeviceA")) names = thread_names();
    });
    ASSERT_TRUE(load());
    com::watch_calls({});
    EXPECT_THAT(names, Contains("com_get_entry"));
}
#endif

TEST_F(port_list, the_watcher_scans_at_once_and_then_by_its_period) {
    port_watcher_period_ms() = 20;
    port_watcher_start();
    ASSERT_TRUE(idle_run_until([] { return com::call_count(com::call::query_dos_device) >= 3; }, patience_ms));
    EXPECT_EQ(finished, 0);
    EXPECT_EQ(shown.empty() ? "" : shown[0], "reset");
}

TEST_F(port_list, never_more_than_one_watcher) {
    port_watcher_period_ms() = 600000;
    port_watcher_start();
    ASSERT_TRUE(idle_run_until([] { return com::call_count(com::call::query_dos_device) == 1; }, patience_ms));
    const uint32_t alive = workers_running();
    port_watcher_start();
    EXPECT_EQ(workers_running(), alive);
    ASSERT_TRUE(idle_run_until([] { return com::call_count(com::call::query_dos_device) == 2; }, patience_ms))
        << "it scans now instead";
}

TEST_F(port_list, the_watcher_ends_when_all_workers_are_asked_to) {
    port_watcher_period_ms() = 600000;
    port_watcher_start();
    EXPECT_EQ(workers_stop_all(patience_ms), 0u);
    com::fault_clear();
    port_watcher_start();
    ASSERT_TRUE(idle_run_until([] { return com::call_count(com::call::query_dos_device) == 1; }, patience_ms))
        << "another one can be started";
}

TEST_F(port_list, a_watcher_has_forgotten_what_was_asked_of_the_one_before) {
    port_watcher_period_ms() = 600000;
    port_watcher_start();
    com::fault_clear();
    port_watcher_start(); // asked for, and perhaps never done
    EXPECT_EQ(workers_stop_all(patience_ms), 0u);
    com::fault_clear();
    port_watcher_start();
    ASSERT_TRUE(idle_run_until([] { return com::call_count(com::call::query_dos_device) == 1; }, patience_ms));
    port_watcher_start();
    ASSERT_TRUE(idle_run_until([] { return com::call_count(com::call::query_dos_device) == 2; }, patience_ms));
    EXPECT_EQ(workers_stop_all(patience_ms), 0u);
    EXPECT_EQ(com::call_count(com::call::query_dos_device), 2u);
}

TEST_F(port_list, a_load_that_was_stopped_can_be_started_again) {
    port_list_load_start();
    EXPECT_EQ(workers_stop_all(patience_ms), 0u);
    ASSERT_TRUE(idle_run_until([this] { return finished == 1; }, patience_ms)) << "it says that it has finished";
    ASSERT_TRUE(load());
}

TEST_F(port_list, two_writers_take_turns) {
    port_watcher_period_ms() = 1;
    port_watcher_start();
    for (int i = 0; i < 20; ++i) ASSERT_TRUE(load());
    const std::vector<std::string> seen = shown;
    EXPECT_EQ(std::count(seen.begin(), seen.end(), "reset"), 1);
    std::vector<std::string> unique = seen;
    std::sort(unique.begin(), unique.end());
    EXPECT_EQ(std::adjacent_find(unique.begin(), unique.end()), unique.end()) << "no entry is there twice";
}

#ifndef _WIN32 // names cannot be made up there
TEST_F(port_list, mapped_names_reach_list_and_screen) {
    const std::string over_long = std::string(120, 'A') + "COM3";
    for (const std::string& name : {std::string("COM477"), std::string("LPT7"), over_long})
        com::map_port(name, "/dev/null");
    ASSERT_TRUE(load());
    for (const std::string& name : {std::string("COM477"), std::string("LPT7"), over_long}) com::map_port(name, "");
    EXPECT_THAT(shown, Contains(testing::EndsWith(" COM477")));
    EXPECT_THAT(shown, Contains(testing::EndsWith(" LPT7")));
    EXPECT_THAT(shown, Contains(testing::EndsWith(" " + std::string(100, 'A'))));
    EXPECT_THAT(content(list_file), testing::HasSubstr("\\\\.\\COM477\n"));
    EXPECT_THAT(console.text(), testing::HasSubstr("COM477\n"));
}
#endif

} // namespace
