// The program's own settings, which a user keeps from start to start: one JSON file, "settings.json" in the user's
// settings folder. What the program does not know in it stays. GUI thread.
#pragma once

#include "toolkit/core/result.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

inline constexpr std::size_t recent_files_max = 10;

struct settings {
    int32_t window_w = 0; ///< pixels; 0: never stored
    int32_t window_h = 0;
    bool check_after_write = false; ///< 写入后校验
    bool confirm_write = false;     ///< 写入前确认改动
    bool restore_last = false;      ///< 启动时恢复上次型号与串口
    bool close_progress = false;    ///< 成功后自动关闭进度
    std::string last_model{}, last_port{};
    std::vector<std::string> recent_files{}; ///< whole paths, the newest first
    bool operator==(const settings&) const = default;
};

/// What is on or off: its key in the file, which is the name of its switch too.
struct settings_flag {
    const char* key;
    bool settings::*value;
};
inline constexpr settings_flag settings_flags[] = {
    {"check_after_write", &settings::check_after_write},
    {"confirm_write", &settings::confirm_write},
    {"restore_last", &settings::restore_last},
    {"close_progress", &settings::close_progress},
};

/// The folder of the settings (platform_settings_folder); tests choose another before the first settings_get.
std::string& settings_folder();
/// A file's path in that folder; empty when the system names no folder.
std::string settings_path(const char* file);
/// Replaces a file of that folder whole, making the folder when it is missing. RET_FAIL when that did not work.
[[nodiscard]] ret_t settings_write(const char* file, const std::string& text);

/// The settings; read at the first call. What cannot be read has its default, and one line in the log says why.
const settings& settings_get();
/// Changes them and, where that makes a difference, replaces the file; what another window of the program has
/// changed in it stays. `change` is called for this window's and for the file's. A file that cannot be written has
/// a line in the log, and the change holds until the program ends. RET_FAIL then.
ret_t settings_change(const std::function<void(settings&)>& change);
/// Test aid: the next settings_get reads the file again.
void settings_forget();
