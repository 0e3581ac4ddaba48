#include "app/kept_edits.h"

#include "app/devices.h"
#include "app/model_switch.h"
#include "app/profile_files.h"
#include "app/settings.h"
#include "app/ui_state.h"
#include "profile/compare.h"
#include "profile/profile.h"
#include "shell/err_display.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <algorithm>

namespace {

constexpr const char* file_name = "unwritten.json";
constexpr const char* text_leave_first = "已连接另一型号的模块，断开后再恢复";

struct offer_state {
    bool looked = false;
    std::optional<profile> found{};
};
offer_state& offer() {
    static auto& state = *new offer_state;
    return state;
}

std::optional<profile> load() {
    const std::string path = settings_path(file_name);
    if (path.empty() || !fs_file_exist(os_fs(), path.c_str())) return std::nullopt;
    profile_read_result read = profile_read(path);
    if (!read.loaded)
        log_write(LOG_LEVEL_WARN, tk_format("%s is not taken: %s\n", path.c_str(),
                                            profile_refusal_line(read.refusals.front()).c_str()));
    return std::move(read.loaded);
}

const std::optional<profile>& offered() {
    if (!offer().looked) offer() = {true, load()};
    return offer().found;
}

/// The family whose edits are kept: the current one, else another with something unwritten. Null: none.
const family_pages* unwritten_family() {
    std::vector<const family_pages*> all(families().begin(), families().end());
    std::stable_partition(all.begin(), all.end(),
                          [](const family_pages* pages) { return pages == current_pages(); });
    for (const family_pages* pages : all)
        if (const dev_obj* dev = device_of(*pages); dev != nullptr && !dev_unwritten(*dev).empty()) return pages;
    return nullptr;
}

void remove() {
    const std::string path = settings_path(file_name);
    if (!path.empty() && fs_file_exist(os_fs(), path.c_str())) fs_remove_file(os_fs(), path.c_str());
    offer() = {true, std::nullopt};
}

} // namespace

std::optional<std::string> kept_edits_offer() { return offered() ? std::optional(offered()->model) : std::nullopt; }

ret_t kept_edits_restore(widget* home) {
    if (!offered() || !profile_may_load()) return RET_FAIL;
    const std::string& model = offered()->model;
    if (model != current_model() && ui_state_get() != ui_state::idle) {
        err_display_show(text_leave_first);
        return RET_FAIL;
    }
    if (model != current_model() && model_choose(home, model) != RET_OK) return RET_FAIL;
    const ret_t ret = profile_put(home, *offered());
    if (ret == RET_OK) remove();
    return ret;
}

void kept_edits_dismiss() { remove(); }

void kept_edits_at_closing() {
    if (current_device() == nullptr) return;
    const family_pages* pages = unwritten_family();
    if (pages == nullptr && offered()) return; // nobody has answered yet
    if (pages == nullptr) return remove();
    const profile edited = profile_of(*device_of(*pages), last_model_of(*pages));
    if (settings_write(file_name, profile_text(edited)) != RET_OK)
        log_write(LOG_LEVEL_WARN, tk_format("%s cannot be written\n", settings_path(file_name).c_str()));
}

void kept_edits_forget() { offer() = {}; }
