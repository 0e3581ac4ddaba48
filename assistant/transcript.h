// What went over the line while the assistant listened: received and sent bytes in pieces with their times, shown
// as rows, and the frames among the received ones. Rows are made when they are asked for.
#pragma once

#include "serial/traffic_frame.h"
#include "toolkit/core/date_time.h"
#include "toolkit/core/stop.h"

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

/// Bytes that are kept, received and sent ones each; what comes beyond that is dropped.
inline constexpr std::size_t transcript_store_size = 0x100000;
inline constexpr std::size_t transcript_row_bytes = 16;

struct transcript_row {
    int64_t local_us = 0; ///< microseconds of local time
    bool sent = false;
    bool first = false; ///< of its piece
    uint8_t size = 0;
    std::array<uint8_t, transcript_row_bytes> room{};
    std::span<const uint8_t> bytes() const { return std::span(room).first(size); }
};

struct transcript_frame {
    int64_t local_us = 0;
    uint32_t identifier = 0;
    uint8_t channel = 0; ///< as it stands in the frame
    uint8_t type = 0;
    uint8_t size = 0;
    std::array<uint8_t, traffic_data_max> room{};
    std::span<const uint8_t> data() const { return std::span(room).first(size); }
};

/// Since the last clear.
struct transcript_counts {
    std::size_t received = 0; ///< bytes kept
    std::size_t sent = 0;     ///< bytes kept
    uint64_t dropped = 0;     ///< bytes of both that there was no room for
    std::size_t rows = 0;
    std::size_t frames = 0; ///< good ones
    uint64_t frames_bad = 0;
    uint64_t noise = 0; ///< bytes between frames
    uint64_t clears = 0;
};

/// Any thread; takes turns.
class transcript {
  public:
    transcript();

    /// Appends a piece that was received (or sent); nothing for no bytes.
    void received(std::span<const uint8_t> bytes, const time_stamp& at) { append(bytes, at, false); }
    void sent(std::span<const uint8_t> bytes, const time_stamp& at) { append(bytes, at, true); }
    void clear();

    transcript_counts counts() const;
    /// Copies rows, oldest first, from row `first` on as far as there are any; how many.
    std::size_t rows(std::size_t first, std::span<transcript_row> out) const;
    /// The frame `index`, oldest first; false (and `out` untouched) when there is none.
    bool frame(std::size_t index, transcript_frame* out) const;

    /// Looks for frames in what was received and not walked yet, some thousand bytes at most. True when it got on.
    /// One thread at a time.
    bool walk();
    /// Waits until something was received since the wait before; `seen` starts as 0. False when the calling worker
    /// is asked to stop.
    bool wait_received(uint64_t* seen) const;

  private:
    struct piece {
        std::size_t row;  ///< its first one
        std::size_t from; ///< in its store
        std::size_t size;
        int64_t local_us;
        bool sent;
    };
    struct found {
        std::size_t from; ///< in the store of received bytes
        int64_t local_us;
    };
    struct store {
        std::unique_ptr<uint8_t[]> bytes;
        std::size_t fill = 0;
        std::span<const uint8_t> from(std::size_t at) const { return {bytes.get() + at, fill - at}; }
        std::size_t append(std::span<const uint8_t> more);
    };

    void append(std::span<const uint8_t> bytes, const time_stamp& at, bool sent);
    std::size_t row_count() const;
    int64_t arrival_of(std::size_t at) const;
    transcript_row row_of(const piece& one, std::size_t row) const;

    mutable std::mutex lock_; ///< over all of it
    mutable stop_condition came_;
    store received_, sent_;
    std::vector<piece> pieces_;
    std::vector<found> frames_;
    std::size_t walked_ = 0; ///< received bytes that are done with
    uint64_t receives_ = 0;
    transcript_counts count_;
};
