// Locks outlive the threads that were let go while they ran.
#pragma once

/// True while a toolkit thread runs whose object was destroyed or released: what it may still use is not freed
/// then. Any thread.
bool tk_thread_any_let_go();
