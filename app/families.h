// The device families that this program serves.
#pragma once

/// Registers pages and operations of every family that is built in. Before the home page opens. GUI thread.
void families_register();
