// What a port is, beside its name: the device behind it, what is in the way of opening it, and what helps. Asked
// for on a worker of its own, when a list is shown and when the system notices that a port came, went or changed.
#pragma once

#include "platform/port_state.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

struct port_about {
    std::string device;                            ///< "FTDI FT232R USB UART A6007XYZ"; empty when nothing is known
    com::port_state state = com::port_state::free; ///< what would come of opening it
    std::string grant; ///< the command that lets the user open it; empty: none is needed
    bool operator==(const port_about&) const = default;
};
/// By the port's name.
using port_abouts = std::map<std::string, port_about>;

/// What to show beside the name: "FTDI FT232R USB UART A6007XYZ，被占用". Any thread.
std::string port_about_text(const port_about& about);
/// Asks the system about a port, by its name or a path; opens nothing. Any thread.
port_about port_about_ask(const std::string& name);

/// Who gets the answers, on the GUI thread; empty: nobody. GUI thread.
void port_abouts_set_view(std::function<void(const port_abouts&)> view);
/// From now on the answers are about these names; they are asked for now. Any thread.
void port_abouts_of(const std::vector<std::string>& names);
/// Starts the worker "com_notice" that answers, unless it runs. Once the system has noticed that ports came, went
/// or changed their rights, and no more such notices come, it calls `on_notice` and answers again. GUI thread.
void port_abouts_start(void (*on_notice)());
