// What the user can do to each kind of widget, and which handlers it runs.
#include "toolkit/ravel/qt/int_limit.h"
#include "toolkit/ravel/qt/text_widget.h"
#include "toolkit/ravel/qt/widget_class.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QPointer>
#include <QScrollBar>

namespace {

void wire_button(widget_state* s) {
    auto* button = static_cast<QAbstractButton*>(s->w);
    QObject::connect(button, &QAbstractButton::clicked, s, [s] {
        if (!from_code::active()) s->fire(event_type::click);
    });
}

void wire_tab_button(widget_state* s) {
    auto* button = static_cast<QAbstractButton*>(s->w);
    button->setCheckable(true);
    button->setAutoExclusive(true);
    QObject::connect(button, &QAbstractButton::toggled, s, [s](bool on) {
        if (from_code::active()) return;
        s->tab_moved = on;
        s->fire(event_type::value_changed);
    });
    // A click on the tab that is shown already does nothing.
    QObject::connect(button, &QAbstractButton::clicked, s, [s] {
        if (std::exchange(s->tab_moved, false) && !from_code::active()) s->fire(event_type::click);
    });
}

void wire_check(widget_state* s) {
    auto* button = static_cast<QAbstractButton*>(s->w);
    QObject::connect(button, &QAbstractButton::toggled, s, [s] {
        if (!from_code::active()) s->fire(event_type::value_changed);
    });
    wire_button(s);
}

void combo_maybe_changed(widget_state* s) {
    const QString text = QString::fromStdString(widget_get_text_utf8(handle_of(s)));
    const int value = widget_get_value_int(handle_of(s));
    if (text == s->last_text && value == s->last_value) return;
    s->last_text = text;
    s->last_value = value;
    if (!from_code::active()) s->fire(event_type::value_changed);
}

void wire_combo(widget_state* s) {
    auto* combo = static_cast<QComboBox*>(s->w);
    QObject::connect(combo, &QComboBox::activated, s, [s] { combo_maybe_changed(s); });
    s->last_text = combo->currentText();
    s->last_value = -1;
    QLineEdit* inner = combo->lineEdit();
    if (inner == nullptr) return;
    combo->setCompleter(nullptr);
    widget_filter_inner(s, inner);
    QObject::connect(inner, &QLineEdit::returnPressed, s, [s] { combo_maybe_changed(s); });
}

void spin_maybe_changed(widget_state* s) {
    const QString text = static_cast<QSpinBox*>(s->w)->cleanText();
    if (text == s->last_text) return;
    s->last_text = text;
    if (!from_code::active()) s->fire(event_type::value_changing);
}

void wire_spin(widget_state* s) {
    auto* spin = static_cast<spin_widget*>(s->w);
    s->last_text = spin->cleanText();
    const auto changed = [s] { spin_maybe_changed(s); };
    QObject::connect(spin, &QSpinBox::textChanged, s, changed);
    QObject::connect(spin, &QSpinBox::editingFinished, s, changed);
    QObject::connect(spin->inner_edit(), &QLineEdit::textChanged, s, changed);
    widget_filter_inner(s, spin->inner_edit());
}

bool edit_commit(widget_state* s) {
    auto* edit = static_cast<QLineEdit*>(s->w);
    if (const int_limit* limit = int_limit::of(edit); limit != nullptr && s->edited) {
        const from_code code;
        edit->setText(limit->settled(edit->text(), s->last_text));
    }
    const QString text = edit->text();
    if (!s->edited || text == s->last_text) return false;
    s->last_text = text;
    s->edited = false;
    s->fire(event_type::value_changed);
    return true;
}

void wire_edit(widget_state* s) {
    auto* edit = static_cast<QLineEdit*>(s->w);
    QObject::connect(edit, &QLineEdit::textEdited, s, [s] {
        s->edited = true;
        s->fire(event_type::value_changing);
    });
}

void wire_scroll_bar(widget_state* s) {
    QObject::connect(static_cast<QScrollBar*>(s->w), &QScrollBar::valueChanged, s, [s] {
        if (!from_code::active()) s->fire(event_type::value_changed);
    });
}

void wire_text(widget_state* s) { widget_filter_inner(s, static_cast<text_widget*>(s->w)->viewport()); }

struct wiring {
    widget_kind kind;
    void (*wire)(widget_state*);
};
constexpr wiring wirings[] = {
    {widget_kind::button, wire_button},      {widget_kind::tab_button, wire_tab_button},
    {widget_kind::check_button, wire_check}, {widget_kind::check_switch, wire_check},
    {widget_kind::combo_box, wire_combo},    {widget_kind::spin_box, wire_spin},
    {widget_kind::edit, wire_edit},          {widget_kind::scroll_bar, wire_scroll_bar},
    {widget_kind::mledit, wire_text},
};

} // namespace

void wire_widget(widget_state* state) {
    for (const wiring& row : wirings) {
        if (row.kind == state->kind) row.wire(state);
    }
}

void commit_widget(widget_state* state) {
    if (state->kind == widget_kind::edit) edit_commit(state);
    if (state->kind == widget_kind::combo_box) combo_maybe_changed(state);
}

bool step_edit(widget_state* state, int steps) {
    const int_limit* limit = int_limit::of(state->w);
    auto* edit = static_cast<QLineEdit*>(state->w);
    if (limit == nullptr || edit->isReadOnly()) return false;
    const QString text = limit->stepped(edit->text(), steps);
    if (text == edit->text()) return true;
    edit->setText(text);
    state->edited = true;
    state->fire(event_type::value_changing);
    return true;
}

bool commit_edit_by_enter(widget_state* state) {
    return state->kind == widget_kind::edit && state->has_handlers(event_type::value_changed) && edit_commit(state);
}
