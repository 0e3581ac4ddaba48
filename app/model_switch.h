// Choosing a model: the family's device object, its pages, and what of the home page it shows. GUI thread only.
#pragma once

#include "fields/family_pages.h"

#include <string>

/// Binds the switches of the code view, and hides what is another family's than the start model's.
void model_bind(widget* home);
/// Fills the model selector with every model and chooses VKT531A.
void model_selector_fill(widget* home);

/// Shows what the home page has for a family's models, and hides what the others have. RET_INIT_FAILED, and a
/// console line, when the family has no device.
ret_t model_widgets_show(widget* home, const family_pages& chosen);

/// Value change of the model selector: the shown text becomes the current model, the family's device object is made
/// when there is none, its pages are prepared, and only its widgets show. RET_FAIL when that did not work (the
/// console says why, the page set before stays on screen); RET_OK and nothing done for a text that is no model.
ret_t model_switch(widget* home);

/// Makes the start model's device (one that is there keeps its values, and encodes them), prepares its pages and
/// shows them: the home page's own start.
/// RET_INIT_FAILED when that did not work.
ret_t model_start(widget* home);

/// Forgets which families' tabs were bound: the home page is a new window.
void model_window_changed();

/// Chooses a model as a pick in the selector does. RET_FAIL for a text that is no model, and when its family could
/// not be shown.
ret_t model_choose(widget* home, const std::string& model);

/// The family of the model that the selector shows; null when there is none.
const family_pages* model_selected(widget* home);
/// Fills the page whose tab is on (the first of the family's tabs whose value is not 0) from the store.
ret_t model_page_refresh(widget* home);
/// Shows the selected family's image in the code view.
ret_t model_show_code(widget* home);
/// The same of a family, in the form of restored defaults if wanted (code_form::restored).
ret_t model_show_code_as(const family_pages& pages, bool restored);
/// Switches to a tab of a family: its button, its page, the page's values.
ret_t model_tab_show(widget* home, const family_pages& pages, const page_tab& tab);
/// Writes the selected family's defaults and shows them.
ret_t model_restore_defaults(widget* home);
