#include "tests/app/user.h"

#include "toolkit/ravel/drive.h"
#include "toolkit/ravel/drive_script.h"
#include "toolkit/ravel/ravel.h"
#include "toolkit/ravel/window_stack.h"

namespace {

constexpr uint32_t look_again_ms = 5;
constexpr uint32_t script_patience_ms = 60000;

} // namespace

bool user_wait(const std::function<bool()>& done, uint32_t timeout_ms) {
    const int64_t end = time_now_ms() + timeout_ms;
    modal_run pump;
    bool answer = false;
    const uint32_t timer = timer_add(
        [&] {
            answer = done();
            if (answer || time_now_ms() >= end) pump.loop.quit();
            return RET_REPEAT;
        },
        look_again_ms);
    pump.loop.exec();
    timer_remove(timer);
    return answer;
}

void user_will_do(const std::string& script, std::string* failed) {
    const auto echo = [failed](const std::string& line) {
        if (line.starts_with("FAIL")) *failed += line;
    };
    const auto ended = [failed](bool good) {
        if (!good && failed->empty()) *failed = "the script failed";
    };
    drive_play(script, {echo, ended});
}

std::string user_does(const std::string& script) {
    std::string failed;
    bool over = false;
    const auto echo = [&failed](const std::string& line) {
        if (line.starts_with("FAIL")) failed += line;
    };
    const auto ended = [&](bool good) {
        over = true;
        if (!good && failed.empty()) failed = "the script failed";
    };
    drive_play(script, {echo, ended});
    if (!user_wait([&over] { return over; }, script_patience_ms)) failed += "the script did not end";
    return failed;
}

std::string user_word(const std::string& text) { return drive_quote(text); }

void user_window_size(int w, int h) {
    native_window()->resize(w, h);
    user_wait([=] { return native_window()->width() == w && native_window()->height() == h; }, script_patience_ms);
}
