#include "platform/com_fault.h"

#include <array>
#include <atomic>
#include <charconv>
#include <future>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

namespace com {
namespace {

constexpr std::size_t call_kinds = static_cast<std::size_t>(call::count_);

// In the order of com::call.
constexpr std::array<std::string_view, call_kinds> call_names = {
    "CreateFileA",  "SetupComm",           "SetCommState",    "SetCommTimeouts", "GetCommTimeouts",
    "PurgeComm",    "ClearCommError",      "ReadFile",        "WriteFile",       "GetOverlappedResult",
    "CreateEventA", "WaitForSingleObject", "QueryDosDeviceA", "CancelIoEx"};
static_assert(!call_names.back().empty());

struct fault {
    uint64_t first; // numbers of the calls since fault_clear; `end` is the first that succeeds again
    uint64_t end;
    DWORD error;
};

struct fault_switch {
    std::mutex lock;
    std::array<uint32_t, call_kinds> counts{};
    std::array<std::vector<fault>, call_kinds> faults;
};

// Never freed: threads that outlive main may still make calls.
fault_switch& the_switch() {
    static fault_switch& s = *new fault_switch;
    return s;
}

struct fault_row {
    call which = call::count_;
    uint32_t skip = 0;
    uint32_t times = 0;
    uint32_t error = 0;
};

/// Cuts the text up to `end` (or all of it) off the front.
std::string_view cut(std::string_view* text, char end) {
    const std::size_t at = text->find(end);
    const std::string_view head = text->substr(0, at);
    text->remove_prefix(at == std::string_view::npos ? text->size() : at + 1);
    return head;
}

bool read_number(std::string_view text, uint32_t* out) {
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), *out);
    return failure == std::errc() && end == text.data() + text.size();
}

bool read_error(std::string_view text, uint32_t* out) {
    if (text != "hang") return read_number(text, out);
    *out = never_returns;
    return true;
}

bool read_row(std::string_view text, fault_row* row) {
    const std::string_view name = cut(&text, ':');
    for (std::size_t i = 0; i < call_kinds; i++)
        if (call_names[i] == name) row->which = static_cast<call>(i);
    if (row->which == call::count_ || !read_number(cut(&text, ':'), &row->skip)) return false;
    return read_number(cut(&text, ':'), &row->times) && read_error(text, &row->error);
}

/// Counts the call; true, with `error` filled, when there is a fault for it.
bool finds_fault(call which, DWORD* error) {
    fault_switch& s = the_switch();
    const std::size_t kind = static_cast<std::size_t>(which);
    const std::lock_guard<std::mutex> guard(s.lock);
    const uint32_t number = s.counts[kind]++;
    for (const fault& f : s.faults[kind]) {
        if (number < f.first || number >= f.end) continue;
        *error = f.error;
        return true;
    }
    return false;
}

/// What a driver does that is stuck: no abort and no closing of the port ends it.
[[noreturn]] void hang() {
    for (;;) std::promise<void>().get_future().wait();
}

} // namespace

bool fault_hits(call which, DWORD* error) {
    if (!finds_fault(which, error)) return false;
    if (*error == never_returns) hang();
    return true;
}

void fault_set(call which, uint32_t skip, uint32_t times, DWORD error) {
    fault_switch& s = the_switch();
    const std::size_t kind = static_cast<std::size_t>(which);
    const std::lock_guard<std::mutex> guard(s.lock);
    const uint64_t first = static_cast<uint64_t>(s.counts[kind]) + skip;
    s.faults[kind].push_back({first, first + times, error});
}

void fault_clear() {
    fault_switch& s = the_switch();
    const std::lock_guard<std::mutex> guard(s.lock);
    s.counts.fill(0);
    for (auto& list : s.faults) list.clear();
}

namespace {

using call_watcher = std::function<void(const std::string& call)>;

struct watching {
    std::mutex lock;
    std::shared_ptr<const call_watcher> watcher;
    std::atomic<bool> on{false};
};
watching& the_watching() { // never freed either
    static watching& w = *new watching;
    return w;
}

} // namespace

void watch_calls(call_watcher watcher) {
    watching& w = the_watching();
    const std::lock_guard<std::mutex> guard(w.lock);
    w.on = watcher != nullptr;
    w.watcher = watcher ? std::make_shared<const call_watcher>(std::move(watcher)) : nullptr;
}

void tell_call(const char* name, std::initializer_list<DWORD> numbers) {
    watching& w = the_watching();
    if (!w.on) return;
    std::shared_ptr<const call_watcher> watcher;
    {
        const std::lock_guard<std::mutex> guard(w.lock);
        watcher = w.watcher;
    }
    std::string text = name;
    for (const DWORD number : numbers) text += " " + std::to_string(number);
    const DWORD error = GetLastError();
    if (watcher != nullptr) (*watcher)(text);
    SetLastError(error);
}

uint32_t call_count(call which) {
    fault_switch& s = the_switch();
    const std::lock_guard<std::mutex> guard(s.lock);
    return s.counts[static_cast<std::size_t>(which)];
}

bool fault_parse(const char* text) {
    if (text == nullptr) return false;
    std::vector<fault_row> rows;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view part = cut(&rest, ';');
        if (!part.empty() && !read_row(part, &rows.emplace_back())) return false;
    }
    for (const fault_row& row : rows) fault_set(row.which, row.skip, row.times, row.error);
    return true;
}

} // namespace com
