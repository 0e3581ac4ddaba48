#include "tests/toolkit/ravel/stage.h"

#include "tests/support/scratch_folder.h"
#include "toolkit/ravel/qt/drive_input.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

fs::path& root_folder() {
    static fs::path folder;
    return folder;
}

void remove_folder() {
    std::error_code ignored;
    fs::remove_all(root_folder(), ignored);
}

const char* event_name(event_type type) {
    constexpr const char* names[] = {"click",         "value_changed", "value_changing", "focus",
                                     "blur",          "pointer_down",  "pointer_up",     "pointer_enter",
                                     "pointer_leave", "text_hover",    "text_click",     "wheel",
                                     "move",          "resize",        "request_close",  "long_press"};
    return names[static_cast<std::size_t>(type)];
}

} // namespace

void start_stage() {
    if (native_window() != nullptr) return;
    root_folder() = scratch_folder("vkt toolkit ()");
    const fs::path source = fs::path(VKT_SOURCE_TREE) / "res/default";
    const fs::path theme = root_folder() / "default";
    fs::create_directories(theme / "ui");
    for (const char* part : {"styles", "strings", "images", "fonts"})
        fs::copy(source / part, theme / part, fs::copy_options::recursive);
    tk_pre_init();
    idle_restart();
    ASSERT_EQ(tk_init(1000, 600, app_type::desktop, "toolkit", root_folder().string().c_str()), RET_OK);
    system_info_set_default_font("default");
    ASSERT_EQ(assets_manager_preload_style(), RET_OK);
}

void end_stage() {
    tk_exit();
    remove_folder();
}

void end_stage_at_abort() {
    std::signal(SIGABRT, [](int) { remove_folder(); });
}

std::string layout_folder() { return (root_folder() / "default" / "ui").string() + "/"; }

void write_layout(const std::string& name, const std::string& text) {
    std::ofstream(layout_folder() + name + ".ui", std::ios::binary) << text;
}

std::string ui_file(const std::string& root_class, const std::string& inside) {
    return "<ui version=\"4.0\">\n<class>t</class>\n" + ui_widget(root_class, "root", "0 0 400 300", inside) +
           "</ui>\n";
}
std::string ui_window(const std::string& inside) { return ui_file("QWidget", inside); }
std::string ui_dialog(const std::string& inside) { return ui_file("QDialog", inside); }

std::string ui_widget(const std::string& class_name, const std::string& name, const std::string& at,
                      const std::string& inside) {
    std::istringstream place(at);
    int x = 0;
    int y = 0;
    int w = 0;
    int h = 0;
    place >> x >> y >> w >> h;
    return tk_format("<widget class=\"%s\" name=\"%s\">\n<property name=\"geometry\"><rect><x>%d</x><y>%d</y>"
                     "<width>%d</width><height>%d</height></rect></property>\n",
                     class_name.c_str(), name.c_str(), x, y, w, h) +
           inside + "</widget>\n";
}

std::string ui_text(const std::string& property, const std::string& value) {
    return "<property name=\"" + property + "\"><string>" + value + "</string></property>\n";
}
std::string ui_number(const std::string& property, int value) {
    return tk_format("<property name=\"%s\"><number>%d</number></property>\n", property.c_str(), value);
}
std::string ui_flag(const std::string& property, bool value) {
    return tk_format("<property name=\"%s\"><bool>%s</bool></property>\n", property.c_str(),
                     value ? "true" : "false");
}
std::string ui_dynamic(const std::string& property, const std::string& value) {
    return "<property name=\"" + property + "\" stdset=\"0\"><string notr=\"true\">" + value +
           "</string></property>\n";
}

void settle() {
    // Twice: what the first round posts (a layout, a queued call) happens in the second.
    for (int round = 0; round < 2; ++round) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

bool wait_until(const std::function<bool()>& done, int limit_ms) {
    QElapsedTimer clock;
    clock.start();
    QTimer limit; // an event to wait for when nothing else comes
    limit.start(20);
    while (!done()) {
        if (clock.hasExpired(limit_ms)) return done();
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void click_at(widget* w, int x, int y) {
    drive_press(qwidget_of(w), QPoint(x, y));
    if (qwidget_of(w) != nullptr) drive_release(qwidget_of(w), QPoint(x, y));
    settle();
}

void click(widget* w) {
    const QPoint spot = drive_spot(state_of(qwidget_of(w)));
    click_at(w, spot.x(), spot.y());
}

void press(widget* w) {
    drive_press(qwidget_of(w), drive_spot(state_of(qwidget_of(w))));
    settle();
}

void drag(widget* w, int x, int y) {
    drive_drag(qwidget_of(w), QPoint(x, y));
    settle();
}

void release(widget* w) {
    drive_release(qwidget_of(w), drive_spot(state_of(qwidget_of(w))));
    settle();
}

void wheel(widget* w, int delta) {
    drive_wheel(qwidget_of(w), drive_spot(state_of(qwidget_of(w))), delta);
    settle();
}

void key(const std::string& name) {
    drive_key parsed;
    ASSERT_TRUE(drive_parse_key(name, &parsed)) << name;
    drive_stroke(parsed);
    settle();
}

void type(const std::string& text) {
    for (const QChar character : QString::fromStdString(text)) drive_type(QString(character));
    settle();
}

void listener::hear(widget* w, event_type what) {
    widget_on(w, what, [this](const event& e) {
        heard_.push_back(widget_name(e.target) + ":" + event_name(e.type));
        return RET_OK;
    });
}

said::said() {
    log_set_capture([](const std::string& text, void* to) { *static_cast<std::string*>(to) += text; }, &text_);
}
said::~said() { log_set_capture(nullptr, nullptr); }

std::vector<std::string> listener::take() { return std::exchange(heard_, {}); }

void stage::SetUp() {
    start_stage();
    ASSERT_NE(native_window(), nullptr);
}

void stage::TearDown() {
    for (widget_state* state : stacked_windows_topmost_first()) close_window(state, 0);
    settle();
    for (const auto& file : fs::directory_iterator(layout_folder())) fs::remove(file.path());
}

widget* stage::open(const std::string& text, const std::string& name) {
    write_layout(name, text);
    win = window_open(name.c_str());
    EXPECT_NE(win, nullptr) << window_open_error();
    wait_until([] { return QApplication::activeWindow() == native_window(); });
    settle();
    return win;
}
