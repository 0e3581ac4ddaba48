#include "app/edits.h"

#include "app/change_list.h"
#include "app/code_view.h"
#include "app/devices.h"
#include "app/edit_marks.h"
#include "app/home_parts.h"
#include "app/model_switch.h"
#include "app/truth_line.h"
#include "profile/compare.h"
#include "shell/navigator.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/window_manager.h"

#include <map>
#include <memory>

namespace {

constexpr const char* program_title = "VKTCfgTools";

struct account {
    explicit account(dev_obj& dev) : of(&dev), log(dev) {}
    dev_obj* of;
    edit_log log;
    bool restored = false; ///< as the code view shows it
};

auto& accounts() {
    static auto& all = *new std::map<const family_pages*, std::unique_ptr<account>>;
    return all;
}

account* account_of(const family_pages* pages) {
    const auto found = accounts().find(pages);
    return found == accounts().end() ? nullptr : found->second.get();
}

account* current_account() { return account_of(current_pages()); }

std::string step_tooltip(const char* does, const edit_step* step, const char* keys) {
    const std::string name = step == nullptr ? "" : "“" + step->name + "”";
    return does + name + "，不发送　" + keys;
}

void count_show(widget* home, std::size_t count) {
    const std::string text = count == 0 ? "" : tk_format("未写入的改动 %d 项", static_cast<int>(count));
    widget_set_text_utf8(home_part(home, "unwritten_count"), text.c_str());
    const std::string title = count == 0 ? program_title : text + " - " + program_title;
    window_manager_set_title(window_manager(), title.c_str());
}

void buttons_show(widget* home, const edit_log& log) {
    const struct {
        const edit_step* step;
        const char* does;
        const char* keys;
        const char* buttons[2]; ///< above the tabs, below the list
    } rows[] = {{log.undoable(), "撤销", "Ctrl+Z", {"button_undo", "button_list_undo"}},
                {log.redoable(), "重做", "Ctrl+Y", {"button_redo", "button_list_redo"}}};
    for (const auto& row : rows) {
        const std::string tooltip = step_tooltip(row.does, row.step, row.keys);
        for (const char* name : row.buttons) {
            widget_set_enable(home_part(home, name), row.step != nullptr);
            widget_set_tooltip(home_part(home, name), tooltip.c_str());
        }
    }
}

/// Shows the current device's state after steps back and forth: however many there were in one turn, once.
ret_t show_steps() {
    widget* home = navigator_find("home_page");
    const family_pages* pages = current_pages();
    const account* kept = account_of(pages);
    if (home == nullptr || kept == nullptr) return RET_OK;
    model_page_refresh(home);
    model_show_code_as(*pages, kept->restored);
    edits_show(home);
    return RET_OK;
}

/// A step was taken back or done again.
ret_t step_done(account& kept, const edit_step* step, bool restored) {
    if (step == nullptr) return RET_FAIL;
    kept.restored = restored;
    return idle_queue_once("edits_show_steps", show_steps);
}

} // namespace

void edits_follow(const family_pages& pages, dev_obj& dev) {
    std::unique_ptr<account>& kept = accounts()[&pages];
    if (kept != nullptr && kept->of == &dev && dev.edited) return;
    kept = std::make_unique<account>(dev);
    dev.edited = [kept = kept.get()](const edit_cause& cause) {
        kept->log.note(cause, kept->restored);
        edits_show(navigator_find("home_page"));
    };
}

edit_log* edits_of(const family_pages& pages) {
    account* kept = account_of(&pages);
    return kept == nullptr ? nullptr : &kept->log;
}

void edits_code_shown(const family_pages& pages, bool restored) {
    account* kept = account_of(&pages);
    if (kept == nullptr) return;
    kept->restored = restored;
    kept->log.shown(restored);
}

void edits_show(widget* home) {
    const family_pages* pages = current_pages();
    account* kept = account_of(pages);
    if (home == nullptr || kept == nullptr) return;
    const std::vector<image_difference> unwritten = dev_unwritten(*kept->of);
    code_view_refresh(home, *pages);
    count_show(home, unwritten.size());
    buttons_show(home, kept->log);
    truth_line_show(home, *pages, *kept->of, unwritten.size());
    marks_show(home, *pages, *kept->of, unwritten);
    change_list_show(home, *kept->of, unwritten);
}

ret_t edits_undo(widget* /*home*/) {
    account* kept = current_account();
    if (kept == nullptr) return RET_FAIL;
    kept->log.note({}, kept->restored); // whatever nobody noted is a step too
    const edit_step* step = kept->log.undo();
    return step_done(*kept, step, step != nullptr && step->restored_before);
}

ret_t edits_redo(widget* /*home*/) {
    account* kept = current_account();
    if (kept == nullptr) return RET_FAIL;
    kept->log.note({}, kept->restored);
    const edit_step* step = kept->log.redo();
    return step_done(*kept, step, step != nullptr && step->restored_after);
}

ret_t edits_applied(widget* home, const char* name) {
    dev_obj* dev = current_device();
    if (dev == nullptr) return RET_FAIL;
    dev_show(*dev);
    model_page_refresh(home);
    dev_edited(*dev, {.name = name});
    return RET_OK;
}
