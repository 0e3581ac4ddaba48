// Which threads run: the toolkit's own side of worker.h. A thread is known by its stop source.
#pragma once

#include <stop_token>

/// Before the system is asked for the thread.
void thread_registry_add(const std::stop_source& stop);
/// After its work has returned, or when the system refused it.
void thread_registry_remove(const std::stop_source& stop);
