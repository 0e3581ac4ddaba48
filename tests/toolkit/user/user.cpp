#include "tests/toolkit/user/user.h"

#include "toolkit/ravel/drive.h"
#include "toolkit/ravel/ravel.h"
#include "toolkit/ravel/window_manager.h"
#include "toolkit/ravel/window_stack.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QWidget>

#include <filesystem>
#include <gtest/gtest.h>

namespace {

class toolkit_life : public testing::Environment {
  public:
    void TearDown() override { tk_exit(); }
};

} // namespace

void user_stage() {
    static bool started = false;
    if (started) return;
    started = true;
    const auto resources = std::filesystem::path(__FILE__).parent_path() / "../../../res";
    tk_pre_init();
    ASSERT_EQ(tk_init(1280, 750, app_type::desktop, "pages", resources.string().c_str()), RET_OK);
    assets_manager_set_theme("default");
    assets_manager_preload_style();
    tk_init_assets();
    tk_ext_widgets_init();
    locale_info_change("zh", "CN");
    testing::AddGlobalTestEnvironment(new toolkit_life);
}

std::string user_does(const std::string& script) {
    std::string failed;
    bool ended = false;
    QEventLoop loop;
    const auto echo = [&failed](const std::string& line) {
        if (line.compare(0, 4, "FAIL") == 0) failed += line;
    };
    drive_play(script, {echo, [&](bool good) {
                            ended = true;
                            if (!good && failed.empty()) failed = "the script failed";
                            if (!good) window_manager_back_to_home(window_manager()); // no dialog's loop stays
                            loop.quit();
                        }});
    if (!ended) loop.exec();
    return failed;
}

void user_window_size(int w, int h) {
    native_window()->resize(w, h);
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}
