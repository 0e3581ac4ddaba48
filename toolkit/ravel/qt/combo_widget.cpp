#include "toolkit/ravel/qt/combo_list.h"
#include "toolkit/ravel/qt/widget_class.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCursor>
#include <QHelpEvent>
#include <QLineEdit>
#include <QPainter>
#include <QStyleOptionComboBox>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>

namespace {

constexpr int edit_margin = 2; // that Qt leaves beside a line edit's text

QRect text_place(const QLineEdit* edit) { return edit->contentsRect().adjusted(edit_margin, 0, -edit_margin, 0); }

} // namespace

combo_widget::combo_widget(QWidget* parent) : QComboBox(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setInsertPolicy(QComboBox::NoInsert);
    setMaxVisibleItems(16);
}

void combo_widget::wheelEvent(QWheelEvent* event) {
    if (hasFocus()) {
        QComboBox::wheelEvent(event);
    } else {
        event->ignore();
    }
}

QSize combo_widget::sizeHint() const {
    if (hint_.isValid()) return hint_;
    ensurePolished();
    int width = fontMetrics().horizontalAdvance(QStringLiteral("00000"));
    for (int row = 0; row < count(); ++row) width = std::max(width, fontMetrics().horizontalAdvance(itemText(row)));
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QSize content(width + 2, fontMetrics().height());
    hint_ = style()->sizeFromContents(QStyle::CT_ComboBox, &option, content, this);
    return hint_;
}

void combo_widget::options_changed(bool other_count) {
    hint_ = QSize();
    updateGeometry();
    if (!other_count) return;
    refresh_popup();
    // What leaves no choice shows as fixed.
    const bool fixed = count() == 1 && !isEditable();
    if (property("fixed").toBool() == fixed) return;
    setProperty("fixed", fixed);
    restyle(this);
}

void combo_widget::showPopup() {
    if (dynamic_cast<combo_list*>(itemDelegate()) == nullptr) {
        setItemDelegate(new combo_list(this));
        view()->setTextElideMode(Qt::ElideMiddle);
    }
    widen_popup();
    // A box that is narrow for its place shows its options whole all the same.
    if (property("wide_list").toBool()) view()->setMinimumWidth(std::min(list_width(), window()->width() / 2));
    QComboBox::showPopup();
    keep_popup_inside();
}

void combo_widget::hints_changed() {
    if (!popup_is_open()) return;
    const int width = view()->minimumWidth();
    widen_popup();
    if (view()->minimumWidth() != width) refresh_popup();
}

/// A list with greyed texts needs more room than the box has.
void combo_widget::widen_popup() {
    const bool any = std::ranges::any_of(combo_hints(this), [](const QString& hint) { return !hint.isEmpty(); });
    if (!any && view()->minimumWidth() == 0) return;
    const bool scrolls = count() > maxVisibleItems();
    const int frame = 2 * view()->frameWidth() + (scrolls ? style()->pixelMetric(QStyle::PM_ScrollBarExtent) : 0);
    const int wanted = any ? view()->sizeHintForColumn(modelColumn()) + frame : 0;
    view()->setMinimumWidth(std::min(wanted, window()->width()));
}

void combo_widget::keep_popup_inside() {
    QWidget* list = view()->window();
    if (view()->minimumWidth() == 0 || list == window()) return;
    const int most = window()->mapToGlobal(QPoint(window()->width(), 0)).x() - list->width();
    if (list->x() > most) list->move(most, list->y());
}

int combo_widget::list_width() const {
    constexpr int around = 32; // margins of a row, and a bar
    int width = 0;
    for (int row = 0; row < count(); ++row) width = std::max(width, fontMetrics().horizontalAdvance(itemText(row)));
    return width + around;
}

bool combo_widget::text_is_cut() const {
    const int wanted = fontMetrics().horizontalAdvance(currentText());
    if (lineEdit() != nullptr) return wanted > text_place(lineEdit()).width();
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect field = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    return wanted > field.width() - 2;
}

QString combo_widget::tooltip_shown() const {
    if (!text_is_cut()) return toolTip();
    return toolTip().isEmpty() ? currentText() : currentText() + u'\n' + toolTip();
}

bool combo_widget::event(QEvent* what) {
    if (what->type() != QEvent::ToolTip) return QComboBox::event(what);
    QToolTip::showText(static_cast<QHelpEvent*>(what)->globalPos(), tooltip_shown(), this);
    return true;
}

/// Watches what is typed into: while nobody does, a text that is too long shows its beginning and its end.
bool combo_widget::eventFilter(QObject* watched, QEvent* what) {
    QLineEdit* edit = lineEdit();
    if (watched != edit || what->type() != QEvent::Paint || edit->hasFocus() || !text_is_cut())
        return QComboBox::eventFilter(watched, what);
    const QRect place = text_place(edit);
    QPainter painter(edit);
    painter.setPen(edit->palette().color(QPalette::Text));
    painter.drawText(place, Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(edit->text(), Qt::ElideMiddle, place.width()));
    return true;
}

void combo_widget::childEvent(QChildEvent* what) {
    QComboBox::childEvent(what);
    const bool is_known = what->polished() && lineEdit() != nullptr && what->child() == lineEdit();
    if (is_known) lineEdit()->installEventFilter(this);
}

void combo_widget::changeEvent(QEvent* event) {
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) hint_ = QSize();
    QComboBox::changeEvent(event);
}

bool combo_widget::popup_is_open() const {
    // view() would create the list; before the first opening there is none.
    const QWidget* popup = QApplication::activePopupWidget();
    return popup != nullptr && popup->parentWidget() == this && popup->isVisible();
}

/// While the list had the pointer nobody said that it left the box.
void combo_widget::hidePopup() {
    QComboBox::hidePopup();
    if (!underMouse() || rect().contains(mapFromGlobal(QCursor::pos()))) return;
    QEvent left(QEvent::Leave);
    setAttribute(Qt::WA_UnderMouse, false);
    QCoreApplication::sendEvent(this, &left);
    update();
}

/// Shows an open list again, with the same row lit.
void combo_widget::refresh_popup() {
    if (!popup_is_open() || count() == 0) return;
    const QModelIndex lit = view()->currentIndex();
    showPopup();
    if (lit.isValid()) view()->setCurrentIndex(lit);
}
