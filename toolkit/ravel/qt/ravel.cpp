// Start-up and main loop.
#include "toolkit/ravel/ravel.h"

#include "toolkit/ravel/qt/assets.h"
#include "toolkit/ravel/qt/pump.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QApplication>

#include <algorithm>

namespace {

app_type chosen_type = app_type::desktop;
int exit_status = 0;
QApplication* application = nullptr; ///< ours; null while there is none, or one of somebody else's

/// Qt keeps references to these for as long as it lives.
int argument_count = 1;
char argument_zero[] = "ravel";
char* arguments[] = {argument_zero, nullptr};

void create_application(const char* name) {
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    application = new QApplication(argument_count, arguments);
    application->setApplicationName(QString::fromUtf8(name));
    application->setQuitOnLastWindowClosed(false);
    QApplication::setStyle(QStringLiteral("Fusion"));
}

} // namespace

ret_t tk_pre_init() {
    idle_set_gui_thread();
    return RET_OK;
}

ret_t tk_init(int32_t width, int32_t height, app_type type, const char* name, const char* res_root) {
    if (!tk_check_gui_thread(__func__) || name == nullptr || res_root == nullptr) return RET_BAD_PARAMS;
    if (native_window() != nullptr) return RET_FAIL;
    if (!set_resource_root(QString::fromUtf8(res_root))) return RET_FAIL;
    chosen_type = type;
    exit_status = 0;
    if (qApp == nullptr) create_application(name);
    create_native_window(std::clamp(width, 320, 16384), std::clamp(height, 240, 16384), QString::fromUtf8(name));
    start_pump();
    return RET_OK;
}

ret_t tk_ext_widgets_init() { return native_window() == nullptr ? RET_FAIL : RET_OK; }

ret_t tk_run() {
    if (!tk_check_gui_thread(__func__) || native_window() == nullptr) return RET_FAIL;
    if (loops_ended()) return RET_OK;
    show_native_window();
    QApplication::exec();
    if (native_window() != nullptr) native_window()->hide();
    return RET_OK;
}

ret_t tk_quit(int status) {
    if (!tk_check_gui_thread(__func__)) return RET_FAIL;
    exit_status = status;
    end_all_loops();
    return RET_OK;
}

int tk_exit_status() { return exit_status; }

ret_t tk_exit() {
    if (!tk_check_gui_thread(__func__)) return RET_FAIL;
    idle_shutdown();
    stop_pump();
    drop_strings();
    destroy_native_window();
    delete std::exchange(application, nullptr);
    return RET_OK;
}

app_type system_info_get_app_type() { return chosen_type; }

ret_t tk_set_lcd_orientation(int32_t degrees) { return degrees == 0 ? RET_OK : RET_NOT_IMPL; }
