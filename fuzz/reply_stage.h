// Sessions without a port: a reply is put into a session's buffer and goes through the session's own checks.
#pragma once

#include "fuzz/fuzz.h"
#include "session/dev_obj.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// An exchange with a reply, as the wire's description has it.
struct staged_exchange {
    const family_descriptor* of;
    session_kind kind;
    std::size_t nth;   ///< among the session's exchanges that have a reply
    std::size_t reply; ///< bytes
};

/// What became of a reply.
struct staged_end {
    step_end end = step_end::good;
    std::vector<std::string> logs;     ///< of each failure
    std::vector<std::string> texts;    ///< of each failure
    std::vector<session_bytes> images; ///< as reported; empty: the old one is to be decoded again
    uint32_t finished = 0;
};

/// Once. Fixes the clock.
void reply_stage_init();

/// Checks `reply` (cut to the exchange's length; what is missing stays zero) as the answer to
/// `request`. `finish` plays what follows in the session, too: only for exchanges that nothing but steps without
/// a port follows. Failures' texts are within limits when this returns.
staged_end reply_stage_play(const staged_exchange& staged, std::span<const uint8_t> reply,
                            std::span<const uint8_t> request, bool finish);

/// The numbers of a listing: pairs of hex digits, without any other character and without "0x" before them.
std::vector<uint8_t> listed_bytes(const std::string& listing);
