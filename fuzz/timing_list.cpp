// Timing lists and the calculator's edits. Input: where in the file the text starts, the edits (a line
// each), a line end, the file's text.
#include "dev_b/timing_list.h"
#include "fuzz/fuzz.h"
#include "toolkit/core/fs.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr const char* file = "list.txt";
constexpr std::size_t read_at_once = 64 * 1024; ///< a line may lie across two blocks of this size

/// The text's lines as every reader sees them: line feed, a carriage return before it is no part of the line.
std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines = fuzz_split(text, '\n');
    if (lines.back().empty()) lines.pop_back();
    for (std::string& line : lines)
        if (!line.empty() && line.back() == '\r') line.pop_back();
    return lines;
}

void check_candidate(const std::string& line, const timing_candidate& candidate) {
    must(line.size() <= 100, "a candidate is at most 100 bytes");
    must(std::count(line.begin(), line.end(), '-') == 4, "a candidate has five fields and nothing below zero");
    for (const auto& field : candidate.fields)
        must(field.empty() ||
                 (field.data() >= line.data() && field.data() + field.size() <= line.data() + line.size()),
             "fields lie in their line");
    must(std::isfinite(candidate.sample_point) && candidate.sample_point >= 0, "a sample point is a number");
    must(timing_item_text(candidate).size() <= 140, "what the list shows of a line is limited");
    const std::string again = std::to_string(candidate.brp) + "-" + std::to_string(candidate.tseg1) + "-" +
                              std::to_string(candidate.tseg2) + "--" + std::string(candidate.fields[4]);
    const auto same = timing_line_parse(again);
    must(again.size() > 100 || (same && same->brp == candidate.brp && same->tseg1 == candidate.tseg1 &&
                                same->tseg2 == candidate.tseg2 && same->sample_point == candidate.sample_point),
         "a candidate's own numbers read as the candidate");
}

void check_file(const std::string& text, const timing_filter& filter) {
    std::vector<std::string> wanted;
    std::size_t bad = 0;
    for (const std::string& line : lines_of(text)) {
        const auto candidate = timing_line_parse(line);
        if (candidate) check_candidate(line, *candidate);
        if (!candidate)
            bad++;
        else if (timing_matches(filter, *candidate))
            wanted.push_back(line);
    }
    fuzz_write_file(file, text);
    timing_list list;
    list.add("left over");
    std::size_t counted = 0;
    must(timing_list_read(file, filter, &list, &counted) == RET_OK, "a file that is there is read");
    must(counted == bad, "every bad line is counted");
    must(list.size() == wanted.size(), "every line that passes is there");
    for (std::size_t i = 0; i < wanted.size(); i++) must(list.line(i) == wanted[i], "in the file's order");
}

/// Whatever is typed, the arithmetic answers.
void check_edits(const timing_edits& edits) {
    const timing_values values = timing_values_of(edits);
    const double point = timing_number(edits.sample_point);
    must(std::isfinite(point), "a typed number is finite");
    const std::string shown = timing_percent_text(point);
    must(shown.size() <= 320 && std::fabs(timing_number(shown) - point) <= 0.005001 + std::fabs(point) * 1e-15,
         "a shown number is the number, to two decimals");
    const double fraction = timing_fraction(values);
    must(fraction >= 0 && fraction <= 1, "a fraction is one");
    for (const auto& divider : timing_dividers) {
        const auto by = static_cast<uint32_t>(divider.value) + 2;
        const uint32_t rate = timing_rate_kbit(by, values);
        must(rate <= 200000 / by, "no rate is above the clock");
        const bool valid = timing_phase_valid(by, values, static_cast<int32_t>(rate), point);
        must(!valid || (rate > 0 && values.all_set() && std::fabs(point - fraction * 100) < 0.012),
             "what is valid has the rate and the sample point that were typed");
    }
}

std::string line_of(std::string* rest) {
    const std::size_t end = std::min(rest->find('\n'), rest->size());
    const std::string line = rest->substr(0, end);
    rest->erase(0, end + 1);
    return line;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzz_input in(data, size);
    const std::size_t position = in.byte();
    std::string rest = in.text();
    timing_edits edits;
    for (std::string* edit : {&edits.brp, &edits.tseg1, &edits.tseg2, &edits.sample_point}) *edit = line_of(&rest);
    check_edits(edits);
    const timing_filter filter = timing_filter_of(edits);
    // Now and then the text starts 1 to 31 bytes before the end of a block.
    if (position > 224) rest.insert(0, std::string(read_at_once - (position - 224) - 1, ' ') + '\n');
    check_file(rest, filter);
    must(timing_item_text({}).size() < 140, "no fields are no trouble");
    return 0;
}
