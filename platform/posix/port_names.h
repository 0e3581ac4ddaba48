// Which device node a port name stands for: names mapped in this process, then VKT_COM_PORTS, then the fixed rule.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace posix_com {

/// The device node of "COM7" or "LPT1" (any case); empty when the name stands for none. Any thread.
std::string port_name_node(const std::string& name);
/// The device node that a path as CreateFileA takes it leads to: "\\\\.\\COM12" by name, "COM7" by name up to
/// number 9 as on Windows, a path with a slash as it stands. Empty for anything else. Any thread.
std::string path_node(std::string_view path);
/// All names that stand for something: COM before LPT, each by number. Any thread.
std::vector<std::string> port_names();

/// The nodes of the names given by hand, whether they are there or not. Any thread.
std::vector<std::string> nodes_by_hand();
/// The folder of the device nodes of the fixed rule, and the system's of what is known about them. They stand in
/// VKT_COM_ROOT where that is set. Any thread.
std::string device_folder();
std::string about_folder();
/// Whether a file of that name in the device folder is one of the fixed rule ("ttyUSB0"). Any thread.
bool is_rule_node(const std::string& file_name);

/// The fixed rule over device folders of the caller's choice (normally "/sys/class/tty" and "/dev"), for tests.
std::vector<std::string> port_names_by_rule(const std::string& sys_tty, const std::string& dev);

} // namespace posix_com
