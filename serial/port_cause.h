// Why a port does not serve, in words.
#pragma once

#include "platform/com_port.h"

#include <string>

struct port_cause {
    const char* words = nullptr; ///< null: there is none that the system knows of
    DWORD error = 0;             ///< the system's code
    bool lost = false;           ///< the device behind an open port is gone
    bool absent = false;         ///< there is no such port to open
};

/// Why a path could not be opened. Any thread.
port_cause port_open_cause(const std::string& path, DWORD error);
/// Why an open port refused something; none for error 0. Any thread.
port_cause port_use_cause(DWORD error);
/// "NAME: WORDS (error CODE)\n"; empty without a cause. Any thread.
std::string port_cause_line(const std::string& name, const port_cause& cause);
