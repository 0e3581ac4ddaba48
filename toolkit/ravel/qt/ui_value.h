// Properties of a Designer file: their values, and which of them a widget takes. For toolkit/ravel only.
#pragma once

#include "toolkit/ravel/qt/ui_file.h"

#include <QVariant>

class QWidget;

/// The value of a <property> (texts translated unless marked notr). Throws layout_error for an unknown kind.
QVariant ui_property_value(const QString& file, const ui_element& property);
/// The whole-number or text value of a layout's or an item's property.
int ui_property_int(const QString& file, const ui_element& property);

/// Sets one property of a widget; what stands for later (buddy, current page) is left alone. Throws layout_error
/// when it is none that layouts may use, or none of this widget's, or the value does not fit.
void apply_ui_property(const QString& file, QWidget* w, const ui_element& property);
/// Takes the pictures of all icons anew: another theme has others.
void renew_icons();
/// Qt::Alignment from "Qt::AlignRight|Qt::AlignVCenter".
Qt::Alignment ui_alignment(const QString& file, int line, const QString& names);
