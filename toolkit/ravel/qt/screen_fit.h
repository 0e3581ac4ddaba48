// Where the native window goes on a real screen. For toolkit/ravel only. GUI thread only.
#pragma once

#include <QMargins>
#include <QRect>
#include <QSize>

class QWidget;

/// The place of a window's content on a screen whose room for windows is `room`: of the size asked for, but with
/// its `frame` never larger than the room, and in the middle of it. All in logical pixels.
QRect place_on_screen(QSize asked, const QRect& room, const QMargins& frame);

/// Gives a window that is about to be shown for the first time such a size and place on its screen. Where the
/// platform has no real screen (offscreen) it stays as it is.
void fit_on_screen(QWidget* window);
