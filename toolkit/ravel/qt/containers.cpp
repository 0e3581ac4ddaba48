// Page sets and scroll views.
#include "toolkit/ravel/qt/widget_class.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QCoreApplication>
#include <QLayout>
#include <QScrollBar>
#include <QStackedWidget>

namespace {

/// Lets a changed size or content reach the scroll ranges before they are used.
void settle(const scroll_widget* area) {
    QWidget* content = area->widget();
    if (content == nullptr) return;
    QCoreApplication::sendPostedEvents(content, QEvent::LayoutRequest);
    if (content->layout() != nullptr) content->layout()->activate();
}

/// A page that is on screen once it is turned to is built before.
ret_t turn_to(QStackedWidget* pages, int index) {
    widget_state* page = state_of(pages->widget(index));
    if (page != nullptr && pages->isVisibleTo(native_window())) page->complete_shown();
    pages->setCurrentIndex(index);
    return RET_OK;
}

} // namespace

ret_t pages_set_active(widget* w, uint32_t index) {
    auto* pages = live_as<QStackedWidget>(w);
    if (pages == nullptr) return RET_BAD_PARAMS;
    if (index >= static_cast<uint32_t>(pages->count())) return RET_FAIL;
    return turn_to(pages, static_cast<int>(index));
}

ret_t pages_set_active_by_name(widget* w, const char* name) {
    auto* pages = live_as<QStackedWidget>(w);
    if (pages == nullptr || name == nullptr) return RET_BAD_PARAMS;
    for (int i = 0; i < pages->count(); ++i) {
        const widget_state* page = state_of(pages->widget(i));
        if (page == nullptr || page->name != name) continue;
        return turn_to(pages, i);
    }
    return RET_FAIL;
}

ret_t scroll_view_set_offset(widget* w, int32_t x, int32_t y) {
    auto* area = live_as<scroll_widget>(w);
    if (area == nullptr) return RET_BAD_PARAMS;
    const from_code code;
    settle(area);
    area->horizontalScrollBar()->setValue(x);
    area->verticalScrollBar()->setValue(y);
    return RET_OK;
}

int32_t scroll_view_get_offset_x(const widget* w) {
    const auto* area = live_as<scroll_widget>(w);
    return area == nullptr ? 0 : area->horizontalScrollBar()->value();
}

int32_t scroll_view_get_offset_y(const widget* w) {
    const auto* area = live_as<scroll_widget>(w);
    return area == nullptr ? 0 : area->verticalScrollBar()->value();
}

ret_t scroll_view_set_virtual_w(widget* w, int32_t width) {
    const auto* area = live_as<scroll_widget>(w);
    if (area == nullptr || area->widget() == nullptr || width < 0) return RET_BAD_PARAMS;
    area->widget()->setMinimumWidth(width);
    settle(area);
    return RET_OK;
}

ret_t scroll_view_set_virtual_h(widget* w, int32_t height) {
    const auto* area = live_as<scroll_widget>(w);
    if (area == nullptr || area->widget() == nullptr || height < 0) return RET_BAD_PARAMS;
    area->widget()->setMinimumHeight(height);
    settle(area);
    return RET_OK;
}
