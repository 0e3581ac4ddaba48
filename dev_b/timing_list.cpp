#include "dev_b/timing_list.h"

#include "toolkit/core/fs.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <charconv>
#include <cmath>
#include <memory>

namespace {

constexpr std::size_t max_line_bytes = 100;
constexpr std::size_t block_bytes = 64 * 1024;

constexpr bool is_blank(char c) { return c == ' ' || c == '\t'; }

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
    return text;
}

/// The whole text as a decimal number of 32 bits; false when anything else is in it.
bool number_of(std::string_view text, uint32_t* out) {
    if (text.empty()) return false;
    uint64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return false;
        value = value * 10 + static_cast<uint64_t>(c - '0');
        if (value > 0xFFFFFFFF) return false;
    }
    *out = static_cast<uint32_t>(value);
    return true;
}

/// The whole text as a finite decimal number; false when anything else is in it.
bool number_of(std::string_view text, double* out) {
    const char* const end = text.data() + text.size();
    const auto done = std::from_chars(text.data(), end, *out);
    return done.ec == std::errc{} && done.ptr == end && std::isfinite(*out);
}

/// Hands over the lines of a stream of blocks, without their ends. A line that lies across blocks is put together;
/// of one that is too long only as much as tells that it is.
template <typename Sink>
class line_splitter {
  public:
    explicit line_splitter(Sink sink) : sink_(std::move(sink)) {}
    void feed(std::string_view block) {
        for (std::size_t end = 0; (end = block.find('\n')) != std::string_view::npos; block.remove_prefix(end + 1))
            finish_line(block.substr(0, end));
        hold(block);
    }
    void finish() {
        if (!held_.empty()) finish_line({});
    }

  private:
    void finish_line(std::string_view rest) {
        if (held_.empty()) {
            hand_over(rest);
        } else {
            hold(rest);
            hand_over(held_);
            held_.clear();
        }
    }
    void hold(std::string_view part) {
        const std::size_t room = max_line_bytes + 2 - held_.size(); // a carriage return may follow
        held_.append(part.substr(0, room));
    }
    void hand_over(std::string_view line) {
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        sink_(line);
    }
    Sink sink_;
    std::string held_;
};

bool equals(const std::optional<int32_t>& wanted, uint32_t field) {
    return !wanted || static_cast<int64_t>(*wanted) == static_cast<int64_t>(field);
}

std::optional<int32_t> number_filter(const std::string& text) {
    if (text.empty() || is_blank(text.front())) return std::nullopt;
    return tk_atoi(text.c_str());
}

} // namespace

std::string& timing_list_folder() {
    static std::string folder = "../tools/bps_data_list";
    return folder;
}

std::string timing_list_path(const std::string& folder, int channel, timing_phase phase, int64_t divider,
                             int64_t rate) {
    const char* const name = phase == timing_phase::nominal ? "z_" : "c_";
    return folder + "/vkt610b_bps_canfd" + std::to_string(channel) + "_" + name + std::to_string(divider) + "_" +
           std::to_string(rate) + ".txt";
}

std::optional<timing_candidate> timing_line_parse(std::string_view line) {
    if (line.size() > max_line_bytes) return std::nullopt;
    timing_candidate out;
    for (std::size_t i = 0; i < out.fields.size(); ++i) {
        const bool last = i + 1 == out.fields.size();
        const std::size_t end = line.find('-');
        if ((end == std::string_view::npos) != last) return std::nullopt;
        out.fields[i] = trimmed(line.substr(0, end));
        if (!last) line.remove_prefix(end + 1);
    }
    if (!number_of(out.fields[0], &out.brp) || !number_of(out.fields[1], &out.tseg1) ||
        !number_of(out.fields[2], &out.tseg2) || !number_of(out.fields[4], &out.sample_point))
        return std::nullopt;
    return out;
}

std::string timing_item_text(const timing_candidate& candidate) {
    std::string out = "BRP: ";
    out.append(candidate.fields[0]).append(", TSEGE1: ").append(candidate.fields[1]);
    out.append(", TSEGE2: ").append(candidate.fields[2]).append(", SMP: ").append(candidate.fields[4]);
    return out += '%';
}

timing_values timing_values_of(const timing_edits& edits) {
    const auto value = [](const std::string& text) { return static_cast<uint32_t>(tk_atoi(text.c_str())); };
    return {value(edits.brp), value(edits.tseg1), value(edits.tseg2)};
}

timing_filter timing_filter_of(const timing_edits& edits) {
    timing_filter out{number_filter(edits.brp), number_filter(edits.tseg1), number_filter(edits.tseg2),
                      std::nullopt};
    if (!edits.sample_point.empty())
        out.sample_point = timing_hundredths(timing_number(edits.sample_point)) / 100.0;
    return out;
}

bool timing_matches(const timing_filter& filter, const timing_candidate& candidate) {
    return equals(filter.brp, candidate.brp) && equals(filter.tseg1, candidate.tseg1) &&
           equals(filter.tseg2, candidate.tseg2) &&
           (!filter.sample_point || *filter.sample_point == candidate.sample_point);
}

std::string_view timing_list::line(std::size_t i) const {
    const std::size_t begin = i == 0 ? 0 : ends_[i - 1];
    return std::string_view(text_).substr(begin, ends_[i] - begin);
}

void timing_list::add(std::string_view line) {
    text_.append(line);
    ends_.push_back(text_.size());
}

void timing_list::clear() {
    text_.clear();
    ends_.clear();
}

ret_t timing_list_read(const std::string& path, const timing_filter& filter, timing_list* list,
                       std::size_t* bad_lines) {
    std::size_t bad = 0;
    list->clear();
    if (bad_lines != nullptr) *bad_lines = 0;
    const fs_file_ptr file(fs_open_file(os_fs(), path.c_str(), "rb"));
    if (file == nullptr) return RET_FAIL;

    line_splitter lines([&](std::string_view line) {
        const auto candidate = timing_line_parse(line);
        if (!candidate) {
            ++bad;
        } else if (timing_matches(filter, *candidate)) {
            list->add(line);
        }
    });
    const auto block = std::make_unique<std::array<char, block_bytes>>();
    int64_t got = 0;
    while ((got = fs_file_read(file.get(), block->data(), block->size())) > 0)
        lines.feed({block->data(), static_cast<std::size_t>(got)});
    lines.finish();

    if (bad != 0) log_write(LOG_LEVEL_WARN, path + ": " + std::to_string(bad) + " lines are no candidates\n");
    if (bad_lines != nullptr) *bad_lines = bad;
    return RET_OK;
}
