#include "serial/port_about.h"

#include "platform/com_port.h"
#include "platform/port_watch.h"
#include "serial/port_names.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/worker.h"

#include <mutex>
#include <utility>

namespace {

/// A plugged adapter makes some notices, one after the other: the list waits until they have stopped for so long,
/// but not for more than so many of them.
constexpr uint32_t quiet_ms = 60;
constexpr int notices_max = 8;

struct state_row {
    com::port_state state;
    const char* words;
};
constexpr state_row states[] = {
    {com::port_state::ours, "已连接"},      {com::port_state::taken, "被占用"},
    {com::port_state::forbidden, "无权限"}, {com::port_state::absent, "不存在"},
    {com::port_state::no_port, "不是串口"},
};

std::function<void(const port_abouts&)> view; ///< GUI thread only

/// Never destroyed: the worker may run until the process ends.
struct about_worker {
    std::mutex lock;
    std::vector<std::string> names; ///< guarded by lock
    com::port_watch watch;
    worker answers; ///< GUI thread only
};
about_worker& about() {
    static about_worker& one = *new about_worker;
    return one;
}

void answer(const std::vector<std::string>& names) {
    port_abouts answers;
    for (const std::string& name : names) answers[name] = port_about_ask(name);
    idle_queue([answers = std::move(answers)] {
        if (view) view(answers);
        return RET_OK;
    });
}

/// Waits until no more notices come; what woke a wait meanwhile is answered by the scan that follows.
void let_notices_end(com::port_watch& watch) {
    for (int i = 0; i < notices_max && watch.wait(quiet_ms) != com::port_watch::end::timed_out; ++i)
        if (worker_should_stop()) return;
}

uint32_t run(about_worker& one, void (*on_notice)()) {
    const stop_callback on_stop(worker_stop_token(), [&one] { one.watch.wake(); });
    while (!worker_should_stop()) {
        if (one.watch.wait(wait_for_ever) == com::port_watch::end::noticed) {
            let_notices_end(one.watch);
            on_notice();
        }
        if (worker_should_stop()) break;
        std::unique_lock guard(one.lock);
        const std::vector<std::string> names = one.names;
        guard.unlock();
        answer(names);
    }
    return 0;
}

} // namespace

std::string port_about_text(const port_about& about) {
    std::string text = about.device;
    for (const state_row& row : states)
        if (row.state == about.state) text += (text.empty() ? "" : "，") + std::string(row.words);
    return text;
}

port_about port_about_ask(const std::string& name) {
    const std::string path = port_path(name, true).value_or("\\\\.\\" + name);
    port_about about{.device = com::describe_port(name), .state = com::look_at_port(path), .grant = {}};
    if (about.state == com::port_state::forbidden) about.grant = com::port_grant_command(path);
    return about;
}

void port_abouts_set_view(std::function<void(const port_abouts&)> to) { view = std::move(to); }

void port_abouts_of(const std::vector<std::string>& names) {
    about_worker& one = about();
    {
        const std::lock_guard guard(one.lock);
        one.names = names;
    }
    one.watch.wake();
}

void port_abouts_start(void (*on_notice)()) {
    about_worker& one = about();
    if (one.answers.running()) return;
    static_cast<void>(one.answers.start({"com_notice"}, [&one, on_notice] { return run(one, on_notice); }));
}
