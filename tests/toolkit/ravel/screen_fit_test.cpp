#include "toolkit/ravel/qt/screen_fit.h"

#include "tests/toolkit/ravel/stage.h"

#include "toolkit/ravel/qt/window_stack.h"

namespace {

constexpr QMargins frame{8, 31, 8, 8};

TEST(screen_fit, a_window_that_has_room_keeps_its_size_and_is_in_the_middle) {
    EXPECT_EQ(place_on_screen({1280, 750}, {0, 0, 1920, 1040}, frame), QRect(320, 156, 1280, 750));
    EXPECT_EQ(place_on_screen({1280, 750}, {100, 40, 1296, 789}, frame), QRect(108, 71, 1280, 750));
}

TEST(screen_fit, a_window_never_reaches_beyond_the_room_with_its_frame) {
    // 1366 by 768 without a task bar of 40; 1920 by 1080 at 1.5 without one.
    EXPECT_EQ(place_on_screen({1280, 750}, {0, 0, 1366, 728}, frame), QRect(43, 31, 1280, 689));
    EXPECT_EQ(place_on_screen({1280, 750}, {0, 0, 1280, 680}, frame), QRect(8, 31, 1264, 641));
}

class screen_fit_stage : public stage {};

TEST_F(screen_fit_stage, without_a_real_screen_the_size_asked_for_stands) {
    open(ui_window(""));
    EXPECT_EQ(native_window()->size(), QSize(1000, 600));
}

} // namespace
