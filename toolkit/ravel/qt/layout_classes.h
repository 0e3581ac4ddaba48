// Which widget a Designer class and its style class stand for. For toolkit/ravel only.
#pragma once

#include "toolkit/ravel/qt/detail.h"

struct layout_class {
    const char* class_name;  ///< as in the Designer file
    const char* style_class; ///< must be among the words of the property "class"; null: any
    widget_kind kind;
    const char* type; ///< of a registered class; null: the kind's own
    QWidget* (*make)(QWidget* parent);
};

/// The row for a class with these style words; null when layouts may not use the class.
const layout_class* find_layout_class(const QString& class_name, const QStringList& style_words);
