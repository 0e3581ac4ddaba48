// Registry of widgets, their handlers, and the events that reach handlers directly.
#include "toolkit/core/idle.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/qt/detail.h"
#include "toolkit/ravel/qt/handles.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QWheelEvent>

#include <algorithm>
#include <cstdlib>
#include <unordered_map>

namespace {

std::unordered_map<const QWidget*, widget_state*>& registry() {
    static std::unordered_map<const QWidget*, widget_state*> all;
    return all;
}

uint32_t next_handler_id() {
    static uint32_t last = 0;
    return ++last;
}

widget_state* focus_owner = nullptr;

bool is_enter(const QKeyEvent& key) { return key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter; }

bool inside(const QObject* watched, const QEvent* mouse) {
    const QPointF at = static_cast<const QMouseEvent*>(mouse)->position();
    return static_cast<const QWidget*>(watched)->rect().contains(at.toPoint());
}

constexpr const char* kind_names[] = {
    "window_manager", "window",     "dialog",       "view",   "card",          "label",     "button",
    "tab_button",     "combo_box",  "spin_box",     "edit",   "check_button",  "switch",    "pages",
    "scroll_view",    "scroll_bar", "progress_bar", "mledit", "hscroll_label", "list_view", "",
};
static_assert(std::size(kind_names) == static_cast<std::size_t>(widget_kind::custom) + 1);

/// A click for every stroke. Left to itself a button shows a press for 100 ms first and takes no stroke meanwhile.
bool click_by_shortcut(QWidget* w, const QShortcutEvent& stroke) {
    auto* button = qobject_cast<QAbstractButton*>(w);
    if (button == nullptr || stroke.isAmbiguous()) return false;
    if (button->isCheckable() && (button->focusPolicy() & Qt::ClickFocus) != 0) button->setFocus();
    // What it opens must not run inside the search for shortcuts.
    QMetaObject::invokeMethod(button, &QAbstractButton::click, Qt::QueuedConnection);
    return true;
}

} // namespace

const char* widget_kind_name(widget_kind kind) { return kind_names[static_cast<std::size_t>(kind)]; }

int& from_code::depth() {
    static int level = 0;
    return level;
}

bool tk_check_gui_thread(const char* function) {
    if (idle_is_gui_thread()) return true;
    log_write(LOG_LEVEL_ERROR, tk_format("%s called off the GUI thread!\n", function));
#ifndef NDEBUG
    std::abort();
#else
    return false;
#endif
}

widget_state* state_of(const QWidget* w) {
    const auto found = registry().find(w);
    return found == registry().end() ? nullptr : found->second;
}

widget_state* live(const widget* w, const char* function) {
    if (!tk_check_gui_thread(function)) return nullptr;
    widget_state* state = handle_find(w);
    if (w != nullptr && state == nullptr)
        log_write(LOG_LEVEL_ERROR, tk_format("%s: the widget is gone\n", function));
    return state;
}

QWidget* qwidget_of(const widget* w) {
    const widget_state* state = handle_find(w);
    return state == nullptr ? nullptr : state->w;
}

widget_state* state_around(const QWidget* w) {
    for (; w != nullptr; w = w->parentWidget()) {
        if (widget_state* state = state_of(w)) return state;
    }
    return nullptr;
}

widget_state* adopt_widget(QWidget* w, widget_kind kind, const QString& name, widget_state* parent,
                           const char* type) {
    if (parent == nullptr) parent = state_around(w->parentWidget());
    auto* state = new widget_state(w, kind, name, parent);
    if (type != nullptr) state->type = type;
    wire_widget(state);
    return state;
}

widget_state::widget_state(QWidget* own, widget_kind own_kind, const QString& own_name, widget_state* parent_state)
    : QObject(own), w(own), handle(handle_take(this)), kind(own_kind), name(own_name.toStdString()),
      type(widget_kind_name(own_kind)), parent(parent_state), class_(own->metaObject()) {
    w->setObjectName(own_name);
    registry()[w] = this;
    if (parent != nullptr) parent->children.push_back(this);
    w->installEventFilter(this);
}

widget_state::~widget_state() {
    if (focus_owner == this) focus_owner = nullptr;
    registry().erase(w);
    handle_drop(handle);
    for (widget_state* child : children) child->parent = nullptr;
    if (parent != nullptr) std::erase(parent->children, this);
}

void widget_state::complete() {
    if (build_later) std::exchange(build_later, nullptr)();
}

void widget_state::complete_shown() {
    complete();
    for (widget_state* child : std::vector<widget_state*>(children)) {
        if (!child->w->isHidden()) child->complete_shown();
    }
}

uint32_t widget_state::attach(event_type type_of, event_handler handler) {
    handlers_.push_back({next_handler_id(), type_of, std::make_shared<event_handler>(std::move(handler))});
    return handlers_.back().id;
}

bool widget_state::detach(uint32_t id) {
    return std::erase_if(handlers_, [id](const entry& e) { return e.id == id; }) > 0;
}

bool widget_state::has_handlers(event_type type_of) const {
    return std::any_of(handlers_.begin(), handlers_.end(), [type_of](const entry& e) { return e.type == type_of; });
}

const widget_state::entry* widget_state::find(uint32_t id) const {
    const auto at = std::find_if(handlers_.begin(), handlers_.end(), [id](const entry& e) { return e.id == id; });
    return at == handlers_.end() ? nullptr : &*at;
}

void widget_state::tell_place_later(uint32_t id) {
    const auto tell = [this, id] {
        const entry* e = find(id);
        if (e == nullptr) return;
        const std::shared_ptr<event_handler> handler = e->handler;
        (*handler)(::event{e->type, this->handle, 0});
    };
    QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
}

ret_t widget_state::fire(event_type type_of, int32_t number, const char* path) {
    if (!has_handlers(type_of)) return RET_OK;
    const bool of_text = type_of == event_type::text_hover || type_of == event_type::text_click;
    const ::event what{type_of, handle, of_text ? 0 : number, of_text ? number : -1, path};
    const QPointer<widget_state> self(this);
    const std::vector<entry> now = handlers_;
    for (const entry& e : now) {
        if (e.type != type_of) continue;
        if (find(e.id) == nullptr) continue;
        const ret_t result = (*e.handler)(what);
        if (self == nullptr) return result;
        if (type_of == event_type::request_close && result != RET_OK) return result;
    }
    return RET_OK;
}

bool widget_state::makes_own_clicks() const {
    return kind == widget_kind::button || kind == widget_kind::tab_button || kind == widget_kind::check_button ||
           kind == widget_kind::check_switch;
}

void widget_state::on_press(Qt::MouseButton button) {
    pressed = button == Qt::LeftButton;
    hold_.stop();
    if (pressed && has_handlers(event_type::long_press))
        hold_.start(static_cast<int>(long_press_ms), Qt::PreciseTimer, this);
    fire(event_type::pointer_down);
}

void widget_state::on_release(Qt::MouseButton button, bool inside) {
    hold_.stop();
    const QPointer<widget_state> self(this);
    fire(event_type::pointer_up);
    if (self == nullptr) return;
    const bool click = pressed && button == Qt::LeftButton && inside;
    pressed = false;
    if (click && !makes_own_clicks()) fire(event_type::click);
}

/// The pointer was held on it for the time of a long press.
void widget_state::timerEvent(QTimerEvent*) {
    hold_.stop();
    // A release that a dialog took away was not seen here.
    if (gets_input(w) && (QApplication::mouseButtons() & Qt::LeftButton) != 0) fire(event_type::long_press);
}

bool widget_state::on_key(const QKeyEvent& key) {
    if (kind != widget_kind::edit) return false;
    // Enter takes what was typed; only the next one is for the dialog's default button.
    if (is_enter(key)) return commit_edit_by_enter(this);
    if (key.key() == Qt::Key_Up) return step_edit(this, 1);
    return key.key() == Qt::Key_Down && step_edit(this, -1);
}

void widget_state::leave() {
    has_focus = false;
    const QPointer<widget_state> self(this);
    commit_widget(this);
    if (self != nullptr) fire(event_type::blur);
}

void widget_state::on_focus_in() {
    if (focus_owner == this) return;
    const QPointer<widget_state> self(this);
    // The keyboard focus may have moved while another program's window was the active one; nobody was told then.
    if (widget_state* before = std::exchange(focus_owner, this)) before->leave();
    if (self == nullptr) return;
    has_focus = true;
    fire(event_type::focus);
    if (self == nullptr || kind != widget_kind::edit) return;
    last_text = QString::fromStdString(widget_get_text_utf8(handle));
    edited = false;
}

void widget_state::on_focus_out(Qt::FocusReason reason) {
    // Another program in front, or a menu of the widget's own: the focus comes back to it.
    if (reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason) return;
    if (focus_owner != this) return;
    focus_owner = nullptr;
    leave();
}

bool widget_state::eventFilter(QObject* watched, QEvent* what) {
    if (w->metaObject() != class_) return false; // its destructor runs
    const QPointer<widget_state> self(this);
    switch (what->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        if (w->isEnabled()) on_press(static_cast<QMouseEvent*>(what)->button());
        break;
    case QEvent::MouseButtonRelease:
        if (w->isEnabled()) {
            on_release(static_cast<QMouseEvent*>(what)->button(), inside(watched, what));
        }
        break;
    case QEvent::Wheel:
        // A scroll view tells its handlers itself: the wheel may turn over any of its children.
        if (watched == w && kind != widget_kind::scroll_view && w->isEnabled()) {
            const QPoint turned = static_cast<QWheelEvent*>(what)->angleDelta();
            fire(event_type::wheel, turned.y() != 0 ? turned.y() : turned.x());
        }
        break;
    case QEvent::KeyPress:
        if (watched == w && on_key(*static_cast<QKeyEvent*>(what))) return true;
        break;
    case QEvent::Shortcut:
        if (watched == w && click_by_shortcut(w, *static_cast<QShortcutEvent*>(what))) return true;
        break;
    case QEvent::MouseMove:
        if (hold_.isActive() && !inside(watched, what)) hold_.stop();
        break;
    case QEvent::Hide:
        hold_.stop();
        break;
    case QEvent::Enter:
        if (watched == w) fire(event_type::pointer_enter);
        break;
    case QEvent::Leave:
        if (watched == w) fire(event_type::pointer_leave);
        break;
    case QEvent::FocusIn:
        if (watched == w) on_focus_in();
        break;
    case QEvent::FocusOut:
        if (watched == w) on_focus_out(static_cast<QFocusEvent*>(what)->reason());
        break;
    case QEvent::Move:
        if (watched == w && !from_code::active()) fire(event_type::move);
        break;
    case QEvent::Resize:
        if (watched == w && !from_code::active()) fire(event_type::resize);
        break;
    default:
        break;
    }
    return self == nullptr;
}

void widget_filter_inner(widget_state* state, QWidget* inner) {
    if (inner == nullptr || state->filtered_inner_ == inner) return;
    state->filtered_inner_ = inner;
    inner->installEventFilter(state);
}

QString without_mnemonic(const QString& text) {
    QString plain;
    plain.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'(' && i + 3 < text.size() && text[i + 1] == u'&' && text[i + 2] != u'&' &&
            text[i + 3] == u')') {
            i += 3;
            continue;
        }
        if (text[i] == u'&' && i + 1 < text.size()) ++i;
        plain += text[i];
    }
    return plain;
}
