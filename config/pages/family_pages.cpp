#include "config/pages/family_pages.h"

#include <array>

namespace {

std::array<const family_pages*, family_count> registered{};

} // namespace

void family_pages_register(const family_pages* pages) { registered[static_cast<std::size_t>(pages->of)] = pages; }

const family_pages* family_pages_of(family of) { return registered[static_cast<std::size_t>(of)]; }
