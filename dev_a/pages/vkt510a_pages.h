// The four pages of the VKT510A and its place on the home page. GUI thread only.
#pragma once

#include "config/pages/page_binder.h"

#include <span>

/// Attach (once in a page widget's life) and fill a page. Without a page: a console line and RET_BAD_PARAMS.
ret_t page_vkt510a_change_init(widget* page);
ret_t page_vkt510a_spi_init(widget* page);
ret_t page_vkt510a_uart_init(widget* page);
ret_t page_vkt510a_can_init(widget* page);

/// The pages' tables in the order change, spi, uart, can.
std::span<const page_table> vkt510a_page_tables();

/// Encodes, and shows the image in "mledit" of "home_page" in the form that "code_mode_vkt510a" asks for. Both
/// arguments are ignored; the caller holds the device object's mutex.
ret_t vkt510a_show_code(widget* window, void* event);

/// Registers the family's codec, operations and pages. Before the home page opens.
void vkt510a_family_register();
