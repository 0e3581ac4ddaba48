#include "cli/port_device.h"

#include "serial/port_names.h"

#include "platform/com_port.h"

#include <array>
#include <filesystem>

std::string device_behind(const std::string& name) {
    std::array<char, 1024> device{};
    const DWORD got = com::QueryDosDeviceA(name.c_str(), device.data(), device.size() - 1);
    return got == 0 ? "" : device.data();
}

std::string port_identity(const std::string& text) {
    constexpr const char* head = "\\\\.\\";
    std::string path = port_path(text, true).value_or(text);
    if (path.starts_with(head)) path = path.substr(4);
    if (const std::string device = device_behind(path); !device.empty()) path = device;
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(path, error);
    return error ? path : real.string();
}
