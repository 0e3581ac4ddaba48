#include "tests/sample_family/pages/sample_pages.h"

#include "tests/sample_family/family.h"

namespace {

namespace f = sample_field;
using enum row_kind;

// clang-format off
constexpr page_row rows[] = {
    {.name = "sample_speed_box", .what = &f::speed, .kind = choice},
    {.name = "sample_gain_box",  .what = &f::gain,  .kind = number},
    {.name = "sample_on_box",    .what = &f::on,    .kind = check},
};
// clang-format on
constexpr page_table page{"page_sample", rows, {.bounded = true, .whole_values = true}};
constexpr const page_table* tables[] = {&page};
constexpr page_tab tabs[] = {{"sample_tab", "page_sample", page_init_of<page>}};

} // namespace

constinit const family_pages sample_pages = {
    .of = &sample_family,
    .log_name = "dev_sample",
    .container = "sample_view",
    .code_mode = "code_mode_sample",
    .page_set = "sample_pages",
    .tabs = tabs,
    .tables = tables,
    .starts_at_first_tab = true,
};
