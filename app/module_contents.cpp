#include "app/module_contents.h"

#include "app/change_list.h"
#include "app/devices.h"
#include "app/edits.h"
#include "app/progress.h"
#include "profile/compare.h"
#include "toolkit/core/text.h"

#include <map>
#include <utility>

namespace {

constexpr std::size_t names_shown_max = 3;

/// A session that has begun and has not come to its good end.
struct run_account {
    session_kind kind = session_kind::none;
    module_check check = module_check::none;
    bool failed = false; ///< reported as such; it may have gone on to its end all the same
    std::vector<uint8_t> written{};
};

using run_key = std::pair<const dev_obj*, uint32_t>;
std::map<run_key, run_account>& runs() {
    static auto& all = *new std::map<run_key, run_account>;
    return all;
}
run_account* account_of(const dev_obj& dev, uint32_t run) {
    const auto found = runs().find({&dev, run});
    return found == runs().end() ? nullptr : &found->second;
}

check_after_write after_write{};

std::string names_of(const std::vector<image_difference>& found) {
    std::string text;
    for (std::size_t i = 0; i < found.size() && i < names_shown_max; ++i)
        text += (i == 0 ? "" : "、") + std::string(found[i].what->label);
    if (found.size() > names_shown_max) text += tk_format(" 等 %d 项", static_cast<int>(found.size()));
    return text;
}

void say(const std::string& text) { progress_update({true, 100, text, operation::read}); }

session_failure check_failure(const std::vector<image_difference>& found) {
    const std::string text = "写入后校验不一致：" + names_of(found);
    return {.run = 0,
            .kind = session_kind::read,
            .log_line = "\n" + current_model() + "\n" + text + "\n\n",
            .text = text};
}

std::optional<session_failure> check_ended(widget* home, const dev_obj& dev, module_check kind) {
    const std::vector<image_difference> found = dev_unwritten(dev);
    if (!found.empty() && kind == module_check::after_write) return check_failure(found);
    if (found.empty()) {
        say("校验完成：一致");
        return std::nullopt;
    }
    say(tk_format("校验完成：%d 项不同", static_cast<int>(found.size())));
    progress_then({.refusal = nullptr, .then = [home] { return change_list_open(home); }});
    return std::nullopt;
}

} // namespace

void module_check_after_write(check_after_write how) { after_write = how; }

void module_session_began(const dev_obj& dev, uint32_t run, session_kind kind, module_check check) {
    // The buttons come back with what the one before reports: of older ones nothing is on its way any more.
    std::erase_if(runs(), [&](const auto& one) { return one.first.first == &dev && one.first.second + 1 < run; });
    runs()[{&dev, run}] = {
        .kind = kind, .check = check, .written = kind == session_kind::write ? dev.image : std::vector<uint8_t>()};
}

bool module_reply(dev_obj& dev, uint32_t run, std::span<const uint8_t> image) {
    const run_account* account = account_of(dev, run);
    if (account == nullptr || account->check == module_check::none) return false;
    dev_module_holds(dev, image);
    return true;
}

std::optional<session_failure> module_session_ended(widget* home, dev_obj& dev, uint32_t run) {
    const auto account = runs().extract({&dev, run});
    if (account.empty() || account.mapped().failed) return std::nullopt;
    const run_account& ended = account.mapped();
    if (ended.kind == session_kind::write) dev_module_holds(dev, ended.written);
    edits_show(home);
    if (ended.check != module_check::none) return check_ended(home, dev, ended.check);
    const bool is_last = account_of(dev, run + 1) == nullptr; // else the user has gone on already
    if (ended.kind == session_kind::write && is_last && after_write.wanted != nullptr && after_write.wanted())
        after_write.start(home);
    return std::nullopt;
}

void module_session_failed(dev_obj& dev, const session_failure& failure) {
    if (run_account* account = account_of(dev, failure.run)) account->failed = true;
    // One that was not started (run 0) has sent nothing.
    const bool written = failure.kind == session_kind::write && failure.run != 0;
    if (written || failure.port_lost) dev_module_unknown(dev);
}
