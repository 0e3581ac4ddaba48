#include "platform/port_state.h"
#include "platform/windows/com_port_system.h"

#include <array>

// To learn whether a port is taken it would have to be opened, and that moves its DTR line.
com::port_state com::look_at_port(const std::string& path) {
    const std::string prefix = "\\\\.\\";
    const std::string name = path.starts_with(prefix) ? path.substr(prefix.size()) : path;
    if (name.empty()) return port_state::absent; // the system would answer for all of them
    std::array<char, 1024> device{};
    const bool there = ::QueryDosDeviceA(name.c_str(), device.data(), device.size()) != 0;
    return there || GetLastError() != ERROR_FILE_NOT_FOUND ? port_state::free : port_state::absent;
}

std::string com::port_grant_command(const std::string& /*path*/) { return {}; }
