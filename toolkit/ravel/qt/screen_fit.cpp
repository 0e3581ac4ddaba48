#include "toolkit/ravel/qt/screen_fit.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>

namespace {

// Until the system says how wide its frames are: a title bar and thin lines.
constexpr QMargins usual_frame{1, 32, 1, 1};

bool has_real_screen() {
    const QString platform = QGuiApplication::platformName();
    return platform != QLatin1String("offscreen") && platform != QLatin1String("minimal");
}

} // namespace

QRect place_on_screen(QSize asked, const QRect& room, const QMargins& frame) {
    const QRect inner = room.marginsRemoved(frame);
    const QSize size = asked.boundedTo(inner.size());
    const QSize spare = inner.size() - size;
    return {inner.topLeft() + QPoint(spare.width() / 2, spare.height() / 2), size};
}

void fit_on_screen(QWidget* window) {
    if (!has_real_screen() || window->screen() == nullptr) return;
    window->winId(); // some systems know the frame from here on
    const QMargins known = window->windowHandle()->frameMargins();
    const QMargins frame = known.isNull() ? usual_frame : known;
    const QRect place = place_on_screen(window->size(), window->screen()->availableGeometry(), frame);
    window->resize(place.size());
    window->move(place.topLeft() - QPoint(frame.left(), frame.top()));
}
