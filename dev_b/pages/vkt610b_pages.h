// The pages of the B family and its place on the home page. GUI thread only.
#pragma once

#include "config/pages/page_binder.h"

#include <vector>

/// Attach (once in a page widget's life) and fill a page; the UART and the CAN FD page with both pages inside them.
/// Without a page: a console line and RET_BAD_PARAMS.
ret_t page_vkt610b_change_init(widget* page);
ret_t page_vkt610b_spi_init(widget* page);
ret_t page_vkt610b_uart_init(widget* page);
ret_t page_vkt610b_uart_1_init(widget* page);
ret_t page_vkt610b_uart_2_init(widget* page);
ret_t page_vkt610b_canfd_init(widget* page);
ret_t page_vkt610b_canfd_1_init(widget* page);
ret_t page_vkt610b_canfd_2_init(widget* page);

/// The tables of the pages that hold rows: change, spi, UART 1 and 2, CAN FD 1 and 2.
std::vector<const page_table*> vkt610b_page_tables();

/// Registers the family's codec, operations and pages. Before the home page opens; table_view_register comes first.
void vkt610b_family_register();
