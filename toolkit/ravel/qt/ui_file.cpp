#include "toolkit/ravel/qt/ui_file.h"

#include "toolkit/core/worker.h"

#include <QFile>
#include <QXmlStreamReader>

#include <algorithm>
#include <exception>
#include <memory>
#include <utility>

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

ui_element read_now(const QString& path) {
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

struct file_ahead {
    QString path;
    ui_element root;
    std::exception_ptr refusal;
    worker reader; // last: it fills the others
};

std::vector<std::unique_ptr<file_ahead>>& ahead() {
    static auto& all = *new std::vector<std::unique_ptr<file_ahead>>;
    return all;
}

/// Takes a file off the list; null when it is not on it.
std::unique_ptr<file_ahead> take_ahead(const QString& path) {
    const auto found = std::ranges::find(ahead(), path, [](const auto& file) { return file->path; });
    if (found == ahead().end()) return nullptr;
    std::unique_ptr<file_ahead> file = std::move(*found);
    ahead().erase(found);
    return file;
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

void read_ui_file_ahead(const QString& path) {
    take_ahead(path);
    auto next = std::make_unique<file_ahead>();
    next->path = path;
    const auto read = [to = next.get()] {
        try {
            to->root = read_now(to->path);
        } catch (const layout_error&) {
            to->refusal = std::current_exception();
        }
        return 0U;
    };
    if (next->reader.start({.name = "layout"}, read) == RET_OK) ahead().push_back(std::move(next));
}

ui_element read_ui_file(const QString& path) {
    const std::unique_ptr<file_ahead> file = take_ahead(path);
    if (file == nullptr) return read_now(path);
    file->reader.join();
    if (file->refusal != nullptr) std::rethrow_exception(file->refusal);
    return std::move(file->root);
}
