// The mark of a field that carries something of its own, and the lines that its tooltip has beside the layout's
// text. For toolkit/ only. GUI thread only.
#pragma once

#include "toolkit/ravel/qt/detail.h"

/// A quiet sign over its owner, of which it covers a few pixels: an edge at a field's left, a dot on a tab button.
/// It takes no room in the layout and no pointer, and looks the same on an owner that is switched off.
class mark_widget final : public QWidget {
  public:
    mark_widget(QWidget* owner, bool as_dot);

  protected:
    bool eventFilter(QObject* watched, QEvent* what) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void place();

    const bool as_dot_;
};

/// What a tooltip is made of, as it should show now: why a value was refused, else the layout's text; below it the
/// lines that were added.
void show_tooltip(widget_state* state);
/// To be called before anything that changes it: keeps what the layout says.
void keep_own_tooltip(widget_state* state);
