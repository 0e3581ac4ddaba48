#include "toolkit/ravel/qt/ui_value.h"

#include "toolkit/core/log.h"
#include "toolkit/ravel/qt/assets.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QLabel>
#include <QMetaEnum>
#include <QMetaProperty>
#include <QSizePolicy>
#include <QWidget>

#include <algorithm>
#include <iterator>

namespace {

constexpr int icon_pixels = 20;

/// Properties that layouts may set; those of other names are refused, so that a slip is noticed.
constexpr const char* allowed[] = {
    "accessibleName",
    "alignment",
    "autoDefault",
    "autoExclusive",
    "buttonSymbols",
    "checkable",
    "checked",
    "default",
    "editable",
    "enabled",
    "flat",
    "focusPolicy",
    "frameShadow",
    "frameShape",
    "horizontalScrollBarPolicy",
    "iconSize",
    "indent",
    "invertedAppearance",
    "layoutDirection",
    "lineWrapMode",
    "margin",
    "maxLength",
    "maxVisibleItems",
    "maximum",
    "maximumSize",
    "minimum",
    "minimumSize",
    "openExternalLinks",
    "orientation",
    "pageStep",
    "placeholderText",
    "plainText",
    "prefix",
    "readOnly",
    "shortcut",
    "singleStep",
    "sizeAdjustPolicy",
    "suffix",
    "tabChangesFocus",
    "text",
    "textFormat",
    "textInteractionFlags",
    "textVisible",
    "toolTip",
    "undoRedoEnabled",
    "value",
    "verticalScrollBarPolicy",
    "visible",
    "widgetResizable",
    "windowTitle",
    "wordWrap",
    "wrapping",
};

int number_of(const QString& file, const ui_element& element) {
    bool ok = false;
    const int number = element.text.trimmed().toInt(&ok);
    if (!ok) refuse_layout(file, element.line, QStringLiteral("\"%1\" is not a number").arg(element.text));
    return number;
}

int part(const QString& file, const ui_element& element, const char* name) {
    const ui_element* child = element.child(name);
    if (child == nullptr)
        refuse_layout(file, element.line, QStringLiteral("<%1> is missing").arg(QLatin1String(name)));
    return number_of(file, *child);
}

QSizePolicy::Policy policy_of(const QString& file, int line, const QString& name) {
    bool ok = false;
    const int value = QMetaEnum::fromType<QSizePolicy::Policy>().keyToValue(name.toLatin1().constData(), &ok);
    if (!ok) refuse_layout(file, line, QStringLiteral("unknown size policy \"%1\"").arg(name));
    return static_cast<QSizePolicy::Policy>(value);
}

QVariant size_policy(const QString& file, const ui_element& e) {
    QSizePolicy policy(policy_of(file, e.line, e.attribute("hsizetype")),
                       policy_of(file, e.line, e.attribute("vsizetype")));
    policy.setHorizontalStretch(part(file, e, "horstretch"));
    policy.setVerticalStretch(part(file, e, "verstretch"));
    return QVariant::fromValue(policy);
}

QVariant value_of(const QString& file, const ui_element& e) {
    const QString& tag = e.tag;
    if (tag == u"string") return e.attribute("notr") == u"true" || e.text.isEmpty() ? e.text : translated(e.text);
    if (tag == u"cstring") return e.text;
    if (tag == u"number") return number_of(file, e);
    if (tag == u"double") return e.text.toDouble();
    if (tag == u"bool") return e.text.trimmed() == u"true";
    if (tag == u"enum" || tag == u"set") return e.text.trimmed();
    if (tag == u"size") return QSize(part(file, e, "width"), part(file, e, "height"));
    if (tag == u"rect")
        return QRect(part(file, e, "x"), part(file, e, "y"), part(file, e, "width"), part(file, e, "height"));
    if (tag == u"sizepolicy") return size_policy(file, e);
    refuse_layout(file, e.line, QStringLiteral("values of kind <%1> are not known").arg(tag));
}

constexpr const char* icon_property = "icon_name";

void set_icon(QWidget* w, const QString& name) {
    w->setProperty(icon_property, name);
    const QString path = image_path(name);
    if (!QFile::exists(path)) {
        log_write(LOG_LEVEL_WARN, path.toStdString() + ": picture is missing\n");
        return;
    }
    const QIcon icon(path); // finds the @2x picture beside it
    if (auto* button = dynamic_cast<QAbstractButton*>(w)) {
        button->setIcon(icon);
        button->setIconSize(QSize(icon_pixels, icon_pixels));
    } else if (auto* label = dynamic_cast<QLabel*>(w)) {
        label->setPixmap(icon.pixmap(icon.availableSizes().value(0, QSize(icon_pixels, icon_pixels)),
                                     label->devicePixelRatioF()));
    }
}

bool is_allowed(const QString& name) {
    return std::any_of(std::begin(allowed), std::end(allowed),
                       [&name](const char* a) { return name == QLatin1String(a); });
}

} // namespace

void renew_icons() {
    for (QWidget* w : QApplication::allWidgets()) {
        const QString name = w->property(icon_property).toString();
        if (!name.isEmpty()) set_icon(w, name);
    }
}

QVariant ui_property_value(const QString& file, const ui_element& property) {
    if (property.children.size() != 1)
        refuse_layout(file, property.line,
                      QStringLiteral("property \"%1\" has no value").arg(property.attribute("name")));
    return value_of(file, property.children.front());
}

int ui_property_int(const QString& file, const ui_element& property) {
    bool ok = false;
    const int number = ui_property_value(file, property).toInt(&ok);
    if (!ok) refuse_layout(file, property.line, QStringLiteral("a number is wanted"));
    return number;
}

Qt::Alignment ui_alignment(const QString& file, int line, const QString& names) {
    bool ok = false;
    const QMetaEnum known = QMetaEnum::fromType<Qt::Alignment>();
    const int value = known.keysToValue(names.toLatin1().constData(), &ok);
    if (!ok) refuse_layout(file, line, QStringLiteral("unknown alignment \"%1\"").arg(names));
    return Qt::Alignment(value);
}

void apply_ui_property(const QString& file, QWidget* w, const ui_element& property) {
    const QString name = property.attribute("name");
    const QByteArray key = name.toLatin1();
    const QVariant value = ui_property_value(file, property);
    if (property.attribute("stdset") == u"0") {
        w->setProperty(key.constData(), value);
        if (name == u"icon") set_icon(w, value.toString());
        return;
    }
    if (name == u"geometry") {
        // A window's own place is the stack's business; its size is kept for dialogs.
        w->setProperty("layout_size", value.toRect().size());
        w->setGeometry(value.toRect());
        return;
    }
    if (name == u"sizePolicy") {
        w->setSizePolicy(value.value<QSizePolicy>());
        return;
    }
    if (name == u"buddy" || name == u"currentIndex") return;
    if (!is_allowed(name))
        refuse_layout(file, property.line, QStringLiteral("property \"%1\" is not known").arg(name));
    const int index = w->metaObject()->indexOfProperty(key.constData());
    if (index < 0)
        refuse_layout(
            file, property.line,
            QStringLiteral("a %1 has no property \"%2\"").arg(QLatin1String(w->metaObject()->className()), name));
    if (!w->metaObject()->property(index).write(w, value))
        refuse_layout(file, property.line, QStringLiteral("bad value for property \"%1\"").arg(name));
}
