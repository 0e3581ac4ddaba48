// The system's own COM-port interface, without the parts of its headers that hurt other code.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef NOGDI
#define NOGDI // its ERROR macro collides with log levels
#endif
#include <windows.h>

#undef far
#undef interface
#undef near
#undef small
