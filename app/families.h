// The families of models that this program serves.
#pragma once

#include "fields/family_pages.h"

/// In the order of the model selector: this program's own, unless others were set.
family_pages_list families();
/// Sets others, which must live as long as the program. Before application_init. GUI thread.
void families_use(family_pages_list others);
/// The pages of a model's family, null for a text that is no model.
const family_pages* pages_of_model(std::string_view model);
