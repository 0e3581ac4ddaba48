#include "toolkit/ravel/qt/ui_file.h"

#include <QFile>
#include <QXmlStreamReader>

namespace {
constexpr int deepest = 100; // elements inside each other

ui_element read_element(QXmlStreamReader& xml, const QString& path, int depth) {
    ui_element element;
    element.tag = xml.name().toString();
    element.attributes = xml.attributes();
    element.line = static_cast<int>(xml.lineNumber());
    if (depth > deepest) refuse_layout(path, element.line, QStringLiteral("nested too deeply"));
    while (!xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::StartElement:
            element.children.push_back(read_element(xml, path, depth + 1));
            break;
        case QXmlStreamReader::Characters:
            element.text += xml.text();
            break;
        case QXmlStreamReader::EndElement:
            return element;
        default:
            break;
        }
    }
    return element;
}
} // namespace

const ui_element* ui_element::property(const char* name) const {
    for (const ui_element& element : children) {
        if (element.tag == u"property" && element.attribute("name") == QLatin1String(name)) return &element;
    }
    return nullptr;
}

const ui_element* ui_element::child(const char* wanted) const {
    for (const ui_element& element : children) {
        if (element.tag == QLatin1String(wanted)) return &element;
    }
    return nullptr;
}

void refuse_layout(const QString& file, int line, const QString& reason) {
    throw layout_error(QStringLiteral("%1:%2: %3").arg(file).arg(line).arg(reason).toStdString());
}

ui_element read_ui_file(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) refuse_layout(path, 0, QStringLiteral("cannot be opened"));
    QXmlStreamReader xml(&file);
    if (!xml.readNextStartElement() || xml.name() != u"ui") {
        const QString why = xml.hasError() ? xml.errorString() : QStringLiteral("is not a Designer file");
        refuse_layout(path, static_cast<int>(xml.lineNumber()), why);
    }
    ui_element root = read_element(xml, path, 0);
    if (xml.hasError()) refuse_layout(path, static_cast<int>(xml.lineNumber()), xml.errorString());
    return root;
}
