// The timing lists that are supplied with the program.
#include "tools/make_bps_lists/bps_lists.h"

#include "dev_b/timing_list.h"
#include "toolkit/core/fs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

namespace {

/// Divider times rate that do not divide the clock: no timing can give the rate exactly.
const std::set<std::string> empty_lists = {
    "vkt610b_bps_canfd1_z_4_800.txt",  "vkt610b_bps_canfd1_z_8_80.txt",  "vkt610b_bps_canfd1_z_8_400.txt",
    "vkt610b_bps_canfd1_z_8_800.txt",  "vkt610b_bps_canfd1_c_4_800.txt", "vkt610b_bps_canfd1_c_4_4000.txt",
    "vkt610b_bps_canfd1_c_8_400.txt",  "vkt610b_bps_canfd1_c_8_800.txt", "vkt610b_bps_canfd1_c_8_2000.txt",
    "vkt610b_bps_canfd1_c_8_4000.txt", "vkt610b_bps_canfd2_z_4_800.txt", "vkt610b_bps_canfd2_z_8_80.txt",
    "vkt610b_bps_canfd2_z_8_400.txt",  "vkt610b_bps_canfd2_z_8_800.txt", "vkt610b_bps_canfd2_c_4_800.txt",
    "vkt610b_bps_canfd2_c_4_4000.txt", "vkt610b_bps_canfd2_c_8_400.txt", "vkt610b_bps_canfd2_c_8_800.txt",
    "vkt610b_bps_canfd2_c_8_2000.txt", "vkt610b_bps_canfd2_c_8_4000.txt"};

struct list_name {
    int channel;
    char phase;
    int divider;
    int rate;
    std::string file() const {
        return "vkt610b_bps_canfd" + std::to_string(channel) + "_" + phase + "_" + std::to_string(divider) + "_" +
               std::to_string(rate) + ".txt";
    }
    timing_phase which() const { return phase == 'z' ? timing_phase::nominal : timing_phase::data; }
};

std::vector<list_name> all_names() {
    std::vector<list_name> out;
    for (const int channel : {1, 2})
        for (const int divider : {2, 4, 5, 8}) {
            for (const int rate : {40, 50, 80, 100, 125, 200, 250, 400, 500, 800, 1000})
                out.push_back({channel, 'z', divider, rate});
            for (const int rate : {400, 500, 800, 1000, 2000, 4000, 5000})
                out.push_back({channel, 'c', divider, rate});
        }
    return out;
}

std::string supplied(const std::string& name) { return std::string(VKT_BPS_DATA_LIST) + "/" + name; }

TEST(BpsLists, TheFolderHoldsThe144FilesAndNothingElse) {
    std::vector<std::string> expected, found;
    for (const auto& name : all_names()) expected.push_back(name.file());
    for (const auto& entry : std::filesystem::directory_iterator(VKT_BPS_DATA_LIST))
        found.push_back(entry.path().filename().string());
    EXPECT_EQ(expected.size(), 144u);
    EXPECT_THAT(found, testing::UnorderedElementsAreArray(expected));
}

TEST(BpsLists, TwentyAreEmptyAndNoOthers) {
    std::set<std::string> found;
    for (const auto& name : all_names()) {
        std::string text;
        ASSERT_TRUE(fs_read_all(supplied(name.file()).c_str(), &text)) << name.file();
        if (text.empty()) found.insert(name.file());
    }
    EXPECT_EQ(found, empty_lists);
}

TEST(BpsLists, ProgramAsksForTheseNames) {
    for (const auto& name : all_names())
        EXPECT_EQ(timing_list_path(VKT_BPS_DATA_LIST, name.channel, name.which(), name.divider, name.rate),
                  supplied(name.file()));
}

TEST(BpsLists, TheProgramThatMakesThemMakesTheseVeryFiles) {
    const std::string folder = "bps_lists_made";
    ASSERT_TRUE(fs_dir_exist(os_fs(), folder.c_str()) || fs_create_dir(os_fs(), folder.c_str()) == RET_OK);
    ASSERT_EQ(bps_lists_write(folder), RET_OK);
    for (const auto& name : all_names()) {
        std::string made, given;
        EXPECT_TRUE(fs_read_all((folder + "/" + name.file()).c_str(), &made)) << name.file();
        EXPECT_TRUE(fs_read_all(supplied(name.file()).c_str(), &given)) << name.file();
        EXPECT_EQ(made, given) << name.file();
    }
    std::filesystem::remove_all(folder);
}

TEST(BpsLists, AFolderThatIsMissingIsAFailure) { EXPECT_EQ(bps_lists_write("no/such/folder"), RET_FAIL); }

/// What a list item puts into the edits when it is clicked.
timing_edits edits_of(const timing_candidate& c) {
    const auto text = [&](std::size_t i) { return std::string(c.fields[i]); };
    return {text(0), text(1), text(2), text(4)};
}

void check_line(const list_name& name, std::string_view line) {
    const auto c = timing_line_parse(line);
    ASSERT_TRUE(c) << line;
    const bool nominal = name.phase == 'z';
    EXPECT_EQ(c->brp * (c->tseg1 + c->tseg2) * static_cast<unsigned>(name.divider * name.rate), 200000u) << line;
    EXPECT_TRUE(c->brp >= 1 && c->brp <= (nominal ? 512u : 32u)) << line;
    EXPECT_TRUE(c->tseg1 >= (nominal ? 2u : 1u) && c->tseg1 <= (nominal ? 256u : 32u)) << line;
    EXPECT_TRUE(c->tseg2 >= (nominal ? 2u : 1u) && c->tseg2 <= (nominal ? 128u : 16u)) << line;
    EXPECT_EQ(c->fields[3], c->fields[2]) << line; // the widest jump allowed: TSEG2

    // Chosen from the list it passes the dialog's check, and the filters that it sets itself still find it.
    const timing_edits edits = edits_of(*c);
    timing_form form;
    form.divider_code = name.divider - 2;
    form.values = {timing_values_of(edits), timing_values_of(edits)};
    form.rate = {name.rate, name.rate};
    form.sample_point = {timing_number(edits.sample_point), timing_number(edits.sample_point)};
    EXPECT_TRUE(timing_valid(form, nominal ? 0 : 1)) << line;
    EXPECT_TRUE(timing_matches(timing_filter_of(edits), *c)) << line;
    EXPECT_TRUE(timing_matches(timing_filter_of({"", "", "", edits.sample_point}), *c)) << line;
}

class BpsList : public testing::TestWithParam<list_name> {};
TEST_P(BpsList, EveryLineIsExactWithinLimitsAndAccepted) {
    timing_list list;
    std::size_t bad = 0;
    ASSERT_EQ(timing_list_read(supplied(GetParam().file()), {}, &list, &bad), RET_OK);
    EXPECT_EQ(bad, 0u);
    std::set<std::string_view> seen;
    for (std::size_t i = 0; i < list.size(); ++i) {
        check_line(GetParam(), list.line(i));
        EXPECT_TRUE(seen.insert(list.line(i)).second) << "twice: " << list.line(i);
    }
}
INSTANTIATE_TEST_SUITE_P(AllFiles, BpsList, testing::ValuesIn(all_names()), [](const auto& row) {
    const std::string file = row.param.file();
    return file.substr(0, file.size() - 4);
});

TEST(BpsListOrder, ClosestToTheRecommendedSamplePointComesFirst) {
    EXPECT_EQ(bps_list(timing_phase::data, 4, 2000).front(), "1-20-5-5-80.00");
    EXPECT_EQ(bps_list(timing_phase::nominal, 2, 250).front(), "2-175-25-25-87.50");
    EXPECT_EQ(bps_list(timing_phase::nominal, 2, 1000).front(), "1-75-25-25-75.00");
    for (const auto& name : all_names()) {
        double last = 0;
        for (const auto& line : bps_list(name.which(), static_cast<uint32_t>(name.divider), name.rate)) {
            const auto c = timing_line_parse(line);
            ASSERT_TRUE(c) << line;
            const double target = bps_recommended_permille(name.which(), name.rate) / 1000.0;
            const double distance = std::abs(c->tseg1 / static_cast<double>(c->tseg1 + c->tseg2) - target);
            EXPECT_GE(distance, last - 1e-12) << name.file() << " " << line;
            last = distance;
        }
    }
}

TEST(BpsListOrder, RecommendedSamplePoints) {
    EXPECT_EQ(bps_recommended_permille(timing_phase::nominal, 500), 875u);
    EXPECT_EQ(bps_recommended_permille(timing_phase::nominal, 800), 800u);
    EXPECT_EQ(bps_recommended_permille(timing_phase::nominal, 1000), 750u);
    EXPECT_EQ(bps_recommended_permille(timing_phase::data, 2000), 800u);
    EXPECT_EQ(bps_recommended_permille(timing_phase::data, 4000), 750u);
}

} // namespace
