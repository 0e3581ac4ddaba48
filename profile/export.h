// What a write would send, for other programs and for people. The frames are those of the one builder that the
// sessions and the code view use.
#pragma once

#include "session/dev_obj.h"

#include <string>

enum class export_form : uint8_t {
    frames,  ///< "F7 F8 01 ..", a frame a line
    hex,     ///< "F7F801..", a frame a line
    c_array, ///< a C array of frames
    binary,  ///< the bytes as they are, frame behind frame
    script,  ///< "SEND F7 F8 .. EXPECT F7 F8 ..", a frame a line, for a terminal program
};

/// The frames of a write of what is edited; `alternative`: in the other form of the family's frames, where there is
/// one. The device's thread.
std::vector<session_bytes> export_frames(const dev_obj& dev, bool alternative);
/// The same in a form, for a model of the device's family; lines end in "\n".
std::string export_text(const dev_obj& dev, const std::string& model, bool alternative, export_form form);
