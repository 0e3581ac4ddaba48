// The parts of a scroll view's content that stay in view while the rest moves under them. For toolkit/ravel only.
// GUI thread only.
#pragma once

#include <QObject>
#include <QPointer>
#include <QRect>

#include <vector>

class QScrollArea;
class QWidget;

/// Looks after the widgets of a content that have the layout's property "stays": "top" keeps its place in the view,
/// "whole" also gets no higher than the view leaves it. They scroll with the content from side to side.
class scroll_stays final : public QObject {
  public:
    explicit scroll_stays(QScrollArea* view);

    /// To be called when the content has moved or the view has another size.
    void place();
    /// How many of the view's upper pixels are covered for `child`, by what stays over it.
    int covered_above(const QWidget* child) const;

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct kept {
        QPointer<QWidget> w;
        QRect home; ///< where the layout put it
        bool whole = false;
    };
    void place_one(const kept& one) const;

    QScrollArea* const view_;
    std::vector<kept> kept_;
    bool placing_ = false;
};
