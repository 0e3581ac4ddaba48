#include "toolkit/ravel/qt/layout_items.h"

#include "toolkit/ravel/qt/ui_value.h"

#include <QBoxLayout>
#include <QFormLayout>
#include <QGridLayout>
#include <QMetaEnum>
#include <QMetaProperty>

namespace {

/// "1,0,2" as numbers.
std::vector<int> numbers(const QString& text) {
    std::vector<int> all;
    for (const QString& part : text.split(u',', Qt::SkipEmptyParts)) all.push_back(part.toInt());
    return all;
}

QFormLayout::ItemRole form_role(int column, int columns) {
    if (columns == 2) return QFormLayout::SpanningRole;
    return column == 0 ? QFormLayout::LabelRole : QFormLayout::FieldRole;
}

int attribute_int(const ui_element& element, const char* name, int fallback) {
    return element.has(name) ? element.attribute(name).toInt() : fallback;
}

} // namespace

void layout_items::build(const ui_element& element) {
    QLayout* layout = make(element, owner_).release(); // the owner's from its making on
    add_items(layout, element);
}

std::unique_ptr<QLayout> layout_items::make(const ui_element& element, QWidget* parent) const {
    const QString kind = element.attribute("class");
    std::unique_ptr<QLayout> layout;
    if (kind == u"QVBoxLayout") layout = std::make_unique<QVBoxLayout>(parent);
    if (kind == u"QHBoxLayout") layout = std::make_unique<QHBoxLayout>(parent);
    if (kind == u"QGridLayout") layout = std::make_unique<QGridLayout>(parent);
    if (kind == u"QFormLayout") layout = std::make_unique<QFormLayout>(parent);
    if (layout == nullptr)
        builder_.refuse(element.line, QStringLiteral("layout class \"%1\" is not known").arg(kind));
    try {
        set_properties(layout.get(), element);
        set_stretches(layout.get(), element);
    } catch (const layout_error&) {
        if (parent != nullptr) layout.release(); // goes with its widget
        throw;
    }
    return layout;
}

namespace {

/// The margin that a property stands for; false when it is none. "margin" is all four.
bool set_margin(QMargins& margins, const QString& name, int value) {
    const bool all = name == u"margin";
    if (all || name == u"leftMargin") margins.setLeft(value);
    if (all || name == u"topMargin") margins.setTop(value);
    if (all || name == u"rightMargin") margins.setRight(value);
    if (all || name == u"bottomMargin") margins.setBottom(value);
    return all || name.endsWith(u"Margin");
}

/// A grid's spacings are no properties of Qt's.
bool set_grid_spacing(QLayout* layout, const QString& name, int value) {
    auto* grid = dynamic_cast<QGridLayout*>(layout);
    if (grid == nullptr) return false;
    if (name == u"horizontalSpacing") grid->setHorizontalSpacing(value);
    if (name == u"verticalSpacing") grid->setVerticalSpacing(value);
    return name == u"horizontalSpacing" || name == u"verticalSpacing";
}

} // namespace

void layout_items::set_properties(QLayout* layout, const ui_element& element) const {
    static const QStringList by_name = {
        QStringLiteral("spacing"),        QStringLiteral("horizontalSpacing"), QStringLiteral("verticalSpacing"),
        QStringLiteral("labelAlignment"), QStringLiteral("formAlignment"),     QStringLiteral("fieldGrowthPolicy"),
        QStringLiteral("rowWrapPolicy"),  QStringLiteral("sizeConstraint"),
    };
    QMargins margins = layout->contentsMargins();
    for (const ui_element& property : element.children) {
        if (property.tag != u"property") continue;
        const QString name = property.attribute("name");
        const QVariant value = ui_property_value(builder_.file(), property);
        if (set_margin(margins, name, value.toInt()) || set_grid_spacing(layout, name, value.toInt())) continue;
        const int index = layout->metaObject()->indexOfProperty(name.toLatin1().constData());
        if (!by_name.contains(name) || index < 0)
            builder_.refuse(property.line, QStringLiteral("a layout's property \"%1\" is not known").arg(name));
        if (!layout->metaObject()->property(index).write(layout, value))
            builder_.refuse(property.line, QStringLiteral("bad value for property \"%1\"").arg(name));
    }
    layout->setContentsMargins(margins);
}

void layout_items::set_stretches(QLayout* layout, const ui_element& element) const {
    int at = 0;
    if (auto* grid = dynamic_cast<QGridLayout*>(layout)) {
        for (const int value : numbers(element.attribute("rowstretch"))) grid->setRowStretch(at++, value);
        at = 0;
        for (const int value : numbers(element.attribute("columnstretch"))) grid->setColumnStretch(at++, value);
        at = 0;
        for (const int value : numbers(element.attribute("rowminimumheight")))
            grid->setRowMinimumHeight(at++, value);
        at = 0;
        for (const int value : numbers(element.attribute("columnminimumwidth")))
            grid->setColumnMinimumWidth(at++, value);
    }
}

void layout_items::add_items(QLayout* layout, const ui_element& element) {
    for (const ui_element& item : element.children) {
        if (item.tag == u"item") {
            add_item(layout, item);
        } else if (item.tag != u"property") {
            builder_.refuse(item.line, QStringLiteral("<%1> is not known in a layout").arg(item.tag));
        }
    }
    // A box layout's stretches count its items, so they are set when the items are in.
    if (auto* box = dynamic_cast<QBoxLayout*>(layout)) {
        int at = 0;
        for (const int value : numbers(element.attribute("stretch"))) box->setStretch(at++, value);
    }
}

void layout_items::add_item(QLayout* layout, const ui_element& item) {
    if (item.children.size() != 1) builder_.refuse(item.line, QStringLiteral("an item holds one thing"));
    const ui_element& content = item.children.front();
    if (content.tag == u"widget") {
        place(layout, item, nullptr, builder_.build_widget(content, owner_, state_), nullptr);
    } else if (content.tag == u"spacer") {
        place(layout, item, spacer(content), nullptr, nullptr);
    } else if (content.tag == u"layout") {
        std::unique_ptr<QLayout> inner = make(content, nullptr);
        QLayout* raw = inner.get();
        place(layout, item, nullptr, nullptr, std::move(inner)); // first in, so that its widgets find their owner
        add_items(raw, content);
    } else {
        builder_.refuse(content.line, QStringLiteral("<%1> is not known in a layout").arg(content.tag));
    }
}

void layout_items::place(QLayout* layout, const ui_element& item, std::unique_ptr<QLayoutItem> gap, QWidget* w,
                         std::unique_ptr<QLayout> inner) const {
    const Qt::Alignment alignment = item.has("alignment")
                                        ? ui_alignment(builder_.file(), item.line, item.attribute("alignment"))
                                        : Qt::Alignment();
    const int row = attribute_int(item, "row", 0);
    const int column = attribute_int(item, "column", 0);
    const int rows = attribute_int(item, "rowspan", 1);
    const int columns = attribute_int(item, "colspan", 1);
    if (auto* grid = dynamic_cast<QGridLayout*>(layout)) {
        if (w != nullptr) grid->addWidget(w, row, column, rows, columns, alignment);
        if (gap != nullptr) grid->addItem(gap.release(), row, column, rows, columns, alignment);
        if (inner != nullptr) grid->addLayout(inner.release(), row, column, rows, columns, alignment);
    } else if (auto* form = dynamic_cast<QFormLayout*>(layout)) {
        const QFormLayout::ItemRole role = form_role(column, columns);
        if (w != nullptr) form->setWidget(row, role, w);
        if (gap != nullptr) form->setItem(row, role, gap.release());
        if (inner != nullptr) form->setLayout(row, role, inner.release());
    } else if (auto* box = dynamic_cast<QBoxLayout*>(layout)) {
        if (w != nullptr) box->addWidget(w, 0, alignment);
        if (gap != nullptr) box->addItem(gap.release());
        if (inner != nullptr) box->addLayout(inner.release());
    }
}

std::unique_ptr<QLayoutItem> layout_items::spacer(const ui_element& element) const {
    bool vertical = false;
    QSize size(0, 0);
    QSizePolicy::Policy policy = QSizePolicy::Expanding;
    for (const ui_element& property : element.children) {
        const QString name = property.attribute("name");
        const QVariant value = ui_property_value(builder_.file(), property);
        if (name == u"orientation") {
            vertical = value.toString() == u"Qt::Vertical";
        } else if (name == u"sizeHint") {
            size = value.toSize();
        } else if (name == u"sizeType") {
            bool ok = false;
            const QByteArray key = value.toString().section(QStringLiteral("::"), -1).toLatin1();
            policy = static_cast<QSizePolicy::Policy>(
                QMetaEnum::fromType<QSizePolicy::Policy>().keyToValue(key.constData(), &ok));
            if (!ok) builder_.refuse(property.line, QStringLiteral("unknown size policy"));
        } else {
            builder_.refuse(property.line, QStringLiteral("a spacer's property \"%1\" is not known").arg(name));
        }
    }
    const auto along = vertical ? QSizePolicy::Minimum : policy;
    const auto across = vertical ? policy : QSizePolicy::Minimum;
    return std::make_unique<QSpacerItem>(size.width(), size.height(), along, across);
}
