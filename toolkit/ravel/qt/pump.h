// Joins the idle queue and the timers to Qt's event loop. GUI thread only, except where said.
#pragma once

/// From now on posted jobs wake the event loop, and timers wake it when they are due. Needs the application object.
void start_pump();
void stop_pump();
/// Asks for a dispatch in the loop that runs next. Any thread.
void wake_pump();
