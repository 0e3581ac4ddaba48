// The dimmed area that a dialog's card stands on.
#pragma once

#include "toolkit/ravel/qt/detail.h"

#include <QPointer>
#include <QPushButton>

/// Fills its parent, takes all pointer input, keeps the card in its middle, and gives Enter and Esc their meaning.
class backdrop_widget final : public QWidget {
  public:
    /// Makes the card too, empty.
    explicit backdrop_widget(QWidget* parent);
    QWidget* card() const { return card_; }
    /// To be called when the card has its content.
    void card_is_built();
    /// Sizes the card by its layout and its content, and centres it.
    void place();

  protected:
    bool event(QEvent* what) override;
    void resizeEvent(QResizeEvent* what) override;
    void keyPressEvent(QKeyEvent* what) override;
    void mousePressEvent(QMouseEvent* what) override;
    void mouseReleaseEvent(QMouseEvent* what) override;
    void wheelEvent(QWheelEvent* what) override;

  private:
    void press_button();

    QWidget* card_;
    QPointer<QPushButton> default_;
    QSize wanted_; ///< the layout's size of the card
};
