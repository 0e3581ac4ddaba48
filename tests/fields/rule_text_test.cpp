// When a field that is switched off counts, as its tooltip and its card say it.
#include "app/families.h"
#include "dev_a/pages/vkt510a_pages.h"
#include "dev_b/pages/vkt610b_pages.h"
#include "dev_generic/pages/generic_pages.h"
#include "fields/rule_text.h"
#include "tests/support/home_stage.h"

namespace {

using testing::EndsWith;
using testing::Not;

const page_row& row_of(const family_pages& of, const char* name) {
    for (const page_table* table : of.tables)
        for (const page_row& row : table->rows)
            if (std::string_view(name) == row.name) return row;
    ADD_FAILURE() << name;
    return of.tables[0]->rows[0];
}

TEST(rule_texts, are_made_of_the_choices_or_the_label) {
    EXPECT_EQ(rule_text(row_of(generic_pages, "spin_box").enabled_when), "仅透明带标识转换时有效");
    EXPECT_EQ(rule_text(row_of(generic_pages, "check_button1").enabled_when), "仅透明转换时有效");
    EXPECT_EQ(rule_text(row_of(generic_pages, "edit").enabled_when), "仅自定义协议转换时有效");
    EXPECT_EQ(rule_text(row_of(vkt510a_pages, "edit_scherm_vkt510a").enabled_when), "仅启用接收滤波时有效");
    EXPECT_EQ(rule_text(row_of(vkt610b_pages, "combo_box_ex_rejector_vkt610b_canfd2").enabled_when),
              "仅启用速率切换 BRS 时有效");
    EXPECT_EQ(rule_text(row_of(vkt610b_pages, "check_button_vkt610b_canfd1").enabled_when), "CAN模式时无效");
    EXPECT_EQ(rule_text(row_of(vkt610b_pages, "edit_check0_vkt610b_canfd1").enabled_when), "扩展帧滤波时无效");
    EXPECT_EQ(rule_text(row_of(vkt610b_pages, "edit_check4_vkt610b_canfd1").enabled_when), "标准帧滤波时无效");
    EXPECT_EQ(rule_text(row_of(generic_pages, "combo_box_ex").enabled_when), "");
}

class rule_texts_shown : public home_stage {};

TEST_F(rule_texts_shown, follow_the_rule_on_every_page) {
    std::size_t off = 0;
    for (const family_pages* of : families()) {
        choose(*of);
        for (const page_table* table : of->tables) {
            show(table->name);
            for (const page_row& row : table->rows) {
                const std::string text = rule_text(row.enabled_when);
                if (text.empty() || row.what == &no_field) continue;
                const std::string tip = widget_get_prop_str(on_page(row.name), "toolTip", "");
                const bool says = tip.ends_with(text);
                EXPECT_EQ(says, !enabled(row.name)) << row.name << ": " << tip;
                EXPECT_NE(tip, text) << row.name << " has the layout's text too";
                off += says ? 1 : 0;
            }
        }
    }
    EXPECT_GT(off, 20U);
}

TEST_F(rule_texts_shown, stand_in_the_head_of_a_card_that_does_not_count) {
    choose(generic_pages);
    show("page_change");
    does("pick @/combo_box_ex 自定义协议转换\n"
         "expect @/hint_with_id visible 1\nexpect @/hint_with_id text 仅透明带标识转换时有效\n"
         "expect @/hint_transparent visible 1\nexpect @/hint_custom visible 0\n"
         "pick @/combo_box_ex 透明转换\n"
         "expect @/hint_with_id visible 1\nexpect @/hint_transparent visible 0\nexpect @/hint_custom visible 1\n");
    choose(vkt610b_pages);
    show("page_vkt610b_canfd_2");
    does("pick @/combo_box_ex_reject_mode_vkt610b_canfd2 标准帧滤波\n"
         "expect @/hint_standard_canfd2 visible 0\nexpect @/hint_extended_canfd2 visible 1\n"
         "expect @/hint_extended_canfd2 text 标准帧滤波时无效\n"
         "pick @/combo_box_ex_reject_mode_vkt610b_canfd2 标准帧、扩展帧滤波\n"
         "expect @/hint_standard_canfd2 visible 0\nexpect @/hint_extended_canfd2 visible 0\n");
}

} // namespace
