// Ready-made bit timings: one text file per channel, phase, divider and rate, one candidate a line:
// BRP-TSEG1-TSEG2-SJW-SAMPLEPOINT, for example "5-32-8-8-80.00" (percent).
#pragma once

#include "dev_b/bit_timing.h"
#include "toolkit/core/result.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Folder of the lists, beside the program's; tests choose another. GUI thread.
std::string& timing_list_folder();
/// The file of a channel (1 or 2), phase, divider (code + 2) and rate in kbit/s. Any thread.
std::string timing_list_path(const std::string& folder, int channel, timing_phase phase, int64_t divider,
                             int64_t rate);

/// One line, split; the texts stand in the line.
struct timing_candidate {
    std::array<std::string_view, 5> fields; ///< without blanks around them; [3] is not looked at
    uint32_t brp = 0;
    uint32_t tseg1 = 0;
    uint32_t tseg2 = 0;
    double sample_point = 0; ///< percent
};
/// Splits a line. Nothing when it has not exactly five fields, when a number is missing or none, or when it is
/// longer than 100 bytes.
std::optional<timing_candidate> timing_line_parse(std::string_view line);
/// "BRP: 5, TSEGE1: 32, TSEGE2: 8, SMP: 80.00%"
std::string timing_item_text(const timing_candidate& candidate);

/// The four edits of a phase, as text.
struct timing_edits {
    std::string brp;
    std::string tseg1;
    std::string tseg2;
    std::string sample_point;
    bool operator==(const timing_edits&) const = default;
};
/// Their numbers: what is no number is 0, what is negative counts as out of reach of every register.
timing_values timing_values_of(const timing_edits& edits);

/// What a candidate must equal; an empty member is off.
struct timing_filter {
    std::optional<int32_t> brp;
    std::optional<int32_t> tseg1;
    std::optional<int32_t> tseg2;
    std::optional<double> sample_point; ///< percent, compared exactly
};
/// A number edit filters when it is neither empty nor begins with a blank; the sample point filters when its edit
/// is not empty, cut (not rounded) to two decimals.
timing_filter timing_filter_of(const timing_edits& edits);
bool timing_matches(const timing_filter& filter, const timing_candidate& candidate);

/// The lines of a file that passed a filter, in the file's order. One block of text however many they are.
class timing_list {
  public:
    std::size_t size() const { return ends_.size(); }
    /// Line `i`, as in the file.
    std::string_view line(std::size_t i) const;
    void add(std::string_view line);
    void clear();

  private:
    std::string text_;
    std::vector<std::size_t> ends_;
};

/// Reads a file piece by piece, so that a long one holds nobody up. Lines that are no candidates are skipped and
/// counted; if there are any, one line in the log says how many when the end is reached. One thread at a time.
class timing_list_reader {
  public:
    timing_list_reader(const std::string& path, const timing_filter& filter);
    ~timing_list_reader();
    timing_list_reader(const timing_list_reader&) = delete;
    timing_list_reader& operator=(const timing_list_reader&) = delete;

    /// Whether there is such a file. Without one there is nothing to read, and no message.
    bool exists() const;
    /// Adds what passes of the next piece (about ten thousand lines). True while there may be more.
    bool read_on(timing_list* list);
    std::size_t bad_lines() const;

  private:
    struct state;
    std::unique_ptr<state> state_;
};

/// The same in one go, into an empty list. RET_FAIL when there is no such file. `bad_lines` may be null. Any
/// thread.
ret_t timing_list_read(const std::string& path, const timing_filter& filter, timing_list* list,
                       std::size_t* bad_lines = nullptr);
