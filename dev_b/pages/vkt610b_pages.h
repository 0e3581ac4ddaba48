// The pages of the B family, and its place on the home page; table_view_register comes before their first use.
#pragma once

#include "fields/family_pages.h"

extern const family_pages vkt610b_pages;
