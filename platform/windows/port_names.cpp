#include "platform/com_port.h"

void com::map_port(const std::string& /*name*/, const std::string& /*path*/) {
    // The system's own registry of ports says what a name stands for.
}

com::denial com::why_denied(const std::string& /*path*/) { return denial::taken; }
