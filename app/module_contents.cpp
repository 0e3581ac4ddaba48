#include "app/module_contents.h"

#include "app/change_list.h"
#include "app/devices.h"
#include "app/edits.h"
#include "app/progress.h"
#include "profile/compare.h"
#include "toolkit/core/text.h"

#include <utility>

namespace {

constexpr std::size_t names_shown_max = 3;

enum class check_kind : uint8_t { none, by_hand, after_write };

/// The session under way.
struct run_account {
    const dev_obj* of = nullptr;
    session_kind kind = session_kind::none;
    check_kind check = check_kind::none;
    bool failed = false; ///< reported as such; it may have gone on to its end all the same
    std::vector<uint8_t> written{};
};
run_account& run() {
    static auto& one = *new run_account;
    return one;
}

check_kind wanted = check_kind::none;
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

std::optional<session_failure> check_ended(widget* home, const dev_obj& dev, check_kind kind) {
    const std::vector<image_difference> found = dev_unwritten(dev);
    if (!found.empty() && kind == check_kind::after_write) return check_failure(found);
    if (found.empty()) {
        say("校验完成：一致");
        return std::nullopt;
    }
    say(tk_format("校验完成：%d 项不同", static_cast<int>(found.size())));
    progress_then({.refusal = nullptr, .then = [home] { return change_list_open(home); }});
    return std::nullopt;
}

} // namespace

void module_check_wanted(bool after) { wanted = after ? check_kind::after_write : check_kind::by_hand; }

void module_check_after_write(check_after_write how) { after_write = how; }

void module_session_begins(const dev_obj& dev, session_kind kind) {
    run() = {.of = &dev, .kind = kind, .check = std::exchange(wanted, check_kind::none)};
    if (kind == session_kind::write) run().written = dev.image;
}

bool module_reply(dev_obj& dev, std::span<const uint8_t> image) {
    if (run().check == check_kind::none || run().of != &dev) return false;
    dev_module_holds(dev, image);
    return true;
}

std::optional<session_failure> module_session_ended(widget* home, dev_obj& dev) {
    if (run().of != &dev) return std::nullopt;
    const run_account ended = std::exchange(run(), {});
    if (ended.failed) return std::nullopt;
    if (ended.kind == session_kind::write) dev_module_holds(dev, ended.written);
    edits_show(home);
    if (ended.check != check_kind::none) return check_ended(home, dev, ended.check);
    if (ended.kind == session_kind::write && after_write.wanted != nullptr && after_write.wanted())
        after_write.start(home);
    return std::nullopt;
}

void module_session_failed(dev_obj& dev, const session_failure& failure) {
    if (run().of == &dev) run().failed = true;
    // One that was not started (run 0) has sent nothing.
    const bool written = failure.kind == session_kind::write && failure.run != 0;
    if (written || failure.port_lost) dev_module_unknown(dev);
}
