#include "port_fixture.h"
#include "tests/support/scratch_folder.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#ifndef _WIN32
#include "platform/posix/port_names.h"
#endif

namespace {

using names_test = port_test;

/// The system's list of names, cut at its zeros.
std::vector<std::string> listed() {
    std::vector<char> text(65535);
    const DWORD size = com::QueryDosDeviceA(nullptr, text.data(), static_cast<DWORD>(text.size()));
    EXPECT_GT(size, 0U) << com::GetLastError();
    EXPECT_EQ(text[size - 1], '\0');
    std::vector<std::string> names;
    for (const char* at = text.data(); *at != '\0'; at += names.back().size() + 1) names.emplace_back(at);
    return names;
}

bool has(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

TEST_F(names_test, port_is_listed) {
    EXPECT_TRUE(has(listed(), "COM7"));
    EXPECT_FALSE(has(listed(), "COM250"));
}

TEST_F(names_test, buffer_that_is_too_small_is_refused) {
    char few[4] = {};
    EXPECT_EQ(com::QueryDosDeviceA(nullptr, few, 2), 0U);
    EXPECT_EQ(com::GetLastError(), ERROR_INSUFFICIENT_BUFFER);
}

TEST_F(names_test, one_name_leads_to_its_device) {
    char target[512] = {};
    EXPECT_GT(com::QueryDosDeviceA("COM7", target, sizeof target), 0U);
    EXPECT_NE(target[0], '\0');
    EXPECT_EQ(com::QueryDosDeviceA("COM250", target, sizeof target), 0U);
    EXPECT_EQ(com::GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST_F(names_test, a_port_is_present_by_its_name) {
    EXPECT_TRUE(com::port_present("COM7"));
    EXPECT_TRUE(com::port_present("\\\\.\\COM7"));
    for (const char* none : {"COM250", "\\\\.\\COM250", "none", ""}) EXPECT_FALSE(com::port_present(none)) << none;
    com::fault_set(com::call::query_dos_device, 0, 1, 2);
    EXPECT_FALSE(com::port_present("COM7"));
}

TEST_F(names_test, a_port_without_an_adapter_has_no_description) {
    EXPECT_EQ(com::describe_port("COM7"), "");
    EXPECT_EQ(com::describe_port("COM250"), "");
    EXPECT_EQ(com::describe_port("none"), "");
    EXPECT_EQ(com::describe_port(""), "");
}

#ifdef _WIN32
TEST_F(names_test, an_adapter_is_described_by_its_maker_and_its_friendly_name) {
    EXPECT_EQ(com::describe_port("COM12"), "Bench 测试 adapter");
}
#endif

#ifndef _WIN32

TEST_F(names_test, a_port_is_present_by_the_path_of_a_device) {
    EXPECT_TRUE(com::port_present("/dev/null"));
    EXPECT_FALSE(com::port_present("/dev"));
    EXPECT_FALSE(com::port_present("/dev/none"));
    com::map_port("COM251", "/dev/none");
    EXPECT_FALSE(com::port_present("COM251"));
    com::map_port("COM251", "");
}

/// A folder that is removed at the end.
class scratch {
  public:
    scratch() { std::filesystem::create_directories(path); }
    ~scratch() { std::filesystem::remove_all(path); }
    void device(const std::string& node, const char* type = nullptr) const {
        std::ofstream(path / "dev" / node) << "";
        if (type != nullptr) {
            std::filesystem::create_directories(path / "sys" / node);
            std::ofstream(path / "sys" / node / "type") << type << "\n";
        }
    }
    std::vector<std::string> names() const {
        return posix_com::port_names_by_rule((path / "sys").string(), (path / "dev").string());
    }
    const std::filesystem::path path = scratch_folder("port_names");
};

TEST(name_rule_test, each_kind_of_device_has_its_range) {
    const scratch system;
    std::filesystem::create_directories(system.path / "dev");
    EXPECT_TRUE(system.names().empty());
    system.device("ttyS0", "4");
    system.device("ttyS1", "0"); // a socket without a chip
    system.device("ttyS3", "4");
    system.device("ttyS12", "4");
    system.device("ttyUSB0");
    system.device("ttyUSB39");
    system.device("ttyUSB40"); // past the range
    system.device("ttyACM2");
    system.device("lp0");
    system.device("tty1");
    EXPECT_EQ(system.names(),
              (std::vector<std::string>{"COM1", "COM4", "COM11", "COM50", "COM53", "COM103", "LPT1"}));
}

TEST(name_rule_test, unplugging_one_adapter_keeps_the_names_of_the_others) {
    const scratch system;
    std::filesystem::create_directories(system.path / "dev");
    system.device("ttyUSB0");
    system.device("ttyUSB1");
    EXPECT_EQ(system.names(), (std::vector<std::string>{"COM11", "COM12"}));
    std::filesystem::remove(system.path / "dev" / "ttyUSB0");
    EXPECT_EQ(system.names(), (std::vector<std::string>{"COM12"}));
}

TEST(name_rule_test, names_lead_to_nodes) {
    EXPECT_EQ(posix_com::port_name_node("COM1"), "/dev/ttyS0");
    EXPECT_EQ(posix_com::port_name_node("COM10"), "/dev/ttyS9");
    EXPECT_EQ(posix_com::port_name_node("COM11"), "/dev/ttyUSB0");
    EXPECT_EQ(posix_com::port_name_node("com50"), "/dev/ttyUSB39");
    EXPECT_EQ(posix_com::port_name_node("COM51"), "/dev/ttyACM0");
    EXPECT_EQ(posix_com::port_name_node("COM101"), "/dev/ttyS10");
    EXPECT_EQ(posix_com::port_name_node("LPT1"), "/dev/lp0");
    for (const char* none : {"", "COM", "COM0", "COM91", "COM-1", "COM1x", "7", "XYZ1", "COM99999999999", "LPT0"})
        EXPECT_EQ(posix_com::port_name_node(none), "") << none;
}

/// Sets an environment variable for the test.
class environment {
  public:
    explicit environment(const char* value) { setenv("VKT_COM_PORTS", value, 1); }
    ~environment() { unsetenv("VKT_COM_PORTS"); }
};

TEST(name_environment_test, adds_and_overrides_names) {
    const environment set("COM7=/some/where;COM300=/dev/pts/300;LPT3=/dev/usb/lp0;COM1=");
    EXPECT_EQ(posix_com::port_name_node("COM7"), "/some/where");
    EXPECT_EQ(posix_com::port_name_node("COM300"), "/dev/pts/300");
    EXPECT_EQ(posix_com::port_name_node("COM1"), "") << "an empty path takes the name away";
    const std::vector<std::string> names = listed();
    EXPECT_TRUE(has(names, "COM7"));
    EXPECT_TRUE(has(names, "COM300"));
    EXPECT_FALSE(has(names, "COM1"));
    ASSERT_FALSE(names.empty());
    EXPECT_EQ(names.back(), "LPT3");
    com::map_port("COM7", "/mine");
    EXPECT_EQ(posix_com::port_name_node("COM7"), "/mine") << "the process's own comes first";
    com::map_port("COM7", "");
    EXPECT_EQ(posix_com::port_name_node("COM7"), "/some/where");
}

TEST(name_environment_test, slips_are_passed_over) {
    const environment set(";;COM7;=/x;COM=/x;7=/x;COM8=/eight;COM99999999999=/x;COM9=/a=b");
    EXPECT_EQ(posix_com::port_name_node("COM7"), "/dev/ttyS6");
    EXPECT_EQ(posix_com::port_name_node("COM8"), "/eight");
    EXPECT_EQ(posix_com::port_name_node("COM9"), "/a=b");
}

TEST(name_environment_test, list_is_ordered_by_number) {
    const environment set("COM100=/a;COM20=/b;COM3=/c");
    const std::vector<std::string> names = listed();
    const auto at = [&](const char* name) { return std::find(names.begin(), names.end(), name) - names.begin(); };
    EXPECT_LT(at("COM3"), at("COM20"));
    EXPECT_LT(at("COM20"), at("COM100"));
}

#endif

} // namespace
