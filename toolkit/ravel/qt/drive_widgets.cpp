#include "toolkit/ravel/qt/drive_widgets.h"

#include "toolkit/core/text.h"
#include "toolkit/ravel/qt/combo.h"
#include "toolkit/ravel/qt/widget_class.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QComboBox>
#include <QVariant>

#include <algorithm>
#include <unordered_set>

namespace {

using states = std::vector<widget_state*>;

constexpr std::size_t candidates_shown = 8;

void collect_below(const widget_state* state, states* out) {
    for (widget_state* child : state->children) {
        out->push_back(child);
        collect_below(child, out);
    }
}

/// All widgets in reading order; without a base, the open windows and what is in them.
states below(const widget_state* base) {
    states all;
    if (base != nullptr) {
        collect_below(base, &all);
        return all;
    }
    for (widget_state* window : stacked_windows_topmost_first()) {
        all.push_back(window);
        collect_below(window, &all);
    }
    return all;
}

/// "row" names a "table_row" too.
bool is_type(const widget_state* state, const std::string& type) {
    const std::string& own = state->type;
    if (own == type) return true;
    return own.size() > type.size() + 1 && own[own.size() - type.size() - 1] == '_' &&
           own.compare(own.size() - type.size(), type.size(), type) == 0;
}

/// Rows and items that were made on the way stand in the order in which they are seen.
void sort_by_place(states* found) {
    std::stable_sort(found->begin(), found->end(), [](const widget_state* a, const widget_state* b) {
        if (a->parent != b->parent) return false;
        const QPoint at = a->w->pos(), bt = b->w->pos();
        return at.y() != bt.y() ? at.y() < bt.y() : at.x() < bt.x();
    });
}

/// Those of a type below `base`, or all its children without one, in the order in which they stand on the screen.
states numbered_below(const widget_state* base, const std::string& type) {
    states found;
    for (widget_state* state : below(base))
        if (type.empty() ? state->parent == base : is_type(state, type)) found.push_back(state);
    // What is hidden (a row kept for later) has no place in the order.
    std::erase_if(found, [](const widget_state* state) { return state->w->isHidden(); });
    sort_by_place(&found);
    return found;
}

states matches_below(const widget_state* base, const drive_segment& segment) {
    states found;
    for (widget_state* state : below(base))
        if (!segment.name.empty() && state->name == segment.name) found.push_back(state);
    if (segment.index < 0) return found;
    if (found.empty() && base != nullptr) found = numbered_below(base, segment.name);
    const auto at = static_cast<std::size_t>(segment.index);
    return at < found.size() ? states{found[at]} : states{};
}

std::string names_of(const widget_state* state) {
    std::string text;
    for (; state != nullptr && state->kind != widget_kind::window_manager; state = state->parent)
        if (!state->name.empty()) text = state->name + (text.empty() ? "" : "/") + text;
    return text;
}

std::string own_segment(const widget_state* state) {
    if (!state->name.empty() || state->parent == nullptr) return state->name;
    const widget_state* base = state->parent;
    while (base->name.empty() && base->parent != nullptr) base = base->parent;
    const states found = numbered_below(base, state->type);
    const auto place = std::find(found.begin(), found.end(), state);
    return place == found.end() ? state->type
                                : state->type + tk_format("[%d]", static_cast<int>(place - found.begin()));
}

std::string flag(bool value) { return value ? "1" : "0"; }

std::string options_text(const widget_state* state) {
    const auto* combo = dynamic_cast<const QComboBox*>(state->w);
    QStringList texts;
    for (int i = 0; combo != nullptr && i < combo->count(); i++) texts += combo->itemText(i);
    return texts.join(QLatin1Char('|')).toStdString();
}

std::string hints_text(const widget_state* state) {
    const auto* combo = dynamic_cast<const QComboBox*>(state->w);
    return combo == nullptr ? "" : combo_hints(combo).join(QLatin1Char('|')).toStdString();
}

std::string open_text(const widget_state* state) {
    const auto* combo = dynamic_cast<const combo_widget*>(state->w);
    return flag(combo != nullptr && combo->popup_is_open());
}

std::string count_text(const widget_state* state) {
    const auto* combo = dynamic_cast<const QComboBox*>(state->w);
    return std::to_string(combo != nullptr ? static_cast<std::size_t>(combo->count()) : state->children.size());
}

std::string tooltip_text(const widget_state* state) {
    const auto* combo = dynamic_cast<const combo_widget*>(state->w);
    return (combo != nullptr ? combo->tooltip_shown() : state->w->toolTip()).toStdString();
}

/// "differs 12+2, at_hand 30+8", in the order in which they were set.
std::string marks_text(const widget_state* state) {
    std::string text;
    for (const text_mark& mark : mledit_get_marks(handle_of(state)))
        text += (text.empty() ? "" : ", ") +
                std::string(mark.kind == text_mark_kind::differs ? "differs" : "at_hand") +
                tk_format(" %d+%d", mark.offset, mark.length);
    return text;
}

int place_of(const widget_state* state, const char* name) { return widget_get_prop_int(handle_of(state), name, 0); }

struct property_row {
    const char* name;
    std::string (*get)(const widget_state*);
};
constexpr property_row property_rows[] = {
    {"text", [](const widget_state* s) { return widget_get_text_utf8(handle_of(s)); }},
    {"contains", [](const widget_state* s) { return widget_get_text_utf8(handle_of(s)); }},
    {"value", [](const widget_state* s) { return std::to_string(widget_get_value_int(handle_of(s))); }},
    {"enabled", [](const widget_state* s) { return flag(widget_get_enable(handle_of(s))); }},
    {"visible", [](const widget_state* s) { return flag(widget_get_visible(handle_of(s))); }},
    {"exists", [](const widget_state*) { return flag(true); }},
    {"painted",
     [](const widget_state* s) { return flag(native_window_painted() && widget_get_visible(handle_of(s))); }},
    {"options", options_text},
    {"option", options_text},
    {"hints", hints_text},
    {"hint", hints_text},
    {"open", open_text},
    {"count", count_text},
    {"focused", [](const widget_state* s) { return flag(widget_get_focused(handle_of(s))); }},
    {"refused", [](const widget_state* s) { return flag(widget_get_refused(handle_of(s))); }},
    {"marked", [](const widget_state* s) { return flag(widget_get_marked(handle_of(s))); }},
    {"marks", marks_text},
    {"hovered", [](const widget_state* s) { return std::to_string(mledit_get_hovered(handle_of(s))); }},
    {"refused_line", [](const widget_state* s) { return widget_get_refused_line(handle_of(s)); }},
    {"tooltip", tooltip_text},
    {"type", [](const widget_state* s) { return s->type; }},
    {"state", [](const widget_state* s) { return s->w->property("state").toString().toStdString(); }},
    {"x", [](const widget_state* s) { return std::to_string(s->w->x()); }},
    {"y", [](const widget_state* s) { return std::to_string(s->w->y()); }},
    {"w", [](const widget_state* s) { return std::to_string(s->w->width()); }},
    {"h", [](const widget_state* s) { return std::to_string(s->w->height()); }},
    {"window_x", [](const widget_state* s) { return std::to_string(place_of(s, "window_x")); }},
    {"window_y", [](const widget_state* s) { return std::to_string(place_of(s, "window_y")); }},
};

bool has_option(const widget_state* state, const std::string& wanted) {
    const auto* combo = dynamic_cast<const QComboBox*>(state->w);
    return combo != nullptr &&
           combo->findText(QString::fromStdString(wanted), Qt::MatchFixedString | Qt::MatchCaseSensitive) >= 0;
}

/// `wanted`: an option, a blank, and what is greyed beside it.
bool has_hint(const widget_state* state, const std::string& wanted) {
    const auto* combo = dynamic_cast<const QComboBox*>(state->w);
    if (combo == nullptr) return false;
    const QStringList hints = combo_hints(combo);
    for (int row = 0; row < combo->count(); ++row)
        if (combo->itemText(row) + u' ' + hints[row] == QString::fromStdString(wanted)) return true;
    return false;
}

std::string dump_line(const widget_state* state) {
    const widget* handle = handle_of(state);
    std::string line = drive_full_path(state) + " " + state->type + " ";
    line += drive_quote(widget_get_text_utf8(handle), 16000) + tk_format(" value=%d", widget_get_value_int(handle));
    line += widget_get_enable(handle) ? " enabled" : " disabled";
    line += widget_get_visible(handle) ? " visible" : " hidden";
    if (widget_get_marked(handle)) line += " marked";
    line += tk_format(" %d,%d %dx%d", place_of(state, "window_x"), place_of(state, "window_y"), state->w->width(),
                      state->w->height());
    const std::string hints = hints_text(state);
    const bool any = hints.find_first_not_of('|') != std::string::npos;
    return line + (any ? " hints=" + drive_quote(hints, 16000) : "") + "\n";
}

} // namespace

std::string drive_full_path(const widget_state* state) {
    std::string text;
    for (; state != nullptr && state->kind != widget_kind::window_manager; state = state->parent) {
        // Nameless containers on the way are looked through.
        if (!text.empty() && state->name.empty()) continue;
        text = own_segment(state) + (text.empty() ? "" : "/") + text;
    }
    return text;
}

drive_found drive_find(const drive_path& path) {
    states bases = {nullptr};
    for (const drive_segment& segment : path) {
        states next;
        std::unordered_set<const widget_state*> seen;
        for (const widget_state* base : bases)
            for (widget_state* state : matches_below(base, segment))
                if (seen.insert(state).second) next.push_back(state);
        bases = std::move(next);
        if (bases.empty()) return {nullptr, "there is no widget " + drive_path_text(path)};
    }
    if (bases.size() == 1) return {bases[0], {}};
    // A path that is the whole path of one widget means that one.
    const std::string whole = drive_path_text(path);
    const auto exact =
        std::find_if(bases.begin(), bases.end(), [&](const widget_state* s) { return names_of(s) == whole; });
    if (exact != bases.end() &&
        std::count_if(bases.begin(), bases.end(), [&](const widget_state* s) { return names_of(s) == whole; }) == 1)
        return {*exact, {}};
    std::string error = tk_format("%zu widgets are meant by ", bases.size()) + whole + ":";
    for (std::size_t i = 0; i < bases.size() && i < candidates_shown; i++) error += " " + drive_full_path(bases[i]);
    return {nullptr, error + (bases.size() > candidates_shown ? " ..." : "")};
}

std::string drive_property(const widget_state* state, const std::string& property) {
    for (const property_row& row : property_rows)
        if (property == row.name) return row.get(state);
    return {};
}

bool drive_matches(const drive_path& path, const std::string& property, const std::string& wanted,
                   std::string* found) {
    const drive_found target = drive_find(path);
    if (target.state == nullptr) {
        *found = target.error;
        // What is not there is not to be seen either.
        return wanted == "0" && (property == "exists" || property == "visible") &&
               target.error.rfind("there is no", 0) == 0;
    }
    const std::string value = drive_property(target.state, property);
    *found = drive_quote(value);
    if (property == "contains") return value.find(wanted) != std::string::npos;
    if (property == "option") return has_option(target.state, wanted);
    if (property == "hint") return has_hint(target.state, wanted);
    return value == wanted;
}

std::string drive_dump() {
    std::string text;
    for (const widget_state* state : below(nullptr)) text += dump_line(state);
    return text;
}
