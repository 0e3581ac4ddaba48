#include "toolkit/ravel/qt/combo.h"

#include "toolkit/ravel/combo_hints.h"
#include "toolkit/ravel/qt/widget_class.h"

#include <QLineEdit>

namespace {

/// What is shown now is known: only the user's next change is news.
void forget_change(QComboBox* combo) {
    widget_state* state = state_of(combo);
    if (state == nullptr) return;
    state->last_text = combo->currentText();
    state->last_value = combo_value(combo);
}

int index_of_text(const QComboBox* combo, const QString& text) {
    return combo->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
}

/// Keeps what an editable combo box shows, and the cursor in it, while its options change.
class kept_text {
  public:
    explicit kept_text(const QComboBox* combo) : edit_(combo->lineEdit()) {
        if (edit_ == nullptr) return;
        text_ = edit_->text();
        cursor_ = edit_->cursorPosition();
    }
    ~kept_text() {
        if (edit_ == nullptr || edit_->text() == text_) return;
        edit_->setText(text_);
        edit_->setCursorPosition(cursor_);
    }
    kept_text(const kept_text&) = delete;
    kept_text& operator=(const kept_text&) = delete;

  private:
    QLineEdit* edit_;
    QString text_;
    int cursor_ = 0;
};

/// Makes the rows those of `options` in place: an open list keeps showing, and keeps its place.
void replace_rows(QComboBox* combo, const std::vector<std::pair<int32_t, std::string>>& options) {
    const int wanted = static_cast<int>(options.size());
    for (int row = 0; row < wanted; ++row) {
        const auto& [value, text] = options[static_cast<std::size_t>(row)];
        const QString label = QString::fromStdString(text);
        if (row >= combo->count()) {
            combo->addItem(label, value);
            continue;
        }
        if (combo->itemText(row) != label) {
            combo->setItemText(row, label);
            combo->setItemData(row, QVariant(), combo_widget::hint_role);
        }
        if (combo->itemData(row) != QVariant(value)) combo->setItemData(row, value);
    }
    while (combo->count() > wanted) combo->removeItem(combo->count() - 1);
}

} // namespace

ret_t combo_set_text(QWidget* w, const QString& text) {
    auto* combo = static_cast<QComboBox*>(w);
    const int index = index_of_text(combo, text);
    if (index < 0 && !combo->isEditable()) return RET_FAIL;
    combo->setCurrentIndex(index);
    if (combo->isEditable()) combo->setEditText(text);
    forget_change(combo);
    return RET_OK;
}

int combo_value(QWidget* w) {
    const auto* combo = static_cast<QComboBox*>(w);
    int index = combo->currentIndex();
    if (combo->isEditable() && (index < 0 || combo->itemText(index) != combo->currentText()))
        index = index_of_text(combo, combo->currentText());
    if (index < 0) return -1;
    return combo->itemData(index).toInt();
}

ret_t combo_set_value(QWidget* w, int value) {
    auto* combo = static_cast<QComboBox*>(w);
    const int index = combo->findData(value);
    combo->setCurrentIndex(index);
    if (index < 0 && combo->isEditable()) combo->clearEditText();
    forget_change(combo);
    return RET_OK;
}

ret_t combo_box_append_option(widget* w, int32_t value, const char* text) {
    auto* combo = live_as<combo_widget>(w);
    if (combo == nullptr || text == nullptr) return RET_BAD_PARAMS;
    const from_code code;
    {
        const kept_text keep(combo);
        const bool chosen = combo->currentIndex() >= 0;
        combo->addItem(QString::fromUtf8(text), value);
        if (!chosen) combo->setCurrentIndex(-1); // Qt would choose the first option of a list
    }
    combo->options_changed(true);
    forget_change(combo);
    return RET_OK;
}

ret_t combo_box_reset_options(widget* w) { return combo_box_set_options(w, {}); }

ret_t combo_box_set_options(widget* w, const std::vector<std::pair<int32_t, std::string>>& options) {
    auto* combo = live_as<combo_widget>(w);
    if (combo == nullptr) return RET_BAD_PARAMS;
    const from_code code;
    const int rows_before = combo->count();
    {
        const kept_text keep(combo);
        const bool chosen = combo->currentIndex() >= 0 || combo->isEditable();
        const QString shown = combo->currentText();
        replace_rows(combo, options);
        combo->setCurrentIndex(chosen ? index_of_text(combo, shown) : -1);
    }
    combo->options_changed(combo->count() != rows_before);
    forget_change(combo);
    return RET_OK;
}

ret_t combo_box_set_hints(widget* w, const std::vector<std::string>& hints) {
    auto* combo = live_as<combo_widget>(w);
    if (combo == nullptr) return RET_BAD_PARAMS;
    const from_code code;
    bool changed = false;
    for (int row = 0; row < combo->count(); ++row) {
        const auto at = static_cast<std::size_t>(row);
        const QString hint = at < hints.size() ? QString::fromStdString(hints[at]) : QString();
        if (combo->itemData(row, combo_widget::hint_role).toString() == hint) continue;
        combo->setItemData(row, hint, combo_widget::hint_role);
        changed = true;
    }
    if (changed) combo->hints_changed();
    return RET_OK;
}

std::string combo_box_get_hint(const widget* w, const char* text) {
    const auto* combo = live_as<QComboBox>(w);
    const int row = combo == nullptr || text == nullptr ? -1 : index_of_text(combo, QString::fromUtf8(text));
    return row < 0 ? "" : combo->itemData(row, combo_widget::hint_role).toString().toStdString();
}

QStringList combo_hints(const QComboBox* combo) {
    QStringList hints;
    for (int row = 0; row < combo->count(); ++row)
        hints += combo->itemData(row, combo_widget::hint_role).toString();
    return hints;
}

int32_t combo_box_count_options(const widget* w) {
    const auto* combo = live_as<QComboBox>(w);
    return combo == nullptr ? 0 : combo->count();
}

bool combo_box_has_option_text(const widget* w, const char* text) {
    const auto* combo = live_as<QComboBox>(w);
    return combo != nullptr && text != nullptr && index_of_text(combo, QString::fromUtf8(text)) >= 0;
}
