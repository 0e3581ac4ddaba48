// A Qt Designer file as a tree of elements that know their line. For toolkit/ravel only.
#pragma once

#include <QString>
#include <QXmlStreamAttributes>

#include <stdexcept>
#include <string>
#include <vector>

struct ui_element {
    QString tag;
    QXmlStreamAttributes attributes;
    QString text;
    int line = 0;
    std::vector<ui_element> children;

    QString attribute(const char* name) const { return attributes.value(QLatin1String(name)).toString(); }
    bool has(const char* name) const { return attributes.hasAttribute(QLatin1String(name)); }
    /// The child property of that name; null when there is none.
    const ui_element* property(const char* name) const;
    /// The first child of that tag; null when there is none.
    const ui_element* child(const char* wanted) const;
};

/// Why a layout is refused; what() is "FILE:LINE: reason".
struct layout_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};
[[noreturn]] void refuse_layout(const QString& file, int line, const QString& reason);

/// Reads the file; its root element is <ui>. Throws layout_error. GUI thread only.
ui_element read_ui_file(const QString& path);
/// Begins to read the file on a thread of its own; the next read_ui_file of that path takes what was read, refusal
/// included. Of a path that is read ahead twice the later reading counts. GUI thread only.
void read_ui_file_ahead(const QString& path);
