// What the calculator's layout says stands in the fields of the bit timing too.
#include "dev_b/bit_timing.h"
#include "dev_b/fields.h"
#include "dev_b/pages/bps_form.h"
#include "tests/dev_b/pages/b_page.h"
#include "tests/support/layout_texts.h"

namespace {

namespace f = vkt610b_field;

class calculator_labels : public b_channel {};
INSTANTIATE_TEST_SUITE_P(both, calculator_labels, testing::Values('1', '2'), channel_name);

TEST_P(calculator_labels, are_those_of_the_fields) {
    widget* dialog = window_open(bps_window_name(GetParam() - '0'));
    ASSERT_NE(dialog, nullptr);
    const std::pair<const char*, const field&> rows[] = {
        {"canfd#_div_z", f::timing_divider},  {"canfd#_brp_z", f::nominal_brp},
        {"canfd#_tseg1_z", f::nominal_tseg1}, {"canfd#_tseg2_z", f::nominal_tseg2},
        {"canfd#_brp_c", f::data_brp},        {"canfd#_tseg1_c", f::data_tseg1},
        {"canfd#_tseg2_c", f::data_tseg2},
    };
    for (const auto& [name, of] : rows) {
        const layout_texts shown = layout_texts_of(dialog, mine(name));
        EXPECT_EQ(shown.label, of.label) << name;
        EXPECT_EQ(shown.unit, of.unit) << name;
    }
}

/// The calculator writes a rate with a large K; its place in the list is what the channel's rate holds.
TEST(calculator_rates, are_the_choices_of_the_channels_rates) {
    const std::pair<timing_phase, const field&> phases[] = {{timing_phase::nominal, f::canfd<1>::nominal_rate},
                                                            {timing_phase::data, f::canfd<2>::data_rate}};
    for (const auto& [phase, of] : phases) {
        ASSERT_EQ(timing_rates(phase).size(), of.choices.size());
        for (const choice_option& choice : of.choices) {
            std::string text = choice.text;
            if (text.back() == 'k') text.back() = 'K';
            const choice_option& rate = timing_rates(phase)[static_cast<std::size_t>(choice.value)];
            EXPECT_EQ(rate.text, text);
            EXPECT_EQ(timing_rate_index(phase, rate.value), choice.value);
        }
    }
}

} // namespace
