#include "app/families.h"

#include "dev_a/pages/vkt510a_pages.h"
#include "dev_b/pages/vkt610b_pages.h"
#include "dev_generic/pages/generic_pages.h"

namespace {

constexpr const family_pages* all[] = {&vkt510a_pages, &generic_pages, &vkt610b_pages};
family_pages_list in_use = all;

} // namespace

family_pages_list families() { return in_use; }
void families_use(family_pages_list others) { in_use = others; }

const family_pages* pages_of_model(std::string_view model) {
    for (const family_pages* pages : families())
        for (const family_model& row : pages->of->models)
            if (model == row.name) return pages;
    return nullptr;
}
