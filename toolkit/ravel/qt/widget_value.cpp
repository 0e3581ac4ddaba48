// Text and value of each kind of widget.
#include "toolkit/core/text.h"
#include "toolkit/ravel/qt/combo.h"
#include "toolkit/ravel/qt/int_limit.h"
#include "toolkit/ravel/qt/text_widget.h"
#include "toolkit/ravel/qt/widget_class.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QProgressBar>
#include <QScrollBar>
#include <QStackedWidget>

namespace {

/// The layout's limits are for what is typed: a value that the program shows is shown as it is, also beyond them.
void show_in_spin(QWidget* w, int value) {
    auto* spin = static_cast<QSpinBox*>(w);
    if (value < spin->minimum()) spin->setMinimum(value);
    if (value > spin->maximum()) spin->setMaximum(value);
    spin->setValue(value);
}

QString text_of_spin(QWidget* w) { return static_cast<QSpinBox*>(w)->cleanText(); }
ret_t set_spin_text(QWidget* w, const QString& text) {
    show_in_spin(w, tk_atoi(text.toUtf8().constData()));
    return RET_OK;
}
QString text_of_button(QWidget* w) { return without_mnemonic(static_cast<QAbstractButton*>(w)->text()); }
ret_t set_button_text(QWidget* w, const QString& text) {
    auto* button = static_cast<QAbstractButton*>(w);
    const QKeySequence own = button->shortcut();
    const bool from_text = own == QKeySequence::mnemonic(button->text());
    button->setText(text); // takes the shortcut away
    if (!from_text && QKeySequence::mnemonic(text).isEmpty()) button->setShortcut(own);
    return RET_OK;
}
QString text_of_label(QWidget* w) {
    if (const auto* cell = dynamic_cast<const cell_widget*>(w)) return cell->shown();
    const auto* label = static_cast<QLabel*>(w);
    return label->buddy() == nullptr ? label->text() : without_mnemonic(label->text());
}
ret_t set_label_text(QWidget* w, const QString& text) {
    if (auto* cell = dynamic_cast<cell_widget*>(w)) {
        cell->show_text(text);
    } else {
        static_cast<QLabel*>(w)->setText(text);
    }
    return RET_OK;
}
QString text_of_edit(QWidget* w) { return static_cast<QLineEdit*>(w)->text(); }
ret_t set_edit_text(QWidget* w, const QString& text) {
    static_cast<QLineEdit*>(w)->setText(text);
    return RET_OK;
}
QString text_of_mledit(QWidget* w) { return static_cast<text_widget*>(w)->toPlainText(); }
ret_t set_mledit_text(QWidget* w, const QString& text) {
    static_cast<text_widget*>(w)->show_text(text);
    return RET_OK;
}
QString text_of_combo(QWidget* w) { return static_cast<QComboBox*>(w)->currentText(); }
QString text_of_progress(QWidget* w) { return static_cast<QProgressBar*>(w)->text(); }

int value_of_spin(QWidget* w) { return static_cast<QSpinBox*>(w)->value(); }
ret_t set_spin_value(QWidget* w, int value) {
    show_in_spin(w, value);
    return RET_OK;
}
int value_of_check(QWidget* w) { return static_cast<QAbstractButton*>(w)->isChecked() ? 1 : 0; }
ret_t set_check_value(QWidget* w, int value) {
    static_cast<QAbstractButton*>(w)->setChecked(value != 0);
    return RET_OK;
}
ret_t set_tab_value(QWidget* w, int value) {
    auto* button = static_cast<QAbstractButton*>(w);
    // Qt keeps one of an exclusive group switched on; the program may switch all off.
    if (value == 0) button->setAutoExclusive(false);
    button->setChecked(value != 0);
    button->setAutoExclusive(true);
    return RET_OK;
}
int value_of_text(QWidget* w) { return tk_atoi(static_cast<QLineEdit*>(w)->text().toUtf8().constData()); }
ret_t set_edit_value(QWidget* w, int value) { return set_edit_text(w, QString::number(value)); }
int value_of_slider(QWidget* w) { return static_cast<QAbstractSlider*>(w)->value(); }
ret_t set_slider_value(QWidget* w, int value) {
    static_cast<QAbstractSlider*>(w)->setValue(value);
    return RET_OK;
}
int value_of_progress(QWidget* w) { return static_cast<QProgressBar*>(w)->value(); }
ret_t set_progress_value(QWidget* w, int value) {
    auto* bar = static_cast<QProgressBar*>(w);
    bar->setValue(qBound(bar->minimum(), value, bar->maximum()));
    return RET_OK;
}
int value_of_pages(QWidget* w) { return static_cast<QStackedWidget*>(w)->currentIndex(); }
ret_t set_pages_value(QWidget* w, int value) {
    return value < 0 ? RET_FAIL : pages_set_active(handle_of(w), static_cast<uint32_t>(value));
}
int value_of_label(QWidget* w) { return tk_atoi(text_of_label(w).toUtf8().constData()); }
ret_t set_label_value(QWidget* w, int value) { return set_label_text(w, QString::number(value)); }

struct kind_access {
    widget_kind kind;
    QString (*get_text)(QWidget*);
    ret_t (*set_text)(QWidget*, const QString&);
    int (*get_value)(QWidget*);
    ret_t (*set_value)(QWidget*, int);
};
constexpr kind_access kind_accesses[] = {
    {widget_kind::label, text_of_label, set_label_text, value_of_label, set_label_value},
    {widget_kind::hscroll_label, text_of_label, set_label_text, value_of_label, set_label_value},
    {widget_kind::button, text_of_button, set_button_text, value_of_check, set_check_value},
    {widget_kind::tab_button, text_of_button, set_button_text, value_of_check, set_tab_value},
    {widget_kind::check_button, text_of_button, set_button_text, value_of_check, set_check_value},
    {widget_kind::check_switch, text_of_button, set_button_text, value_of_check, set_check_value},
    {widget_kind::combo_box, text_of_combo, combo_set_text, combo_value, combo_set_value},
    {widget_kind::spin_box, text_of_spin, set_spin_text, value_of_spin, set_spin_value},
    {widget_kind::edit, text_of_edit, set_edit_text, value_of_text, set_edit_value},
    {widget_kind::mledit, text_of_mledit, set_mledit_text, nullptr, nullptr},
    {widget_kind::pages, nullptr, nullptr, value_of_pages, set_pages_value},
    {widget_kind::scroll_bar, nullptr, nullptr, value_of_slider, set_slider_value},
    {widget_kind::progress_bar, text_of_progress, nullptr, value_of_progress, set_progress_value},
};

const kind_access* access_of(const widget_state* state) {
    if (state == nullptr) return nullptr;
    for (const kind_access& row : kind_accesses) {
        if (row.kind == state->kind) return &row;
    }
    return nullptr;
}

} // namespace

ret_t widget_set_text_utf8(widget* w, const char* text) {
    const widget_state* state = live(w);
    const kind_access* row = access_of(state);
    if (row == nullptr || row->set_text == nullptr || text == nullptr) return RET_BAD_PARAMS;
    const from_code code;
    return row->set_text(state->w, QString::fromUtf8(text));
}

std::string widget_get_text_utf8(const widget* w) {
    const widget_state* state = live(w);
    const kind_access* row = access_of(state);
    return row == nullptr || row->get_text == nullptr ? std::string() : row->get_text(state->w).toStdString();
}

ret_t widget_set_value_int(widget* w, int32_t value) {
    const widget_state* state = live(w);
    const kind_access* row = access_of(state);
    if (row == nullptr || row->set_value == nullptr) return RET_BAD_PARAMS;
    const from_code code;
    return row->set_value(state->w, value);
}

int32_t widget_get_value_int(const widget* w) {
    const widget_state* state = live(w);
    const kind_access* row = access_of(state);
    return row == nullptr || row->get_value == nullptr ? 0 : row->get_value(state->w);
}

ret_t edit_set_text_limit(widget* edit, uint32_t min, uint32_t max) {
    auto* line = live_as<QLineEdit>(edit);
    if (line == nullptr || max > 32767 || min > max) return RET_BAD_PARAMS;
    const from_code code;
    line->setMaxLength(static_cast<int>(max));
    state_of(line)->limit_min = min;
    return RET_OK;
}

ret_t edit_set_int_limit(widget* edit, int32_t min, int32_t max, int32_t step) {
    auto* line = live_as<QLineEdit>(edit);
    if (line == nullptr || min > max || step < 0) return RET_BAD_PARAMS;
    const from_code code;
    const QValidator* before = line->validator();
    line->setValidator(new int_limit(line, min, max, step));
    delete before;
    return RET_OK;
}

int32_t edit_get_int(const widget* edit) { return widget_get_value_int(edit); }

ret_t widget_set_range(widget* w, int32_t min, int32_t max) {
    const widget_state* state = live(w);
    if (state == nullptr || min > max) return RET_BAD_PARAMS;
    const from_code code;
    if (auto* spin = dynamic_cast<QSpinBox*>(state->w)) {
        spin->setRange(min, max);
    } else if (auto* slider = dynamic_cast<QAbstractSlider*>(state->w)) {
        slider->setRange(min, max);
    } else if (auto* bar = dynamic_cast<QProgressBar*>(state->w)) {
        bar->setRange(min, max);
    } else {
        return RET_BAD_PARAMS;
    }
    return RET_OK;
}
