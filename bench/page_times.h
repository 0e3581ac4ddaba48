// What the data page takes for single things, with a million records.
#pragma once

/// Opens the page from the finished session on, lets a million records come in, and times opening, first paint,
/// pausing, scrolling to the end and clearing. Prints "NAME MILLISECONDS" lines. False when one could not be done.
bool page_times();
