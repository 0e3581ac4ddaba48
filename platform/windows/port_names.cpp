#include "platform/com_port.h"

void com::map_port(const std::string& /*name*/, const std::string& /*path*/) {
    // The system's own registry of ports says what a name stands for.
}

bool com::port_present(const std::string& name) {
    constexpr const char* head = "\\\\.\\";
    char device[1024];
    const std::string bare = name.starts_with(head) ? name.substr(4) : name;
    if (bare.empty()) return false; // the system would answer for all of them
    return com::QueryDosDeviceA(bare.c_str(), device, sizeof device) != 0;
}

com::denial com::why_denied(const std::string& /*path*/) { return denial::taken; }
