// The records that are kept, oldest first out. Appending and a look at any row cost the same however many there
// are; memory is taken as they come.
#pragma once

#include "monitor/record.h"
#include "toolkit/core/ring.h"

#include <memory>
#include <mutex>
#include <span>
#include <string>

inline constexpr std::size_t record_capacity_usual = 5000;
inline constexpr std::size_t record_capacity_max = 5000000; ///< half a gigabyte, about

/// Records a queue is to hold, for the text of a setting: its number as far as it goes. No number and 0 give
/// record_capacity_usual. A negative one does too, and one above record_capacity_max gives that; `said`, if given,
/// is then a line for the console. Any thread.
std::size_t record_capacity_of(const std::string& text, std::string* said = nullptr);

/// Any thread; takes turns.
class record_queue {
  public:
    explicit record_queue(std::size_t capacity);

    std::size_t capacity() const { return capacity_; }
    std::size_t size() const;
    /// Appends all, dropping the oldest where it is full. Returns how many of them there was no memory for.
    std::size_t append(std::span<const traffic_record> records);
    /// Drops all records, and does not count them as dropped.
    /// What they took is given back when the last copy of what is returned goes: a million records take longer than
    /// a turn of the event loop.
    std::shared_ptr<void> clear();

    /// What a look at the queue found; all of one moment.
    struct look {
        std::size_t size = 0;   ///< records in the queue
        std::size_t copied = 0; ///< records copied
        uint64_t appended = 0;  ///< records ever appended, those that were dropped or cleared too: the newest one's
                                ///< number, counted from 1
    };
    /// Copies records newest first, from row `first` on (0 is the newest), as far as there are any and `out` has
    /// room.
    look rows(std::size_t first, std::span<traffic_record> out) const;
    /// The same for one row; false (and `out` untouched) when there is none.
    bool row(std::size_t row, traffic_record* out) const { return rows(row, std::span(out, 1)).copied == 1; }

    /// Copies record `number` (the first that was ever appended is 1); false (and `out` untouched) when it is not
    /// kept.
    bool numbered(uint64_t number, traffic_record* out) const;

    /// Records that had to go because the queue was full, ever.
    uint64_t dropped() const;

  private:
    using record_ring = ring<traffic_record>;

    const std::size_t capacity_;
    mutable std::mutex lock_;
    std::unique_ptr<record_ring> kept_;
    uint64_t appended_ = 0;
    uint64_t dropped_ = 0;
};
