// The four pages of the generic models, and their place on the home page.
#pragma once

#include "fields/family_pages.h"

extern const family_pages generic_pages;
