// Showing, enabling, focus, marks, and properties by name.
#include "toolkit/ravel/qt/detail.h"
#include "toolkit/ravel/qt/field_mark.h"
#include "toolkit/ravel/qt/refused_line.h"
#include "toolkit/ravel/qt/widget_class.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QApplication>
#include <QClipboard>
#include <QStyle>
#include <QVariant>

void restyle(QWidget* w) {
    if (!w->testAttribute(Qt::WA_WState_Polished)) return; // it is styled when it is shown first
    w->style()->unpolish(w);
    w->style()->polish(w);
    w->update();
}

namespace {

QPoint place_in_window(const QWidget* w) {
    return native_window() == nullptr ? QPoint() : w->mapTo(native_window(), QPoint(0, 0));
}

int text_width(const QWidget* w) {
    if (const auto* cell = dynamic_cast<const cell_widget*>(w)) return cell->text_width();
    const auto* label = dynamic_cast<const QLabel*>(w);
    return label == nullptr ? 0 : label->sizeHint().width();
}

struct place_property {
    const char* name;
    int (*get)(const QWidget*);
    void (*set)(QWidget*, int); ///< null: can only be read
};
constexpr place_property place_properties[] = {
    {"x", [](const QWidget* w) { return w->x(); }, [](QWidget* w, int v) { w->move(v, w->y()); }},
    {"y", [](const QWidget* w) { return w->y(); }, [](QWidget* w, int v) { w->move(w->x(), v); }},
    {"w", [](const QWidget* w) { return w->width(); }, [](QWidget* w, int v) { w->resize(v, w->height()); }},
    {"h", [](const QWidget* w) { return w->height(); }, [](QWidget* w, int v) { w->resize(w->width(), v); }},
    {"window_x", [](const QWidget* w) { return place_in_window(w).x(); }, nullptr},
    {"window_y", [](const QWidget* w) { return place_in_window(w).y(); }, nullptr},
    {"text_w", text_width, nullptr},
};

/// A property as a variant; invalid when there is none.
QVariant read_property(const widget* w, const char* name) {
    const widget_state* state = live(w);
    if (state == nullptr || name == nullptr) return {};
    for (const place_property& p : place_properties) {
        if (qstrcmp(p.name, name) == 0) return p.get(state->w);
    }
    if (qstrcmp(name, "value") == 0) return widget_get_value_int(w);
    if (qstrcmp(name, "enable") == 0) return widget_get_enable(w);
    if (qstrcmp(name, "visible") == 0) return widget_get_visible(w);
    return state->w->property(name);
}

ret_t write_property(widget* w, const char* name, const QVariant& value) {
    const widget_state* state = live(w);
    if (state == nullptr || name == nullptr || *name == '\0') return RET_BAD_PARAMS;
    if (qstrcmp(name, "value") == 0) return widget_set_value_int(w, value.toInt());
    if (qstrcmp(name, "enable") == 0) return widget_set_enable(w, value.toBool());
    if (qstrcmp(name, "visible") == 0) return widget_set_visible(w, value.toBool());
    const from_code code;
    for (const place_property& p : place_properties) {
        if (qstrcmp(p.name, name) != 0) continue;
        if (p.set == nullptr) return RET_BAD_PARAMS;
        p.set(state->w, value.toInt());
        return RET_OK;
    }
    state->w->setProperty(name, value);
    return RET_OK;
}

} // namespace

ret_t widget_set_visible(widget* w, bool visible) {
    widget_state* state = live(w);
    if (state == nullptr) return RET_BAD_PARAMS;
    const QWidget* around = state->w->parentWidget();
    if (visible && around != nullptr && around->isVisibleTo(native_window())) state->complete_shown();
    state->w->setVisible(visible);
    return RET_OK;
}

bool widget_get_visible(const widget* w) {
    const widget_state* state = live(w);
    return state != nullptr && !state->w->isHidden() && state->w->isVisibleTo(native_window());
}

ret_t widget_set_enable(widget* w, bool enable) {
    const widget_state* state = live(w);
    if (state == nullptr) return RET_BAD_PARAMS;
    state->w->setEnabled(enable);
    return RET_OK;
}

bool widget_get_enable(const widget* w) {
    const widget_state* state = live(w);
    return state != nullptr && state->w->isEnabled();
}

ret_t widget_set_focused(widget* w) {
    const widget_state* state = live(w);
    if (state == nullptr) return RET_BAD_PARAMS;
    if (!gets_input(state->w)) return RET_FAIL;
    state->w->setFocus(Qt::OtherFocusReason);
    return RET_OK;
}

bool widget_get_focused(const widget* w) {
    const widget_state* state = live(w);
    return state != nullptr && state->w->hasFocus();
}

ret_t widget_set_refused(widget* w, const char* why, const char* line) {
    widget_state* state = live(w);
    if (state == nullptr) return RET_BAD_PARAMS;
    if (!state->refused && why == nullptr) return RET_OK;
    keep_own_tooltip(state);
    state->refused = why != nullptr;
    state->w->setProperty("refused_why", why == nullptr ? QVariant() : QVariant(QString::fromUtf8(why)));
    state->w->setProperty("refused", state->refused ? QVariant(true) : QVariant());
    show_tooltip(state);
    restyle(state->w);
    show_refused_line(state, QString::fromUtf8(why == nullptr || line == nullptr ? "" : line));
    return RET_OK;
}

bool widget_get_refused(const widget* w) {
    const widget_state* state = live(w);
    return state != nullptr && state->refused;
}

ret_t widget_set_style_state(widget* w, const char* name) {
    const widget_state* state = live(w);
    if (state == nullptr) return RET_BAD_PARAMS;
    const QString wanted = QString::fromUtf8(name == nullptr ? "" : name);
    if (state->w->property("state").toString() == wanted) return RET_OK;
    state->w->setProperty("state", wanted.isEmpty() ? QVariant() : QVariant(wanted));
    restyle(state->w);
    return RET_OK;
}

ret_t widget_set_tooltip(widget* w, const char* text) {
    widget_state* state = live(w);
    if (state == nullptr) return RET_BAD_PARAMS;
    state->tooltip = QString::fromUtf8(text == nullptr ? "" : text);
    show_tooltip(state);
    return RET_OK;
}

int32_t widget_get_prop_int(const widget* w, const char* name, int32_t fallback) {
    const QVariant value = read_property(w, name);
    bool ok = false;
    const int number = value.toInt(&ok);
    return ok ? number : fallback;
}

bool widget_get_prop_bool(const widget* w, const char* name, bool fallback) {
    const QVariant value = read_property(w, name);
    return value.isValid() ? value.toBool() : fallback;
}

std::string widget_get_prop_str(const widget* w, const char* name, const char* fallback) {
    const QVariant value = read_property(w, name);
    if (value.isValid()) return value.toString().toStdString();
    return fallback == nullptr ? std::string() : std::string(fallback);
}

ret_t widget_set_prop_int(widget* w, const char* name, int32_t value) { return write_property(w, name, value); }
ret_t widget_set_prop_bool(widget* w, const char* name, bool value) { return write_property(w, name, value); }
ret_t widget_set_prop_str(widget* w, const char* name, const char* value) {
    if (value == nullptr) return RET_BAD_PARAMS;
    return write_property(w, name, QString::fromUtf8(value));
}

std::string clip_board_get_text() {
    if (!tk_check_gui_thread(__func__) || qApp == nullptr) return {};
    return QApplication::clipboard()->text().toStdString();
}

ret_t clip_board_set_text(const char* text) {
    if (!tk_check_gui_thread(__func__) || text == nullptr || qApp == nullptr) return RET_BAD_PARAMS;
    QApplication::clipboard()->setText(QString::fromUtf8(text));
    return RET_OK;
}
