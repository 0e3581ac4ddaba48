#include "app/profile_files.h"

#include "app/devices.h"
#include "app/edits.h"
#include "app/model_switch.h"
#include "app/profile_title.h"
#include "app/profile_window.h"
#include "app/settings.h"
#include "app/ui_state.h"
#include "shell/err_display.h"
#include "shell/navigator.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/idle.h"
#include "toolkit/ravel/file_dialog.h"

#include <algorithm>
#include <utility>

namespace {

constexpr const char* text_recent = "最近";
constexpr const char* text_not_now = "正在与模块通信或监控数据，结束后再载入配置文件";
constexpr const char* text_leave_first = "已连接，断开后才能切换型号";
constexpr const char* text_no_file = "不是文件";
constexpr const char* text_odd_saved = "已保存。以下的值超出范围，这个文件不会被载入：";

void recent_show(widget* home) {
    std::vector<std::pair<int32_t, std::string>> options = {{0, text_recent}};
    for (const std::string& path : settings_get().recent_files)
        options.emplace_back(static_cast<int32_t>(options.size()), path_name(path) + "　" + path_folder(path));
    widget* combo = widget_lookup(home, "combo_recent");
    combo_box_set_options(combo, options);
    widget_set_value_int(combo, 0);
    widget_set_enable(combo, options.size() > 1);
}

void recent_change(widget* home, const std::string& path, bool keep) {
    static_cast<void>(settings_change([&](settings& s) {
        std::erase(s.recent_files, path);
        if (!keep) return;
        s.recent_files.push_back(path);
        std::rotate(s.recent_files.begin(), s.recent_files.end() - 1, s.recent_files.end());
    }));
    recent_show(home);
}

std::string start_folder() {
    if (!profile_now().path.empty()) return path_folder(profile_now().path);
    const auto& recent = settings_get().recent_files;
    return recent.empty() ? std::string() : path_folder(recent.front());
}

file_question question(const char* title) {
    return {.title = title,
            .folder = start_folder(),
            .name = profile_now().path.empty() ? current_model() : path_name(profile_now().path),
            .filters = {{"配置文件", "json"}, {"所有文件", ""}}};
}

/// The file's model is the current one, or becomes it.
bool model_agreed(widget* home, const std::string& path, const std::string& model) {
    if (model == current_model()) return true;
    if (ui_state_get() != ui_state::idle) {
        err_display_show((path_name(path) + " 是 " + model + " 的配置；" + text_leave_first).c_str());
        return false;
    }
    return profile_other_agreed(path, model, current_model()) && model_choose(home, model) == RET_OK;
}

/// A module may hold what no file may: "转换模式 9、波特率 99".
std::string odd_values(const profile& values) {
    std::string text;
    for (const profile_value& one : values.values)
        if (!value_refusal(*one.what, one.value).empty())
            text +=
                (text.empty() ? "" : "、") + std::string(one.what->label) + " " + value_shown(*one.what, one.value);
    return text;
}

ret_t save_to(widget* home, const std::string& path) {
    const dev_obj* dev = current_device();
    if (dev == nullptr) return RET_FAIL;
    profile values = profile_of(*dev, current_model());
    values.note = profile_now().values.note;
    if (profile_save(values, path) != RET_OK) {
        err_display_show(("无法写入 " + path + "：文件夹不存在、没有权限或磁盘已满。原有的文件未改变。").c_str());
        return RET_FAIL;
    }
    const std::string odd = odd_values(values);
    profile_now_is(path, std::move(values));
    recent_change(home, path, true);
    if (!odd.empty()) err_display_show((text_odd_saved + odd).c_str());
    return RET_OK;
}

} // namespace

void profile_bind(widget* home) {
    recent_show(home);
    widget_on(home, event_type::drop, [home](const event& what) { return profile_take(home, what.path); });
}

bool profile_may_load() {
    if (!session_any_running() && navigator_find("data_page") == nullptr) return true;
    err_display_show(text_not_now);
    return false;
}

profile_read_result profile_read(const std::string& path, const family_descriptor* for_family) {
    // The window would wait for whoever writes into it.
    if (fs_is_device(os_fs(), path.c_str())) return {.refusals = {{"", text_no_file}}};
    std::vector<const family_descriptor*> known;
    for (const family_pages* pages : families()) known.push_back(pages->of);
    return profile_load(path, known, for_family);
}

ret_t profile_put(widget* home, const profile& values) {
    dev_obj* dev = current_device();
    if (dev == nullptr || profile_apply(values, *dev) != RET_OK) return RET_FAIL;
    return edits_applied(home, "载入配置");
}

ret_t profile_take(widget* home, const std::string& path) {
    if (!profile_may_load() || current_pages() == nullptr) return RET_FAIL;
    if (!fs_file_exist(os_fs(), path.c_str()) && !fs_dir_exist(os_fs(), path.c_str())) {
        recent_change(home, path, false);
        err_display_show(("找不到文件 " + path).c_str());
        return RET_FAIL;
    }
    profile_read_result read = profile_read(path, current_pages()->of);
    if (!read.loaded) {
        profile_errors_show(path, read.refusals);
        return RET_FAIL;
    }
    if (!model_agreed(home, path, read.loaded->model)) return RET_FAIL;
    if (profile_put(home, *read.loaded) != RET_OK) {
        err_display_show(("无法载入 " + path).c_str());
        return RET_FAIL;
    }
    profile_now_is(path, std::move(*read.loaded));
    recent_change(home, path, true);
    return RET_OK;
}

ret_t profile_open(widget* home) {
    if (!profile_may_load()) return RET_FAIL;
    const auto chosen = file_dialog_open(question("打开配置文件"));
    return chosen ? profile_take(home, chosen->path) : RET_OK;
}

ret_t profile_recent_picked(widget* home) {
    widget* combo = widget_lookup(home, "combo_recent");
    const int32_t place = widget_get_value_int(combo);
    widget_set_value_int(combo, 0); // it goes on saying what it is
    const auto& recent = settings_get().recent_files;
    if (place < 1 || static_cast<std::size_t>(place) > recent.size()) return RET_OK;
    // Once the list has closed: what is said opens a window.
    return idle_queue([path = recent[static_cast<std::size_t>(place) - 1]] {
        widget* page = navigator_find("home_page");
        return page == nullptr ? RET_FAIL : profile_take(page, path);
    });
}

ret_t profile_save_here(widget* home) {
    return profile_now().path.empty() ? profile_save_as(home) : save_to(home, profile_now().path);
}

ret_t profile_save_as(widget* home) {
    const auto chosen = file_dialog_save(question("保存配置文件"));
    return chosen ? save_to(home, chosen->path) : RET_OK;
}
