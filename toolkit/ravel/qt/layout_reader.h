// Builds windows from Qt Designer files. What layouts may hold is described in toolkit/ravel/layouts.md.
// For toolkit/ only. GUI thread only.
#pragma once

#include "toolkit/ravel/qt/detail.h"
#include "toolkit/ravel/qt/ui_file.h"

#include <optional>
#include <utility>

/// Builds ui/NAME.ui of the theme: a window or dialog named NAME in a root of make_root, every widget of it known
/// to the registry. Null when the file is missing or broken; `error` then tells "FILE:LINE: reason".
widget_state* load_layout(const QString& name, std::string* error);

/// The layout ui/NAME.ui (root a QWidget) of which many copies are built, such as a table's row: the file is read
/// once, with the first copy.
class part_layout {
  public:
    explicit part_layout(QString name) : name_(std::move(name)) {}
    /// Builds its content as a new view below `parent`, at the end of its children, named as the file's root is.
    /// Null as load_layout; a file that could not be read is read again with the next copy.
    widget_state* build(QWidget* parent, widget_state* parent_state, std::string* error);

  private:
    const QString name_;
    std::optional<ui_element> read_;
};

/// Makes a widget class known to layouts (as a Designer custom widget of that class name). `make` gets the parent;
/// the widget's type is `type`.
void register_layout_class(const char* class_name, const char* type, QWidget* (*make)(QWidget* parent));
