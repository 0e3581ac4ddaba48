#include "platform/com_port.h"

void com::map_port(const std::string& /*name*/, const std::string& /*path*/) {
    // The system's own registry of ports says what a name stands for.
}

// The registry's names of adapters are not looked up: the device's own name is all there is.
std::string com::describe_port(const std::string& /*name*/) { return {}; }

com::denial com::why_denied(const std::string& /*path*/) { return denial::taken; }
