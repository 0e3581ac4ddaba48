#include "tests/support/session_fixture.h"

#include "serial/port_lease.h"
#include "tests/support/fixed_time.h"
#include "tests/support/scratch_folder.h"
#include "toolkit/core/text.h"

#include <array>
#include <pthread.h>

namespace {

constexpr std::size_t system_name_bytes = 15;

/// Name of the calling thread.
std::string this_thread_name() {
    std::array<char, 64> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return name.data();
}

} // namespace

void session_test::SetUp() {
    com::fault_clear();
    com::resume_all();
    idle_restart();
    idle_set_gui_thread();
    date_time_set_test_clock(&fixed_time);
    folder = scratch_folder("vkt_session");
    std::filesystem::create_directories(folder);
    session_log_path() = (folder / "log" / "p_v_info.txt").string();
    session_timing_get() = {.read_wait_ms = 10000, .mode_step_ms = 2};
    port_timing_get() = {.drain_wait_ms = 10000, .timeouts = {200, 0, 600, 500, 1000}};
}

void session_test::TearDown() {
    com::abort_all();
    settle();
    dev.reset();
    module.reset();
    date_time_set_test_clock(nullptr);
    com::fault_clear();
    com::resume_all();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

void session_test::note(std::string event) {
    idle_queue([this, event = std::move(event)] {
        heard.events.push_back(event);
        return RET_OK;
    });
}

std::function<void(const session_progress&)> session_test::progress_report() {
    return [this](const session_progress& p) {
        note(tk_format("%u/%u %s", p.percent, p.operation, p.text.c_str()));
        idle_queue([this, name = this_thread_name()] {
            heard.thread_name = name;
            return RET_OK;
        });
    };
}

void session_test::expect_thread_name(session_kind kind, const std::string& name) {
    const session_script* script = script_find(dev->of.scripts, kind);
    ASSERT_NE(script, nullptr);
    EXPECT_EQ(script->thread_name, name);
    ASSERT_TRUE(run(kind));
    EXPECT_EQ(heard.thread_name, name.substr(0, system_name_bytes));
}

session_reports session_test::reports() {
    return {
        .progress = progress_report(),
        .failed =
            [this](const session_failure& failure) {
                const bool is_free = dev->session.port_free();
                note(tk_format("failed %u %s", static_cast<unsigned>(failure.kind), failure.text.c_str()));
                idle_queue([this, failure, is_free] {
                    heard.logs.push_back(failure.log_line);
                    heard.causes.push_back(failure.cause + (failure.port_lost ? "lost" : ""));
                    heard.port_was_free = heard.port_was_free && is_free;
                    return RET_OK;
                });
            },
        .image =
            [this](uint32_t, const session_bytes& image) {
                idle_queue([this, image] {
                    dev_accept(*dev, image);
                    return RET_OK;
                });
                note("image");
            },
        .connected = [this] { note("buttons"); },
        .finished = [this](uint32_t) { note("finished"); },
    };
}

void session_test::plug(const std::string& model_name) {
    model = model_name;
    const family_descriptor* of = family_of_model(all_families, model);
    ASSERT_NE(of, nullptr);
    if (dev == nullptr || &dev->of != of) dev = dev_open(all_families, model.c_str(), reports());
    sim::model which{};
    ASSERT_TRUE(sim::model_from_name(model, &which));
    std::string why;
    module = sim::module_start(which, port_name, &why);
    ASSERT_NE(module, nullptr) << why;
}

ret_t session_test::start(session_kind kind, const std::string& port_text, bool alternative) {
    session_input input = dev_session_input(*dev, kind, alternative);
    input.port_text = port_text;
    input.model = model;
    return dev->session.start(kind, std::move(input));
}

bool session_test::run(session_kind kind, const std::string& port_text, bool alternative) {
    if (start(kind, port_text, alternative) != RET_OK) return false;
    settle();
    return true;
}

void session_test::disconnect() {
    bool done = false;
    ASSERT_EQ(leaver.start({&dev->session}, progress_report(), [&done] { done = true; }), RET_OK);
    ASSERT_TRUE(idle_run_until([&done] { return done; }, session_patience_ms));
}

void session_test::settle() {
    const auto idle = [this] { return (dev == nullptr || !dev->session.running()) && !leaver.running(); };
    ASSERT_TRUE(idle_run_until(idle, session_patience_ms));
    while (idle_dispatch() > 0) {
    }
}

void session_test::connect() {
    ASSERT_TRUE(run(session_kind::connect));
    ASSERT_TRUE(heard.logs.empty()) << heard.events.back() << heard.logs.back();
    ASSERT_TRUE(session().port_open());
    heard = {};
}

std::string session_test::session_log() {
    std::string text;
    fs_read_all(session_log_path().c_str(), &text);
    return text;
}
