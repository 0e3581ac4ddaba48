// The four pages of the VKT510A, and its place on the home page.
#pragma once

#include "fields/family_pages.h"

extern const family_pages vkt510a_pages;
