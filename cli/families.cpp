#include "cli/families.h"

#include "dev_a/family.h"
#include "dev_b/family.h"
#include "dev_generic/family.h"

family_list cli_families() {
    static constexpr const family_descriptor* all[] = {&vkt510a_family, &generic_family, &vkt610b_family};
    return all;
}
