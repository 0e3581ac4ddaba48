// The codec behind the B family's sessions and behind the operations of its device object.
#pragma once

#include "dev_b/vkt610b_codec.h"

/// The process-wide state, rebuilt from the store of the current B device object when it was not built from that
/// store yet: so a write without any edit sends the store's values. Under the device object's mutex; any thread.
vkt610b_state& vkt610b_state_ready();

/// Rebuilds registers, command tables and listings from the store of the B device object. RET_FAIL when there is no
/// such object. `context` is ignored. Under the device object's mutex; any thread.
ret_t vkt610b_encode(void* context);
/// Unpacks the registers into the store of the B device object. RET_FAIL when there is no such object. `context` is
/// ignored. Under the device object's mutex; any thread.
ret_t vkt610b_decode(void* context);

/// Gives the B sessions their functions. Before the first B session.
void vkt610b_session_ops_register();
