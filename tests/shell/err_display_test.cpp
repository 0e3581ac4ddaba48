#include "shell/err_display.h"

#include "tests/support/app_fixture.h"
#include "tests/support/pattern.h"

namespace {

class err_display : public app_test {};

TEST_F(err_display, shows_the_message_until_ok_is_pressed) {
    for (const char* shown : {"请先连接设备", "", "two\nlines"}) {
        answer_message();
        EXPECT_EQ(err_display_show(shown), RET_OK);
        EXPECT_EQ(message_seen, shown);
        EXPECT_EQ(message(), nullptr) << "gone by the time that it answers";
    }
    answer_message();
    message_seen = "?";
    EXPECT_EQ(err_display_show(nullptr), RET_OK);
    EXPECT_EQ(message_seen, "") << "no message: an empty one";
}

TEST_F(err_display, a_posted_one_comes_from_the_queue) {
    answer_message();
    EXPECT_EQ(err_display_post("later"), RET_OK);
    EXPECT_EQ(message(), nullptr) << "not before the next turn";
    EXPECT_TRUE(wait([this] { return message_seen == "later" && message() == nullptr; }));
}

TEST_F(err_display, needs_its_window) {
    said_clear();
    EXPECT_EQ(err_display_init(nullptr, "text"), RET_BAD_PARAMS);
    EXPECT_THAT(said(), FitsPattern("err_display_init:[0-9]+ condition\\(win != NULL\\) failed!\n"));
}

} // namespace
