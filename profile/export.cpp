#include "profile/export.h"

#include "session/session_run.h"
#include "toolkit/core/text.h"

#include <algorithm>

namespace {

std::string pairs(std::span<const uint8_t> bytes) { return hex_list(bytes, "%02X", " "); }

std::string lower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

std::string c_array(const std::vector<session_bytes>& frames, const std::string& model) {
    std::size_t longest = 0;
    for (const session_bytes& frame : frames) longest = std::max(longest, frame.size());
    std::string text = tk_format("/* %s: what a write sends, %zu frame%s of %zu bytes */\n", model.c_str(),
                                 frames.size(), frames.size() == 1 ? "" : "s", longest);
    text += tk_format("static const unsigned char %s_frames[%zu][%zu] = {\n", lower(model).c_str(), frames.size(),
                      longest);
    for (const session_bytes& frame : frames) text += "    {" + hex_list(frame, "0x%02X", ", ") + "},\n";
    return text + "};\n";
}

std::string script_line(const dev_obj& dev, const session_bytes& frame) {
    std::string line = "SEND " + pairs(frame);
    if (dev.of.acknowledgement != nullptr) line += " EXPECT " + pairs(dev.of.acknowledgement(frame));
    return line + "\n";
}

} // namespace

std::vector<session_bytes> export_frames(const dev_obj& dev, bool alternative) {
    return dev_session_input(dev, session_kind::write, alternative).requests;
}

std::string export_text(const dev_obj& dev, const std::string& model, bool alternative, export_form form) {
    const std::vector<session_bytes> frames = export_frames(dev, alternative);
    if (form == export_form::c_array) return c_array(frames, model);
    std::string text;
    for (const session_bytes& frame : frames) {
        if (form == export_form::frames) text += pairs(frame) + "\n";
        if (form == export_form::hex) text += hex_list(frame, "%02X", "") + "\n";
        if (form == export_form::binary) text.append(frame.begin(), frame.end());
        if (form == export_form::script) text += script_line(dev, frame);
    }
    return text;
}
