// The home page's own widgets, looked up once: what shows each edit asks for many of them. GUI thread only.
#pragma once

#include "toolkit/ravel/widget.h"

/// The widget of that name below the home page; null while there is none. Only for what lives as long as the page.
widget* home_part(widget* home, const char* name);
