#include "toolkit/ravel/qt/field_mark.h"

#include "toolkit/ravel/qt/assets.h"

#include <QEvent>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int edge_width = 3;
constexpr int corner = 4; ///< of the fields
constexpr int dot_size = 6;
constexpr int dot_from_right = 4;
constexpr int dot_from_top = 5;

bool is_field(widget_kind kind) {
    switch (kind) {
    case widget_kind::combo_box:
    case widget_kind::spin_box:
    case widget_kind::edit:
    case widget_kind::check_button:
    case widget_kind::check_switch:
        return true;
    default:
        return false;
    }
}

} // namespace

mark_widget::mark_widget(QWidget* owner, bool as_dot) : QWidget(owner), as_dot_(as_dot) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    owner->installEventFilter(this);
    place();
}

void mark_widget::place() {
    const QSize around = parentWidget()->size();
    if (as_dot_)
        setGeometry(around.width() - dot_size - dot_from_right, dot_from_top, dot_size, dot_size);
    else
        setGeometry(0, 0, edge_width, around.height());
}

bool mark_widget::eventFilter(QObject* watched, QEvent* what) {
    if (watched == parentWidget() && what->type() == QEvent::Resize) place();
    return false;
}

void mark_widget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath shape;
    if (as_dot_)
        shape.addEllipse(rect());
    else
        shape.addRoundedRect(QRect(0, 0, 3 * corner, height()), corner, corner);
    painter.fillPath(shape, style_color("accent"));
}

void keep_own_tooltip(widget_state* state) {
    const bool bare = !state->refused && state->tooltip_more[0].isEmpty() && state->tooltip_more[1].isEmpty();
    if (bare) state->tooltip = state->w->toolTip();
}

void show_tooltip(widget_state* state) {
    const QString why = state->w->property("refused_why").toString();
    QStringList parts = {state->refused && !why.isEmpty() ? why : state->tooltip};
    for (const QString& more : state->tooltip_more) parts += more;
    parts.removeAll(QString());
    state->w->setToolTip(parts.join(u'\n'));
}

ret_t widget_set_marked(widget* w, bool marked) {
    widget_state* state = live(w);
    if (state == nullptr) return RET_BAD_PARAMS;
    const bool as_dot = state->kind == widget_kind::tab_button;
    if (!as_dot && !is_field(state->kind)) return RET_BAD_PARAMS;
    QWidget* mark = state->mark;
    if (mark == nullptr) {
        if (!marked) return RET_OK;
        mark = new mark_widget(state->w, as_dot);
        state->mark = mark;
    }
    if (mark->isHidden() != marked) return RET_OK;
    mark->setVisible(marked);
    if (marked) mark->raise();
    return RET_OK;
}

bool widget_get_marked(const widget* w) {
    const widget_state* state = live(w);
    const QWidget* mark = state == nullptr ? nullptr : state->mark.data();
    return mark != nullptr && !mark->isHidden();
}

ret_t widget_set_tooltip_more(widget* w, const char* text, tooltip_part part) {
    widget_state* state = live(w);
    if (state == nullptr) return RET_BAD_PARAMS;
    QString& lines = state->tooltip_more[static_cast<std::size_t>(part)];
    const QString wanted = QString::fromUtf8(text == nullptr ? "" : text);
    if (lines == wanted) return RET_OK;
    keep_own_tooltip(state);
    lines = wanted;
    show_tooltip(state);
    return RET_OK;
}
