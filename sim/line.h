// The far end of a serial line, for tests and for the simulated module: bytes in, bytes out, hang up.
//
// On Linux a line is the master side of a pseudo-terminal made here, and its port name is mapped in this process
// (com::map_port). Under Wine the pseudo-terminal belongs to the helper program pty_host on the host system,
// reached over TCP on the loopback interface; VKT_PTY_HOST="COM7=40007;COM8=40008" says where.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

class sim_line {
  public:
    virtual ~sim_line() = default;
    /// Waits up to `timeout_ms` for at least one byte; returns how many were read, 0 on time-out, -1 when hung up.
    virtual int read(uint8_t* bytes, std::size_t size, int timeout_ms) = 0;
    /// Sends all bytes; false when hung up.
    virtual bool write(const uint8_t* bytes, std::size_t size) = 0;
    /// Sends what the line takes at once; returns how many bytes that was, -1 when hung up. A line that cannot tell
    /// takes all.
    virtual int write_some(const uint8_t* bytes, std::size_t size) = 0;
    /// Takes the line away, as pulling the module's plug does. The port's owner sees a vanished port.
    virtual void hang_up() = 0;
    /// Device node of the port side ("/dev/pts/4"); empty under Wine.
    virtual std::string path() const = 0;
};

/// Makes a line for a port name ("COM7"). Null when it cannot be made; `why`, if given, says why.
std::unique_ptr<sim_line> sim_line_open(const std::string& com_name, std::string* why = nullptr);
