// CAN FD bit timings: the candidates of the calculator's lists.
#include "cli/commands.h"
#include "dev_b/timing_list.h"
#include "platform/system.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/text.h"

#include <charconv>
#include <cmath>
#include <functional>

namespace {

constexpr int64_t core_hz = 200'000'000;
constexpr std::size_t shown_usually = 3; ///< candidates of a divider and phase without --all
constexpr double any_sample = -1;

/// "500K", "2M", "0.5M" or "500000" in Hz; nothing for what is no number of Hz above 0.
std::optional<int64_t> hertz_of(std::string text) {
    double factor = 1;
    if (!text.empty()) {
        const char last = text.back();
        if (last == 'k' || last == 'K') factor = 1e3;
        if (last == 'm' || last == 'M') factor = 1e6;
        if (factor > 1) text.pop_back();
    }
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, failure] = std::from_chars(text.data(), end, number);
    const double hertz = std::round(number * factor);
    if (text.empty() || failure != std::errc() || rest != end || !(hertz >= 1 && hertz <= 1e9)) return std::nullopt;
    return static_cast<int64_t>(hertz);
}

struct wanted_phase {
    timing_phase phase;
    const char* name;
    std::string text; ///< as typed
    int32_t kbit = 0;
};

struct found_phase {
    std::vector<timing_candidate> good;
    timing_list lines;             ///< the candidates' texts
    std::optional<double> nearest; ///< sample point of the list that is nearest to the wanted one
};

std::string list_folder() {
    if (fs_dir_exist(os_fs(), timing_list_folder().c_str())) return timing_list_folder();
    return platform_program_folder() + "/../tools/bps_data_list"; // started from somewhere else
}

/// False without a list.
bool find(const std::string& folder, int64_t divider, const wanted_phase& wanted, double sample,
          found_phase* found) {
    const std::string path = timing_list_path(folder, 1, wanted.phase, divider, wanted.kbit);
    if (timing_list_read(path, {}, &found->lines) != RET_OK) return false;
    for (std::size_t i = 0; i < found->lines.size(); ++i) {
        const auto candidate = timing_line_parse(found->lines.line(i));
        if (!candidate) continue;
        const double away = std::abs(candidate->sample_point - sample);
        if (!found->nearest || away < std::abs(*found->nearest - sample)) found->nearest = candidate->sample_point;
        if (sample == any_sample || away < 0.005) found->good.push_back(*candidate);
    }
    return true;
}

class timing_run {
  public:
    explicit timing_run(const cli_context& with) : with_(with) {}

    int run() {
        const int status = read_words();
        if (status != exit_good) return status;
        bool any = false;
        for (const choice_option& divider : timing_dividers)
            if (clock_ == core_hz || clock_ == core_hz / (divider.value + 2))
                any = add_divider(divider.value + 2) || any;
        const std::string members = json_list(members_);
        if (with_.options.json)
            with_.print(
                json_object().add_json("candidates", members).add_json("refused", json_list(refused_json_)).text() +
                "\n");
        else
            with_.print((any ? table_text(rows_) : "") + refused_);
        return any ? exit_good : with_.fail({.text = "no divider of the clock has candidates for every phase"});
    }

  private:
    int refuse(const char* option, const std::string& text, const std::string& why) const {
        return with_.fail({.where = std::string(option) + " " + text, .text = why});
    }

    int read_words() {
        const auto clock = hertz_of(with_.options.clock);
        std::string clocks = "200M";
        for (const choice_option& divider : timing_dividers) {
            const int64_t hz = core_hz / (divider.value + 2);
            clocks += tk_format(", %dM", static_cast<int>(hz / 1000000));
            if (clock == hz) clock_ = hz;
        }
        if (clock == core_hz) clock_ = core_hz;
        if (clock_ == 0) return refuse("--clock", with_.options.clock, "the modules have " + clocks);
        if (!with_.options.sample.empty()) {
            const double percent = timing_number(with_.options.sample);
            if (!(percent > 0 && percent < 100))
                return refuse("--sample", with_.options.sample, "not between 0 and 100 percent");
            sample_ = percent;
        }
        const std::pair<timing_phase, const std::string*> asked[] = {
            {timing_phase::nominal, &with_.options.nominal}, {timing_phase::data, &with_.options.data}};
        for (const auto& [phase, text] : asked) {
            if (text->empty()) continue;
            wanted_phase wanted{phase, phase == timing_phase::nominal ? "nominal" : "data", *text};
            const auto hz = hertz_of(*text);
            if (hz && *hz % 1000 == 0) wanted.kbit = static_cast<int32_t>(*hz / 1000);
            if (timing_rate_index(phase, wanted.kbit) < 0) return refuse_rate(wanted);
            wanted_.push_back(wanted);
        }
        folder_ = list_folder();
        if (!fs_dir_exist(os_fs(), folder_.c_str()))
            return with_.fail({.where = folder_, .text = "no timing lists there"});
        return exit_good;
    }

    int refuse_rate(const wanted_phase& wanted) const {
        std::string rates;
        for (const choice_option& rate : timing_rates(wanted.phase))
            rates += (rates.empty() ? "" : ", ") + std::string(rate.text);
        return refuse(wanted.phase == timing_phase::nominal ? "--nominal" : "--data", wanted.text,
                      "the modules have " + rates);
    }

    /// Both phases of a channel have one divider: it serves when each has a candidate.
    bool add_divider(int divider) {
        std::vector<found_phase> found(wanted_.size());
        for (std::size_t i = 0; i < wanted_.size(); ++i) {
            const bool listed = find(folder_, divider, wanted_[i], sample_, &found[i]);
            if (!found[i].good.empty()) continue;
            const std::string why =
                !listed || !found[i].nearest
                    ? "this rate cannot be made"
                    : tk_format("no candidate at %.2f %%, the nearest is at %.2f %%", sample_, *found[i].nearest);
            refused_ += tk_format("divider %d: %s %s: %s\n", divider, wanted_[i].name, wanted_[i].text.c_str(),
                                  why.c_str());
            refused_json_.push_back(
                json_object().add("divider", divider).add("phase", wanted_[i].name).add("reason", why).text());
            return false;
        }
        for (std::size_t i = 0; i < wanted_.size(); ++i) add_rows(divider, wanted_[i], found[i]);
        return true;
    }

    void add_rows(int divider, const wanted_phase& wanted, const found_phase& found) {
        if (rows_.empty()) rows_.push_back({"DIVIDER", "PHASE", "RATE", "BRP", "TSEG1", "TSEG2", "SJW", "SAMPLE"});
        const std::size_t count =
            with_.options.all ? found.good.size() : std::min(found.good.size(), shown_usually);
        for (std::size_t i = 0; i < count; ++i) {
            const timing_candidate& one = found.good[i];
            std::vector<std::string> row = {std::to_string(divider), wanted.name, wanted.text};
            for (const std::string_view text : one.fields) row.emplace_back(text);
            row.back() += " %";
            rows_.push_back(row);
            json_object member;
            member.add("divider", divider).add("phase", wanted.name).add("kbit", wanted.kbit);
            member.add("brp", one.brp).add("tseg1", one.tseg1).add("tseg2", one.tseg2);
            members_.push_back(member.add("sample", std::string(one.fields[4])).text());
        }
    }

    const cli_context& with_;
    int64_t clock_ = 0;
    double sample_ = any_sample;
    std::string folder_;
    std::vector<wanted_phase> wanted_;
    std::vector<std::vector<std::string>> rows_;
    std::vector<std::string> members_;
    std::string refused_;
    std::vector<std::string> refused_json_;
};

} // namespace

int run_timing(const cli_context& with) { return timing_run(with).run(); }
