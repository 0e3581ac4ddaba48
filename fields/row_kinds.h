// What each kind of row does: how it shows the store's value, and how it takes what the user did.
#pragma once

#include "fields/page_binder.h"

#include <functional>

/// A row's widget on its page.
struct bound_row {
    const page_table& table;
    const page_row& row;
    widget* page;
    widget* w;
    dev_obj& dev;

    tk_object* props() const { return dev.props.get(); }
    const field& what() const { return *row.what; }
};

struct kind_ops {
    void (*fill)(const bound_row& at) = nullptr;
    ret_t (*changed)(const bound_row& at) = nullptr;
    ret_t (*changing)(const bound_row& at) = nullptr;
    ret_t (*focus)(const bound_row& at) = nullptr;
    ret_t (*blur)(const bound_row& at) = nullptr;
    ret_t (*click)(const bound_row& at) = nullptr;
    /// Of a row that goes on showing a refused text: marks the text on show, or clears its mark.
    void (*mark)(const bound_row& at) = nullptr;
    std::span<const choice_option> options{}; ///< offered instead of the field's choices
};
const kind_ops& kind_ops_of(const page_row& row);
/// What a combo box of the row offers.
std::span<const choice_option> row_options(const page_row& row);

/// The value that a row's page shows: the property, its default when it is missing.
uint8_t row_number(const bound_row& at);
std::string row_text(const bound_row& at);
/// The image bytes that a row's key feeds, as they stand in the image.
std::vector<uint8_t> row_image_bytes(const bound_row& at);
/// Brings the image up to date with every key, and shows the code.
ret_t row_show(const bound_row& at);
/// Stores a text, refreshes image and code view.
ret_t row_store_text(const bound_row& at, const std::string& text);
/// Stores a number with `store` and encodes it; a failure is named on the console with `line_end` behind it.
ret_t row_store(const bound_row& at, const std::function<ret_t(tk_object*, const char* key)>& store,
                const char* line_end);

/// The hex kinds (hex_rows.cpp).
extern const kind_ops hex_text_ops, hex_pair_ops, hex_word_ops, hex_number_ops;
