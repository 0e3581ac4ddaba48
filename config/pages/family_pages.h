// How a family appears on the home page: its container, its switch, its tabs. The application reads these rows; a
// family's room registers its own.
#pragma once

#include "config/models.h"
#include "toolkit/core/result.h"

#include <span>
#include <string>

struct widget;

struct page_tab {
    const char* button;                 ///< tab button on the home page
    const char* page;                   ///< page widget inside the page set
    ret_t (*init)(widget* page_widget); ///< attaches options and handlers once, fills from the store every time
};

struct family_pages {
    family of;
    const char* device;    ///< the model name that dev_open gets, whichever member of the family was chosen
    const char* log_name;  ///< as console lines name it, for example "dev_vkt530a"
    const char* container; ///< "view10"
    const char* code_mode; ///< "code_mode"
    const char* page_set;  ///< "pages"
    std::span<const page_tab> tabs; ///< in the order in which they are tested: change, spi, uart, can
    bool data_monitor = false;      ///< shows "button_data_lock"
    /// Shows the image again (the code switch was clicked, a model was chosen, a session ended). GUI thread.
    ret_t (*show_code)(widget* home_page);
    /// Writes the family's defaults, shows them in the code view in the restore form, marks the pages as filled.
    /// The caller fills the selected page afterwards. GUI thread.
    ret_t (*restore_defaults)(widget* home_page);
};

/// Registers a family (before the home page opens). The order of registration does not matter.
void family_pages_register(const family_pages* pages);
/// Null for a family that is not registered.
const family_pages* family_pages_of(family of);
/// Registers the generic family's pages and operations.
void generic_family_register();
