// Combo boxes from inside the toolkit: text and value as widget_value.cpp's table wants them.
#pragma once

#include "toolkit/ravel/qt/detail.h"

#include <QStringList>

class QComboBox;

/// Chooses the option of that text; an editable combo takes any text. RET_FAIL (nothing changed) when there is
/// none.
ret_t combo_set_text(QWidget* combo, const QString& text);
/// Value of the option whose text is shown; -1 when none is.
int combo_value(QWidget* combo);
/// Chooses the option of that value; with none of it nothing is chosen and nothing shown.
ret_t combo_set_value(QWidget* combo, int value);
/// The greyed texts of all options, in their order.
QStringList combo_hints(const QComboBox* combo);
