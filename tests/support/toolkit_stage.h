// The toolkit in a test program.
#pragma once

#include <string>

/// The resources of the source tree.
std::string toolkit_stage_resources();
/// Starts the toolkit once for the whole test program, with the source tree's resources or those of a folder.
void toolkit_stage_start(const std::string& resources = {});
/// Closes every window at once and waits until they are destroyed: none of their handlers runs from then on.
void toolkit_stage_clear();
/// Runs the event loop until what is queued now has run. False when that does not happen.
bool toolkit_stage_settle();
