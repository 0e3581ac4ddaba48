#include "app/settings.h"

#include "platform/system.h"
#include "toolkit/core/conf_json.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <optional>

namespace {

constexpr const char* file_name = "settings.json";
constexpr int32_t window_max = 16384; // pixels

struct number_row {
    const char* key;
    int32_t settings::*value;
};
constexpr number_row numbers[] = {
    {"window_w", &settings::window_w},
    {"window_h", &settings::window_h},
};

struct text_row {
    const char* key;
    std::string settings::*value;
};
constexpr text_row texts[] = {
    {"last_model", &settings::last_model},
    {"last_port", &settings::last_port},
};

std::string recent_key(std::size_t place) { return tk_format("recent_%zu", place + 1); }

std::string& folder_in_use() {
    static auto& folder = *new std::string(platform_settings_folder());
    return folder;
}

std::optional<settings>& in_use() {
    static auto& one = *new std::optional<settings>;
    return one;
}

/// An error to the log: the settings are first read before the start-up has set its level.
void complain(const std::string& why) { log_write(LOG_LEVEL_ERROR, settings_path(file_name) + why + "\n"); }

/// What the file holds; null for none, and for one that cannot be read.
conf_json_ptr file_load(bool aloud) {
    const std::string path = settings_path(file_name);
    const bool there = fs_file_exist(os_fs(), path.c_str()) || fs_dir_exist(os_fs(), path.c_str());
    const char* why = nullptr;
    conf_json_ptr conf = there ? conf_json_load_quietly(path.c_str(), &why) : nullptr;
    if (why != nullptr && aloud) complain(std::string(" ") + why);
    return conf;
}

/// A value of another kind gives whatever default it is asked with.
bool is_flag(const conf_json* conf, const char* key) {
    return conf_json_get_bool(conf, key, false) == conf_json_get_bool(conf, key, true);
}

settings read_from(const conf_json* conf, bool aloud) {
    settings out;
    std::string wrong;
    for (const settings_flag& row : settings_flags) {
        out.*row.value = conf_json_get_bool(conf, row.key, false);
        if (conf_json_has(conf, row.key) && !is_flag(conf, row.key)) wrong += tk_format(" %s", row.key);
    }
    for (const number_row& row : numbers) {
        const int32_t read = conf_json_get_int(conf, row.key, -1);
        if (read >= 0 && read <= window_max) out.*row.value = read;
        if (conf_json_has(conf, row.key) && out.*row.value != read) wrong += tk_format(" %s", row.key);
    }
    for (const text_row& row : texts) out.*row.value = conf_json_get_str(conf, row.key, "");
    for (std::size_t i = 0; i < recent_files_max; i++) {
        const std::string path = conf_json_get_str(conf, recent_key(i).c_str(), "");
        if (!path.empty()) out.recent_files.push_back(path);
    }
    if (!wrong.empty() && aloud) complain(": not understood:" + wrong);
    return out;
}

void write_to(conf_json* conf, const settings& from) {
    for (const settings_flag& row : settings_flags) conf_json_set_bool(conf, row.key, from.*row.value);
    for (const number_row& row : numbers) conf_json_set_int(conf, row.key, from.*row.value);
    for (const text_row& row : texts) conf_json_set_str(conf, row.key, (from.*row.value).c_str());
    for (std::size_t i = 0; i < recent_files_max; i++) {
        const std::string key = recent_key(i);
        const bool used = i < from.recent_files.size();
        if (used || conf_json_has(conf, key.c_str()))
            conf_json_set_str(conf, key.c_str(), used ? from.recent_files[i].c_str() : "");
    }
}

settings changed(settings from, const std::function<void(settings&)>& change) {
    change(from);
    if (from.recent_files.size() > recent_files_max) from.recent_files.resize(recent_files_max);
    return from;
}

/// A pipe would be waited for.
bool may_write(const std::string& path) { return !path.empty() && !fs_is_device(os_fs(), path.c_str()); }

/// The folder and the one that it stands in.
void make_folder() {
    const std::string& folder = settings_folder();
    const std::size_t slash = folder.find_last_of("/\\");
    if (slash != std::string::npos && slash > 0 && !fs_dir_exist(os_fs(), folder.substr(0, slash).c_str()))
        static_cast<void>(fs_create_dir(os_fs(), folder.substr(0, slash).c_str()));
    if (!fs_dir_exist(os_fs(), folder.c_str())) static_cast<void>(fs_create_dir(os_fs(), folder.c_str()));
}

} // namespace

std::string& settings_folder() { return folder_in_use(); }

std::string settings_path(const char* file) {
    return settings_folder().empty() ? std::string() : settings_folder() + "/" + file;
}

ret_t settings_write(const char* file, const std::string& text) {
    const std::string path = settings_path(file);
    if (!may_write(path)) return RET_FAIL;
    make_folder();
    return fs_write_whole(path.c_str(), text);
}

const settings& settings_get() {
    if (!in_use()) in_use() = read_from(file_load(true).get(), true);
    return *in_use();
}

ret_t settings_change(const std::function<void(settings&)>& change) {
    const settings before = settings_get();
    const settings next = changed(before, change);
    if (next == before) return RET_OK;
    in_use() = next;
    const std::string path = settings_path(file_name);
    // With what others keep in it, and what another window has changed since.
    conf_json_ptr conf = file_load(false);
    const settings kept = conf == nullptr ? next : changed(read_from(conf.get(), false), change);
    if (conf == nullptr) conf = conf_json_create(path.c_str());
    write_to(conf.get(), kept);
    make_folder();
    if (may_write(path) && conf_json_save_as(conf.get(), path.c_str()) == RET_OK) {
        in_use()->recent_files = kept.recent_files;
        return RET_OK;
    }
    log_write(LOG_LEVEL_WARN, tk_format("%s cannot be written\n", path.c_str()));
    return RET_FAIL;
}

void settings_forget() { in_use().reset(); }
