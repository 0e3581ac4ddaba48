#include "tests/support/session_fixture.h"
#include "tests/support/scratch_folder.h"
#include "toolkit/core/text.h"

namespace {

const date_time_t fixed_time = {.hour = 13, .minute = 5, .second = 9, .year = 2025, .month = 9, .day = 29};

} // namespace

void session_test::SetUp() {
    com::fault_clear();
    com::resume_all();
    idle_restart();
    idle_set_gui_thread();
    config_objects_create();
    date_time_set_test_clock(&fixed_time);
    folder = scratch_folder("vkt_session");
    std::filesystem::create_directories(folder);
    session_log_path() = (folder / "log" / "p_v_info.txt").string();
    session_timing& timing = session_timing_get();
    timing = {};
    timing.read_wait_ms = 10000;
    timing.drain_wait_ms = 10000;
    timing.mode_step_ms = 2;
    timing.stop_check_ms = 60000; // one wait is one call, so that faults can be placed by number
    timing.port = {200, 0, 600, 500, 1000};
    listen();
}

void session_test::TearDown() {
    com::abort_all();
    settle();
    for (family f : {family::generic, family::a, family::b}) {
        session_join_threads(f);
        session_close_port(f);
        session_of(f).connected = false;
        session_of(f).operation = 0;
    }
    module.reset();
    date_time_set_test_clock(nullptr);
    com::fault_clear();
    com::resume_all();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

void session_test::listen() {
    heard = {};
    const auto note = [this](std::string event) {
        idle_queue([this, event = std::move(event)] {
            heard.events.push_back(event);
            return RET_OK;
        });
    };
    session_reports reports;
    reports.progress = [note](uint32_t percent, const std::string& text, uint8_t operation) {
        note(tk_format("%u/%u %s", percent, operation, text.c_str()));
    };
    reports.button_init = [note](family) { note("buttons"); };
    reports.finished = [note](family) { note("finished"); };
    reports.image_changed = [note](family) { note("image"); };
    reports.fail = [this, note](family f, const std::string& log, const std::string& text, uint8_t state) {
        const bool is_free = tk_mutex_try_lock(session_lock(f)) == RET_OK;
        if (is_free) tk_mutex_unlock(session_lock(f));
        note(tk_format("failed %u %s", state, text.c_str()));
        idle_queue([this, log, is_free] {
            heard.logs.push_back(log);
            heard.lock_was_free = heard.lock_was_free && is_free;
            return RET_OK;
        });
    };
    session_set_reports(reports);
}

void session_test::plug(const std::string& model_name) {
    model = model_name;
    const model_row* row = model_find(model);
    ASSERT_NE(row, nullptr);
    of = row->of;
    if (dev_get(of) == nullptr) dev_set(of, dev_open(model.c_str()));
    sim::model which{};
    ASSERT_TRUE(sim::model_from_name(model, &which));
    std::string why;
    module = sim::module_start(which, port_name, &why);
    ASSERT_NE(module, nullptr) << why;
}

bool session_test::run(session_kind kind, const std::string& port_text, bool code_mode) {
    if (session_start(of, kind, {port_text, model, code_mode}) != RET_OK) return false;
    settle();
    session_join_threads(of);
    return true;
}

void session_test::settle() {
    ASSERT_TRUE(idle_run_until([] { return !session_any_running(); }, session_patience_ms));
    while (idle_dispatch() > 0) {
    }
}

void session_test::connect() {
    ASSERT_TRUE(run(session_kind::connect));
    ASSERT_TRUE(heard.logs.empty()) << heard.events.back() << heard.logs.back();
    ASSERT_TRUE(context().port_open);
    heard = {};
}

bool session_test::lock_is_free() {
    if (tk_mutex_try_lock(session_lock(of)) != RET_OK) return false;
    tk_mutex_unlock(session_lock(of));
    return true;
}

std::string session_test::session_log() {
    std::string text;
    fs_read_all(session_log_path().c_str(), &text);
    return text;
}
