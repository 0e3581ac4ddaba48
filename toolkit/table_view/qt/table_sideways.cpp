// Rows that are wider than the view, and the header that goes with them.
#include "toolkit/table_view/qt/table_widget.h"

#include <QLayout>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>

/// The nearest widget of that name; the same name may stand in another window.
QWidget* table_widget::header() {
    const std::string name = property("header").toString().toStdString();
    for (widget_state* around = state_of(this); header_ == nullptr && around != nullptr && !name.empty();
         around = around->parent)
        if (const widget_state* found = live(widget_lookup(handle_of(around), name.c_str()))) header_ = found->w;
    return header_;
}

/// How wide a row has to be for its texts.
void table_widget::measure(const row_widget& row) {
    if (row.cells.empty()) return;
    int needed = row.state->w->layout() == nullptr ? 0 : row.state->w->layout()->minimumSize().width();
    for (const cell_widget* cell : row.cells) {
        cell->ensurePolished(); // before it shows for the first time it has no font of its own
        needed += std::max(0, cell->text_width() - cell->minimumWidth());
    }
    wide_ = std::max(wide_, needed);
}

int table_widget::row_width() const { return std::max(wide_, viewport()->width()); }

void table_widget::move_side_bar() {
    QScrollBar* bar = horizontalScrollBar();
    bar->setPageStep(viewport()->width());
    bar->setSingleStep(side_step);
    bar->setRange(0, row_width() - viewport()->width());
}

void table_widget::place_rows() {
    const int left = -horizontalScrollBar()->value();
    const int width = row_width();
    for (std::size_t i = 0; i < pool_.size(); ++i) {
        const QRect place(left, static_cast<int>(i) * row_height_, width, row_height_);
        QWidget* row = pool_[i].state->w;
        if (pool_[i].index >= 0 && row->geometry() != place) row->setGeometry(place);
    }
    if (QWidget* head = header()) head->setGeometry(left, head->y(), width, head->height());
}

/// False when there is nothing to be seen there, so that the key can mean something else.
bool table_widget::turn_aside(int pixels) {
    QScrollBar* bar = horizontalScrollBar();
    if (bar->maximum() == 0) return false;
    bar->setValue(bar->value() + pixels);
    return true;
}

void table_widget::wheelEvent(QWheelEvent* what) {
    const QPoint turned = what->angleDelta(); // some systems swap the two themselves where Shift is held
    const int notches = turned.y() != 0 ? turned.y() : turned.x();
    const bool aside = (what->modifiers() & Qt::ShiftModifier) != 0;
    if (!aside || !turn_aside(-notches * side_step / 120)) return QAbstractScrollArea::wheelEvent(what);
    what->accept();
}
