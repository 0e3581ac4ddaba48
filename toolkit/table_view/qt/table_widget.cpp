#include "toolkit/table_view/qt/table_widget.h"

#include "toolkit/core/log.h"
#include "toolkit/ravel/qt/layout_reader.h"

#include <QScrollBar>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr int fallback_row_height = 28;
constexpr uint32_t rows_max = std::numeric_limits<int>::max() - 1;

} // namespace

table_widget::table_widget(QWidget* parent) : QAbstractScrollArea(parent), row_height_(fallback_row_height) {
    asked_.setSingleShot(true);
    asked_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&asked_, &QTimer::timeout, this, [this] { fill(); });
}

/// What is asked for while a filling waits is part of it.
void table_widget::ask(int pace_ms) {
    const qint64 quiet = since_fill_.isValid() ? since_fill_.elapsed() : pace_ms;
    const int wait = static_cast<int>(std::max<qint64>(0, pace_ms - quiet));
    if (!asked_.isActive() || wait < asked_.remainingTime()) asked_.start(wait);
}

void table_widget::set_rows(uint32_t count) {
    count_ = std::min(count, rows_max);
    if (count_ == 0) wide_ = 0;
    first_ = first_row();
    cut_choice();
    move_bar();
    ask(table_rows_pace_ms);
}

void table_widget::rows_inserted(uint32_t count, uint32_t at_most) {
    count_ = std::min(count_ + std::min(count, rows_max - count_), at_most);
    if (first_ > 0) first_ += std::min(count, rows_max - first_);
    came_ += std::min(count, rows_max - came_);
    if (anchor_ >= 0) {
        anchor_ += count;
        current_ += count;
    }
    cut_choice();
    move_bar();
    ask(table_rows_pace_ms);
}

void table_widget::show_row(uint32_t index) {
    first_ = std::min(index, rows_max);
    move_bar();
    ask();
}

uint32_t table_widget::first_row() const {
    const auto page = static_cast<uint32_t>(viewport()->height() / row_height_);
    return std::min(first_, count_ - std::min(count_, page));
}

int table_widget::visible_rows() const { return (viewport()->height() + row_height_ - 1) / row_height_; }

int table_widget::whole_rows() const { return std::max(1, viewport()->height() / row_height_); }

/// The bar is always where the next filling begins, so that the user turns it from there.
void table_widget::move_bar() {
    const bool moved_before = std::exchange(moving_bar_, true);
    const int whole = whole_rows();
    verticalScrollBar()->setPageStep(whole);
    verticalScrollBar()->setRange(0, std::max(0, static_cast<int>(count_) - whole));
    verticalScrollBar()->setValue(static_cast<int>(first_row()));
    moving_bar_ = moved_before;
}

bool table_widget::fill() {
    if (!isVisible() || filling_) return false;
    asked_.stop();
    since_fill_.start();
    came_ = 0;
    filling_ = true;                             // the bar that moves here asks for nothing
    if (pool_.empty() && count_ > 0) add_row(0); // a row's height is known from the first one on
    const uint32_t first = first_ = first_row();
    move_bar();
    const uint32_t shown = std::min(count_ - first, static_cast<uint32_t>(visible_rows()));
    while (pool_.size() < shown && add_row(first + static_cast<uint32_t>(pool_.size()))) {
    }
    for (std::size_t i = 0; i < pool_.size(); ++i) fill_row(i, first, shown);
    move_side_bar();
    place_rows();
    for (const row_widget& row : pool_) row.state->w->setVisible(row.index >= 0);
    filling_ = false;
    return true;
}

bool table_widget::add_row(uint32_t index) {
    std::string why;
    if (!row_layout_) row_layout_.emplace(property("row_layout").toString());
    widget_state* row = row_layout_->build(viewport(), state_of(this), &why);
    if (row == nullptr) {
        log_write(LOG_LEVEL_ERROR, "table row: " + why + "\n");
        return false;
    }
    row_height_ = row->w->minimumHeight() > 0 ? row->w->minimumHeight() : fallback_row_height;
    pool_.push_back({row, -1, {}});
    if (header() != nullptr)
        for (const auto* cell : row->w->findChildren<cell_widget*>())
            if (cell->maximumWidth() == QWIDGETSIZE_MAX) pool_.back().cells.push_back(cell);
    if (create) create(index, handle_of(row));
    return true;
}

void table_widget::fill_row(std::size_t position, uint32_t first, uint32_t shown) {
    row_widget& row = pool_[position];
    row.index = position < shown ? int64_t{first} + static_cast<int64_t>(position) : -1;
    if (row.index < 0) return;
    if (load) load(first + static_cast<uint32_t>(position), handle_of(row.state));
    measure(row);
}

int64_t table_widget::index_of(const widget_state* row) const {
    for (const row_widget& own : pool_)
        if (own.state == row) return own.index;
    return -1;
}

void table_widget::resizeEvent(QResizeEvent*) { ask(); }
void table_widget::showEvent(QShowEvent*) { ask(); }

void table_widget::scrollContentsBy(int dx, int dy) {
    if (dx != 0) place_rows();
    if (moving_bar_ || dy == 0) return;
    first_ = static_cast<uint32_t>(verticalScrollBar()->value());
    ask();
}
