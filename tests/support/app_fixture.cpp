#include "tests/support/app_fixture.h"

#include "app/application.h"
#include "app/families.h"
#include "app/kept_edits.h"
#include "app/last_session.h"
#include "app/profile_title.h"
#include "app/progress.h"
#include "app/settings.h"
#include "assistant/pages/serial_send.h"
#include "monitor/pages/data_page.h"
#include "platform/system.h"
#include "serial/port_lease.h"
#include "serial/port_list.h"
#include "tests/support/console_capture.h"
#include "tests/support/fixed_time.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/toolkit_stage.h"
#include "tests/support/user.h"

#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

// One per process: the toolkit starts once, and the program's own one-time work runs once.
struct world {
    fs::path tree;
    console_capture said;

    world() {
        tree = scratch_folder("vkt_app");
        const fs::path source = fs::path(toolkit_stage_resources()) / "default";
        fs::create_directories(tree / "bin");
        fs::create_directories(tree / "res");
        fs::copy(source, tree / "res" / "default", fs::copy_options::recursive);
        fs::current_path(tree / "bin");
        settings_folder() = (tree / "settings").generic_string();
        // Once, before any worker reads them.
        session_timing_get().mode_step_ms = 2;
        port_timing_get().timeouts = {100, 0, 3000, 500, 1000};
        log_set_log_level(LOG_LEVEL_DEBUG);
        toolkit_stage_start("../res");
    }

    ~world() { remove_tree(); }

    void remove_tree() const {
        std::error_code ignored;
        fs::current_path(fs::temp_directory_path(), ignored);
        fs::remove_all(tree, ignored);
    }
};

world& the_world() {
    static world w;
    return w;
}

void open_home() {
    static bool first = true;
    if (std::exchange(first, false)) {
        application_init();
    } else {
        navigator_to("home_page");
    }
}

} // namespace

fs::path app_test::tree() { return the_world().tree; }
void app_test::end_process(int status) {
    the_world().remove_tree();
    platform_exit_now(status);
}
std::string app_test::said() { return the_world().said.text(); }
void app_test::said_clear() { the_world().said.take(); }

bool app_test::wait(const std::function<bool()>& done) { return user_wait(done, patience_ms); }

void app_test::settle() { EXPECT_TRUE(toolkit_stage_settle()); }

void app_test::SetUp() {
    the_world();
    fs::remove_all(settings_folder());
    settings_forget();
    kept_edits_forget();
    profile_forget();
    com::fault_clear();
    com::resume_all();
    date_time_set_test_clock(&fixed_time);
    said_clear();
    last_session_begin();
    open_home();
    settle();
}

void app_test::TearDown() {
    EXPECT_EQ(message_failed_, "");
    com::abort_all();
    wait([] { return !session_any_running(); });
    settle();
    toolkit_stage_clear();
    serial_send_forget();
    data_page_forget();                                           // before the device whose port it may hold
    for (const family_pages* of : families()) device_forget(*of); // ends its session, and closes its port
    com::resume_all();
    com::fault_clear();
    module.reset();
    for (const auto& path : layouts_) fs::remove(path);
    layouts_.clear();
    date_time_set_test_clock(nullptr);
}

std::string app_test::text(widget* window, const char* name) {
    return widget_get_text_utf8(widget_lookup(window, name));
}

std::string app_test::buttons() {
    constexpr std::pair<char, const char*> letters[] = {
        {'c', "button"},         {'d', "button2"},          {'r', "button_read"},        {'w', "button_write"},
        {'f', "button_default"}, {'m', "combo_box_ex_dev"}, {'p', "combo_box_ex_serial"}};
    std::string on;
    for (const auto& [letter, name] : letters)
        if (enabled(name)) on += letter;
    return on;
}

void app_test::click(widget* window, const char* name) {
    EXPECT_EQ(user_does("click " + widget_name(window) + "/" + name), "");
}

void app_test::pick(const char* combo, const char* option) {
    EXPECT_EQ(user_does(tk_format("pick home_page/%s %s", combo, user_word(option).c_str())), "");
}

void app_test::type(const char* edit, const char* text) {
    EXPECT_EQ(user_does(tk_format("type home_page/%s %s\nkey Tab", edit, user_word(text).c_str())), "");
}

void app_test::plug(const std::string& model) {
    sim::model kind{};
    ASSERT_TRUE(sim::model_from_name(model, &kind));
    std::string why;
    module = sim::module_start(kind, port_name, &why);
    ASSERT_NE(module, nullptr) << why;
    port_watcher_start(); // the module was plugged in, and is found
    ASSERT_TRUE(wait([] { return combo_box_has_option_text(at("combo_box_ex_serial"), port_name); }));
    if (text(home(), "combo_box_ex_dev") != model) pick("combo_box_ex_dev", model.c_str());
    type("combo_box_ex_serial", port_name);
}

std::string app_test::run(const char* button) {
    click(home(), button);
    EXPECT_TRUE(wait([] {
        return progress() != nullptr && widget_get_visible(widget_lookup(progress(), "ok")) &&
               !session_any_running();
    })) << button;
    settle();
    return text(progress(), "label3");
}

void app_test::press_ok() { click(progress(), "ok"); }

void app_test::connect(const std::string& model) {
    plug(model);
    ASSERT_EQ(run("button"), "连接成功");
    press_ok();
}

void app_test::answer_message() {
    message_seen.clear();
    timer_add(
        [this] {
            if (message() == nullptr) return RET_REPEAT;
            message_seen = text(message(), "err_str");
            user_will_do("click err_display/ok", &message_failed_);
            return RET_REMOVE;
        },
        5);
}

void app_test::add_layout(const char* name, const std::string& body, bool dialog, const std::string& properties) {
    const fs::path path = tree() / "res" / "default" / "ui" / (std::string(name) + ".ui");
    std::ofstream(path) << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ui version=\"4.0\">\n <class>" << name
                        << "</class>\n <widget class=\"" << (dialog ? "QDialog" : "QWidget") << "\" name=\"" << name
                        << "\">\n"
                        << properties << body << " </widget>\n</ui>\n";
    layouts_.push_back(path);
}

std::string app_test::file_text(const fs::path& path) {
    std::stringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}
