// The B family's store as its pages and dialogs use it, and the listing of its commands on the home page. GUI
// thread.
#pragma once

#include "config/dev_obj.h"

#include <functional>

/// The store and the mutex of the B device object; null while there is no such object.
tk_object* vkt610b_props();
tk_mutex* vkt610b_mutex();

/// Packs the registers, builds both command tables and both listings, and shows the listing in "mledit" of
/// "home_page" that "code_mode_vkt610b" chooses. Both arguments are ignored; the caller holds the device object's
/// mutex. Always RET_OK; a missing text box is told on the console.
ret_t vkt610b_code_mode(widget* window, void* event);

/// Runs `work` on the store under the device object's mutex and refreshes the listing. RET_FAIL while there is no
/// device object, else what `work` answers.
ret_t vkt610b_change_store(const std::function<ret_t(tk_object* props)>& work);
