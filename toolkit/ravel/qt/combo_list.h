// The rows of a combo box's open list.
#pragma once

#include "toolkit/ravel/qt/combo.h"

#include <QLabel>
#include <QStyledItemDelegate>

/// Rows as the style sheet has them, each with its greyed text in a column of its own; one that is too long for the
/// list tells its whole text.
class combo_list final : public QStyledItemDelegate {
  public:
    explicit combo_list(QComboBox* combo);
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* what, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

  private:
    int names_width(const QModelIndex& index, const QFontMetrics& font) const;

    QLabel* const sample_; ///< never shown: has the font and the colour that the sheet gives to such texts
};
