#include "app/look.h"

#include "tests/support/app_fixture.h"
#include "tests/support/user.h"

#include <fstream>

namespace {

class look_choice : public app_test {
  protected:
    void SetUp() override {
        app_test::SetUp();
        std::filesystem::remove_all(file());
    }
    void TearDown() override {
        theme_set_dark(false);
        std::filesystem::remove_all(file());
        app_test::TearDown();
    }
    static std::filesystem::path file() { return std::filesystem::current_path() / look_file; }
    static void write(const char* text) { std::ofstream(file()) << text; }
};

TEST_F(look_choice, the_systems_look_is_taken_until_somebody_chooses) {
    ASSERT_FALSE(std::filesystem::exists(file()));
    said_clear();
    look_start();
    EXPECT_EQ(theme_is_dark(), system_info_is_dark());
    EXPECT_EQ(said(), "") << "nothing is missing";
    EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(look_choice, the_switch_changes_the_look_and_keeps_it) {
    EXPECT_EQ(text(home(), "button_look"), "深色");
    ASSERT_EQ(user_does("click home_page/button_look\nexpect home_page/button_look text 浅色\n"
                        "expect home_page/button_look tooltip \"改用浅色界面，下次启动时保留　Alt+T\""),
              "");
    EXPECT_TRUE(theme_is_dark());
    theme_set_dark(false);
    look_start();
    EXPECT_TRUE(theme_is_dark()) << "the next start";
    ASSERT_EQ(user_does("key Alt+T\nwait home_page/button_look text 深色"), "");
    EXPECT_FALSE(theme_is_dark());
    theme_set_dark(true);
    look_start();
    EXPECT_FALSE(theme_is_dark());
}

TEST_F(look_choice, what_else_the_file_holds_stays) {
    write("{\"width\": 7, \"dark\": true}");
    look_start();
    EXPECT_TRUE(theme_is_dark());
    EXPECT_EQ(look_switch(home()), RET_OK);
    EXPECT_THAT(file_text(file()), testing::HasSubstr("\"width\": 7"));
    EXPECT_THAT(file_text(file()), testing::HasSubstr("\"dark\": false"));
}

TEST_F(look_choice, a_broken_file_is_the_systems_look_and_is_replaced) {
    write("{\"dark\": tr");
    look_start();
    EXPECT_EQ(theme_is_dark(), system_info_is_dark());
    look_switch(home());
    const bool chosen = theme_is_dark();
    theme_set_dark(!chosen);
    look_start();
    EXPECT_EQ(theme_is_dark(), chosen);
}

TEST_F(look_choice, a_look_that_cannot_be_kept_holds_and_is_said) {
    std::filesystem::create_directory(file());
    const bool before = theme_is_dark();
    said_clear();
    EXPECT_EQ(look_switch(home()), RET_OK);
    EXPECT_NE(theme_is_dark(), before);
    EXPECT_THAT(said(), testing::HasSubstr("ui.json cannot be written\n"));
}

} // namespace
