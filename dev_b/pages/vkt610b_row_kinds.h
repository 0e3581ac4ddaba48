// What only the B family's rows do: the route selector, the filter edits, the version text, the ways to
// the calculator and to the send assistant.
#pragma once

#include "fields/row_kinds.h"

/// Selector of the serial side and the CAN side together (vkt610b_routes). The row's field is the protocol; the
/// channel is stored and shown with it.
extern const kind_ops vkt610b_route_ops;
/// Edits of an acceptance mask or code: eight hex digits, held to what the frame kind has bits for. Stored when the
/// edit is left or at Enter. What is held for display only stays in the store as it is.
extern const kind_ops vkt610b_filter_ops;
/// The standard mask: committed as the others are, and shown as it is stored.
extern const kind_ops vkt610b_mask_ops;
/// Label of the version register.
extern const kind_ops vkt610b_version_ops;
/// Button that opens the bit timing calculator of channel 1 or 2. The page is filled again afterwards.
extern const kind_ops vkt610b_calculator_ops[2];
/// Button that opens the serial send assistant.
extern const kind_ops vkt610b_assistant_ops;
