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
constexpr int blocks_at_once = 3; ///< ten thousand usual lines

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
class line_splitter {
  public:
    template <typename Sink>
    void feed(std::string_view block, const Sink& sink) {
        for (std::size_t end = 0; (end = block.find('\n')) != std::string_view::npos; block.remove_prefix(end + 1))
            finish_line(block.substr(0, end), sink);
        hold(block);
    }
    template <typename Sink>
    void finish(const Sink& sink) {
        if (!held_.empty()) finish_line({}, sink);
    }

  private:
    template <typename Sink>
    void finish_line(std::string_view rest, const Sink& sink) {
        if (held_.empty()) {
            sink(without_return(rest));
        } else {
            hold(rest);
            sink(without_return(held_));
            held_.clear();
        }
    }
    void hold(std::string_view part) {
        const std::size_t room = max_line_bytes + 2 - held_.size(); // a carriage return may follow
        held_.append(part.substr(0, room));
    }
    static std::string_view without_return(std::string_view line) {
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        return line;
    }
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

struct timing_list_reader::state {
    std::string path;
    timing_filter filter;
    fs_file_ptr file;
    line_splitter lines;
    std::size_t bad = 0;
    std::array<char, block_bytes> block{};
};

timing_list_reader::timing_list_reader(const std::string& path, const timing_filter& filter)
    : state_(std::make_unique<state>()) {
    state_->path = path;
    state_->filter = filter;
    state_->file.reset(fs_open_file(os_fs(), path.c_str(), "rb"));
}

timing_list_reader::~timing_list_reader() = default;

bool timing_list_reader::exists() const { return state_->file != nullptr; }

std::size_t timing_list_reader::bad_lines() const { return state_->bad; }

bool timing_list_reader::read_on(timing_list* list) {
    state& s = *state_;
    if (s.file == nullptr) return false;
    const auto take = [&](std::string_view line) {
        const auto candidate = timing_line_parse(line);
        if (!candidate) {
            ++s.bad;
        } else if (timing_matches(s.filter, *candidate)) {
            list->add(line);
        }
    };
    for (int i = 0; i < blocks_at_once; ++i) {
        const int64_t got = fs_file_read(s.file.get(), s.block.data(), s.block.size());
        if (got > 0) {
            s.lines.feed({s.block.data(), static_cast<std::size_t>(got)}, take);
            continue;
        }
        s.lines.finish(take);
        s.file.reset();
        if (s.bad != 0)
            log_write(LOG_LEVEL_WARN, s.path + ": " + std::to_string(s.bad) + " lines are no candidates\n");
        return false;
    }
    return true;
}

ret_t timing_list_read(const std::string& path, const timing_filter& filter, timing_list* list,
                       std::size_t* bad_lines) {
    list->clear();
    timing_list_reader reader(path, filter);
    const bool exists = reader.exists();
    while (reader.read_on(list)) {
    }
    if (bad_lines != nullptr) *bad_lines = reader.bad_lines();
    return exists ? RET_OK : RET_FAIL;
}
