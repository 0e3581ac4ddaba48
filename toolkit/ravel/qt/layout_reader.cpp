#include "toolkit/ravel/qt/layout_reader.h"

#include "toolkit/core/log.h"
#include "toolkit/ravel/qt/assets.h"
#include "toolkit/ravel/qt/layout_classes.h"
#include "toolkit/ravel/qt/layout_items.h"
#include "toolkit/ravel/qt/ui_value.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QScrollArea>
#include <QStackedWidget>

#include <algorithm>
#include <memory>

namespace {
constexpr int deepest_include = 8;

QStringList style_words(const QString& file, const ui_element& element) {
    const ui_element* property = element.property("class");
    if (property == nullptr) return {};
    return ui_property_value(file, *property).toString().split(u' ', Qt::SkipEmptyParts);
}

QString text_property(const QString& file, const ui_element& element, const char* name) {
    const ui_element* property = element.property(name);
    return property == nullptr ? QString() : ui_property_value(file, *property).toString();
}
/// Puts the fields of a page that was built late where the page stands in the order of the Tab key.
void chain_focus_behind(QWidget* page) {
    std::vector<QWidget*> fields;
    for (QWidget* w = page->nextInFocusChain(); w != page; w = w->nextInFocusChain()) {
        if (page->isAncestorOf(w) && w->focusPolicy() != Qt::NoFocus && w->focusProxy() == nullptr)
            fields.push_back(w);
    }
    QWidget* before = page;
    const Qt::FocusPolicy policy = page->focusPolicy();
    page->setFocusPolicy(Qt::TabFocus); // setTabOrder knows only widgets that take the focus
    for (QWidget* field : fields) {
        QWidget::setTabOrder(before, field);
        before = field;
    }
    page->setFocusPolicy(policy);
}
} // namespace

layout_builder::layout_builder(QString file, int depth, const layout_builder* outer)
    : file_(std::move(file)), depth_(depth) {
    if (outer != nullptr) renames_ = outer->renames_;
    if (depth > deepest_include) refuse(0, QStringLiteral("includes itself, or includes go too deep"));
}

void layout_builder::refuse(int line, const QString& reason) const { refuse_layout(file_, line, reason); }

QString layout_builder::renamed(QString name) const {
    for (const auto& [from, to] : renames_) name.replace(from, to);
    return name;
}

/// The root <widget> of a <ui>, after a look at what stands beside it.
const ui_element& layout_builder::root_widget(const ui_element& ui) const {
    static const QStringList harmless = {
        QStringLiteral("class"),       QStringLiteral("author"),        QStringLiteral("comment"),
        QStringLiteral("exportmacro"), QStringLiteral("layoutdefault"), QStringLiteral("customwidgets"),
        QStringLiteral("tabstops"),    QStringLiteral("resources"),     QStringLiteral("connections"),
    };
    const ui_element* root = nullptr;
    for (const ui_element& element : ui.children) {
        const bool known = harmless.contains(element.tag) || (element.tag == u"widget" && root == nullptr);
        if (!known) refuse(element.line, QStringLiteral("<%1> is not known here").arg(element.tag));
        if (element.tag == u"widget") root = &element;
        if ((element.tag == u"connections" || element.tag == u"resources") && !element.children.empty())
            refuse(element.line, QStringLiteral("<%1> must be empty").arg(element.tag));
    }
    if (root == nullptr) refuse(ui.line, QStringLiteral("there is no <widget>"));
    return *root;
}

widget_state* layout_builder::build_root(const QString& name) {
    const ui_element ui = read_ui_file(file_);
    const ui_element& element = root_widget(ui);
    const QString class_name = element.attribute("class");
    if (class_name != u"QWidget" && class_name != u"QDialog")
        refuse(element.line, QStringLiteral("the root must be a QWidget or a QDialog, not a %1").arg(class_name));
    const bool dialog = class_name == u"QDialog";
    QWidget* root = make_root(dialog);
    std::unique_ptr<QWidget> shell(shell_of_root(root)); // goes when the layout is refused
    apply_properties(root, element);
    if (!root->property("class").isValid()) root->setProperty("class", dialog ? "dialog" : "window");
    widget_state* around = state_of(native_window());
    widget_state* state = adopt_widget(root, dialog ? widget_kind::dialog : widget_kind::window, name, around);
    fill(root, state, element);
    finish(state, ui);
    const QVariant esc = root->property("esc_closes");
    state->esc_closes = !esc.isValid() || esc.toBool();
    shell.release();
    return state;
}

widget_state* layout_builder::build_part(const ui_element& ui, QWidget* parent, widget_state* parent_state) {
    std::unique_ptr<QWidget> part(find_layout_class(QStringLiteral("QWidget"), {})->make(parent));
    widget_state* state = adopt_widget(part.get(), widget_kind::view, QString(), parent_state);
    fill_included(part.get(), state, ui, {});
    part.release(); // its parent's
    return state;
}

void layout_builder::apply_properties(QWidget* w, const ui_element& element) const {
    for (const ui_element& property : element.children) {
        if (property.tag == u"property") apply_ui_property(file_, w, property);
    }
}

QWidget* layout_builder::build_widget(const ui_element& element, QWidget* parent, widget_state* parent_state) {
    const QString class_name = element.attribute("class");
    const layout_class* row = find_layout_class(class_name, style_words(file_, element));
    if (row == nullptr || row->kind == widget_kind::dialog)
        refuse(element.line, QStringLiteral("class \"%1\" is not known here").arg(class_name));
    auto* area = dynamic_cast<QScrollArea*>(parent);
    if (area != nullptr && area->widget() != nullptr)
        refuse(element.line, QStringLiteral("a scroll area holds one widget"));
    std::unique_ptr<QWidget> made(row->make(area != nullptr ? area->viewport() : parent));
    QWidget* w = made.get();
    apply_properties(w, element);
    widget_state* state = adopt_widget(w, row->kind, renamed(element.attribute("name")), parent_state, row->type);
    made.release(); // its parent owns it from here
    attach(parent, w);
    fill(w, state, element);
    if (const ui_element* buddy = element.property("buddy"))
        buddies_.push_back({w, renamed(ui_property_value(file_, *buddy).toString()), buddy->line});
    if (const ui_element* page = element.property("currentIndex")) {
        if (auto* pages = dynamic_cast<QStackedWidget*>(w)) pages->setCurrentIndex(ui_property_int(file_, *page));
    }
    const QString included = text_property(file_, element, "include");
    if (!included.isEmpty()) include(w, state, element, included);
    return w;
}

/// Children and layout of a widget.
void layout_builder::fill(QWidget* w, widget_state* state, const ui_element& element) {
    for (const ui_element& child : element.children) {
        if (child.tag == u"widget") {
            build_widget(child, w, state);
        } else if (child.tag == u"layout") {
            if (w->layout() != nullptr) refuse(child.line, QStringLiteral("a second layout"));
            layout_items(*this, w, state).build(child);
        } else if (child.tag == u"item" && dynamic_cast<QComboBox*>(w) != nullptr) {
            auto* combo = static_cast<QComboBox*>(w);
            combo->addItem(text_property(file_, child, "text"), combo->count());
        } else if (child.tag != u"property") {
            refuse(child.line, QStringLiteral("<%1> is not known here").arg(child.tag));
        }
    }
}

/// Page sets and scroll areas take their children before these have any: moving a whole tree restyles all of it.
void layout_builder::attach(QWidget* parent, QWidget* w) const {
    if (auto* pages = dynamic_cast<QStackedWidget*>(parent)) pages->addWidget(w);
    if (auto* area = dynamic_cast<QScrollArea*>(parent)) area->setWidget(w);
}

void layout_builder::include(QWidget* w, widget_state* state, const ui_element& element, const QString& name) {
    if (w->layout() != nullptr) refuse(element.line, QStringLiteral("a widget with a layout cannot include"));
    layout_builder inner(layout_path(name), depth_ + 1, this);
    for (const QString& pair : text_property(file_, element, "rename").split(u',', Qt::SkipEmptyParts)) {
        const QStringList sides = pair.split(u'=');
        if (sides.size() != 2 || sides[0].isEmpty())
            refuse(element.line, QStringLiteral("rename wants \"from=to\", not \"%1\"").arg(pair));
        inner.renames_.emplace_back(sides[0].trimmed(), sides[1].trimmed());
    }
    if (!QFile::exists(inner.file_)) refuse_layout(inner.file_, 0, QStringLiteral("cannot be opened"));
    std::vector<QString> own;
    for (const ui_element& property : element.children) own.push_back(property.attribute("name"));
    const bool page = state->parent != nullptr && state->parent->kind == widget_kind::pages && !state->name.empty();
    if (!page) return inner.fill_included(w, state, read_ui_file(inner.file_), own);
    state->build_later = [inner, w, state, own]() mutable {
        const bool enabled_updates = w->updatesEnabled();
        w->setUpdatesEnabled(false);
        try {
            inner.fill_included(w, state, read_ui_file(inner.file_), own);
            chain_focus_behind(w);
        } catch (const layout_error& refused) {
            log_write(LOG_LEVEL_ERROR, std::string(refused.what()) + "\n");
        }
        w->setUpdatesEnabled(enabled_updates);
    };
}

/// What the including widget sets itself (`own`) the included root does not override.
void layout_builder::fill_included(QWidget* w, widget_state* state, const ui_element& ui,
                                   const std::vector<QString>& own) {
    const ui_element& root = root_widget(ui);
    if (root.attribute("class") != u"QWidget")
        refuse(root.line, QStringLiteral("the root of an included layout must be a QWidget"));
    for (const ui_element& property : root.children) {
        const QString name = property.attribute("name");
        const bool taken = name == u"geometry" || std::find(own.begin(), own.end(), name) != own.end();
        if (property.tag == u"property" && !taken) apply_ui_property(file_, w, property);
    }
    if (state->name.empty()) {
        state->name = renamed(root.attribute("name")).toStdString();
        w->setObjectName(QString::fromStdString(state->name));
    }
    fill(w, state, root);
    finish(state, ui);
}

QWidget* layout_builder::named(const widget_state* root, const QString& name, int line) const {
    widget* found = widget_lookup(handle_of(root), name.toUtf8().constData());
    if (found == nullptr) refuse(line, QStringLiteral("there is no widget \"%1\"").arg(name));
    return qwidget_of(found);
}

/// What can be done only when all widgets of the file are there: buddies and the tab order.
void layout_builder::finish(const widget_state* root, const ui_element& ui) const {
    for (const buddy_of& row : buddies_) {
        auto* label = dynamic_cast<QLabel*>(row.label);
        if (label == nullptr) refuse(row.line, QStringLiteral("only a label has a buddy"));
        label->setBuddy(named(root, row.name, row.line));
    }
    const ui_element* stops = ui.child("tabstops");
    if (stops == nullptr) return;
    QWidget* before = nullptr;
    for (const ui_element& stop : stops->children) {
        QWidget* w = named(root, renamed(stop.text.trimmed()), stop.line);
        if (before != nullptr) QWidget::setTabOrder(before, w);
        before = w;
    }
}

namespace {
/// Runs a build; null and the reason when it is refused.
template <class Build>
widget_state* built(const QString& name, std::string* error, Build build) {
    try {
        layout_builder builder(layout_path(name), 0, nullptr);
        return build(builder);
    } catch (const layout_error& refused) {
        if (error != nullptr) *error = refused.what();
        return nullptr;
    }
}
} // namespace

widget_state* load_layout(const QString& name, std::string* error) {
    return built(name, error, [&name](layout_builder& builder) { return builder.build_root(name); });
}

widget_state* part_layout::build(QWidget* parent, widget_state* parent_state, std::string* error) {
    return built(name_, error, [=, this](layout_builder& builder) {
        if (!read_) read_ = read_ui_file(builder.file());
        return builder.build_part(*read_, parent, parent_state);
    });
}
