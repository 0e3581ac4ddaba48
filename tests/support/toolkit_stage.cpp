#include "tests/support/toolkit_stage.h"

#include "app/assets.h"
#include "tests/support/user.h"
#include "toolkit/ravel/ravel.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

constexpr uint32_t patience_ms = 30000;

class toolkit_life : public testing::Environment {
  public:
    void TearDown() override { tk_exit(); }
};

} // namespace

std::string toolkit_stage_resources() { return VKT_SOURCE_TREE "/res"; }

void toolkit_stage_start(const std::string& resources) {
    static bool started = false;
    if (started) return;
    started = true;
    tk_pre_init();
    const std::string root = resources.empty() ? toolkit_stage_resources() : resources;
    ASSERT_EQ(tk_init(1280, 750, app_type::desktop, "VKTCfgTools", root.c_str()), RET_OK);
    system_info_set_default_font("default");
    ASSERT_EQ(assets_init("default"), RET_OK);
    tk_ext_widgets_init();
    locale_info_change("zh", "CN");
    testing::AddGlobalTestEnvironment(new toolkit_life);
}

void toolkit_stage_clear() {
    while (widget* top = window_manager_get_top_window(window_manager()))
        window_manager_close_window_force(window_manager(), top);
    EXPECT_TRUE(toolkit_stage_settle());
}

bool toolkit_stage_settle() {
    const auto ran = std::make_shared<bool>(false);
    idle_queue([ran] {
        *ran = true;
        return RET_OK;
    });
    return user_wait([ran] { return *ran; }, patience_ms);
}
