#include "app/profile_title.h"

#include "app/devices.h"
#include "shell/navigator.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/widget.h"

#include <algorithm>
#include <map>

namespace {

auto& files() {
    static auto& all = *new std::map<const family_pages*, profile_at_hand>;
    return all;
}

constexpr std::size_t name_max = 24; // characters that the title's row has room for

std::string shortened(const std::string& name) {
    const std::string first = tk_utf8_first(name, name_max);
    return first.size() == name.size() ? name : tk_utf8_first(name, name_max - 1) + "…";
}

ret_t show() {
    widget* label = widget_lookup(navigator_find("home_page"), "profile_name");
    if (label == nullptr) return RET_FAIL;
    const std::string& path = profile_now().path;
    const bool differs = profile_differs();
    widget_set_text_utf8(label, (shortened(path_name(path)) + (differs ? " ●" : "")).c_str());
    return widget_set_tooltip(label, (path + (differs ? "\n各页的值与文件不同，未保存" : "")).c_str());
}

} // namespace

const profile_at_hand& profile_now() { return files()[current_pages()]; }

void profile_now_is(const std::string& path, profile values) {
    files()[current_pages()] = {path, std::move(values)};
    profile_title_soon();
}

void profile_forget() { files().clear(); }

bool profile_differs() {
    const profile_at_hand& file = profile_now();
    const dev_obj* dev = current_device();
    if (file.path.empty() || dev == nullptr) return false;
    if (file.values.model != current_model()) return true;
    const profile edited = profile_of(*dev, current_model());
    return !std::ranges::equal(edited.values, file.values.values, [](const auto& one, const auto& other) {
        return one.what == other.what && one.value == other.value;
    });
}

void profile_title_soon() { idle_queue_once("profile_title", show); }

std::string path_name(const std::string& path) { return path.substr(path.find_last_of("/\\") + 1); }

std::string path_folder(const std::string& path) {
    const std::size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}
