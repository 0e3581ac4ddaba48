// What exists once in the process: stores, locks, paths, the port watcher, the slots that lower rooms report to.
#pragma once

/// Does the one-time work of the home page's first opening; later calls only count. GUI thread.
void start_objects_create();
/// How often the home page was opened. GUI thread.
unsigned start_objects_opened();
