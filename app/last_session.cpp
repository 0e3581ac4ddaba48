#include "app/last_session.h"

#include "session/session_run.h"
#include "toolkit/core/text.h"

#include <optional>
#include <utility>
#include <vector>

namespace {

struct line {
    int64_t at_ms;
    std::string text;
};

struct session_lines {
    std::vector<line> lines;
    std::optional<progress_report> report;
};

session_lines& kept() {
    static auto& lines = *new session_lines;
    return lines;
}

std::string without_line_feeds(const std::string& text) {
    const std::size_t first = text.find_first_not_of('\n');
    return first == std::string::npos ? std::string() : text.substr(first, text.find_last_not_of('\n') + 1 - first);
}

} // namespace

void last_session_begin() { kept() = {}; }

void last_session_step(const progress_report& report) {
    const auto before = std::exchange(kept().report, report);
    if (!before || before->text != report.text) last_session_line(report.at_ms, report.text);
}

void last_session_line(int64_t at_ms, const std::string& text) {
    if (std::string shown = without_line_feeds(text); !shown.empty())
        kept().lines.push_back({at_ms, std::move(shown)});
}

void last_session_bytes(int64_t at_ms, const session_traffic& traffic) {
    last_session_line(at_ms, (traffic.sent ? "发送 " : "接收 ") + hex_list(traffic.bytes, "%02X", " "));
}

const progress_report* last_session_report() { return kept().report ? &*kept().report : nullptr; }

std::string last_session_text() {
    std::string text;
    for (const line& one : kept().lines) {
        const double seconds = static_cast<double>(one.at_ms - kept().lines.front().at_ms) / 1000;
        text += tk_format("%8.3f  %s\n", seconds, one.text.c_str());
    }
    return text;
}
