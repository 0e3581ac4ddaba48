#include "app/devices.h"

#include "toolkit/core/text.h"

#include <algorithm>
#include <map>

namespace {

constexpr std::size_t model_name_bytes = 99;

// For the program's life: threads and windows know devices by their address.
auto& made() {
    static auto& all = *new std::map<const family_pages*, std::unique_ptr<dev_obj>>;
    return all;
}

session_reports no_reports(const family_pages&) { return {}; }
session_reports (*reports_of)(const family_pages&) = no_reports;

auto& last_models() {
    static auto& all = *new std::map<const family_pages*, std::string>;
    return all;
}

std::string& model() {
    static auto& name = *new std::string("VKT531A");
    return name;
}

} // namespace

void devices_report_to(session_reports (*to)(const family_pages& pages)) { reports_of = to; }

dev_obj* device_of(const family_pages& pages) {
    const auto found = made().find(&pages);
    return found == made().end() ? nullptr : found->second.get();
}

dev_obj* device_make(const family_pages& pages) {
    if (dev_obj* dev = device_of(pages)) return dev;
    const family_descriptor* const list[] = {pages.of};
    std::unique_ptr<dev_obj> dev = dev_open(list, pages.of->device, reports_of(pages));
    if (dev == nullptr) return nullptr;
    return (made()[&pages] = std::move(dev)).get();
}

std::vector<dev_obj*> devices() {
    std::vector<dev_obj*> all;
    for (const auto& [pages, dev] : made()) all.push_back(dev.get());
    return all;
}

void device_forget(const family_pages& pages) { made().erase(&pages); }

const std::string& current_model() { return model(); }
void set_current_model(const std::string& name) {
    model() = tk_utf8_cut(name, model_name_bytes);
    if (const family_pages* pages = pages_of_model(model())) last_models()[pages] = model();
}

std::string last_model_of(const family_pages& pages) {
    const auto found = last_models().find(&pages);
    return found == last_models().end() ? pages.of->device : found->second;
}

const family_pages* current_pages() { return pages_of_model(current_model()); }

dev_obj* current_device() {
    const family_pages* pages = current_pages();
    return pages == nullptr ? nullptr : device_of(*pages);
}

disconnector& session_disconnector() {
    static auto& one = *new disconnector;
    return one;
}

bool session_any_running() {
    const auto running = [](const dev_obj* dev) { return dev->session.running(); };
    return session_disconnector().running() || std::ranges::any_of(devices(), running);
}
