// The thread that completes pending operations: one for all ports, asleep in poll while nothing happens.
#pragma once

#include "platform/posix/port.h"

namespace posix_com {

/// Starts the thread unless it runs. False when it cannot be had.
bool io_thread_start();
/// Has the thread look after the port until nothing pends on it any more. io_lock() is held.
void io_thread_watch(const std::shared_ptr<port>& p);
/// Has the thread look again, because a port it watches has changed. io_lock() is held.
void io_thread_wake();

} // namespace posix_com
