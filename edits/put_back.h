// Single values of a device put to what the module or the defaults hold. GUI thread only.
#pragma once

#include "profile/compare.h"

/// Which of a value's other two an edit goes back to.
enum class put_back_to : uint8_t {
    module,   ///< what the module holds; unknown: the default
    defaults, ///< the default
};

/// Stores that value of one field and encodes it. RET_FAIL when the store refuses it, RET_BAD_PARAMS for a field
/// without a place in the image.
ret_t edit_put_back(dev_obj& dev, const field& what, put_back_to to);
/// The same for every value that a write would change (dev_unwritten), or that is not the default. How many were
/// stored.
std::size_t edit_put_all_back(dev_obj& dev, put_back_to to);
