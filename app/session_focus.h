// Where the keyboard focus goes after a session: while one runs its buttons are off, and the focus wanders on.
#pragma once

/// A session was started by this button of the home page. GUI thread.
void session_focus_keep(const char* button);
/// Gives the focus back to the button that started the last session, else to the first session button that is
/// enabled. Does nothing when no session was started since, or while none of them is enabled or another window is
/// on top. GUI thread.
void session_focus_back();
