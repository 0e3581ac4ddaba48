// The one page of the sample family, and its place on the home page.
#pragma once

#include "fields/family_pages.h"

extern const family_pages sample_pages;
