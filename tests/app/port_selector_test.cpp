// The port selector: what stands beside the names, and the command for a port without rights.
#include "app/port_selector.h"

#include "serial/port_about.h"
#include "serial/port_list.h"
#include "sim/line.h"
#include "tests/support/app_fixture.h"
#include "tests/support/user.h"
#include "toolkit/core/worker.h"
#include "toolkit/ravel/combo_hints.h"

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

class port_selector : public app_test {
  protected:
    void SetUp() override {
        app_test::SetUp();
        port_abouts_start(port_watcher_scan_now);
    }
    static std::string hint(const char* name) { return combo_box_get_hint(at("combo_box_ex_serial"), name); }
};

TEST_F(port_selector, names_stand_by_number) {
    using options = std::vector<std::pair<int32_t, std::string>>;
    EXPECT_EQ(port_options_in_order({{0, "COM10"}, {1, "LPT1"}, {2, "COM2"}, {3, "COM1"}, {4, "COM100"}}),
              (options{{3, "COM1"}, {2, "COM2"}, {0, "COM10"}, {4, "COM100"}, {1, "LPT1"}}));
    EXPECT_EQ(port_options_in_order({}), options());
}

#ifndef _WIN32 // names cannot be mapped there

TEST_F(port_selector, what_a_port_is_stands_beside_its_name) {
    com::map_port("COM12", "/dev/null");
    com::map_port("COM77", "/dev/none");
    port_watcher_start();
    EXPECT_TRUE(wait([] { return hint("COM77") == "不存在"; }));
    EXPECT_EQ(hint("COM12"), "");
    plug("VKT531A");
    EXPECT_EQ(run("button"), "连接成功");
    press_ok();
    port_watcher_start();
    EXPECT_TRUE(wait([] { return hint(port_name) == "已连接"; }));
    EXPECT_EQ(text(home(), "combo_box_ex_serial"), port_name) << "it is no part of the name";
    for (const char* name : {"COM12", "COM77"}) com::map_port(name, "");
}

TEST_F(port_selector, a_chosen_port_without_rights_offers_the_command_that_grants_them) {
    const std::unique_ptr<sim_line> line = sim_line_open("COM77");
    ASSERT_NE(line, nullptr);
    type("combo_box_ex_serial", "COM77");
    EXPECT_TRUE(wait(
        [] { return hint("COM77").empty() && combo_box_has_option_text(at("combo_box_ex_serial"), "COM77"); }));
    EXPECT_FALSE(visible("serial_grant"));
    ASSERT_EQ(chmod(line->path().c_str(), 0), 0);
    const uid_t owner = geteuid();
    constexpr uid_t nobody = 65534;
    ASSERT_EQ(seteuid(owner == 0 ? nobody : owner), 0);
    port_abouts_of({"COM77"}); // a press would scan, and nobody may write the list
    const bool shown = wait([] { return visible("serial_grant"); });
    ASSERT_EQ(seteuid(owner), 0);
    ASSERT_TRUE(shown);
    EXPECT_EQ(text(home(), "serial_grant_text"), "COM77 无权限，可在终端执行：");
    EXPECT_EQ(text(home(), "serial_grant_command"), "sudo chmod a+rw " + line->path());
    EXPECT_EQ(user_does("click home_page/button_serial_grant"), "");
    EXPECT_EQ(clip_board_get_text(), "sudo chmod a+rw " + line->path());
    type("combo_box_ex_serial", "COM78");
    EXPECT_FALSE(visible("serial_grant")) << "it was about another port";
}

#endif

} // namespace
