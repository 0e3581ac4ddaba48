// Which rows of a table are chosen, by pointer and keyboard.
#include "toolkit/table_view/qt/table_widget.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>

#include <algorithm>

void table_widget::set_choice(table_choice what) {
    if (choice_ == table_choice::none) policy_ = focusPolicy();
    choice_ = what;
    choose(std::nullopt);
}

void table_widget::choose(std::optional<table_rows> rows) {
    anchor_ = rows ? int64_t{rows->first} : -1;
    current_ = rows ? int64_t{rows->last} : -1;
    cut_choice();
    ask();
}

std::optional<table_rows> table_widget::chosen() const {
    if (anchor_ < 0) return std::nullopt;
    const auto [low, high] = std::minmax(anchor_, current_);
    return table_rows{static_cast<uint32_t>(low), static_cast<uint32_t>(high)};
}

/// Rows that are gone are not chosen, and a table without rows is no place for the keyboard.
void table_widget::cut_choice() {
    const int64_t last = int64_t{count_} - 1;
    if (std::min(anchor_, current_) > last || choice_ == table_choice::none) anchor_ = current_ = -1;
    anchor_ = std::min(anchor_, last);
    current_ = std::min(current_, last);
    if (choice_ != table_choice::none) setFocusPolicy(count_ > 0 ? policy_ : Qt::NoFocus);
}

/// Chooses the row, or makes what is chosen reach to it, and shows it.
void table_widget::move_to(int64_t row, bool growing) {
    if (count_ == 0) return;
    current_ = std::clamp<int64_t>(row, 0, int64_t{count_} - 1);
    if (!growing || choice_ != table_choice::range || anchor_ < 0) anchor_ = current_;
    const auto at = static_cast<uint32_t>(current_);
    const auto whole = static_cast<uint32_t>(whole_rows());
    if (at < first_row()) show_row(at);
    if (at >= first_row() + whole) show_row(at - whole + 1);
    ask();
}

void table_widget::keyPressEvent(QKeyEvent* what) {
    if (what->key() == Qt::Key_Left && turn_aside(-side_step)) return;
    if (what->key() == Qt::Key_Right && turn_aside(side_step)) return;
    if (choice_ == table_choice::none) return QAbstractScrollArea::keyPressEvent(what);
    if (what->matches(QKeySequence::Copy) && copy && anchor_ >= 0) {
        copy(*chosen());
        return;
    }
    if (what->matches(QKeySequence::SelectAll) && choice_ == table_choice::range) {
        return choose(count_ == 0 ? std::nullopt : std::optional(table_rows{0, count_ - 1}));
    }
    const int64_t from = current_ < 0 ? int64_t{first_row()} : current_;
    const int64_t step = current_ < 0 ? 0 : 1; // the first key chooses what stands on top
    const bool growing = (what->modifiers() & Qt::ShiftModifier) != 0;
    switch (what->key()) {
    case Qt::Key_Up:
        return move_to(from - step, growing);
    case Qt::Key_Down:
        return move_to(from + step, growing);
    case Qt::Key_PageUp:
        return move_to(from - step * whole_rows(), growing);
    case Qt::Key_PageDown:
        return move_to(from + step * whole_rows(), growing);
    case Qt::Key_Home:
        return move_to(0, growing);
    case Qt::Key_End:
        return move_to(int64_t{count_} - 1, growing);
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (take && current_ >= 0) take(static_cast<uint32_t>(current_));
        if (take && current_ >= 0) return;
        break;
    default:
        break;
    }
    what->ignore();
}

/// The row that is seen at a height of the viewport, the nearest one above or below it; -1 without rows. Rows that
/// came since the last filling are not seen yet.
int64_t table_widget::row_at(int y) const {
    if (count_ == 0 || pool_.empty() || pool_.front().index < 0) return -1;
    const int64_t row = pool_.front().index + came_ + (y < 0 ? -1 : y / row_height_);
    return std::clamp<int64_t>(row, 0, int64_t{count_} - 1);
}

void table_widget::mousePressEvent(QMouseEvent* what) {
    const int y = static_cast<int>(what->position().y());
    const auto position = static_cast<std::size_t>(y / row_height_);
    const bool on_row = position < pool_.size() && pool_[position].index >= 0;
    if (choice_ == table_choice::none || what->button() != Qt::LeftButton || !on_row) return what->ignore();
    move_to(row_at(y), (what->modifiers() & Qt::ShiftModifier) != 0);
}

void table_widget::mouseMoveEvent(QMouseEvent* what) {
    if (choice_ == table_choice::range && anchor_ >= 0 && (what->buttons() & Qt::LeftButton) != 0)
        move_to(row_at(static_cast<int>(what->position().y())), true);
}

void table_widget::mouseDoubleClickEvent(QMouseEvent* what) {
    mousePressEvent(what);
    if (what->isAccepted() && take && current_ >= 0) take(static_cast<uint32_t>(current_));
}

void table_widget::focusInEvent(QFocusEvent* what) {
    const bool by_keyboard = what->reason() == Qt::TabFocusReason || what->reason() == Qt::BacktabFocusReason;
    if (by_keyboard && anchor_ < 0 && choice_ != table_choice::none) move_to(first_row(), false);
    ask();
}

void table_widget::focusOutEvent(QFocusEvent*) { ask(); }
