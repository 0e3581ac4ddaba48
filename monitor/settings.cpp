#include "monitor/settings.h"

#include "toolkit/core/conf_json.h"
#include "toolkit/core/text.h"

#include <mutex>

namespace {

struct usual_setting {
    const char* key;
    const char* text;
};
constexpr usual_setting usual_settings[] = {
    {setting_fifo_size, "5000"},
    {"combo_box_ex_channel", "uart1-can1"},
    {"combo_box_type_1", "标准帧"},
    {"combo_box_type_2", "CAN"},
    {"combo_box_ex_data_len", "8"},
    {"edit_can_id", "1"},
    {"edit_data", "00 11 22 33 44 55 66 77"},
    {setting_paused, "0"},
};

/// Two that read, change and write the file must not undo each other's change.
std::mutex& turn() {
    static std::mutex& lock = *new std::mutex;
    return lock;
}

conf_json_ptr load(const char* path) {
    if (conf_json_ptr conf = conf_json_load(path)) return conf;
    const conf_json_ptr fresh = conf_json_create(path);
    for (const usual_setting& usual : usual_settings) conf_json_set_str(fresh.get(), usual.key, usual.text);
    if (conf_json_save_as(fresh.get(), path) != RET_OK) return nullptr;
    return conf_json_load(path);
}

/// Whether the key has a text: whatever else it may hold reads as either of two.
bool has_text(const conf_json* conf, const char* key) {
    return conf_json_get_str(conf, key, "a") == conf_json_get_str(conf, key, "b");
}

} // namespace

int setting_read(const char* path, const char* key, std::string* text) {
    if (path == nullptr || key == nullptr || text == nullptr) return -1;
    const std::lock_guard guard(turn());
    const conf_json_ptr conf = load(path);
    if (conf == nullptr || !has_text(conf.get(), key)) return -1;
    *text = tk_utf8_cut(conf_json_get_str(conf.get(), key, ""), setting_text_max);
    return 0;
}

int setting_write(const char* path, const char* key, const char* text) {
    if (path == nullptr || key == nullptr || text == nullptr) return -1;
    const std::lock_guard guard(turn());
    const conf_json_ptr conf = load(path);
    if (conf == nullptr || conf_json_set_str(conf.get(), key, text) != RET_OK) return -1;
    return conf_json_save_as(conf.get(), path) == RET_OK ? 0 : -1;
}
