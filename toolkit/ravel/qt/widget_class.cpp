#include "toolkit/ravel/qt/widget_class.h"

#include "toolkit/ravel/qt/assets.h"
#include "toolkit/ravel/qt/cell_text.h"
#include "toolkit/ravel/qt/scroll_stays.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOption>
#include <QWheelEvent>

spin_widget::spin_widget(QWidget* parent) : QSpinBox(parent) { setFocusPolicy(Qt::StrongFocus); }

void spin_widget::wheelEvent(QWheelEvent* event) {
    if (hasFocus()) {
        QSpinBox::wheelEvent(event);
    } else {
        event->ignore();
    }
}

ground_widget::ground_widget(QWidget* parent, Qt::WindowFlags flags) : QWidget(parent, flags) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void ground_widget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
}

check_widget::check_widget(QWidget* parent) : QCheckBox(parent) {
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
}

pages_widget::pages_widget(QWidget* parent) : QStackedWidget(parent) {
    QObject::connect(this, &QStackedWidget::currentChanged, this, [this] { updateGeometry(); });
}
QSize pages_widget::sizeHint() const { return currentWidget() == nullptr ? QSize() : currentWidget()->sizeHint(); }
QSize pages_widget::minimumSizeHint() const {
    return currentWidget() == nullptr
               ? QSize()
               : currentWidget()->minimumSizeHint().expandedTo(currentWidget()->minimumSize());
}

scroll_widget::scroll_widget(QWidget* parent) : QScrollArea(parent) {
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    QObject::connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, [this] { content_changed(); });
}

bool scroll_widget::overflows() const {
    return verticalScrollBar()->maximum() > 0 || horizontalScrollBar()->maximum() > 0;
}

/// The layout's bar that moves with it, named by a property; null when it names none.
QScrollBar* scroll_widget::named_bar(const char* property_name) const {
    const QByteArray name = property(property_name).toByteArray();
    if (name.isEmpty() || state_of(this) == nullptr) return nullptr;
    return live_as<QScrollBar>(widget_lookup(widget_get_window(handle_of(this)), name.constData()));
}

/// Shows the bar while there is something to scroll, where the layout asks for that.
void scroll_widget::bar_when_needed() const {
    QScrollBar* bar = property("bar_when_needed").toBool() ? named_bar("scroll_bar") : nullptr;
    if (bar == nullptr) return;
    const bool needed = verticalScrollBar()->maximum() > 0;
    if (!needed) {
        const from_code code;
        bar->setValue(bar->minimum());
    }
    bar->setVisible(needed);
}

void scroll_widget::content_changed() const {
    bar_when_needed();
    if (stays_ != nullptr) stays_->place();
}

void scroll_widget::showEvent(QShowEvent* event) {
    QScrollArea::showEvent(event);
    if (stays_ == nullptr) stays_ = new scroll_stays(this);
    content_changed();
}

/// Where nothing can be scrolled the wheel is for the view around this one.
void scroll_widget::wheelEvent(QWheelEvent* event) {
    widget_state* state = state_of(this);
    if (state == nullptr || !overflows() || !state->has_handlers(event_type::wheel)) {
        event->ignore();
        return;
    }
    event->accept();
    const QPoint turned = event->angleDelta();
    if (!turned.isNull()) state->fire(event_type::wheel, turned.y() != 0 ? turned.y() : turned.x());
}

void scroll_widget::keyPressEvent(QKeyEvent* event) { event->ignore(); }

bool scroll_widget::focusNextPrevChild(bool next) {
    // QScrollArea's own way would scroll behind the bar's back; reveal() follows the focus instead.
    return QWidget::focusNextPrevChild(next);
}

void scroll_widget::scrollContentsBy(int dx, int dy) {
    QScrollArea::scrollContentsBy(dx, dy);
    if (stays_ != nullptr) stays_->place();
}

bool scroll_widget::shows(const QWidget* child, Qt::Orientation along) const {
    const QRect place(child->mapTo(viewport(), QPoint(0, 0)), child->size());
    if (along == Qt::Horizontal) return place.left() >= 0 && place.right() < viewport()->width();
    return !is_before(child, along) && place.bottom() < viewport()->height();
}

/// Whether it begins above what the view shows, or left of it.
bool scroll_widget::is_before(const QWidget* child, Qt::Orientation along) const {
    const QPoint at = child->mapTo(viewport(), QPoint(0, 0));
    if (along == Qt::Horizontal) return at.x() < 0;
    return at.y() < (stays_ == nullptr ? 0 : stays_->covered_above(child));
}

void scroll_widget::turn_to(const QWidget* child, Qt::Orientation along) const {
    QScrollBar* bar = named_bar(along == Qt::Vertical ? "scroll_bar" : "scroll_bar_h");
    const bool back = is_before(child, along);
    while (bar != nullptr && !shows(child, along)) {
        const int before = bar->value();
        bar->triggerAction(back ? QAbstractSlider::SliderSingleStepSub : QAbstractSlider::SliderSingleStepAdd);
        if (bar->value() == before) break;
    }
}

void scroll_widget::reveal(QWidget* child) {
    turn_to(child, Qt::Vertical);
    turn_to(child, Qt::Horizontal);
    const bool seen = shows(child, Qt::Vertical) && shows(child, Qt::Horizontal);
    if (!seen) ensureWidgetVisible(child, 0, 16);
}

void cell_widget::show_text(const QString& text) {
    if (text == shown_ && !shown_.isNull()) return;
    shown_ = text.isNull() ? QStringLiteral("") : text;
    update();
}

QSize cell_widget::sizeHint() const { return {0, fontMetrics().height()}; }

void cell_widget::changeEvent(QEvent* event) {
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange ||
        event->type() == QEvent::PaletteChange || event->type() == QEvent::EnabledChange)
        glyphs_ = nullptr;
    QLabel::changeEvent(event);
}

cell_glyphs& cell_widget::glyphs() const {
    if (glyphs_ == nullptr || scale_ != devicePixelRatioF()) {
        scale_ = devicePixelRatioF();
        glyphs_ = &cell_glyphs_of(font(), palette().color(foregroundRole()), scale_);
    }
    return *glyphs_;
}

int cell_widget::text_width() const {
    const QString text = shown();
    const int own = cell_glyphs::can_show(text) ? glyphs().room(text) : fontMetrics().horizontalAdvance(text);
    return own + width() - contentsRect().width();
}

void cell_widget::paintEvent(QPaintEvent*) {
    const QString text = shown();
    if (text.isEmpty()) return;
    const bool pictures = cell_glyphs::can_show(text);
    const QFontMetrics metrics = fontMetrics();
    const Qt::Alignment place = QStyle::visualAlignment(layoutDirection(), alignment());
    QPoint at = contentsRect().topLeft() + QPoint(0, metrics.ascent());
    if ((place & (Qt::AlignRight | Qt::AlignHCenter)) != 0) {
        const int spare = std::max(0, contentsRect().width() -
                                          (pictures ? glyphs().width(text) : metrics.horizontalAdvance(text)));
        at.rx() += (place & Qt::AlignRight) != 0 ? spare : spare / 2;
    }
    if ((place & (Qt::AlignBottom | Qt::AlignVCenter)) != 0) {
        const int spare = contentsRect().height() - metrics.height();
        at.ry() += (place & Qt::AlignBottom) != 0 ? spare : spare / 2;
    }
    QPainter painter(this);
    if (pictures) return glyphs().draw(&painter, at, glyphs().cut(text, contentsRect().width()));
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(at, text);
}

namespace {
constexpr int step_ms = 60;
constexpr int bar_height = 3;
} // namespace

hscroll_widget::hscroll_widget(QWidget* parent) : QLabel(parent) {
    clock_.setInterval(step_ms);
    QObject::connect(&clock_, &QTimer::timeout, this, [this] {
        if (window()->isMinimized()) return;
        ++phase_;
        update();
    });
}

void hscroll_widget::showEvent(QShowEvent* event) {
    clock_.start();
    QLabel::showEvent(event);
}

void hscroll_widget::hideEvent(QHideEvent* event) {
    clock_.stop();
    QLabel::hideEvent(event);
}

void hscroll_widget::paintEvent(QPaintEvent* event) {
    const int text_width = fontMetrics().horizontalAdvance(text());
    QPainter painter(this);
    if (text_width > width()) {
        constexpr int gap = 48;
        const int x = -(phase_ * 2 % (text_width + gap));
        painter.setPen(palette().color(QPalette::WindowText));
        for (const int at : {x, x + text_width + gap})
            painter.drawText(QRect(at, 0, text_width + gap, height() - bar_height), Qt::AlignVCenter, text());
    } else {
        painter.end();
        QLabel::paintEvent(event);
        painter.begin(this);
    }
    const int run = std::max(24, width() / 4);
    const int left = phase_ * 4 % (width() + run) - run;
    painter.fillRect(0, height() - bar_height, width(), bar_height, style_color("line"));
    painter.fillRect(left, height() - bar_height, run, bar_height, style_color("accent"));
}
