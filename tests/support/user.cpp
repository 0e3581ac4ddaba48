#include "tests/support/user.h"

#include "toolkit/ravel/drive.h"
#include "toolkit/ravel/window_manager.h"

namespace {

constexpr uint32_t script_patience_ms = 60000;

drive_reports reports_into(std::string* failed, std::function<void(bool good)> ended) {
    const auto echo = [failed](const std::string& line) {
        if (line.starts_with("FAIL")) *failed += line;
    };
    const auto end = [failed, ended = std::move(ended)](bool good) {
        if (!good && failed->empty()) *failed = "the script failed";
        ended(good);
    };
    return {echo, end};
}

std::string play(const std::string& script, const std::function<void()>& at_failure) {
    std::string failed;
    bool over = false;
    const auto ended = [&](bool good) {
        over = true;
        if (!good) at_failure();
    };
    drive_play(script, reports_into(&failed, ended));
    if (!user_wait([&over] { return over; }, script_patience_ms)) failed += "the script did not end";
    return failed;
}

} // namespace

bool user_wait(const std::function<bool()>& done, uint32_t timeout_ms) { return drive_wait(done, timeout_ms); }

void user_will_do(const std::string& script, std::string* failed) {
    drive_play(script, reports_into(failed, [](bool) {}));
}

std::string user_does(const std::string& script) {
    return play(script, [] { window_manager_back_to_home(window_manager()); });
}

std::string user_tries(const std::string& script) {
    return play(script, [] {});
}

std::string user_word(const std::string& text) { return drive_word(text); }

bool user_window_size(int w, int h) { return drive_window_size(w, h) == RET_OK; }
