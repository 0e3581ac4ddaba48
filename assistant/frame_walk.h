// Walking received bytes from frame to frame.
#pragma once

#include "serial/traffic_frame.h"

#include <cstdint>
#include <span>

/// So many waiting bytes are left alone until more have come.
inline constexpr std::size_t walk_left_alone = 76;
/// Most bytes that one step looks at.
inline constexpr std::size_t walk_look_max = 255 + 4;

/// What one step found.
struct walk_step {
    std::size_t advance = 0; ///< bytes that are done with; 0: more must come first
    bool frame = false;      ///< a start byte stood there; else the byte is none of a frame
    bool good = false;       ///< and what followed it is a frame with a good check value
    traffic_parsed parsed{}; ///< of a good one; its data are part of `bytes`
};

/// Looks at what waits: `bytes` are the first of `waiting` ones, at least walk_look_max of them where there are so
/// many. A frame is looked at when all of it is there, and a start byte that waits last has no length yet. Any
/// thread.
walk_step walk_look(std::span<const uint8_t> bytes, std::size_t waiting);
