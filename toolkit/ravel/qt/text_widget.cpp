#include "toolkit/ravel/qt/text_widget.h"

#include "toolkit/ravel/qt/assets.h"

#include <QApplication>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>

namespace {

constexpr const char* color_names[] = {"differs", "at-hand"}; // by text_mark_kind

} // namespace

text_widget::text_widget(QWidget* parent) : QPlainTextEdit(parent) {
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setLineWrapMode(QPlainTextEdit::WidgetWidth);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setMouseTracking(true);
}

void text_widget::show_text(const QString& text) {
    const int place = verticalScrollBar()->value();
    set_marks({});
    bytes_of_units_.clear();
    replace_text(text);
    verticalScrollBar()->setValue(place);
    const int32_t end = bytes_of_units().back();
    if (hovered_ >= end) hovered_ = -1;
}

/// Only what differs, where nothing moves: laid out once, where a new text is laid out twice.
void text_widget::replace_text(const QString& text) {
    const QString old = toPlainText();
    if (old.size() != text.size()) return setPlainText(text);
    const auto [first, first_new] = std::mismatch(old.begin(), old.end(), text.begin());
    if (first == old.end()) return;
    const auto last = std::mismatch(old.rbegin(), old.rend(), text.rbegin()).first.base();
    const auto from = static_cast<int>(first - old.begin());
    const auto to = static_cast<int>(last - old.begin());
    QTextCursor place(document());
    place.setPosition(from);
    place.setPosition(to, QTextCursor::KeepAnchor);
    place.insertText(text.mid(from, to - from));
}

// ---- places in the text

/// Where each UTF-16 unit begins in the UTF-8 text; at last, its end.
const std::vector<int32_t>& text_widget::bytes_of_units() const {
    if (!bytes_of_units_.empty()) return bytes_of_units_;
    const QString text = toPlainText();
    bytes_of_units_.reserve(static_cast<std::size_t>(text.size()) + 1);
    int32_t bytes = 0;
    for (const QChar unit : text) {
        bytes_of_units_.push_back(bytes);
        // The two halves of a pair share four bytes.
        bytes += unit.unicode() < 0x80 ? 1 : unit.unicode() < 0x800 || unit.isSurrogate() ? 2 : 3;
    }
    bytes_of_units_.push_back(bytes);
    return bytes_of_units_;
}

int text_widget::unit_of(int32_t offset) const {
    const std::vector<int32_t>& bytes = bytes_of_units();
    const auto at = std::lower_bound(bytes.begin(), bytes.end(), offset);
    return static_cast<int>(std::min(at, bytes.end() - 1) - bytes.begin());
}

int32_t text_widget::offset_at(const QPoint& at) const {
    for (QTextBlock block = firstVisibleBlock(); block.isValid(); block = block.next()) {
        const QRectF place = blockBoundingGeometry(block).translated(contentOffset());
        if (place.top() > at.y()) break;
        const QTextLayout* layout = block.layout();
        for (int i = 0; layout != nullptr && i < layout->lineCount(); ++i) {
            const QTextLine line = layout->lineAt(i);
            if (!line.naturalTextRect().translated(place.topLeft()).contains(at)) continue;
            const int unit = line.xToCursor(at.x() - place.left(), QTextLine::CursorOnCharacter);
            if (unit >= line.textStart() + line.textLength()) return -1;
            return bytes_of_units()[static_cast<std::size_t>(block.position() + unit)];
        }
    }
    return -1;
}

QPoint text_widget::spot_of(int32_t offset) const {
    const int unit = unit_of(offset);
    const QTextBlock block = document()->findBlock(unit);
    if (offset < 0 || offset >= bytes_of_units().back() || !block.isValid()) return {};
    const QTextLine line = block.layout()->lineForTextPosition(unit - block.position());
    if (!line.isValid()) return {};
    const QPointF corner = blockBoundingGeometry(block).translated(contentOffset()).topLeft();
    const qreal left = line.cursorToX(unit - block.position());
    const qreal right = line.cursorToX(unit - block.position() + 1);
    return (corner + QPointF((left + right) / 2, line.y() + line.height() / 2)).toPoint();
}

// ---- the pointer

void text_widget::hover(const QPoint& at) {
    pointer_ = at;
    hover_to(viewport()->rect().contains(at) ? offset_at(at) : -1);
}

void text_widget::hover_to(int32_t offset) {
    if (offset == hovered_) return;
    hovered_ = offset;
    widget_state* state = state_of(this);
    if (state != nullptr && !from_code::active()) state->fire(event_type::text_hover, offset);
}

bool text_widget::viewportEvent(QEvent* event) {
    const QPointer<text_widget> self(this);
    const bool taken = QPlainTextEdit::viewportEvent(event);
    if (self == nullptr) return taken;
    switch (event->type()) {
    case QEvent::MouseMove:
        if (static_cast<QMouseEvent*>(event)->buttons() == Qt::NoButton)
            hover(static_cast<QMouseEvent*>(event)->pos());
        break;
    case QEvent::Leave:
        hover({-1, -1});
        break;
    case QEvent::MouseButtonPress:
        clicking_ = static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton;
        pressed_at_ = static_cast<QMouseEvent*>(event)->pos();
        break;
    case QEvent::MouseButtonDblClick:
        clicking_ = false;
        break;
    case QEvent::MouseButtonRelease:
        released(*static_cast<QMouseEvent*>(event));
        break;
    default:
        break;
    }
    return taken;
}

void text_widget::released(const QMouseEvent& mouse) {
    const bool click = std::exchange(clicking_, false) && mouse.button() == Qt::LeftButton &&
                       !textCursor().hasSelection() &&
                       (mouse.pos() - pressed_at_).manhattanLength() < QApplication::startDragDistance();
    const int32_t offset = click ? offset_at(mouse.pos()) : -1;
    widget_state* state = state_of(this);
    if (offset >= 0 && state != nullptr) state->fire(event_type::text_click, offset);
}

/// What moves under a still pointer is another character.
void text_widget::scrollContentsBy(int dx, int dy) {
    QPlainTextEdit::scrollContentsBy(dx, dy);
    if (hovered_ >= 0 && !from_code::active()) hover(pointer_);
}

// ---- marks

void text_widget::set_marks(const std::vector<text_mark>& marks) {
    if (marks == marks_) return;
    marks_ = marks;
    show_marks();
}

void text_widget::show_marks() {
    QList<QTextEdit::ExtraSelection> grounds;
    for (const text_mark& mark : marks_) {
        QTextEdit::ExtraSelection ground;
        ground.cursor = QTextCursor(document());
        ground.cursor.setPosition(unit_of(mark.offset));
        ground.cursor.setPosition(unit_of(mark.offset + mark.length), QTextCursor::KeepAnchor);
        ground.format.setBackground(style_color(color_names[static_cast<std::size_t>(mark.kind)]));
        grounds += ground;
    }
    setExtraSelections(grounds);
}

/// The theme's other colours.
void text_widget::changeEvent(QEvent* event) {
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::StyleChange && !marks_.empty()) show_marks();
}

// ---- for everybody

ret_t mledit_set_marks(widget* w, const std::vector<text_mark>& marks) {
    auto* area = live_as<text_widget>(w);
    if (area == nullptr) return RET_BAD_PARAMS;
    for (const text_mark& mark : marks)
        if (mark.offset < 0 || mark.length < 0 || mark.offset > INT32_MAX - mark.length) return RET_BAD_PARAMS;
    const from_code code;
    area->set_marks(marks);
    return RET_OK;
}

std::vector<text_mark> mledit_get_marks(const widget* w) {
    const auto* area = live_as<text_widget>(w);
    return area == nullptr ? std::vector<text_mark>() : area->marks();
}

int32_t mledit_get_hovered(const widget* w) {
    const auto* area = live_as<text_widget>(w);
    return area == nullptr ? -1 : area->hovered();
}
