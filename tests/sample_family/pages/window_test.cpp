// A family of one's own in the whole application: chosen, connected, read, edited on its page, written, left.
#include "tests/sample_family/family.h"
#include "tests/sample_family/module.h"
#include "tests/sample_family/pages/sample_pages.h"
#include "tests/support/app_fixture.h"

#include <fstream>
#include <sstream>

using testing::ElementsAre;
namespace fs = std::filesystem;

namespace {

constexpr const family_pages* families_of_the_test[] = {&sample_pages}; // the one line outside the family

const fs::path own_layouts = fs::path(VKT_SOURCE_TREE) / "tests" / "sample_family" / "ui";

std::string file_text_of(const fs::path& path) {
    std::stringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

/// The program's home page with the family's two pieces before what stands there first.
void add_to_home_page(const fs::path& layout) {
    std::string home = file_text_of(layout);
    const std::pair<const char*, const char*> pieces[] = {
        {"<widget class=\"QWidget\" name=\"view10\">", "home_container.xml"},
        {"<widget class=\"QCheckBox\" name=\"code_mode\">", "home_switch.xml"}};
    for (const auto& [before, piece] : pieces) {
        const std::size_t item = home.rfind("<item>", home.find(before));
        ASSERT_NE(item, std::string::npos);
        home.insert(item, file_text_of(own_layouts / piece));
    }
    std::ofstream(layout) << home;
}

class sample_window : public app_test {
  protected:
    void SetUp() override {
        const fs::path ui = tree() / "res" / "default" / "ui";
        if (!fs::exists(ui / "page_sample.ui")) { // once for the test program
            fs::copy_file(own_layouts / "page_sample.ui", ui / "page_sample.ui");
            add_to_home_page(ui / "home_page.ui");
        }
        families_use(families_of_the_test);
        app_test::SetUp();
        ASSERT_TRUE(peer.plugged_in());
    }
    static std::string code() { return text(home(), "mledit"); }

    sample_module peer{port_name};
};

TEST_F(sample_window, is_the_only_family_of_the_selector) {
    EXPECT_EQ(current_model(), "SAMPLE1");
    EXPECT_EQ(combo_box_count_options(at("combo_box_ex_dev")), 2);
    EXPECT_TRUE(visible("sample_view"));
    EXPECT_EQ(code(), "53 03 01 14 00 6B");
}

TEST_F(sample_window, plays_a_whole_session) {
    type("combo_box_ex_serial", port_name);
    EXPECT_EQ(run("button"), "连接成功");
    press_ok();
    EXPECT_EQ(run("button_read"), "读完成");
    press_ok();
    EXPECT_EQ(code(), "53 03 00 07 01 5E");
    EXPECT_EQ(text(home(), "sample_speed_box"), "慢");
    EXPECT_EQ(widget_get_value_int(at("sample_gain_box")), 7);

    pick("sample_speed_box", "快");
    type("sample_gain_box", "42");
    click(home(), "sample_on_box");
    EXPECT_EQ(code(), "53 03 01 2A 00 81");
    click(home(), "code_mode_sample");
    EXPECT_EQ(code(), "0x53 0x03 0x01 0x2A 0x00 0x81");
    EXPECT_EQ(run("button_write"), "写完成");
    press_ok();
    EXPECT_EQ(peer.memory(), (std::array<uint8_t, 3>{1, 42, 0}));

    click(home(), "button2");
    EXPECT_TRUE(wait([this] { return peer.heard().size() == 4; }));
    EXPECT_THAT(peer.heard(), ElementsAre(1, 2, 3, 4));
}

TEST_F(sample_window, refuses_what_its_field_does_not_take_and_restores) {
    type("sample_gain_box", "200");
    EXPECT_TRUE(widget_get_refused(at("sample_gain_box")));
    EXPECT_EQ(code(), "53 03 01 14 00 6B");
    pick("sample_speed_box", "慢");
    EXPECT_EQ(code(), "53 03 00 14 00 6A");
    click(home(), "button_default");
    EXPECT_EQ(code(), "53 03 01 14 00 6B");
}

} // namespace
