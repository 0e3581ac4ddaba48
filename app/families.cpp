#include "app/families.h"

#include "config/pages/family_pages.h"
#include "dev_a/pages/vkt510a_pages.h"
#include "dev_b/pages/vkt610b_pages.h"

void families_register() {
    generic_family_register();
    vkt510a_family_register();
    vkt610b_family_register();
}
