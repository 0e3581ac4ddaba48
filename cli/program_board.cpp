#include "cli/program_board.h"

#include "toolkit/core/text.h"

#include <algorithm>

namespace {

constexpr uint32_t bar_cells = 20;

std::string bar(uint32_t percent) {
    const uint32_t full = std::min(percent, 100u) * bar_cells / 100;
    return "[" + std::string(full, '#') + std::string(bar_cells - full, '-') + "]";
}

} // namespace

program_board::program_board(const cli_context& with, const std::vector<std::string>& ports)
    : with_(with), shown_(with.shows_progress() && !with.options.verbose) {
    for (const std::string& port : ports) {
        rows_.push_back({.port = port, .text = ""});
        name_width_ = std::max(name_width_, shown_width(port));
    }
    draw();
}

program_board::~program_board() { erase(); }

std::string program_board::line_of(const row& one) const {
    std::string line = one.port + std::string(name_width_ - shown_width(one.port) + 2, ' ');
    if (one.state == board_state::working)
        line += bar(one.percent) + tk_format(" %3u%% ", one.percent);
    else if (one.state != board_state::waiting)
        line += result_word(one.state == board_state::good, false) + "  ";
    return line + one.text;
}

/// For more ports than the screen has rows.
std::string program_board::summary() const {
    const auto count = [this](board_state state) {
        return std::count_if(rows_.begin(), rows_.end(), [state](const row& one) { return one.state == state; });
    };
    return tk_format("%zu ports: %zd pass, %zd fail, %zd under way", rows_.size(), count(board_state::good),
                     count(board_state::bad), count(board_state::working));
}

std::vector<std::string> program_board::lines() const {
    const terminal_size size = with_.streams.size ? with_.streams.size() : terminal_size{};
    std::vector<std::string> lines;
    if (rows_.size() < size.rows)
        for (const row& one : rows_) lines.push_back(line_of(one));
    else
        lines.push_back(summary());
    // A line that fills the screen's width would take two rows on some terminals.
    for (std::string& line : lines) line = cut_to_width(line, size.columns - 1);
    return lines;
}

void program_board::set(std::size_t port, board_state state, const std::string& text, uint32_t percent) {
    row& one = rows_[port];
    one.state = state;
    one.text = text;
    one.percent = percent;
    if (!shown_) return;
    const std::vector<std::string> now = lines();
    if (now.size() != drawn_) { // the terminal has another size
        erase();
        return draw();
    }
    const std::size_t at = now.size() == rows_.size() ? port : 0;
    const std::size_t up = drawn_ - at;
    with_.streams.err(tk_format("\x1b[%zuA\r\x1b[K%s\x1b[%zuB\r", up, now[at].c_str(), up));
}

void program_board::print_above(const std::function<void()>& print) {
    erase();
    print();
    draw();
}

void program_board::draw() {
    if (!shown_) return;
    std::string text;
    const std::vector<std::string> now = lines();
    for (const std::string& line : now) text += line + "\n";
    drawn_ = now.size();
    with_.streams.err(text);
}

void program_board::erase() {
    if (drawn_ == 0) return;
    with_.streams.err(tk_format("\x1b[%zuA\r\x1b[J", drawn_));
    drawn_ = 0;
}
