// What shows of a port without opening it.
#pragma once

#include <cstdint>
#include <string>

namespace com {

/// What would come of opening a port, as far as it shows from outside: looking opens nothing, so that no line of
/// the port moves.
enum class port_state : uint8_t {
    free,      ///< nothing is in the way
    ours,      ///< this program has it open
    taken,     ///< another program has it open, for itself alone
    forbidden, ///< the user may not open it
    absent,    ///< it is not there
    no_port,   ///< there is something else of that name
};
/// For a path as CreateFileA takes it. Who has a port open shows on Linux only, and only where that program locks
/// it as this one does; on Windows a port that is there is always `free`. Any thread.
port_state look_at_port(const std::string& path);
/// The command for a shell that lets the user open a port that look_at_port calls `forbidden`: a place in the
/// group that may, or rights for everybody where no group may. Empty where there is none, and on Windows. Any
/// thread.
std::string port_grant_command(const std::string& path);

} // namespace com
