#include "app/home_parts.h"

#include <map>
#include <string_view>

widget* home_part(widget* home, const char* name) {
    static auto& known = *new std::map<std::string_view, widget*>;
    static const widget* known_home = nullptr;
    if (home != known_home) known.clear();
    known_home = home;
    widget*& part = known[name];
    if (part == nullptr) part = widget_lookup(home, name);
    return part;
}
