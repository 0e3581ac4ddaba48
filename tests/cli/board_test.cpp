// What many ports look like on a terminal while they are worked on, and what they do not look like elsewhere.
#include "cli/program_board.h"
#include "tests/cli/cli_stage.h"
#include "tests/support/pattern.h"

using sim::fault;

namespace {

using testing::HasSubstr;
using testing::Not;

class board : public cli_stage {
  protected:
    void SetUp() override {
        cli_stage::SetUp();
        terminal = true;
    }
    /// What the terminal shows in the end, with all that was written to it.
    std::vector<std::string> screen() const {
        std::vector<std::string> rows(1);
        std::size_t row = 0;
        for (std::size_t i = 0; i < err.size(); ++i) {
            if (err[i] == '\n') {
                if (++row == rows.size()) rows.emplace_back();
            } else if (err[i] == '\x1b') {
                const std::size_t end = err.find_first_of("ABJKm", i);
                const auto by = static_cast<std::size_t>(std::atoi(err.c_str() + i + 2));
                if (err[end] == 'A') row -= by;
                if (err[end] == 'B') row += by;
                if (err[end] == 'J') rows.resize(row + 1);
                if (err[end] == 'J' || err[end] == 'K') rows[row].clear();
                EXPECT_LT(row, rows.size());
                i = end;
            } else if (err[i] != '\r') {
                rows[row] += err[i];
            }
        }
        return rows;
    }
    std::vector<std::string> shown_after(const std::function<void(program_board&)>& act, unsigned ports) {
        std::vector<std::string> names;
        for (unsigned i = 0; i < ports; ++i) names.push_back("COM" + std::to_string(9 + i));
        const cli_options options{};
        const cli_streams streams{
            {}, [this](const std::string& text) { err += text; }, terminal, false, [this] { return size; }};
        const cli_context with{options, streams};
        program_board shown(with, names);
        act(shown);
        return screen();
    }
};

TEST_F(board, has_a_line_for_each_port) {
    const auto rows = shown_after(
        [](program_board& shown) {
            shown.set(1, board_state::working, "写配置", 35);
            shown.set(0, board_state::good, "");
            shown.set(2, board_state::waiting, "等待插入");
            shown.set(1, board_state::working, "读配置", 100);
            shown.set(3, board_state::bad, "写配置: 失败");
        },
        4);
    EXPECT_THAT(rows, testing::ElementsAre("COM9   pass  ", "COM10  [####################] 100% 读配置",
                                           "COM11  等待插入", "COM12  fail  写配置: 失败", ""));
    EXPECT_THAT(err, HasSubstr("COM10  [#######-------------]  35% 写配置"));
}

TEST_F(board, lets_lines_be_printed_above) {
    const auto rows = shown_after(
        [this](program_board& shown) {
            shown.set(1, board_state::bad, "x");
            shown.print_above([this] { err += "vkt: COM10: x\n"; });
        },
        2);
    EXPECT_THAT(rows, testing::ElementsAre("vkt: COM10: x", "COM9   ", "COM10  fail  x", ""));
}

TEST_F(board, is_one_line_where_the_screen_has_too_few) {
    size.rows = 3;
    const auto act = [](program_board& shown) {
        shown.set(1, board_state::bad, "x");
        shown.set(0, board_state::working, "y");
    };
    EXPECT_THAT(shown_after(act, 3), testing::ElementsAre("3 ports: 0 pass, 1 fail, 1 under way", ""));
    err.clear();
    EXPECT_EQ(shown_after(act, 2).size(), 3u);
}

TEST_F(board, follows_the_size_of_the_terminal) {
    const auto rows = shown_after(
        [this](program_board& shown) {
            size.rows = 2;
            shown.set(1, board_state::good, "");
        },
        3);
    EXPECT_THAT(rows, testing::ElementsAre("3 ports: 1 pass, 0 fail, 0 under way", ""));
}

TEST_F(board, cuts_what_is_wider_than_the_terminal) {
    size.columns = 18;
    const auto rows = shown_after([](program_board& shown) { shown.set(0, board_state::bad, "写配置写配置"); }, 1);
    EXPECT_EQ(rows[0], "COM9  fail  写配"); // 16 of 17 columns: half a character does not fit
}

TEST_F(board, is_gone_at_the_end_with_the_errors_left) {
    plug("VKT531A");
    plug_other("VKT531A", "COM8").plan({.what = fault::refuse, .after = 1});
    const std::string path = profile_file("VKT531A");
    EXPECT_EQ(vkt({"program", path, "COM7", "COM8"}), exit_module);
    EXPECT_THAT(screen(),
                testing::UnorderedElementsAre("COM7: VKT531A 通过", "vkt: COM8: 检测配置: 检测配置失败", ""));
    EXPECT_THAT(err, HasSubstr("COM8  fail  检测配置: 检测配置失败"));
    EXPECT_THAT(err, HoldsPattern("COM7  \\[#+-+\\]  [0-9]+% "));
    EXPECT_EQ(out, "COM7  pass\nCOM8  fail  检测配置  检测配置失败\n");
}

TEST_F(board, shows_nothing_with_frames_in_quiet_as_json_or_off_a_terminal) {
    plug("VKT531A");
    const std::string path = profile_file("VKT531A");
    for (const char* option : {"-v", "-q", "--json"}) {
        EXPECT_EQ(vkt({option, "program", path, "COM7"}), exit_good);
        EXPECT_THAT(err, Not(HasSubstr("\x1b"))) << option;
        EXPECT_EQ(out.empty(), option == std::string("-q"));
    }
    terminal = false;
    EXPECT_EQ(vkt({"program", path, "COM7"}), exit_good);
    EXPECT_EQ(err, "COM7: VKT531A 通过\n");
}

TEST_F(board, results_are_coloured_where_colours_are_shown) {
    plug("VKT531A");
    colour = true;
    EXPECT_EQ(vkt({"program", profile_file("VKT531A"), "COM7", "COM498"}), exit_port);
    EXPECT_EQ(out, "COM7    \x1b[32mpass\x1b[0m\nCOM498  \x1b[31mfail\x1b[0m  开始连接  串口打开失败\n");
}

TEST(widths, of_texts_on_a_terminal) {
    EXPECT_EQ(shown_width("ab写 –→"), 7u);
    EXPECT_EQ(shown_width("\xE3\x80\x80\xC3\xA9"), 3u); // the first of the wide ones; one of the others
    EXPECT_EQ(shown_width("\x1b[32mpass\x1b[0m!"), 5u);
    EXPECT_EQ(cut_to_width("a写b", 2), "a");
    EXPECT_EQ(cut_to_width("a写b", 3), "a写");
    EXPECT_EQ(cut_to_width("a写b", 4), "a写b");
    EXPECT_EQ(cut_to_width("", 0), "");
}

} // namespace
