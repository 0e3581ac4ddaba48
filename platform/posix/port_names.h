// Which device node a port name stands for: names mapped in this process, then VKT_COM_PORTS, then the fixed rule.
#pragma once

#include <string>
#include <vector>

namespace posix_com {

/// The device node of "COM7" or "LPT1" (any case); empty when the name stands for none. Any thread.
std::string port_name_node(const std::string& name);
/// All names that stand for something: COM before LPT, each by number. Any thread.
std::vector<std::string> port_names();

/// The fixed rule over device folders of the caller's choice (normally "/sys/class/tty" and "/dev"), for tests.
std::vector<std::string> port_names_by_rule(const std::string& sys_tty, const std::string& dev);

} // namespace posix_com
