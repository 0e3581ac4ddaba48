#include "toolkit/ravel/qt/backdrop.h"

#include "toolkit/ravel/qt/window_stack.h"

#include <QKeyEvent>
#include <QLayout>
#include <QPushButton>

namespace {
constexpr int edge = 16; // pixels that stay free around a card
}

backdrop_widget::backdrop_widget(QWidget* parent) : QWidget(parent, Qt::SubWindow), card_(new QWidget(this)) {
    setAttribute(Qt::WA_StyledBackground);
    card_->setAttribute(Qt::WA_StyledBackground);
    setProperty("class", "backdrop");
}

void backdrop_widget::card_is_built() {
    wanted_ = card_->property("layout_size").toSize();
    for (QPushButton* button : card_->findChildren<QPushButton*>()) {
        if (button->isDefault()) default_ = button;
    }
}

void backdrop_widget::place() {
    const QSize room(width() - 2 * edge, height() - 2 * edge);
    QLayout* layout = card_->layout();
    QSize size = wanted_;
    if (layout != nullptr) {
        layout->activate();
        const QSize least = layout->totalMinimumSize();
        size = size.isEmpty() ? layout->totalSizeHint() : size.expandedTo(least);
        size.setWidth(qBound(card_->minimumWidth(), size.width(), card_->maximumWidth()));
        const int natural = layout->hasHeightForWidth() ? layout->totalHeightForWidth(size.width())
                                                        : layout->totalSizeHint().height();
        size.setHeight(qMax(size.height(), natural));
    }
    size = size.expandedTo(card_->minimumSize()).boundedTo(card_->maximumSize()).boundedTo(room);
    card_->setGeometry(QRect(QPoint((width() - size.width()) / 2, (height() - size.height()) / 2), size));
}

bool backdrop_widget::event(QEvent* what) {
    if (what->type() == QEvent::LayoutRequest) place();
    return QWidget::event(what);
}

void backdrop_widget::resizeEvent(QResizeEvent* what) {
    place();
    QWidget::resizeEvent(what);
}

/// Enter is for the button that has the focus, else for the default one.
void backdrop_widget::press_button() {
    auto* focused = dynamic_cast<QPushButton*>(native_window()->focusWidget());
    const bool own = focused != nullptr && card_->isAncestorOf(focused) && focused->isVisible();
    QPushButton* button = own ? focused : default_.data();
    if (button != nullptr && button->isVisible() && button->isEnabled()) button->click();
}

void backdrop_widget::keyPressEvent(QKeyEvent* what) {
    what->accept();
    widget_state* dialog = state_of(card_);
    if (dialog == nullptr || dialog->closed || what->isAutoRepeat()) return;
    if (what->key() == Qt::Key_Escape && dialog->esc_closes) request_close_window(dialog);
    if (what->key() == Qt::Key_Return || what->key() == Qt::Key_Enter) press_button();
}

void backdrop_widget::mousePressEvent(QMouseEvent* what) { what->accept(); }
void backdrop_widget::mouseReleaseEvent(QMouseEvent* what) { what->accept(); }
void backdrop_widget::wheelEvent(QWheelEvent* what) { what->accept(); }
