#include "tests/support/toolkit_stage.h"

#include "toolkit/ravel/ravel.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

class toolkit_life : public testing::Environment {
  public:
    void TearDown() override { tk_exit(); }
};

} // namespace

void toolkit_stage_start() {
    static bool started = false;
    if (started) return;
    started = true;
    const auto resources = std::filesystem::path(__FILE__).parent_path() / "../../res";
    tk_pre_init();
    ASSERT_EQ(tk_init(1280, 750, app_type::desktop, "pages", resources.string().c_str()), RET_OK);
    assets_manager_set_theme("default");
    assets_manager_preload_style();
    tk_init_assets();
    tk_ext_widgets_init();
    locale_info_change("zh", "CN");
    testing::AddGlobalTestEnvironment(new toolkit_life);
}
