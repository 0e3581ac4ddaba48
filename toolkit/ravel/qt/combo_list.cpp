#include "toolkit/ravel/qt/combo_list.h"

#include "toolkit/ravel/qt/widget_class.h"

#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

namespace {

constexpr int gap = 16; ///< between the names' column and that of the greyed texts

QString hint_of(const QModelIndex& index) { return index.data(combo_widget::hint_role).toString(); }

} // namespace

// A label of the list: the sheet does not reach one of the box itself.
combo_list::combo_list(QComboBox* combo) : QStyledItemDelegate(combo), sample_(new QLabel(combo->view())) {
    sample_->hide();
    sample_->setProperty("class", "hint");
    restyle(sample_);
}

/// The widest name of those that have a greyed text.
int combo_list::names_width(const QModelIndex& index, const QFontMetrics& font) const {
    int width = 0;
    for (int row = 0; row < index.model()->rowCount(); ++row) {
        const QModelIndex other = index.siblingAtRow(row);
        if (!hint_of(other).isEmpty()) width = std::max(width, font.horizontalAdvance(other.data().toString()));
    }
    return width;
}

void combo_list::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QStyledItemDelegate::paint(painter, option, index);
    const QString hint = hint_of(index);
    if (hint.isEmpty()) return;
    QStyleOptionViewItem row = option;
    initStyleOption(&row, index);
    const QWidget* list = option.widget;
    QRect place = list->style()->subElementRect(QStyle::SE_ItemViewItemText, &row, list);
    place.setLeft(place.left() + names_width(index, row.fontMetrics) + gap);
    painter->save();
    painter->setFont(sample_->font());
    painter->setPen(sample_->palette().color(QPalette::WindowText));
    painter->drawText(place, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                      sample_->fontMetrics().elidedText(hint, Qt::ElideRight, place.width()));
    painter->restore();
}

QSize combo_list::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    const QString hint = hint_of(index);
    if (hint.isEmpty()) return size;
    QStyleOptionViewItem row = option;
    initStyleOption(&row, index);
    const int name = row.fontMetrics.horizontalAdvance(row.text);
    size.rwidth() +=
        names_width(index, row.fontMetrics) - name + gap + sample_->fontMetrics().horizontalAdvance(hint);
    return size;
}

bool combo_list::helpEvent(QHelpEvent* what, QAbstractItemView* view, const QStyleOptionViewItem& option,
                           const QModelIndex& index) {
    const QString hint = hint_of(index);
    const QString text = index.data().toString() + (hint.isEmpty() ? QString() : u'\n' + hint);
    const bool cut = sizeHint(option, index).width() > option.rect.width();
    QToolTip::showText(what->globalPos(), cut ? text : QString(), view);
    return true;
}
