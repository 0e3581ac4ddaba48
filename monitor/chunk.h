// From the bytes of one read to records. Every byte ends in a record or in a count.
#pragma once

#include "monitor/record.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

/// Why received bytes are not shown.
enum class traffic_loss : uint8_t {
    noise,       ///< stood before a start byte
    no_start,    ///< no start byte, or fewer than 9 bytes from it on
    cut,         ///< a frame whose end was not there
    length,      ///< a length that is too small
    command,     ///< a frame that is none from a module
    check,       ///< a wrong check value
    data_length, ///< more data than the frame's type has
    purged,      ///< came in while a read was worked on
    count_
};
inline constexpr std::size_t traffic_losses_count = static_cast<std::size_t>(traffic_loss::count_);

/// Bytes by cause.
struct traffic_losses {
    std::array<uint64_t, traffic_losses_count> bytes{};

    uint64_t& operator[](traffic_loss why) { return bytes[static_cast<std::size_t>(why)]; }
    uint64_t operator[](traffic_loss why) const { return bytes[static_cast<std::size_t>(why)]; }
    traffic_losses& operator+=(const traffic_losses& more);
    /// Of all causes together.
    uint64_t all() const;
};

/// Appends a record for each frame of a chunk to `records`, up to the first that is none: what comes after it
/// cannot be told apart. Returns the bytes that are in no record. Any thread.
traffic_losses chunk_take(std::span<const uint8_t> chunk, bool check, const time_stamp& at,
                          std::vector<traffic_record>* records);
