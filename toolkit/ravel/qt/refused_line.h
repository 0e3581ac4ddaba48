// A short text below a field: what should stand there instead of a refused value. For toolkit/ only. GUI thread
// only.
#pragma once

#include "toolkit/ravel/qt/detail.h"

/// Lies over the gap below its field, on a ground of its own, and takes neither room in the layout nor the pointer.
/// It shows where the field does, and moves with it.
class refused_line final : public QWidget {
  public:
    refused_line(QWidget* field, const QString& text);

  protected:
    bool eventFilter(QObject* watched, QEvent* what) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void place();
    void follow();

    QWidget* const field_;
    const QString text_;
};

/// Shows `text` below a field in the place of the one before; empty: nothing.
void show_refused_line(widget_state* state, const QString& text);
