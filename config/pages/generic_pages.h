// The four pages of the generic models. GUI thread only.
#pragma once

#include "config/pages/page_binder.h"

#include <span>

/// Attach (once in a page widget's life) and fill a page. Without a page: a console line and RET_BAD_PARAMS.
ret_t page_change_init(widget* page);
ret_t page_spi_init(widget* page);
ret_t page_uart_init(widget* page);
ret_t page_can_init(widget* page);

/// The pages' tables in the order change, spi, uart, can.
std::span<const page_table> generic_page_tables();

/// Takes the state of "code_mode" over and shows the image in "mledit" of `window`. `event` is ignored. RET_FAIL
/// (or what setting the text answers) when a widget is missing.
ret_t cfg_image_show_code(widget* window, void* event);
