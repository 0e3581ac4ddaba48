// Inside of the toolkit: handles and the Qt widgets behind them. For toolkit/ only. GUI thread only.
#pragma once

#include "toolkit/ravel/widget.h"

#include <QBasicTimer>
#include <QList>
#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QString>
#include <QWidget>

class QKeyEvent;

#include <array>
#include <memory>
#include <string>
#include <vector>

enum class widget_kind : uint8_t {
    window_manager,
    window,
    dialog,
    view,
    card,
    label,
    button,
    tab_button,
    combo_box,
    spin_box,
    edit,
    check_button,
    check_switch,
    pages,
    scroll_view,
    scroll_bar,
    progress_bar,
    mledit,
    hscroll_label,
    list_view,
    custom, ///< a registered class; widget_state::type tells which
};
/// The text that widget_type answers for a kind; "" for custom.
const char* widget_kind_name(widget_kind kind);

/// What the toolkit knows of a widget beyond Qt. A QObject child of the widget, found through a registry; its
/// handle goes stale with it. States form their own tree: Qt's helper widgets are not in it.
class widget_state final : public QObject {
  public:
    widget_state(QWidget* own, widget_kind own_kind, const QString& own_name, widget_state* parent_state);
    ~widget_state() override;

    bool eventFilter(QObject* watched, QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

    uint32_t attach(event_type type, event_handler handler);
    bool detach(uint32_t id);
    bool has_handlers(event_type type) const;
    /// Runs the handlers of `type` (`number`: the event's delta, or its offset). A request_close that is refused
    /// answers at once.
    ret_t fire(event_type type, int32_t number = 0, const char* path = nullptr);
    /// Runs one handler of move or resize once, when the layout under way has settled.
    void tell_place_later(uint32_t id);

    QWidget* const w;
    widget* const handle;
    const widget_kind kind;
    std::string name;
    std::string type;
    widget_state* parent;
    std::vector<widget_state*> children; ///< in layout order
    /// A page that nobody has shown or built yet: makes its content. Called through complete().
    std::function<void()> build_later;
    void complete();
    /// Completes it and what will show below it; to be called before it is shown.
    void complete_shown();

    // What the kinds remember between events.
    QString last_text;               ///< combo and spin box: text when handlers were last told; edit: text at focus
    int last_value = 0;              ///< combo box: value when handlers were last told
    bool edited = false;             ///< edit: the user changed the text since the focus came
    bool pressed = false;            ///< a left press that may become a click
    bool tab_moved = false;          ///< tab button: the click under way switched it on
    bool refused = false;            ///< carries the refused mark
    bool esc_closes = true;          ///< dialog: Esc may close it
    bool has_focus = false;          ///< as told to the handlers
    QPointer<QWidget> refused_below; ///< the line below it
    QString refused_text;            ///< what that line says
    QString tooltip;                 ///< the layout's, while others' lines stand in its place or below it
    std::array<QString, 2> tooltip_more; ///< lines below it, by tooltip_part
    QPointer<QWidget> mark;              ///< made when it is marked first
    uint32_t long_press_ms = 1000;
    uint32_t limit_min = 0;            ///< edit: lower bound of edit_set_text_limit
    bool closed = false;               ///< window, dialog: off the stack, waiting to be destroyed
    uint32_t quit_code = 0;            ///< dialog: what it was closed with
    struct modal_run* modal = nullptr; ///< dialog: its loop while dialog_modal runs

  private:
    struct entry {
        uint32_t id = 0;
        event_type type = event_type::click;
        std::shared_ptr<event_handler> handler;
    };
    void on_focus_in();
    void on_focus_out(Qt::FocusReason reason);
    void leave();
    bool on_key(const QKeyEvent& key);
    void on_press(Qt::MouseButton button);
    void on_release(Qt::MouseButton button, bool inside);
    bool makes_own_clicks() const;
    const entry* find(uint32_t id) const;

    const QMetaObject* const class_; ///< another one while the widget is being destroyed
    std::vector<entry> handlers_;
    QWidget* filtered_inner_ = nullptr;
    QBasicTimer hold_; ///< runs while the pointer is held for a long press

    friend void widget_filter_inner(widget_state* state, QWidget* inner);
};

/// Watches an inner helper (a combo box's line edit, an area's viewport) for the pointer events of its owner.
void widget_filter_inner(widget_state* state, QWidget* inner);

inline widget* handle_of(const widget_state* s) { return s == nullptr ? nullptr : s->handle; }

/// True on the GUI thread; elsewhere logs an error that names `function` and, in debug builds, aborts.
bool tk_check_gui_thread(const char* function);

/// The state of a Qt widget; null when it is not one of the toolkit's (or is gone).
widget_state* state_of(const QWidget* w);
inline widget* handle_of(const QWidget* w) { return handle_of(state_of(w)); }
/// The Qt widget behind a handle; null when it is gone.
QWidget* qwidget_of(const widget* w);
/// The state behind a handle, after the thread check; null for null, on a wrong thread, and for a widget that is
/// gone, which is logged as an error of `function`.
widget_state* live(const widget* w, const char* function = __builtin_FUNCTION());
/// The same, cast to a Qt class; null when it is of another class.
template <class T>
T* live_as(const widget* w, const char* function = __builtin_FUNCTION()) {
    widget_state* state = live(w, function);
    return state == nullptr ? nullptr : dynamic_cast<T*>(state->w);
}
/// The nearest state at or above a Qt widget; null when there is none.
widget_state* state_around(const QWidget* w);

/// Makes a Qt widget one of the toolkit's, with its user events wired to handlers. `type` names a custom kind.
/// `parent` null: the nearest state above it.
widget_state* adopt_widget(QWidget* w, widget_kind kind, const QString& name, widget_state* parent = nullptr,
                           const char* type = nullptr);
/// Connects what the user can do to a widget of this kind with its handlers (part of adopt_widget).
void wire_widget(widget_state* state);
/// An edit or an editable combo box was left or got Enter: tells the handlers when the user changed the text.
void commit_widget(widget_state* state);
/// Up (steps above 0) or Down in an edit: true when it is one of whole numbers and has taken the key.
bool step_edit(widget_state* state, int steps);
/// Enter in an edit: true when there was something typed that a handler has taken.
bool commit_edit_by_enter(widget_state* state);

/// While one lives, changes are the program's and fire no handler.
class from_code {
  public:
    from_code() { ++depth(); }
    ~from_code() { --depth(); }
    from_code(const from_code&) = delete;
    from_code& operator=(const from_code&) = delete;
    static bool active() { return depth() > 0; }

  private:
    static int& depth();
};

/// The children that have a name; unnamed containers between are looked through. Of the window manager: its
/// windows, topmost first.
std::vector<widget*> named_children(const widget* parent);

/// The window or dialog on top, the only one that gets input; null when none is open.
QWidget* top_input_window();
/// Whether user input can reach it: visible, enabled, and in the top window (or in a popup that belongs to it).
bool gets_input(const QWidget* w);
/// Whether something else lies over it at a point of its own, so that a press there would not reach it.
bool covered_at(const QWidget* w, const QPoint& own_point);

/// Label text without the mark of the mnemonic: "&Open" gives "Open", "连接(&C)" gives "连接".
QString without_mnemonic(const QString& text);
/// Lets the style sheet look at a widget's dynamic properties again.
void restyle(QWidget* w);
