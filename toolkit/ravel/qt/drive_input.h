// The user's hands: real pointer and key events, given to the native window as the system would. GUI thread only.
//
// What an event does may run a dialog's loop before the call returns, and may destroy any widget.
#pragma once

#include "toolkit/ravel/drive_script.h"
#include "toolkit/ravel/qt/detail.h"

#include <QAbstractItemView>
#include <QPoint>

/// Where a user would press a widget, in its own coordinates: its centre, or what reacts of it.
QPoint drive_spot(const widget_state* state);
/// Where an editable combo box opens its list; the usual spot for the others.
QPoint drive_list_spot(const widget_state* state);
/// Why a press at a point of the widget's own would not reach it; empty when it would. `only_pointing`: nor would
/// the pointer, which one that is disabled lets come.
std::string drive_obstacle(const widget_state* state, const QPoint& at, bool only_pointing = false);

void drive_move(QWidget* w, const QPoint& at);
/// With the left button down.
void drive_drag(QWidget* w, const QPoint& at);
void drive_press(QWidget* w, const QPoint& at);
void drive_release(QWidget* w, const QPoint& at);
/// `delta` in eighths of a degree, positive away from the user; 120 is one notch of most wheels.
void drive_wheel(QWidget* w, const QPoint& at, int delta, bool shift = false);
/// What is seen of a widget as far as the widgets around it cut it, in its own pixels.
QRect drive_part_in_view(const QWidget* w);

/// Drags a file onto the middle of the native window and lets go of it; false when nobody takes it.
bool drive_drop(const QString& path);

/// One stroke of a key, to whatever has the keyboard focus.
void drive_stroke(const drive_key& key);
/// One character typed; a line end is Enter, a tab stop is Tab.
void drive_type(const QString& character);

/// The native window with its open popups, as PNG bytes; empty when it cannot be had.
QByteArray drive_picture();
