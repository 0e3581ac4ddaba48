// A second page from the table of the first: twin channels and twin UARTs differ in names only.
#pragma once

#include "config/pages/page_binder.h"

#include <deque>
#include <initializer_list>
#include <string_view>

/// What a name of the first page reads on the second.
struct twin_name {
    std::string_view from;
    std::string_view to;
};

/// Holds the rows and texts of the second table; its address must not change while a page is bound to it.
class twin_table {
  public:
    twin_table(const page_table& first, std::initializer_list<twin_name> names);
    twin_table(const twin_table&) = delete;
    twin_table& operator=(const twin_table&) = delete;
    const page_table& table() const { return table_; }

  private:
    const char* renamed(const char* text);
    page_row renamed(page_row row);

    std::vector<twin_name> names_;
    std::deque<std::string> texts_;
    std::vector<page_row> rows_;
    page_table table_;
};
