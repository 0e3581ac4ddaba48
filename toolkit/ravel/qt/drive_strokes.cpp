#include "toolkit/ravel/qt/drive_strokes.h"

#include "toolkit/core/fs.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/qt/drive_input.h"
#include "toolkit/ravel/qt/drive_widgets.h"
#include "toolkit/ravel/qt/text_widget.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>

namespace {

constexpr int look_again_ms = 15;
constexpr int look_at_file_again_ms = 40;
constexpr int window_limit_ms = 30000;
constexpr int focus_limit_ms =
    1000; ///< a platform that never makes the window the active one is played on all the same
constexpr int list_limit_ms = 3000;
constexpr int press_again_ms = 150; ///< a list that was just opened takes no click for a moment
constexpr int settle_ms = 80;       ///< before a picture

drive_outcome good() { return {}; }
drive_outcome again(int ms = look_again_ms) { return {drive_outcome::again, ms, {}}; }
drive_outcome bad(std::string why) { return {drive_outcome::failed, 0, std::move(why)}; }

/// A stroke on the widget of a path, found again each time.
using on_widget = std::function<drive_outcome(widget_state* state, int64_t waited_ms)>;
drive_stroke_t stroke_on(const drive_path& path, on_widget run, int pause_ms = 0) {
    return {[path, run = std::move(run)](int64_t waited) {
                const drive_found found = drive_find(path);
                return found.state == nullptr ? bad(found.error) : run(found.state, waited);
            },
            pause_ms};
}

drive_outcome press_on(widget_state* state, const QPoint& at) {
    const std::string obstacle = drive_obstacle(state, at);
    if (!obstacle.empty()) return bad(obstacle);
    drive_press(state->w, at);
    return good();
}

/// The press may have taken the widget away; then there is nothing left to let go of.
drive_stroke_t release_on(const drive_path& path) {
    return {[path](int64_t) {
        if (const drive_found found = drive_find(path); found.state != nullptr)
            drive_release(found.state->w, drive_spot(found.state));
        return good();
    }};
}

drive_strokes click_strokes(const drive_action& a, int hold_ms = 0) {
    drive_strokes all;
    all.push_back(stroke_on(
        a.widget, [](widget_state* state, int64_t) { return press_on(state, drive_spot(state)); }, hold_ms));
    all.push_back(release_on(a.widget));
    return all;
}

// ---- typing
// -----------------------------------------------------------------------------------------------------------

bool read_only(const widget_state* state) {
    if (const auto* edit = dynamic_cast<const QLineEdit*>(state->w)) return edit->isReadOnly();
    if (const auto* area = dynamic_cast<const QPlainTextEdit*>(state->w)) return area->isReadOnly();
    if (const auto* combo = dynamic_cast<const QComboBox*>(state->w)) return !combo->isEditable();
    if (const auto* spin = dynamic_cast<const QSpinBox*>(state->w)) return spin->isReadOnly();
    return true;
}

/// Whether keys reach the widget: why not, or empty.
std::string keyboard_obstacle(const widget_state* state) {
    const std::string path = drive_full_path(state);
    if (!gets_input(state->w)) return path + " can no longer be reached";
    const QWidget* focus = native_window()->focusWidget();
    if (focus == state->w || (focus != nullptr && state->w->isAncestorOf(focus))) return {};
    const widget_state* owner = state_around(focus);
    return path + " does not have the keyboard focus; " + (owner == nullptr ? "nothing" : drive_full_path(owner)) +
           " has";
}

void add_typing(const drive_action& a, const std::string& text, drive_strokes* all) {
    for (const char32_t code : QString::fromStdString(text).toStdU32String()) {
        const QString character = QString::fromUcs4(&code, 1);
        all->push_back(stroke_on(a.widget, [character](widget_state* state, int64_t) {
            const std::string obstacle = keyboard_obstacle(state);
            if (!obstacle.empty()) return bad(obstacle);
            drive_type(character);
            return good();
        }));
    }
}

void add_key(const char* name, drive_strokes* all) {
    drive_key key;
    drive_parse_key(name, &key);
    all->push_back({[key](int64_t) {
        drive_stroke(key);
        return good();
    }});
}

drive_strokes type_strokes(const drive_action& a) {
    drive_strokes all;
    all.push_back(stroke_on(a.widget, [](widget_state* state, int64_t) {
        if (read_only(state)) return bad(drive_full_path(state) + " cannot be typed into");
        return press_on(state, drive_spot(state));
    }));
    all.push_back(release_on(a.widget));
    all.push_back(stroke_on(a.widget, [](widget_state* state, int64_t waited) {
        const std::string obstacle = keyboard_obstacle(state);
        if (obstacle.empty()) return good();
        return waited < focus_limit_ms ? again() : bad(obstacle);
    }));
    const std::string& text = a.args[0];
    if (a.verb == drive_verb::append) {
        add_key("End", &all);
    } else {
        add_key("Ctrl+A", &all);
        if (text.empty()) add_key("Delete", &all);
    }
    add_typing(a, text, &all);
    return all;
}

// ---- combo boxes
// --------------------------------------------------------------------------------------------------------

int option_of(const QComboBox* combo, const std::string& text) {
    return combo->findText(QString::fromStdString(text), Qt::MatchExactly | Qt::MatchCaseSensitive);
}

drive_outcome open_list(widget_state* state, const std::string& text) {
    const auto* combo = dynamic_cast<const QComboBox*>(state->w);
    if (combo == nullptr) return bad(drive_full_path(state) + " is no combo box");
    if (option_of(combo, text) < 0)
        return bad("expected the option " + drive_quote(text) + ", found " +
                   drive_quote(drive_property(state, "options")));
    return press_on(state, drive_list_spot(state));
}

/// Presses the option once the list shows; the release is a stroke of its own, as it runs the handlers.
drive_outcome press_option(widget_state* state, const std::string& text, int64_t waited) {
    auto* combo = dynamic_cast<QComboBox*>(state->w);
    const int row = combo == nullptr ? -1 : option_of(combo, text);
    if (row < 0) return bad("the option " + drive_quote(text) + " has gone");
    QAbstractItemView* list = combo->view();
    if (!list->isVisible() || list->window()->windowHandle() == nullptr)
        return waited < list_limit_ms ? again() : bad("the list of " + drive_full_path(state) + " did not open");
    const QModelIndex index = combo->model()->index(row, combo->modelColumn(), combo->rootModelIndex());
    list->scrollTo(index);
    const QPoint at = list->visualRect(index).center();
    drive_move(list->viewport(), at + QPoint(1, 0));
    drive_press(list->viewport(), at);
    return good();
}

drive_outcome release_option(widget_state* state, const std::string& text) {
    auto* combo = dynamic_cast<QComboBox*>(state->w);
    const int row = combo == nullptr ? -1 : option_of(combo, text);
    if (row < 0 || !combo->view()->isVisible()) return good();
    const QModelIndex index = combo->model()->index(row, combo->modelColumn(), combo->rootModelIndex());
    drive_release(combo->view()->viewport(), combo->view()->visualRect(index).center());
    return good();
}

drive_outcome list_closed(const drive_path& path, const std::string& text, int64_t waited) {
    const drive_found found = drive_find(path);
    const auto* combo = found.state == nullptr ? nullptr : dynamic_cast<const QComboBox*>(found.state->w);
    if (combo == nullptr || !combo->view()->isVisible()) return good();
    if (waited >= list_limit_ms) return bad("the list of " + drive_full_path(found.state) + " stays open");
    if (press_option(found.state, text, waited).what == drive_outcome::done) release_option(found.state, text);
    return again(press_again_ms);
}

drive_strokes pick_strokes(const drive_action& a) {
    const std::string text = a.args[0];
    const drive_found found = drive_find(a.widget);
    const auto* combo = found.state == nullptr ? nullptr : dynamic_cast<const QComboBox*>(found.state->w);
    if (combo != nullptr && combo->isEditable() && option_of(combo, text) < 0) {
        drive_strokes typed = type_strokes(a);
        add_key("Enter", &typed);
        return typed;
    }
    drive_strokes all;
    all.push_back(stroke_on(a.widget, [text](widget_state* state, int64_t) { return open_list(state, text); }));
    all.push_back(stroke_on(a.widget, [](widget_state* state, int64_t) {
        drive_release(state->w, drive_list_spot(state));
        return good();
    }));
    all.push_back(stroke_on(
        a.widget, [text](widget_state* state, int64_t waited) { return press_option(state, text, waited); }));
    all.push_back(
        stroke_on(a.widget, [text](widget_state* state, int64_t) { return release_option(state, text); }));
    all.push_back({[path = a.widget, text](int64_t waited) { return list_closed(path, text, waited); }});
    return all;
}

// ---- everything else
// ------------------------------------------------------------------------------------------------------

drive_strokes press_strokes(const drive_action& a) { return click_strokes(a, a.number); }

drive_strokes key_strokes(const drive_action& a) {
    drive_strokes all;
    add_key(a.args[0].c_str(), &all);
    return all;
}

/// The part of a widget that what is around it leaves in view; empty when there is none.
drive_strokes wheel_strokes(const drive_action& a) {
    return {stroke_on(a.widget, [delta = a.number](widget_state* state, int64_t) {
        const QPoint at = drive_part_in_view(state->w).center();
        const std::string obstacle = drive_obstacle(state, at);
        if (!obstacle.empty()) return bad(obstacle);
        drive_wheel(state->w, at, delta);
        return good();
    })};
}

/// What is switched off has a tooltip too.
drive_strokes hover_strokes(const drive_action& a) {
    return {stroke_on(a.widget, [](widget_state* state, int64_t) {
        const QPoint at = drive_spot(state);
        const std::string obstacle = drive_obstacle(state, at, true);
        if (!obstacle.empty()) return bad(obstacle);
        drive_move(state->w, at);
        return good();
    })};
}

/// Moves the pointer to a character; answers why it cannot be reached.
std::string reach_character(widget_state* state, int32_t offset, QPoint* at) {
    auto* area = dynamic_cast<text_widget*>(state->w);
    if (area == nullptr) return drive_full_path(state) + " shows no text of its own";
    *at = area->spot_of(offset);
    if (at->isNull()) return tk_format("the text has no character at %d", offset);
    if (!area->viewport()->rect().contains(*at)) return tk_format("the character at %d is out of view", offset);
    const std::string obstacle = drive_obstacle(state, area->viewport()->mapToParent(*at));
    if (obstacle.empty()) drive_move(area->viewport(), *at);
    return obstacle;
}

drive_strokes character_strokes(const drive_action& a) {
    const int32_t offset = a.number;
    drive_strokes all;
    all.push_back(
        stroke_on(a.widget, [offset, click = a.verb == drive_verb::click_at](widget_state* state, int64_t) {
            QPoint at;
            const std::string obstacle = reach_character(state, offset, &at);
            if (!obstacle.empty()) return bad(obstacle);
            if (click) drive_press(dynamic_cast<text_widget*>(state->w)->viewport(), at);
            return good();
        }));
    if (a.verb == drive_verb::hover_at) return all;
    all.push_back(stroke_on(a.widget, [offset](widget_state* state, int64_t) {
        auto* area = dynamic_cast<text_widget*>(state->w);
        drive_release(area->viewport(), area->spot_of(offset));
        return good();
    }));
    return all;
}

drive_strokes compare_strokes(const drive_action& a) {
    const int64_t limit_ms = a.verb == drive_verb::wait ? a.number : 0;
    return {{[a, limit_ms](int64_t waited) {
        std::string found;
        if (drive_matches(a.widget, a.args[0], a.args[1], &found)) return good();
        if (waited < limit_ms) return again();
        return bad("expected " + a.args[0] + " " + drive_quote(a.args[1]) + ", found " + found);
    }}};
}

drive_strokes file_strokes(const drive_action& a) {
    const int64_t limit_ms = a.verb == drive_verb::wait_file ? a.number : 0;
    return {{[a, limit_ms](int64_t waited) {
        std::string content;
        const bool there = fs_read_all(a.args[0].c_str(), &content);
        if (there && content.find(a.args[1]) != std::string::npos) return good();
        if (waited < limit_ms) return again(look_at_file_again_ms);
        return bad("expected " + drive_quote(a.args[1]) + " in " + a.args[0] + ", found " +
                   (there ? drive_quote(content, 2000) : "no such file"));
    }}};
}

drive_outcome store(const std::string& path, const std::string& content) {
    if (content.empty()) return bad("there is no window to take it from");
    return fs_write_whole(path.c_str(), content) == RET_OK ? good() : bad("cannot write " + path);
}

drive_strokes shot_strokes(const drive_action& a) {
    const drive_stroke_t settle = {[](int64_t) { return good(); }, settle_ms};
    return {settle, {[path = a.args[0]](int64_t) { return store(path, drive_picture().toStdString()); }}};
}

drive_strokes dump_strokes(const drive_action& a) {
    return {{[path = a.args[0]](int64_t) { return store(path, drive_dump()); }}};
}

drive_strokes clipboard_strokes(const drive_action& a) {
    return {{[path = a.args[0]](int64_t) {
        const std::string text = clip_board_get_text();
        return text.empty() ? bad("the clipboard holds no text") : store(path, text);
    }}};
}

drive_strokes drop_strokes(const drive_action& a) {
    return {{[path = a.args[0]](int64_t) {
        return drive_drop(QString::fromStdString(path)) ? good() : bad("no window takes a file now");
    }}};
}

drive_strokes sleep_strokes(const drive_action& a) {
    return {{[](int64_t) { return good(); }, a.number}};
}

drive_strokes close_strokes(const drive_action&) {
    return {{[](int64_t) {
        if (native_window() != nullptr) native_window()->close();
        return good();
    }}};
}

struct verb_strokes {
    drive_verb verb;
    drive_strokes (*make)(const drive_action&);
};
constexpr verb_strokes verbs[] = {
    {drive_verb::pick, pick_strokes},
    {drive_verb::click, [](const drive_action& a) { return click_strokes(a); }},
    {drive_verb::press, press_strokes},
    {drive_verb::type, type_strokes},
    {drive_verb::append, type_strokes},
    {drive_verb::key, key_strokes},
    {drive_verb::wheel, wheel_strokes},
    {drive_verb::hover, hover_strokes},
    {drive_verb::hover_at, character_strokes},
    {drive_verb::click_at, character_strokes},
    {drive_verb::wait, compare_strokes},
    {drive_verb::expect, compare_strokes},
    {drive_verb::expect_file, file_strokes},
    {drive_verb::wait_file, file_strokes},
    {drive_verb::shot, shot_strokes},
    {drive_verb::dump, dump_strokes},
    {drive_verb::clipboard, clipboard_strokes},
    {drive_verb::drop, drop_strokes},
    {drive_verb::sleep, sleep_strokes},
    {drive_verb::close, close_strokes},
};

} // namespace

drive_strokes drive_strokes_of(const drive_action& action) {
    for (const verb_strokes& row : verbs)
        if (row.verb == action.verb) return row.make(action);
    return {};
}

drive_strokes drive_first_strokes() {
    return {{[](int64_t waited) {
                const bool there =
                    native_window() != nullptr && native_window()->isVisible() && top_input_window() != nullptr;
                if (there) native_window()->activateWindow();
                if (there) return good();
                return waited < window_limit_ms ? again() : bad("no window opened");
            }},
            {[](int64_t waited) {
                const bool active = native_window() != nullptr && native_window()->isActiveWindow();
                return active || waited >= focus_limit_ms ? good() : again();
            }}};
}
