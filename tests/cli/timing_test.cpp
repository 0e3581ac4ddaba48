// Bit timings on the command line: the same candidates as in the lists, and why there are none.
#include "dev_b/timing_list.h"
#include "tests/cli/cli_stage.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class timing : public cli_stage {
  protected:
    void SetUp() override {
        cli_stage::SetUp();
        before_ = timing_list_folder();
        timing_list_folder() = files.string();
        list("z_2_500",
             "1-159-41-41-79.50\n1-175-25-25-87.50\n5-35-5-5-87.50\n2-87-13-13-87.00\n1-170-30-30-85.00\n"
             "10-18-2-2-90.00\n25-7-1-1-87.50\n1-1-1\n");
        list("c_2_2000", "1-44-6-6-88.00\n2-22-3-3-88.00\n1-43-7-7-86.00\n");
        list("c_4_2000", "1-22-3-3-87.50\n");
        list("z_4_500", "1-88-12-12-87.50\n");
    }
    void TearDown() override {
        timing_list_folder() = before_;
        cli_stage::TearDown();
    }
    void list(const std::string& name, const std::string& text) const {
        ASSERT_EQ(fs_append(file("vkt610b_bps_canfd1_" + name + ".txt").c_str(), text), RET_OK);
    }

  private:
    std::string before_;
};

TEST_F(timing, candidates_and_refusals_by_divider) {
    EXPECT_EQ(vkt({"timing", "--clock", "200M", "--nominal", "500K", "--data", "2M", "--sample", "87.5"}),
              exit_good);
    EXPECT_EQ(out, "DIVIDER  PHASE    RATE  BRP  TSEG1  TSEG2  SJW  SAMPLE\n"
                   "4        nominal  500K  1    88     12     12   87.50 %\n"
                   "4        data     2M    1    22     3      3    87.50 %\n"
                   "divider 2: data 2M: no candidate at 87.50 %, the nearest is at 88.00 %\n"
                   "divider 5: nominal 500K: this rate cannot be made\n"
                   "divider 8: nominal 500K: this rate cannot be made\n");
    EXPECT_EQ(err, "");
}

TEST_F(timing, the_best_three_or_all) {
    EXPECT_EQ(vkt({"timing", "--nominal", "500K", "--clock", "100M"}), exit_good);
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 1 + 3);
    EXPECT_THAT(out, HasSubstr("\n2        nominal  500K  1    159    41     41   79.50 %\n"));
    EXPECT_EQ(vkt({"timing", "--nominal", "500K", "--clock", "100M", "--all"}), exit_good);
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 1 + 7);
    EXPECT_EQ(vkt({"timing", "--nominal", "500K", "--clock", "100M", "--all", "--sample", "87.5"}), exit_good);
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 1 + 3);
}

TEST_F(timing, without_any_divider_it_fails) {
    EXPECT_EQ(vkt({"timing", "--nominal", "500K", "--clock", "50M", "--sample", "12.5"}), exit_usage);
    EXPECT_EQ(out, "divider 4: nominal 500K: no candidate at 12.50 %, the nearest is at 87.50 %\n");
    EXPECT_EQ(err, "vkt: no divider of the clock has candidates for every phase\n");
}

TEST_F(timing, of_two_that_are_as_near_the_better_is_named) {
    EXPECT_EQ(vkt({"timing", "--nominal", "500k", "--data", "2m", "--sample", "87", "--clock", "100m"}),
              exit_usage);
    EXPECT_EQ(out, "divider 2: data 2m: no candidate at 87.00 %, the nearest is at 88.00 %\n");
    EXPECT_EQ(vkt({"timing", "--nominal=500K", "--data=2M", "--sample=87.5", "--clock=50M", "--json"}), exit_good);
    EXPECT_THAT(out, HasSubstr(R"({"divider": 4, "phase": "data", "kbit": 2000, "brp": 1, "tseg1": 22, )"
                               R"("tseg2": 3, "sample": "87.50"}], "refused": []})"));
    EXPECT_EQ(vkt({"timing", "--nominal=500K", "--sample=12", "--clock=50M", "--json"}), exit_usage);
    EXPECT_EQ(out, R"({"candidates": [], "refused": [{"divider": 4, "phase": "nominal", )"
                   R"("reason": "no candidate at 12.00 %, the nearest is at 87.50 %"}]})"
                   "\n");
}

TEST_F(timing, rates_in_hertz) {
    EXPECT_EQ(vkt({"timing", "--nominal", "500000", "--clock", "50000000"}), exit_good);
    EXPECT_EQ(out, "DIVIDER  PHASE    RATE    BRP  TSEG1  TSEG2  SJW  SAMPLE\n"
                   "4        nominal  500000  1    88     12     12   87.50 %\n");
}

TEST_F(timing, the_lowest_rates_are_rates_too) {
    list("z_4_40", "5-199-50-50-80.00\n");
    list("c_4_400", "1-99-25-25-80.00\n");
    EXPECT_EQ(vkt({"timing", "--nominal", "40K", "--data", "400K", "--clock", "50M"}), exit_good);
    EXPECT_EQ(out, "DIVIDER  PHASE    RATE  BRP  TSEG1  TSEG2  SJW  SAMPLE\n"
                   "4        nominal  40K   5    199    50     50   80.00 %\n"
                   "4        data     400K  1    99     25     25   80.00 %\n");
}

TEST_F(timing, without_lists_it_says_where_they_were_looked_for) {
    timing_list_folder() = file("absent");
    EXPECT_EQ(vkt({"timing", "--nominal", "500K"}), exit_usage);
    EXPECT_THAT(err, testing::EndsWith("/../tools/bps_data_list: no timing lists there\n"));
}

TEST_F(timing, what_cannot_be_asked_for) {
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"--clock", "80M", "the modules have 200M, 100M, 50M, 40M, 25M"},
        {"--sample", "0", "not between 0 and 100 percent"},
        {"--sample", "100", "not between 0 and 100 percent"},
        {"--sample", "much", "not between 0 and 100 percent"},
        {"--data", "3M", "the modules have 400K, 500K, 800K, 1M, 2M, 4M, 5M"},
        {"--data", "-1", "the modules have 400K, 500K, 800K, 1M, 2M, 4M, 5M"},
        {"--data", "2000001", "the modules have 400K, 500K, 800K, 1M, 2M, 4M, 5M"},
    };
    for (const auto& [option, text, why] : rows) {
        EXPECT_EQ(vkt({"timing", "--nominal=500K", std::string(option) + "=" + text}), exit_usage);
        EXPECT_EQ(err, std::string("vkt: ") + option + " " + text + ": " + why + "\n");
        EXPECT_EQ(out, "");
    }
    EXPECT_EQ(vkt({"timing", "--nominal", "333K"}), exit_usage);
    EXPECT_EQ(
        err, "vkt: --nominal 333K: the modules have 40K, 50K, 80K, 100K, 125K, 200K, 250K, 400K, 500K, 800K, 1M\n");
}

TEST_F(timing, as_json) {
    EXPECT_EQ(vkt({"timing", "--json", "--nominal", "0.5M", "--clock", "50M"}), exit_good);
    EXPECT_EQ(out, R"({"candidates": [{"divider": 4, "phase": "nominal", "kbit": 500, "brp": 1, "tseg1": 88, )"
                   R"("tseg2": 12, "sample": "87.50"}], "refused": []})"
                   "\n");
}

} // namespace
