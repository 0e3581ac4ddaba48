#include "toolkit/ravel/qt/drive_input.h"

#include "toolkit/core/text.h"
#include "toolkit/ravel/qt/drive_widgets.h"
#include "toolkit/ravel/qt/widget_class.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QApplication>
#include <QBuffer>
#include <QCheckBox>
#include <QComboBox>
#include <QDropEvent>
#include <QFileInfo>
#include <QLineEdit>
#include <QMimeData>
#include <QPainter>
#include <QSpinBox>
#include <QStyleOptionButton>
#include <QStyleOptionComboBox>
#include <QUrl>
#include <QWheelEvent>
#include <QWindow>

// Qt's own way to feed a window what the system would; its test library stands on the same two.
Q_GUI_EXPORT void qt_handleMouseEvent(QWindow* window, const QPointF& local, const QPointF& global,
                                      Qt::MouseButtons state, Qt::MouseButton button, QEvent::Type type,
                                      Qt::KeyboardModifiers mods, int timestamp);
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow* window, QEvent::Type type, int key, Qt::KeyboardModifiers mods,
                                    const QString& text, bool repeated, ushort count);

/// The one door Qt leaves open for marking an event as the system's: only such a wheel turn goes on to the widgets
/// around one that does not want it.
class QSpontaneKeyEvent {
  public:
    static void mark(QEvent* event) { event->setSpontaneous(); }
};

namespace {

/// Presses are a second apart by their own clock, so that two clicks of a script are never a double click.
int next_time(bool new_press) {
    static int now = 1000;
    now += new_press ? 1000 : 1;
    return now;
}

void mouse(QWidget* w, const QPoint& at, QEvent::Type type, bool down, Qt::MouseButton button) {
    QWidget* top = w->window();
    QWindow* window = top->windowHandle();
    if (window == nullptr) return;
    const QPointF local = w->mapTo(top, at);
    qt_handleMouseEvent(window, local, window->mapToGlobal(local), down ? Qt::LeftButton : Qt::NoButton, button,
                        type, Qt::NoModifier, next_time(type == QEvent::MouseButtonPress));
}

struct named_key {
    const char* name;
    int key;
    const char* text;
};
constexpr named_key named_keys[] = {
    {"Tab", Qt::Key_Tab, "\t"},
    {"Enter", Qt::Key_Return, "\r"},
    {"Esc", Qt::Key_Escape, "\x1b"},
    {"Space", Qt::Key_Space, " "},
    {"Backspace", Qt::Key_Backspace, "\b"},
    {"Delete", Qt::Key_Delete, "\x7f"},
    {"Insert", Qt::Key_Insert, ""},
    {"Up", Qt::Key_Up, ""},
    {"Down", Qt::Key_Down, ""},
    {"Left", Qt::Key_Left, ""},
    {"Right", Qt::Key_Right, ""},
    {"Home", Qt::Key_Home, ""},
    {"End", Qt::Key_End, ""},
    {"PageUp", Qt::Key_PageUp, ""},
    {"PageDown", Qt::Key_PageDown, ""},
};

int key_of(const std::string& name, QString* text) {
    for (const named_key& row : named_keys)
        if (name == row.name) {
            *text = QString::fromLatin1(row.text);
            return row.key;
        }
    if (name.size() > 1) return Qt::Key_F1 + tk_atoi(name.c_str() + 1) - 1;
    *text = QString::fromStdString(name);
    return text->at(0).toUpper().unicode();
}

void stroke(int key, Qt::KeyboardModifiers mods, const QString& text) {
    QWindow* window = QGuiApplication::focusWindow();
    if (window == nullptr && native_window() != nullptr) window = native_window()->windowHandle();
    if (window == nullptr) return;
    const QPointer<QWindow> alive(window);
    qt_handleKeyEvent(window, QEvent::KeyPress, key, mods, text, false, 1);
    if (alive != nullptr) qt_handleKeyEvent(window, QEvent::KeyRelease, key, mods, text, false, 1);
}

/// Whether something around the widget cuts the point off, as a scroll area does.
bool clipped(const QWidget* w, const QPoint& at) {
    for (const QWidget* around = w; around != nullptr; around = around->parentWidget()) {
        if (!around->rect().contains(w->mapTo(around, at))) return true;
        if (around->isWindow()) break;
    }
    return false;
}

} // namespace

QPoint drive_spot(const widget_state* state) {
    QWidget* w = state->w;
    if (const auto* box = dynamic_cast<const QCheckBox*>(w)) {
        QStyleOptionButton option;
        option.initFrom(box);
        option.text = box->text();
        option.icon = box->icon();
        const QRect place = box->style()->subElementRect(QStyle::SE_CheckBoxClickRect, &option, box);
        if (state->kind == widget_kind::check_button && place.isValid()) return place.center();
    }
    const auto* combo = dynamic_cast<const QComboBox*>(w);
    if (combo != nullptr && combo->isEditable()) return combo->lineEdit()->geometry().center();
    if (auto* spin = dynamic_cast<QSpinBox*>(w)) {
        const auto* inner = spin->findChild<QLineEdit*>();
        if (inner != nullptr) return inner->geometry().center();
    }
    if (dynamic_cast<cell_widget*>(w) != nullptr) { // a long one may stand partly outside its table
        const QRect seen = drive_part_in_view(w);
        if (!seen.isEmpty()) return seen.center();
    }
    return w->rect().center();
}

QPoint drive_list_spot(const widget_state* state) {
    const auto* combo = dynamic_cast<const QComboBox*>(state->w);
    if (combo == nullptr || !combo->isEditable()) return drive_spot(state);
    QStyleOptionComboBox option;
    option.initFrom(combo);
    option.editable = true;
    option.subControls = QStyle::SC_All;
    return combo->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxArrow, combo).center();
}

std::string drive_obstacle(const widget_state* state, const QPoint& at, bool only_pointing) {
    const QWidget* w = state->w;
    const std::string path = drive_full_path(state);
    if (!w->isVisible()) return path + " is hidden";
    if (!w->isEnabled() && !only_pointing) return path + " is disabled";
    if (const QWidget* top = top_input_window(); top != w && (top == nullptr || !top->isAncestorOf(w)))
        return path + " lies behind " + (top == nullptr ? "nothing" : drive_full_path(state_of(top)));
    if (clipped(w, at)) return path + " is out of view";
    QWidget* native = w->window();
    QWidget* hit = native->childAt(w->mapTo(native, at));
    if (hit == w || (hit != nullptr && w->isAncestorOf(hit))) return {};
    const widget_state* cover = state_around(hit);
    return path + " is covered by " + (cover == nullptr ? "something" : drive_full_path(cover));
}

void drive_move(QWidget* w, const QPoint& at) { mouse(w, at, QEvent::MouseMove, false, Qt::NoButton); }

void drive_drag(QWidget* w, const QPoint& at) { mouse(w, at, QEvent::MouseMove, true, Qt::NoButton); }

void drive_press(QWidget* w, const QPoint& at) {
    const QPointer<QWidget> alive(w);
    drive_move(w, at);
    if (alive != nullptr) mouse(w, at, QEvent::MouseButtonPress, true, Qt::LeftButton);
}

void drive_release(QWidget* w, const QPoint& at) {
    mouse(w, at, QEvent::MouseButtonRelease, false, Qt::LeftButton);
}

QRect drive_part_in_view(const QWidget* w) {
    QRect part = w->rect();
    for (const QWidget* around = w->parentWidget(); around != nullptr; around = around->parentWidget())
        part &= around->rect().translated(-w->mapTo(around, QPoint(0, 0)));
    return part;
}

void drive_wheel(QWidget* w, const QPoint& at, int delta, bool shift) {
    const QPointer<QWidget> alive(w);
    drive_move(w, at);
    if (alive == nullptr || w->window()->windowHandle() == nullptr) return;
    QWindow* window = w->window()->windowHandle();
    const QPointF local = w->mapTo(w->window(), at);
    QWheelEvent turn(local, window->mapToGlobal(local), QPoint(), QPoint(0, delta), Qt::NoButton,
                     shift ? Qt::ShiftModifier : Qt::NoModifier, Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::mark(&turn);
    qApp->notify(window, &turn); // sendEvent would take the mark off again
}

bool drive_drop(const QString& path) {
    QWindow* window = native_window() == nullptr ? nullptr : native_window()->windowHandle();
    if (window == nullptr) return false;
    QMimeData file;
    file.setUrls({QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath())});
    const QPoint at(window->width() / 2, window->height() / 2);
    QDragEnterEvent enter(at, Qt::CopyAction, &file, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &enter);
    if (!enter.isAccepted()) {
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(window, &leave);
        return false;
    }
    QDropEvent drop(at, Qt::CopyAction, &file, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &drop);
    return drop.isAccepted();
}

void drive_stroke(const drive_key& key) {
    Qt::KeyboardModifiers mods = Qt::NoModifier;
    if (key.shift) mods |= Qt::ShiftModifier;
    if (key.control) mods |= Qt::ControlModifier;
    if (key.alt) mods |= Qt::AltModifier;
    QString text;
    int code = key_of(key.name, &text);
    if (code == Qt::Key_Tab && key.shift) code = Qt::Key_Backtab;
    if (key.shift) text = text.toUpper();
    if (key.control || key.alt) text.clear();
    stroke(code, mods, text);
}

void drive_type(const QString& character) {
    if (character == QLatin1String("\n")) return stroke(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    if (character == QLatin1String("\t")) return stroke(Qt::Key_Tab, Qt::NoModifier, character);
    const QChar first = character.at(0);
    const bool ascii = first.unicode() < 0x80;
    stroke(ascii ? first.toUpper().unicode() : int(Qt::Key_unknown),
           ascii && first.isUpper() ? Qt::ShiftModifier : Qt::NoModifier, character);
}

QByteArray drive_picture() {
    QWidget* native = native_window();
    if (native == nullptr || !native->isVisible()) return {};
    QPixmap picture = native->grab();
    {
        QPainter painter(&picture);
        for (QWidget* popup : QApplication::topLevelWidgets()) {
            const bool over = popup->windowType() == Qt::Popup || popup->windowType() == Qt::ToolTip;
            if (popup == native || !popup->isVisible() || !over) continue;
            painter.drawPixmap(native->mapFromGlobal(popup->mapToGlobal(QPoint(0, 0))), popup->grab());
        }
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return picture.save(&buffer, "PNG") ? bytes : QByteArray();
}
