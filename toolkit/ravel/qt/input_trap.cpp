#include "toolkit/ravel/qt/input_trap.h"

#include "toolkit/ravel/qt/widget_class.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QScopedValueRollback>
#include <QUrl>

#include <algorithm>

namespace {

/// Whether a widget belongs to the top window: stands in it, in its backdrop, or in a popup or menu of it.
bool belongs_to_top(const QWidget* w) {
    const QWidget* top = top_input_window();
    const widget_state* state = top == nullptr ? nullptr : state_of(top);
    const QWidget* shell = state == nullptr ? nullptr : shell_of(state);
    if (shell == nullptr) return true;
    for (; w != nullptr; w = w->parentWidget()) {
        if (w == shell) return true;
        if (w == native_window()) return false;
    }
    return true; // none of ours (a tooltip, a menu without an owner)
}

/// Whether a button of the top window that can be pressed has this key for its shortcut: it comes before what a
/// field would do with the key.
bool is_button_shortcut(const QEvent* what) {
    const QWidget* top = top_input_window();
    if (top == nullptr) return false;
    const QKeyCombination keys = static_cast<const QKeyEvent*>(what)->keyCombination();
    if (keys.keyboardModifiers() == Qt::NoModifier) return false;
    const auto buttons = top->findChildren<QAbstractButton*>();
    return std::any_of(buttons.begin(), buttons.end(), [&keys](const QAbstractButton* button) {
        return button->shortcut() == QKeySequence(keys) && button->isEnabled() && button->isVisible();
    });
}

/// The one file that a drag brings; empty when it brings anything else.
QString dragged_file(const QMimeData* brought) {
    const QList<QUrl> urls = brought == nullptr ? QList<QUrl>() : brought->urls();
    return urls.size() == 1 && urls.front().isLocalFile() ? urls.front().toLocalFile() : QString();
}

/// Files are for the top window, whatever widget they are dropped on; no field takes their names as text. The
/// handler runs once the drag is over: whoever dragged waits for the answer.
bool take_file(QEvent* what) {
    auto* drag = static_cast<QDropEvent*>(what);
    const QString file = dragged_file(drag->mimeData());
    if (file.isEmpty()) return false;
    const widget_state* top = top_input_window() == nullptr ? nullptr : state_of(top_input_window());
    drag->setAccepted(top != nullptr && top->has_handlers(event_type::drop));
    if (!drag->isAccepted()) return true;
    drag->setDropAction(Qt::CopyAction);
    if (what->type() != QEvent::Drop) return true;
    const auto tell = [file] {
        widget_state* now = top_input_window() == nullptr ? nullptr : state_of(top_input_window());
        if (now != nullptr) now->fire(event_type::drop, 0, file.toUtf8().constData());
    };
    QMetaObject::invokeMethod(native_window(), tell, Qt::QueuedConnection);
    return true;
}

class input_trap final : public QObject {
  public:
    bool eventFilter(QObject* watched, QEvent* what) override {
        switch (what->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::Wheel:
        case QEvent::ContextMenu:
        case QEvent::Shortcut:
            return watched->isWidgetType() && !belongs_to_top(static_cast<QWidget*>(watched));
        case QEvent::ShortcutOverride:
            return watched->isWidgetType() &&
                   (!belongs_to_top(static_cast<QWidget*>(watched)) || is_button_shortcut(what));
        case QEvent::DragEnter:
        case QEvent::DragMove:
        case QEvent::Drop:
            return watched->isWidgetType() && (take_file(what) || !belongs_to_top(static_cast<QWidget*>(watched)));
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            return watched->isWidgetType() && key_astray(static_cast<QWidget*>(watched), what);
        default:
            return false;
        }
    }

  private:
    /// A key for a covered window, or for none, goes to the top one, which takes the focus at that.
    bool key_astray(const QWidget* w, QEvent* what) {
        // A top window that takes neither key nor focus hands the key to its parents, which would hand it back.
        if (what == handed_on_) return !belongs_to_top(w);
        // Qt leaves the focus on a hidden widget when it finds no other that takes it.
        if (belongs_to_top(w) && w->isVisible()) return false;
        const QWidget* focus = native_window()->focusWidget();
        if (focus != nullptr && focus != native_window() && focus->isVisible() && belongs_to_top(focus)) {
            return w != native_window(); // what nobody of the top window took ends here
        }
        QWidget* top = top_input_window();
        if (what->type() == QEvent::KeyPress && top->isEnabled()) {
            const QScopedValueRollback<const QEvent*> until_over(handed_on_, what); // it may run a loop
            top->setFocus(Qt::OtherFocusReason);
            QCoreApplication::sendEvent(top, what);
        }
        return true;
    }

    const QEvent* handed_on_ = nullptr;
};

input_trap* trap = nullptr;
QMetaObject::Connection focus_watch;

/// A field that the keyboard reaches is shown, whatever scroll view it hides in.
void reveal_focus(QWidget*, QWidget* now) {
    if (now == nullptr || QApplication::mouseButtons() != Qt::NoButton) return;
    for (QWidget* w = now->parentWidget(); w != nullptr; w = w->parentWidget()) {
        if (auto* area = dynamic_cast<scroll_widget*>(w)) area->reveal(now);
    }
}

} // namespace

void install_input_trap() {
    trap = new input_trap;
    qApp->installEventFilter(trap);
    focus_watch = QObject::connect(qApp, &QApplication::focusChanged, reveal_focus);
}

void remove_input_trap() {
    QObject::disconnect(focus_watch);
    delete trap;
    trap = nullptr;
}

bool gets_input(const QWidget* w) {
    return w != nullptr && w->isEnabled() && w->isVisibleTo(native_window()) && belongs_to_top(w);
}

bool covered_at(const QWidget* w, const QPoint& own_point) {
    const QWidget* native = native_window();
    if (native == nullptr || !native->isAncestorOf(w)) return false;
    const QWidget* there = native->childAt(w->mapTo(native, own_point));
    return there != w && (there == nullptr || !w->isAncestorOf(there));
}
