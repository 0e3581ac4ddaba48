// Builds windows from Qt Designer files. What layouts may hold is described in toolkit/ravel/layouts.md.
// For toolkit/ only. GUI thread only.
#pragma once

#include "toolkit/ravel/qt/detail.h"

/// Builds ui/NAME.ui of the theme: a window or dialog named NAME in a root of make_root, every widget of it known
/// to the registry. Null when the file is missing or broken; `error` then tells "FILE:LINE: reason".
widget_state* load_layout(const QString& name, std::string* error);

/// Builds the content of ui/NAME.ui (root a QWidget) as a new view below `parent`, at the end of its children,
/// named as the file's root is. Null as above.
widget_state* load_part(const QString& name, QWidget* parent, widget_state* parent_state, std::string* error);

/// Makes a widget class known to layouts (as a Designer custom widget of that class name). `make` gets the parent;
/// the widget's type is `type`.
void register_layout_class(const char* class_name, const char* type, QWidget* (*make)(QWidget* parent));
