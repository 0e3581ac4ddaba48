// The devices behind the names of ports.
#pragma once

#include <string>

/// The system's device behind a port's name; empty when the name stands for none. Any thread.
std::string device_behind(const std::string& name);
/// What two texts for the same port have in common, however it is written. Any thread.
std::string port_identity(const std::string& text);
