#include "serial/port_list.h"

#include "config/dev_obj.h"
#include "serial/session_threads.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <algorithm>
#include <atomic>
#include <memory>
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
constexpr uint32_t let_go_ms = 200;

std::mutex turn;           ///< one writer or reader of the list file at a time
std::mutex authority_turn; ///< the same for the probe's file

// GUI thread only.
port_list_view view;
tk_thread* one_shot = nullptr;

// ---- scan
// ----------------------------------------------------------------------------------------------------------

/// The system's device names, or nothing when it does not give them.
std::optional<std::vector<std::string>> device_names() {
    std::vector<char> buffer(names_bytes);
    DWORD got = com::QueryDosDeviceA(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (got == 0 && com::GetLastError() == error_buffer_small) {
        buffer.assign(names_bytes, 0);
        got = com::QueryDosDeviceA(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    }
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

/// A scan that gets no names leaves an empty list behind.
int scan_in_turn() {
    const std::optional<std::vector<std::string>> names = device_names();
    for (const std::string& name : names.value_or(std::vector<std::string>()))
        if (is_port(name)) log_console(name + "\n");
    const std::string text = names ? port_list_text(*names) : std::string();
    const bool written = fs_write_whole(list_file, text) == RET_OK;
    return written && names ? 0 : -1;
}

// ---- load
// ----------------------------------------------------------------------------------------------------------

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

void load_in_turn() {
    const std::optional<std::vector<std::string>> lines = port_list_lines();
    if (!lines) return;
    post([] {
        if (view.reset) view.reset();
    });
    for (uint32_t index = 0; index < lines->size(); ++index) {
        const std::string& line = (*lines)[index];
        {
            const tk_lock hold(store_lock());
            tk_object_set_prop_str(com_name_map(), tk_format("%u", index).c_str(), line.c_str());
        }
        const std::string name = port_shown_name(line);
        if (!name.empty()) post_entry(index, name);
    }
}

// The turn is kept until the whole list is queued, so that two loads never mix on the screen.
uint32_t load_once() {
    const std::lock_guard hold(turn);
    scan_in_turn();
    if (authority_check() != 0)
        post([] {
            if (view.no_permission) view.no_permission();
        });
    load_in_turn();
    return 0;
}

ret_t load_finished() {
    tk_thread_join(one_shot);
    tk_thread_destroy(one_shot);
    one_shot = nullptr;
    if (view.finished) view.finished();
    return RET_OK;
}

// ---- watcher
// -------------------------------------------------------------------------------------------------------

/// What the watcher shares with its owner; lives as long as either.
struct watcher_link {
    tk_semaphore* wake = tk_semaphore_create(0);
    tk_semaphore* gone = tk_semaphore_create(0);
    std::atomic<bool> stop{false};
    ~watcher_link() {
        tk_semaphore_destroy(wake);
        tk_semaphore_destroy(gone);
    }
};

// GUI thread only. The link stays when the handle is let go: it tells that a watcher lives.
std::shared_ptr<watcher_link> watcher;
tk_thread* watcher_thread = nullptr;

uint32_t watch(watcher_link& link) {
    while (!link.stop && !tk_thread_should_stop()) {
        {
            const std::lock_guard hold(turn);
            scan_in_turn();
            load_in_turn();
        }
        tk_semaphore_wait(link.wake, session_timing_get().watcher_period_ms);
    }
    tk_semaphore_post(link.gone);
    return 0;
}

} // namespace

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

void port_list_load_start() {
    if (one_shot != nullptr) return;
    one_shot = worker_start("com_get_entry", [] {
        const uint32_t result = load_once();
        idle_queue(load_finished);
        return result;
    });
}

void port_watcher_start() {
    if (watcher != nullptr) {
        tk_semaphore_post(watcher->wake);
        return;
    }
    watcher = std::make_shared<watcher_link>();
    watcher_thread = worker_start("com_get_entry2", [link = watcher] { return watch(*link); });
    if (watcher_thread == nullptr) watcher.reset();
}

void port_watcher_release() {
    tk_thread_release(watcher_thread);
    watcher_thread = nullptr;
}

void port_list_threads_destroy() {
    tk_thread_destroy(one_shot);
    one_shot = nullptr;
    if (watcher == nullptr) return;
    watcher->stop = true;
    tk_semaphore_post(watcher->wake);
    tk_semaphore_wait(watcher->gone, let_go_ms);
    port_watcher_release();
    watcher.reset();
}
