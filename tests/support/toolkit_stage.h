// The toolkit in a test program.
#pragma once

/// Starts the toolkit once for the whole test program, with the repository's resources, and clears its window.
void toolkit_stage_start();
