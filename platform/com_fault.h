// The fault switch's inner side: com_port.cpp asks it before every call.
#pragma once

#include "platform/com_port.h"

#include <initializer_list>

namespace com {

/// Lets the watcher hear of a call, if there is one. Any thread.
void tell_call(const char* name, std::initializer_list<DWORD> numbers);

/// Counts the call; true, with `error` filled, when it is to fail instead of reaching the system. Does not come
/// back from a call that is to hang. Any thread.
bool fault_hits(call which, DWORD* error);

} // namespace com
