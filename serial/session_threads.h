// How the workers of this room are made.
#pragma once

#include "serial/session.h"

#include <cstddef>
#include <cstdint>
#include <functional>

/// A started thread of priority 4 that was asked for 4096 bytes of stack; null when it cannot be started. Any
/// thread.
tk_thread* worker_start(const char* name, std::function<uint32_t()> work);

/// The same, counted as running until `work` has returned: `place` is a family's number, or
/// session_place_disconnect.
tk_thread* session_thread_start(const char* name, std::size_t place, std::function<uint32_t()> work);
inline constexpr std::size_t session_place_disconnect = family_count;

/// A copy of what session_set_reports was given.
session_reports session_reports_get();
