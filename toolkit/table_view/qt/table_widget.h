// The Qt widget behind a table. For toolkit/table_view only. GUI thread only.
#pragma once

#include "toolkit/ravel/qt/detail.h"
#include "toolkit/ravel/qt/layout_reader.h"
#include "toolkit/ravel/qt/widget_class.h"
#include "toolkit/table_view/table_view.h"

#include <QAbstractScrollArea>
#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>

#include <optional>

/// Pixels that a key or a notch of the wheel moves a table sideways.
constexpr int side_step = 64;

class table_widget final : public QAbstractScrollArea {
  public:
    explicit table_widget(QWidget* parent);

    void set_rows(uint32_t count);
    uint32_t rows() const { return count_; }
    void rows_inserted(uint32_t count, uint32_t at_most);
    void show_row(uint32_t index);
    uint32_t first_row() const;
    /// False while it is not on screen.
    bool fill();
    /// -1 for what is no row of it, or a row kept for later.
    int64_t index_of(const widget_state* row) const;

    void set_choice(table_choice what);
    void choose(std::optional<table_rows> rows);
    std::optional<table_rows> chosen() const;

    table_row_handler load;
    table_row_handler create;
    std::function<ret_t(uint32_t)> take;
    std::function<ret_t(table_rows)> copy;

  protected:
    void resizeEvent(QResizeEvent* what) override;
    void showEvent(QShowEvent* what) override;
    void scrollContentsBy(int dx, int dy) override;
    void wheelEvent(QWheelEvent* what) override;
    void keyPressEvent(QKeyEvent* what) override;
    void mousePressEvent(QMouseEvent* what) override;
    void mouseMoveEvent(QMouseEvent* what) override;
    void mouseDoubleClickEvent(QMouseEvent* what) override;
    void focusInEvent(QFocusEvent* what) override;
    void focusOutEvent(QFocusEvent* what) override;

  private:
    struct row_widget {
        widget_state* state;
        int64_t index;                         ///< -1: kept for later, hidden
        std::vector<const cell_widget*> cells; ///< as wide as their texts
    };
    void ask(int pace_ms = table_fill_pace_ms);
    void move_bar();
    bool add_row(uint32_t index);
    void fill_row(std::size_t position, uint32_t first, uint32_t shown);
    QWidget* header();
    void measure(const row_widget& row);
    int row_width() const;
    void move_side_bar();
    void place_rows();
    bool turn_aside(int pixels);
    int visible_rows() const;
    int whole_rows() const;
    void cut_choice();
    void move_to(int64_t row, bool growing);
    int64_t row_at(int y) const;

    std::optional<part_layout> row_layout_; ///< from the first row on
    std::vector<row_widget> pool_;          ///< from the top
    QTimer asked_;                          ///< runs while a filling is asked for
    QElapsedTimer since_fill_;
    uint32_t count_ = 0;
    table_choice choice_ = table_choice::none;
    Qt::FocusPolicy policy_ = Qt::NoFocus; ///< the layout's, for when there are rows to choose
    int64_t anchor_ = -1;                  ///< where a range began; -1: nothing is chosen
    int64_t current_ = -1;                 ///< its other end, which the keys move
    uint32_t came_ = 0;  ///< rows inserted above since the last filling: what shows has lower indexes by so many
    uint32_t first_ = 0; ///< where the next filling begins, as far as there are rows below
    int row_height_;
    QPointer<QWidget> header_; ///< null until it is looked for, or when there is none
    int wide_ = 0;             ///< pixels of the widest row that was seen since the table was empty
    bool filling_ = false;
    bool moving_bar_ = false; ///< by the program: nothing is asked for
};
