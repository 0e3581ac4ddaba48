// What the line below a refused field says should stand there, in every family.
#include "dev_a/pages/vkt510a_pages.h"
#include "dev_b/pages/vkt610b_pages.h"
#include "dev_generic/pages/generic_pages.h"
#include "tests/support/home_stage.h"

namespace {

struct refused_case {
    const char* name; ///< of the test
    const family_pages* of;
    const char* page;
    const char* widget;
    const char* typed;
    const char* wanted;
    const char* good;
};

class refused_texts : public home_stage, public testing::WithParamInterface<refused_case> {};

TEST_P(refused_texts, say_what_should_stand_there_until_it_does) {
    const refused_case& row = GetParam();
    choose(*row.of);
    show(row.page);
    const std::string field = std::string("@/") + row.widget;
    does("expect " + field + " refused_line \"\"\n");
    does("type " + field + " \"" + row.typed + "\"\nkey Tab\nexpect " + field + " refused 1\nexpect " + field +
         " refused_line \"" + row.wanted + "\"\n");
    does("type " + field + " \"" + row.good + "\"\nkey Tab\nexpect " + field + " refused 0\nexpect " + field +
         " refused_line \"\"\n");
}

INSTANTIATE_TEST_SUITE_P(
    all, refused_texts,
    testing::Values(
        refused_case{"generic_number", &generic_pages, "page_uart", "spin_box_distance", "300", "应为 0–255", "7"},
        refused_case{"generic_narrow_number", &generic_pages, "page_change", "spin_box", "9", "应为 0–7", "7"},
        refused_case{"generic_word", &generic_pages, "page_can", "edit_send", "xyz",
                     "应为 4 个字节的十六进制数，如 00 00 00 00", "12"},
        refused_case{"a_number", &vkt510a_pages, "page_vkt510a_uart", "spin_box_distance_vkt510a", "17",
                     "应为 0–16", "16"},
        refused_case{"b_number_above_its_store", &vkt610b_pages, "page_vkt610b_spi", "spin_box_number_vkt610b",
                     "300", "应为 1–100", "9"},
        refused_case{"b_filter", &vkt610b_pages, "page_vkt610b_canfd_1", "edit_check0_vkt610b_canfd1", "FFF",
                     "应为 0–7FF 的十六进制数", "12"},
        refused_case{"b_no_number", &vkt610b_pages, "page_vkt610b_canfd_2", "edit_check4_vkt610b_canfd2", "xyz",
                     "应为 0–1FFFFFFF 的十六进制数", "1FFFFFFF"}),
    [](const auto& one) { return std::string(one.param.name); });

} // namespace
