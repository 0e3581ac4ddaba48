// The COM-port list: scan into "com_list.txt", load from it, the one-shot load and the watcher. Their workers end
// when all workers are asked to.
#pragma once

#include "toolkit/core/result.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// What the home page does with the list. Every function is called on the GUI thread.
struct port_list_view {
    std::function<void()> reset;
    std::function<void(uint32_t index, const std::string& name)> append;
    std::function<void()> finished;      ///< the load-finished step of the one-shot load
    std::function<void()> no_permission; ///< the working directory cannot be written
};
void port_list_set_view(port_list_view view);

/// Writes "com_list.txt" from the system's device names. 0 on success, -1 on failure; a list that cannot be written
/// is no reason to ask for names. Any thread; takes turns.
int port_scan();
/// Creates and deletes "authority" in the working directory: 0 when allowed, -1 otherwise. Any thread.
int authority_check();

/// What the one-shot load does on its worker: scans, probes the folder, queues the list for the view. 0, or 1 when
/// the list cannot be opened. Any thread; takes turns.
uint32_t port_list_load();
/// Starts "com_get_entry" unless it exists (then nothing happens). GUI thread.
void port_list_load_start();
/// Starts the watcher "com_get_entry2": a scan at once, then every port_watcher_period_ms(). Never more than one
/// lives: when one does already, it is asked to scan now. GUI thread.
void port_watcher_start();
/// Asks the watcher, if one lives, to scan now. Any thread.
void port_watcher_scan_now();
/// Milliseconds, 60000 at first; tests choose another before they start the watcher.
uint32_t& port_watcher_period_ms();

/// The system's device names of ports (COM and LPT), by number; nothing when it does not give them. Any thread.
std::optional<std::vector<std::string>> port_device_names();

// ---- the list's text ----

/// The list file's text for these device names: those that contain "COM" or "LPT", a line each; from number 10 on
/// (the name's digits, in order, as one number) in device-path form "\\.\NAME". Any thread.
std::string port_list_text(const std::vector<std::string>& names);
/// The list file's lines, each at most 100 bytes (the rest of a longer one is dropped); nothing when it cannot be
/// opened. Any thread.
std::optional<std::vector<std::string>> port_list_lines();
/// What the list shows for a line: the line, less a "\\.\" in front. Any thread.
std::string port_shown_name(const std::string& line);
