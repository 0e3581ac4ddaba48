#include "serial/port_list.h"

#include "platform/com_port.h"
#include "serial/port_names.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/log.h"
#include "toolkit/core/worker.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <vector>

namespace {

constexpr const char* list_file = "com_list.txt";
constexpr const char* authority_file = "authority";
constexpr std::size_t names_bytes = 65535;
constexpr std::size_t line_max = 100;
constexpr const char* device_prefix = "\\\\.\\";
constexpr uint32_t first_long_number = 10; ///< from here on a port opens by its device path only
constexpr DWORD error_buffer_small = 122;

std::mutex turn;           ///< one writer or reader of the list file at a time
std::mutex authority_turn; ///< the same for the probe's file

port_list_view view; ///< GUI thread only

// ---- scan ----

/// The system's device names, or nothing when it does not give them.
std::optional<std::vector<std::string>> device_names() {
    std::vector<char> buffer(names_bytes);
    DWORD got = com::QueryDosDeviceA(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (got == 0 && com::GetLastError() == error_buffer_small)
        got = com::QueryDosDeviceA(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (got == 0) return std::nullopt;
    std::vector<std::string> names;
    std::string name;
    for (std::size_t i = 0; i < std::min<std::size_t>(got, buffer.size()); ++i) {
        if (buffer[i] != 0) {
            name += buffer[i];
            continue;
        }
        if (name.empty()) break;
        names.push_back(std::move(name));
        name.clear();
    }
    return names;
}

/// The digits of a name as a number, held below anything that could overflow; 0 without digits.
uint32_t name_number(const std::string& name) {
    constexpr uint32_t high_enough = 100000;
    uint32_t number = 0;
    for (char c : name)
        if (c >= '0' && c <= '9' && number < high_enough) number = number * 10 + static_cast<uint32_t>(c - '0');
    return number;
}

bool is_port(const std::string& name) {
    return name.find("COM") != std::string::npos || name.find("LPT") != std::string::npos;
}

/// Whether the list can be written; who looks for it from now on finds one.
bool list_can_be_written() { return fs_file_ptr(fs_open_file(os_fs(), list_file, "ab")) != nullptr; }

/// A scan that gets no names leaves an empty list behind.
int scan_in_turn() {
    if (!list_can_be_written()) return -1;
    const std::optional<std::vector<std::string>> names = device_names();
    for (const std::string& name : names.value_or(std::vector<std::string>()))
        if (is_port(name)) log_console(name + "\n");
    const std::string text = names ? port_list_text(*names) : std::string();
    const bool written = fs_write_whole(list_file, text) == RET_OK;
    return written && names ? 0 : -1;
}

// ---- load ----

void post(void (*show)()) {
    idle_queue([show] {
        show();
        return RET_OK;
    });
}

void post_entry(uint32_t index, const std::string& name) {
    idle_queue([index, name] {
        if (view.append) view.append(index, name);
        return RET_OK;
    });
}

/// False when the list cannot be opened.
bool load_in_turn() {
    const std::optional<std::vector<std::string>> lines = port_list_lines();
    if (!lines) return false;
    post([] {
        if (view.reset) view.reset();
    });
    for (uint32_t index = 0; index < lines->size(); ++index) {
        const std::string& line = (*lines)[index];
        port_list_line_set(index, line);
        const std::string name = port_shown_name(line);
        if (!name.empty()) post_entry(index, name);
    }
    return true;
}

// ---- workers ----

/// GUI thread only, but for `wake`. Never destroyed: its threads may run until the process ends.
struct list_workers {
    worker one_shot;
    bool loading = false; ///< from the start of the one-shot load to its load-finished step
    worker watcher;
    worker_event wake; ///< asks the watcher to scan now
};
list_workers& workers() {
    static list_workers& w = *new list_workers;
    return w;
}

ret_t load_finished() {
    workers().one_shot.join();
    workers().loading = false;
    if (view.finished) view.finished();
    return RET_OK;
}

uint32_t watch(worker_event& wake) {
    while (!worker_should_stop()) {
        {
            const std::lock_guard hold(turn);
            scan_in_turn();
            load_in_turn();
        }
        wake.wait(port_watcher_period_ms());
    }
    return 0;
}

} // namespace

std::optional<std::vector<std::string>> port_device_names() {
    std::optional<std::vector<std::string>> names = device_names();
    if (!names) return names;
    std::erase_if(*names, [](const std::string& name) { return !is_port(name); });
    std::stable_sort(names->begin(), names->end(), port_name_before);
    return names;
}

std::string port_list_text(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names)
        if (is_port(name)) text += (name_number(name) < first_long_number ? "" : device_prefix) + name + "\n";
    return text;
}

std::optional<std::vector<std::string>> port_list_lines() {
    const fs_file_ptr file(fs_open_file(os_fs(), list_file, "rb"));
    if (file == nullptr) return std::nullopt;
    std::vector<std::string> lines;
    std::string line;
    while (fs_file_read_line(file.get(), &line, line_max)) lines.push_back(line);
    return lines;
}

std::string port_shown_name(const std::string& line) {
    const std::string prefix = device_prefix;
    return line.compare(0, prefix.size(), prefix) == 0 ? line.substr(prefix.size()) : line;
}

void port_list_set_view(port_list_view v) { view = std::move(v); }

int port_scan() {
    const std::lock_guard hold(turn);
    return scan_in_turn();
}

int authority_check() {
    const std::lock_guard hold(authority_turn);
    fs_file_t* file = fs_open_file(os_fs(), authority_file, "wb+");
    if (file == nullptr) return -1;
    fs_file_close(file);
    fs_remove_file(os_fs(), authority_file);
    return 0;
}

// The turn is kept until the whole list is queued, so that two loads never mix on the screen.
uint32_t port_list_load() {
    const std::lock_guard hold(turn);
    scan_in_turn();
    if (authority_check() != 0)
        post([] {
            if (view.no_permission) view.no_permission();
        });
    return load_in_turn() ? 0 : 1;
}

void port_list_load_start() {
    list_workers& w = workers();
    if (w.loading) return;
    const auto work = [] {
        const uint32_t result = port_list_load();
        idle_queue(load_finished);
        return result;
    };
    w.loading = w.one_shot.start({"com_get_entry"}, work) == RET_OK;
}

void port_watcher_start() {
    list_workers& w = workers();
    if (w.watcher.running()) {
        w.wake.set();
        return;
    }
    w.wake.wait(0); // what was asked of a watcher before this one
    static_cast<void>(w.watcher.start({"com_get_entry2"}, [&wake = w.wake] { return watch(wake); }));
}

void port_watcher_scan_now() { workers().wake.set(); }

uint32_t& port_watcher_period_ms() {
    static uint32_t period = 60000;
    return period;
}
