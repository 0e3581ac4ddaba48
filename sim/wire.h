// The wire as the module sees it: requests out of a stream of bytes, and the good reply to each.
#pragma once

#include "sim/module.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace sim {

using bytes = std::vector<uint8_t>;

/// What a model answers to.
enum class tribe : uint8_t { generic, a, b };
tribe tribe_of(model m);

/// XOR of all bytes (generic, A).
uint8_t xor_check(const uint8_t* data, std::size_t size);
/// CRC-16/X-25 (ITU-T X.25): B.
uint16_t crc_check(const uint8_t* data, std::size_t size);

/// The configuration memory as the factory leaves it: 60 bytes, B 140 (34 registers and the version word).
bytes factory_memory(tribe of);

enum class request_kind : uint8_t { handshake, firmware, read, write, mode_text, traffic, unknown };
const char* request_kind_name(request_kind kind);

struct request {
    request_kind kind = request_kind::unknown;
    bytes frame;
};

/// Finds requests in what comes in. Noise before a request is skipped, so is the first byte of what looked like one
/// and was not.
class request_reader {
  public:
    explicit request_reader(tribe of) : of_(of) {}
    void feed(const uint8_t* data, std::size_t size);
    /// Takes the next complete request out; false when there is none yet.
    bool next(request* out);
    /// True while the start of a request waits for the rest of it.
    bool partial() const { return !waiting_.empty(); }
    /// The sender fell silent: what is there is no start of a request after all. Call next() again after it.
    void give_up();
    void clear() { waiting_.clear(); }
    /// In transfer mode (B) traffic frames are requests too, with or without a check value.
    void set_transfer(bool on, bool check) { transfer_ = on, check_ = check; }

  private:
    struct match {
        std::size_t need = 0; ///< bytes of the whole frame; 0: nothing starts here
        bool known = false;   ///< all of it is there
    };
    match match_frame() const;
    bool may_be_traffic() const;
    match match_text() const;
    request_kind kind_of(const bytes& frame) const;
    bool check_is_good(const bytes& frame) const;

    tribe of_;
    bool transfer_ = false, check_ = false;
    bytes waiting_;
};

/// A reply on its way out, and what may be spoiled in it.
struct reply {
    bytes data;
    std::size_t check_at = 0;   ///< where the check starts (XOR one byte, CRC two)
    bool has_tail = false;      ///< ends in a zero byte after the check
    uint32_t delay_ms = 0;      ///< before its first byte
    uint32_t gap_us = 0;        ///< between two bytes; 0: all at once
    bool hang_up_after = false; ///< the line goes when it is out
};

/// The good reply to a request, empty for one that gets none. A write is taken into `memory`.
reply answer(tribe of, const request& asked, bytes* memory);
/// The acknowledgement that says no.
reply refusal(tribe of, const request& asked);
/// Makes the check of a spoiled reply good again.
void renew_check(tribe of, reply* r);
/// Spoils a reply as the plan says.
void spoil(tribe of, const fault_plan& plan, reply* r);

} // namespace sim
