// How a family appears on the home page: its container, its switch, its tabs. The application has the list of
// these.
#pragma once

#include "fields/page_binder.h"

struct page_tab {
    const char* button; ///< tab button on the home page
    const char* page;   ///< page widget inside the page set
    /// Attaches options and handlers once, fills from the device every time.
    ret_t (*init)(widget* page_widget, dev_obj& dev);
};

struct family_pages {
    const family_descriptor* of;
    const char* log_name;                      ///< as console lines name it, for example "dev_vkt530a"
    const char* container;                     ///< "view10"
    const char* code_mode;                     ///< switch of the code view's other form
    const char* page_set;                      ///< "pages"
    std::span<const page_tab> tabs;            ///< in the order in which they are tested: change, spi, uart, can
    std::span<const page_table* const> tables; ///< of the pages that hold rows
    bool starts_at_first_tab; ///< its first page and tab are set when it is prepared; else they come as laid out
    const char* code_lost = nullptr; ///< console line when the code view cannot be set
};
using family_pages_list = std::span<const family_pages* const>;
