// The few Qt widgets whose behaviour the toolkit changes.
#pragma once

#include "toolkit/ravel/qt/detail.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QScrollArea>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTimer>

/// A combo box that the wheel changes only while it has the focus, so that scrolling a page never edits a value.
class combo_widget final : public QComboBox {
  public:
    /// An option's greyed text for the open list.
    static constexpr int hint_role = Qt::UserRole + 1;

    explicit combo_widget(QWidget* parent);
    bool popup_is_open() const;
    /// As wide as the longest option. (Qt's own way of following the options builds the list of every combo box.)
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    /// To be called after the options changed; with another number of rows an open list gets room for them.
    void options_changed(bool other_count);
    /// To be called after the greyed texts changed; an open list gets room for them.
    void hints_changed();

    void showPopup() override;
    void hidePopup() override;
    /// Its tooltip; before it the whole text, where that is longer than the box.
    QString tooltip_shown() const;

  protected:
    bool event(QEvent* what) override;
    bool eventFilter(QObject* watched, QEvent* what) override;
    void childEvent(QChildEvent* what) override;
    void wheelEvent(QWheelEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    bool text_is_cut() const;
    int list_width() const;
    void refresh_popup();
    void widen_popup();
    void keep_popup_inside();

    mutable QSize hint_;
};

/// The same for a spin box.
class spin_widget final : public QSpinBox {
  public:
    explicit spin_widget(QWidget* parent);
    QLineEdit* inner_edit() const { return lineEdit(); }

  protected:
    void wheelEvent(QWheelEvent* event) override;
};

/// A view that covers all of its place with the sheet's ground: what lies under it is not painted. It shows no
/// focus, so getting or losing the keyboard paints nothing anew.
class ground_widget final : public QWidget {
  public:
    explicit ground_widget(QWidget* parent, Qt::WindowFlags flags = {});

  protected:
    void paintEvent(QPaintEvent* event) override;
    void focusInEvent(QFocusEvent*) override {}
    void focusOutEvent(QFocusEvent*) override {}
};

/// A check button that is no wider than what it shows. As a switch it takes presses everywhere on it.
class check_widget : public QCheckBox {
  public:
    explicit check_widget(QWidget* parent);
};
class switch_widget final : public check_widget {
  public:
    using check_widget::check_widget;

  protected:
    bool hitButton(const QPoint& at) const override { return rect().contains(at); }
};

/// Pages of which only the shown one counts for sizes, so that the others need no styling before they are shown.
class pages_widget final : public QStackedWidget {
  public:
    explicit pages_widget(QWidget* parent);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return false; }
};

class scroll_stays;

/// A scroll area without bars of its own: only scroll_view_set_offset (and the keyboard focus) moves it.
class scroll_widget final : public QScrollArea {
  public:
    explicit scroll_widget(QWidget* parent);
    /// Brings a child that got the focus into view. With the layout's "scroll_bar" and "scroll_bar_h" properties it
    /// turns that bar step by step, as the user would, so that bar and content stay together.
    void reveal(QWidget* child);

  protected:
    void showEvent(QShowEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void scrollContentsBy(int dx, int dy) override;

  private:
    bool shows(const QWidget* child, Qt::Orientation along) const;
    bool is_before(const QWidget* child, Qt::Orientation along) const;
    void turn_to(const QWidget* child, Qt::Orientation along) const;
    bool overflows() const;
    QScrollBar* named_bar(const char* property_name) const;
    void bar_when_needed() const;
    void content_changed() const;

    scroll_stays* stays_ = nullptr; ///< made when it is shown first
};

/// A label of a table row: shows one line of text at little cost. Its text never changes its size hint, so that
/// filling a table lays nothing out.
class cell_widget final : public QLabel {
  public:
    explicit cell_widget(QWidget* parent) : QLabel(parent) {}
    /// What show_text was given last; before, the layout's text.
    QString shown() const { return shown_.isNull() ? text() : shown_; }
    void show_text(const QString& text);
    /// Pixels that its text needs, to be seen uncut.
    int text_width() const;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    class cell_glyphs& glyphs() const;

    QString shown_;
    mutable cell_glyphs* glyphs_ = nullptr; ///< of its font and colour; null: to be looked up
    mutable qreal scale_ = 0;
};

/// A label with a slowly moving bar under its text (text longer than the label moves too); still while it is
/// hidden.
class hscroll_widget final : public QLabel {
  public:
    explicit hscroll_widget(QWidget* parent);
    bool is_moving() const { return clock_.isActive(); }

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    QTimer clock_;
    int phase_ = 0;
};
