// A simulated converter module on a serial line, with named faults and counters. Written from its own description
// of the wire and of its memory, never from the program's codecs, so that the two check each other.
#pragma once

#include "sim/line.h"
#include "sim/traffic.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace sim {

enum class model : uint8_t { vkt510a, vkt530a, vkt531a, vkt610b, vkt630b, vkt631b };
/// False for a name that is none of the six.
bool model_from_name(const std::string& name, model* out);

enum class fault : uint8_t {
    none,
    silent,       ///< no reply at all
    empty,        ///< the same on the wire as silent, but the module stays reachable (takes the request in)
    bad_check,    ///< last check byte (XOR or CRC) wrong
    cut_short,    ///< only the first `argument` bytes of the reply (default: all but the last)
    wrong_header, ///< foreign command byte with a good check
    refuse,       ///< acknowledgement that says no (generic, A: fourth byte 0x12; B: fifth byte 0x00), good check
    slow,         ///< one byte at a time, `argument` ms apart (default 20)
    late,         ///< the reply comes `argument` ms later (default 6000)
    junk_first,   ///< `argument` bytes of noise (default 16) before the reply
    hang_up,      ///< the line is taken away instead of the reply
    hang_up_mid_reply, ///< the line is taken away after half of the reply
    nonzero_tail,      ///< the byte that ends an acknowledgement is 0x01 instead of 0x00
    no_tail,   ///< the byte that ends an acknowledgement is not sent (generic, A: five bytes, firmware: ten)
    patch,     ///< byte `argument` / 256 of the reply is `argument` % 256, the check made good again
    patch_raw, ///< the same, the check left as it was
    extra,     ///< `argument` bytes of noise (default 1) right after the reply
    raw,       ///< fault_plan::bytes instead of the reply
};
/// By its name above; false for any other text.
bool fault_from_name(const std::string& name, fault* out);
const char* fault_name(fault f);

struct fault_plan {
    fault what = fault::none;
    uint32_t after = 0;           ///< good replies before the first bad one
    uint32_t times = 1;           ///< how many replies it spoils; 0xFFFFFFFF: for ever
    int32_t argument = -1;        ///< see fault; -1 takes the default
    std::vector<uint8_t> bytes{}; ///< for fault::raw
};
/// Reads "bad_check:after=1:times=2:argument=20"; times may be "ever", argument a C number below 0x100000
/// ("0x0112") and, for raw, bytes=F7F80212. False (and `out` untouched) when it cannot be read; `why`, if given,
/// says why. Any thread.
bool fault_parse(const std::string& text, fault_plan* out, std::string* why = nullptr);

/// The five data bytes of the A family's firmware reply.
inline constexpr uint8_t firmware_data[5] = {0x21, 0x07, 0x02, 0x00, 0x01};

struct counters {
    uint32_t handshakes = 0;
    uint32_t firmware_reads = 0;
    uint32_t reads = 0;
    uint32_t writes = 0; ///< B: register writes
    uint32_t mode_texts = 0;
    uint32_t unknown = 0;      ///< complete frames that were none of the above, or with a bad check, or (B) sent in
                               ///< transfer mode; never answered
    uint32_t traffic_sent = 0; ///< frames of its own, the spoiled ones too
    uint32_t traffic_received = 0; ///< good frames in transfer mode; they are no requests
    uint32_t traffic_overrun = 0;  ///< frames that were never made because the line took no more
    uint32_t requests() const { return handshakes + firmware_reads + reads + writes; }
};

class module_t {
  public:
    virtual ~module_t() = default;
    /// Sets the plan for the replies from now on.
    virtual void plan(const fault_plan& p) = 0;
    /// Configuration memory: 60 bytes (generic, A) or 140 bytes (B). Thread-safe.
    virtual std::vector<uint8_t> memory() const = 0;
    virtual void set_memory(const std::vector<uint8_t>& bytes) = 0;
    virtual counters count() const = 0;
    /// Every byte received since the start, and every complete request frame in order (mode texts and unknown
    /// frames are not among them: there are count().requests()).
    virtual std::vector<uint8_t> received() const = 0;
    virtual std::vector<std::vector<uint8_t>> requests() const = 0;
    /// Waits until `count().requests()` is at least `n`; false on time-out.
    virtual bool wait_requests(uint32_t n, int timeout_ms) const = 0;
    /// "config" or "transfer" for the B family, whatever text came last; empty at start.
    virtual std::string mode() const = 0;
    /// As if it had heard that mode's text: "config" or "transfer" (B). Traffic of its own begins with the next
    /// thing that it hears.
    virtual void set_mode(const std::string& mode) = 0;
    /// What it sends in transfer mode, from now on and at each change to it (B). Nothing by default.
    virtual void set_traffic(const traffic_plan& plan) = 0;
    /// Every frame of transfer mode since the start, in order.
    virtual std::vector<traffic_note> traffic_sent() const = 0;
    virtual std::vector<traffic_note> traffic_received() const = 0;
    /// Waits until so many frames have been sent and received; false on time-out.
    virtual bool wait_traffic(uint32_t sent, uint32_t received, int timeout_ms) const = 0;
    /// Sends bytes of the test's own, out of turn.
    virtual void babble(const std::vector<uint8_t>& bytes) = 0;
    /// Pulls the module's plug: its port vanishes. What the module holds and counted stays.
    virtual void hang_up() = 0;
    /// Plugs it in again: a fresh line of the same name. False (`why` says why) when none can be made.
    virtual bool plug_in(std::string* why = nullptr) = 0;
    /// Device node of the port; empty under Wine and while unplugged.
    virtual std::string port_path() const = 0;
    /// Paced: a reply starts when its request would be in, and takes its time, at 9600 8N2 (11 bits a byte). Off by
    /// default.
    virtual void set_paced(bool paced) = 0;
};

/// Called with each complete request, mode text or unknown frame, in order, on the module's thread; and as
/// "unplugged" with no frame just before a fault takes the line away.
using request_watcher = std::function<void(const char* kind, const std::vector<uint8_t>& frame)>;

/// Starts a module's thread on a new line named `com_name`. Null when the line cannot be made.
std::unique_ptr<module_t> module_start(model m, const std::string& com_name, std::string* why = nullptr,
                                       request_watcher watcher = {});

} // namespace sim
