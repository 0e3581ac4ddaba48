#include "toolkit/ravel/qt/refused_line.h"

#include "toolkit/ravel/qt/assets.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QEvent>
#include <QPainter>

namespace {

constexpr int text_pixels = 12;
constexpr int line_height = 14; // what lies below the field is covered as little as can be
constexpr int margin = 4;       ///< left and right of the text
constexpr int corner = 3;

/// What it may lie on: the widgets around the field up to the content of what scrolls them, or the window.
bool is_outermost(const QWidget* around) {
    return around->parentWidget() == nullptr || around->isWindow() ||
           dynamic_cast<QAbstractScrollArea*>(around->parentWidget()->parentWidget()) != nullptr;
}

} // namespace

refused_line::refused_line(QWidget* field, const QString& text)
    : QWidget(field->parentWidget()), field_(field), text_(text) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    QFont small = QApplication::font();
    small.setPixelSize(text_pixels);
    setFont(small);
    QObject::connect(field, &QObject::destroyed, this, &QObject::deleteLater);
    follow();
    place();
    setVisible(!field->isHidden());
    raise();
}

/// Watches all that moves the field on what this lies on.
void refused_line::follow() {
    const QSize wanted(fontMetrics().horizontalAdvance(text_) + 2 * margin, line_height);
    QWidget* ground = field_->parentWidget();
    const auto fits = [&] {
        const QPoint at = field_->mapTo(ground, QPoint(0, field_->height()));
        return ground->rect().contains(QRect(at, wanted));
    };
    while (!fits() && !is_outermost(ground)) ground = ground->parentWidget();
    if (ground != parentWidget()) setParent(ground);
    for (QWidget* w = field_; w != ground; w = w->parentWidget()) w->installEventFilter(this);
    ground->installEventFilter(this);
    resize(wanted);
}

/// Below the field, moved to the left where its ground ends.
void refused_line::place() {
    const QPoint below = field_->mapTo(parentWidget(), QPoint(0, field_->height()));
    const int spare = parentWidget()->width() - width();
    const int lowest = parentWidget()->height() - height();
    move(std::max(0, std::min(below.x(), spare)), std::min(below.y(), std::max(0, lowest)));
}

bool refused_line::eventFilter(QObject* watched, QEvent* what) {
    switch (what->type()) {
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::LayoutRequest:
        place();
        break;
    case QEvent::ShowToParent:
        if (watched == field_) show();
        break;
    case QEvent::HideToParent:
        if (watched == field_) hide();
        break;
    default:
        break;
    }
    return false;
}

void refused_line::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(style_color("error-soft"));
    painter.drawRoundedRect(rect(), corner, corner);
    painter.setPen(style_color("error"));
    painter.drawText(rect().adjusted(margin, 0, -margin, 0), Qt::AlignVCenter | Qt::AlignLeft, text_);
}

void show_refused_line(widget_state* state, const QString& text) {
    if (state->refused_text == text && (text.isEmpty() || state->refused_below != nullptr)) return;
    delete state->refused_below.data();
    state->refused_text = text;
    const bool placed = !text.isEmpty() && state->w->parentWidget() != nullptr;
    state->refused_below = placed ? new refused_line(state->w, text) : nullptr;
}

std::string widget_get_refused_line(const widget* w) {
    const widget_state* state = live(w);
    return state == nullptr ? std::string() : state->refused_text.toStdString();
}
