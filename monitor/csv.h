// The file that records every sent frame, a line each.
#pragma once

#include "monitor/record.h"

#include <atomic>
#include <cstdint>
#include <string>

/// In the working directory.
inline constexpr const char* csv_path = "can_record_data.csv";

/// "2025-09-29 13:05:09,uart1-can1,0x7ff,标准帧-can,tx,2,0x00 0x11 \n". Never longer than 499 bytes. Any thread.
std::string csv_line(const traffic_record& record);

/// Appends lines; the file is open only meanwhile, so that others can read it while it grows.
class csv_recorder {
  public:
    /// Without a path nothing is recorded.
    explicit csv_recorder(std::string path) : path_(std::move(path)) {}
    /// A line that cannot be stored is dropped and counted; the first is said on the console. One thread at a time.
    void add(const traffic_record& record);
    /// Lines dropped so far. Any thread.
    uint64_t dropped() const { return dropped_; }

  private:
    bool append(const std::string& line);

    const std::string path_;
    std::atomic<uint64_t> dropped_{0};
    bool torn_ = false; ///< the last line failed: the file may end within it
};
