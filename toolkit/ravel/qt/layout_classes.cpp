#include "toolkit/ravel/qt/layout_classes.h"

#include "toolkit/ravel/qt/layout_reader.h"
#include "toolkit/ravel/qt/text_widget.h"
#include "toolkit/ravel/qt/widget_class.h"

#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>

namespace {

template <class T>
QWidget* make(QWidget* parent) {
    return new T(parent);
}

QWidget* make_view(QWidget* parent) {
    auto* view = new QWidget(parent);
    view->setAttribute(Qt::WA_StyledBackground);
    return view;
}

QWidget* make_line(QWidget* parent) {
    auto* line = new QFrame(parent);
    line->setFrameShape(QFrame::HLine);
    return line;
}

// A row with a style class stands before the plain one of its class.
constexpr layout_class basic_classes[] = {
    {"QWidget", "ground", widget_kind::view, nullptr, make<ground_widget>},
    {"QWidget", "card", widget_kind::card, nullptr, make_view},
    {"QWidget", nullptr, widget_kind::view, nullptr, make_view},
    {"QDialog", nullptr, widget_kind::dialog, nullptr, make_view},
    {"QFrame", "card", widget_kind::card, nullptr, make<QFrame>},
    {"QFrame", nullptr, widget_kind::view, nullptr, make<QFrame>},
    {"Line", nullptr, widget_kind::view, nullptr, make_line},
    {"QLabel", "hscroll_label", widget_kind::hscroll_label, nullptr, make<hscroll_widget>},
    {"QLabel", "cell", widget_kind::label, nullptr, make<cell_widget>},
    {"QLabel", nullptr, widget_kind::label, nullptr, make<QLabel>},
    {"QPushButton", "tab_button", widget_kind::tab_button, nullptr, make<QPushButton>},
    {"QPushButton", nullptr, widget_kind::button, nullptr, make<QPushButton>},
    {"QComboBox", nullptr, widget_kind::combo_box, nullptr, make<combo_widget>},
    {"QSpinBox", nullptr, widget_kind::spin_box, nullptr, make<spin_widget>},
    {"QLineEdit", nullptr, widget_kind::edit, nullptr, make<QLineEdit>},
    {"QCheckBox", "switch", widget_kind::check_switch, nullptr, make<switch_widget>},
    {"QCheckBox", nullptr, widget_kind::check_button, nullptr, make<check_widget>},
    {"QStackedWidget", nullptr, widget_kind::pages, nullptr, make<pages_widget>},
    {"QScrollArea", nullptr, widget_kind::scroll_view, nullptr, make<scroll_widget>},
    {"QScrollBar", nullptr, widget_kind::scroll_bar, nullptr, make<QScrollBar>},
    {"QProgressBar", nullptr, widget_kind::progress_bar, nullptr, make<QProgressBar>},
    {"QPlainTextEdit", nullptr, widget_kind::mledit, nullptr, make<text_widget>},
};

std::vector<layout_class>& registered_classes() {
    static std::vector<layout_class> classes;
    return classes;
}

} // namespace

void register_layout_class(const char* class_name, const char* type, QWidget* (*make_widget)(QWidget* parent)) {
    for (const layout_class& known : registered_classes()) {
        if (qstrcmp(known.class_name, class_name) == 0) return;
    }
    registered_classes().push_back({class_name, nullptr, widget_kind::custom, type, make_widget});
}

const layout_class* find_layout_class(const QString& class_name, const QStringList& style_words) {
    for (const layout_class& row : basic_classes) {
        if (class_name != QLatin1String(row.class_name)) continue;
        if (row.style_class == nullptr || style_words.contains(QLatin1String(row.style_class))) return &row;
    }
    for (const layout_class& row : registered_classes()) {
        if (class_name == QLatin1String(row.class_name)) return &row;
    }
    return nullptr;
}
