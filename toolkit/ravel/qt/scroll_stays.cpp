#include "toolkit/ravel/qt/scroll_stays.h"

#include <QEvent>
#include <QMoveEvent>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>

scroll_stays::scroll_stays(QScrollArea* view) : QObject(view), view_(view) {
    if (view->widget() == nullptr) return;
    for (QWidget* w : view->widget()->findChildren<QWidget*>()) {
        const QByteArray how = w->property("stays").toByteArray();
        if (how.isEmpty()) continue;
        kept_.push_back({w, w->geometry(), how == "whole"});
        w->raise();
        w->installEventFilter(this);
    }
}

void scroll_stays::place_one(const kept& one) const {
    QWidget* w = one.w.data();
    if (w == nullptr || !w->isVisible()) return;
    const int offset = view_->verticalScrollBar()->value();
    QRect place = one.home.translated(0, offset);
    if (one.whole) place.setHeight(std::max(0, place.height() - view_->verticalScrollBar()->maximum()));
    w->setGeometry(place);
}

void scroll_stays::place() {
    if (placing_) return;
    placing_ = true;
    for (const kept& one : kept_) place_one(one);
    placing_ = false;
}

/// What moves one but this is the layout: that is its new home.
bool scroll_stays::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (placing_ || (type != QEvent::Move && type != QEvent::Resize && type != QEvent::Show)) return false;
    for (kept& one : kept_) {
        if (one.w != watched) continue;
        if (type == QEvent::Move) one.home.moveTopLeft(static_cast<QMoveEvent*>(event)->pos());
        if (type == QEvent::Resize) one.home.setSize(static_cast<QResizeEvent*>(event)->size());
    }
    place();
    return false;
}

int scroll_stays::covered_above(const QWidget* child) const {
    int covered = 0;
    const int left = child->mapTo(view_->viewport(), QPoint(0, 0)).x();
    for (const kept& one : kept_) {
        const QWidget* w = one.w.data();
        if (w == nullptr || !w->isVisible() || one.whole) continue;
        if (w == child || w->isAncestorOf(child)) continue;
        const QRect over(w->mapTo(view_->viewport(), QPoint(0, 0)), w->size());
        if (left <= over.right() && left + child->width() > over.left())
            covered = std::max(covered, over.bottom() + 1);
    }
    return covered;
}
