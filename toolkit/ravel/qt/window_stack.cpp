#include "toolkit/ravel/qt/window_stack.h"

#include "toolkit/ravel/qt/backdrop.h"
#include "toolkit/ravel/qt/input_trap.h"
#include "toolkit/ravel/qt/pump.h"
#include "toolkit/ravel/qt/screen_fit.h"
#include "toolkit/ravel/qt/widget_class.h"
#include "toolkit/ravel/ravel.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QPointer>

#include <algorithm>

namespace {

class native_widget final : public QWidget {
  public:
    native_widget() : QWidget(nullptr) {}
    bool painted = false;

  protected:
    void closeEvent(QCloseEvent* what) override;
    void resizeEvent(QResizeEvent* what) override;
    /// Of a window in it: they cover it whole.
    bool eventFilter(QObject* watched, QEvent* what) override {
        if (what->type() == QEvent::Paint) painted = true;
        return QWidget::eventFilter(watched, what);
    }
};

struct entry {
    widget_state* state;
    QWidget* shell; ///< the window itself, or a dialog's backdrop
    QPointer<QWidget> last_focus;
};

struct stack_t {
    native_widget* native = nullptr;
    widget_state* root = nullptr;
    std::vector<entry> windows;            ///< bottom to top
    std::vector<QPointer<QWidget>> graves; ///< shells of closed windows
    int modal_depth = 0;
    bool ended = false;
};
stack_t stack;

entry* find(const widget_state* state) {
    const auto at = std::find_if(stack.windows.begin(), stack.windows.end(),
                                 [state](const entry& e) { return e.state == state; });
    return at == stack.windows.end() ? nullptr : &*at;
}

/// Closed windows go when no code of theirs can be on the call stack: from the plain main loop.
void empty_graves() {
    if (stack.modal_depth > 0) return;
    for (const QPointer<QWidget>& grave : std::exchange(stack.graves, {})) delete grave.data();
}

void keep_focus(entry& e) {
    QWidget* focus = stack.native->focusWidget();
    e.last_focus = focus != nullptr && e.shell->isAncestorOf(focus) ? focus : nullptr;
    // A button that was held down when something came over it is let go without a click.
    for (QAbstractButton* button : e.shell->findChildren<QAbstractButton*>()) button->setDown(false);
}

/// Closes the lists and menus that stand open over `around` (null: all of them): one keeps all keys and clicks to
/// itself, so none may outlast what it belongs to.
void close_popups(const QWidget* around) {
    while (QWidget* popup = QApplication::activePopupWidget()) {
        const QWidget* owner = popup;
        while (owner != nullptr && owner != around) owner = owner->parentWidget();
        if (around != nullptr && owner == nullptr) return;
        if (auto* combo = dynamic_cast<QComboBox*>(popup->parentWidget())) combo->hidePopup();
        popup->close();
        if (QApplication::activePopupWidget() == popup) return;
    }
}

void focus_first(QWidget* win) {
    for (QWidget* w = win->nextInFocusChain(); w != win; w = w->nextInFocusChain()) {
        const bool takes = (w->focusPolicy() & Qt::TabFocus) != 0 && w->focusProxy() == nullptr;
        if (!takes || !win->isAncestorOf(w) || !w->isEnabled() || !w->isVisibleTo(win)) continue;
        w->setFocus(Qt::OtherFocusReason);
        return;
    }
}

void focus_into(entry& e) {
    QWidget* last = e.last_focus.data();
    if (last != nullptr && last->isEnabled() && last->isVisibleTo(stack.native)) {
        last->setFocus(Qt::OtherFocusReason);
        return;
    }
    QWidget* win = e.state->w;
    win->setFocus(Qt::OtherFocusReason);
    if (e.state->kind != widget_kind::dialog) return;
    // Once its handlers are attached: the first field of a dialog has the focus.
    const auto choose = [win] {
        if (win == top_input_window() && stack.native->focusWidget() == win) focus_first(win);
    };
    QMetaObject::invokeMethod(win, choose, Qt::QueuedConnection);
}

void native_widget::resizeEvent(QResizeEvent* what) {
    for (const entry& e : stack.windows) e.shell->setGeometry(rect());
    QWidget::resizeEvent(what);
}

void native_widget::closeEvent(QCloseEvent* what) {
    if (QWidget* typed_in = focusWidget()) typed_in->clearFocus(); // what is being typed is not lost
    const bool agreed = stack.root->fire(event_type::request_close) == RET_OK;
    widget_state* main = live(window_manager_get_top_main_window(window_manager()));
    if (!agreed || (main != nullptr && main->fire(event_type::request_close) != RET_OK)) {
        what->ignore();
        return;
    }
    what->accept();
    end_all_loops();
}

} // namespace

void create_native_window(int width, int height, const QString& title) {
    stack.ended = false;
    stack.native = new native_widget;
    stack.root = adopt_widget(stack.native, widget_kind::window_manager, QString());
    stack.native->setAttribute(Qt::WA_StyledBackground);
    stack.native->setWindowTitle(title);
    stack.native->setMinimumSize(320, 240);
    stack.native->setAcceptDrops(true); // what comes is looked at by the input trap
    stack.native->resize(width, height);
    install_input_trap();
}

void destroy_native_window() {
    remove_input_trap();
    stack.windows.clear();
    for (const QPointer<QWidget>& grave : std::exchange(stack.graves, {})) delete grave.data();
    delete std::exchange(stack.native, nullptr);
    stack.root = nullptr;
}

QWidget* native_window() { return stack.native; }

bool native_window_painted() { return stack.native != nullptr && stack.native->painted; }

void show_native_window() {
    if (stack.native == nullptr || stack.native->isVisible() || stack.ended) return;
    if (!stack.native->testAttribute(Qt::WA_WState_Created)) fit_on_screen(stack.native);
    stack.native->show();
    stack.native->raise();
    stack.native->activateWindow();
}

std::vector<widget_state*> stacked_windows_topmost_first() {
    std::vector<widget_state*> all;
    for (auto e = stack.windows.rbegin(); e != stack.windows.rend(); ++e) all.push_back(e->state);
    return all;
}

QWidget* shell_of(const widget_state* state) {
    const entry* e = find(state);
    return e == nullptr ? nullptr : e->shell;
}

QWidget* top_input_window() { return stack.windows.empty() ? nullptr : stack.windows.back().state->w; }

QWidget* make_root(bool dialog) {
    // A subwindow to Qt: shortcuts and the Tab key stay inside the one that has the focus.
    if (dialog) return (new backdrop_widget(stack.native))->card();
    auto* root = new ground_widget(stack.native, Qt::SubWindow);
    root->installEventFilter(stack.native);
    return root;
}

QWidget* shell_of_root(QWidget* root) { return root->parentWidget() == stack.native ? root : root->parentWidget(); }

void push_window(widget_state* state) {
    close_popups(nullptr);
    if (!stack.windows.empty()) keep_focus(stack.windows.back());
    QWidget* shell = shell_of_root(state->w);
    if (auto* backdrop = dynamic_cast<backdrop_widget*>(shell)) backdrop->card_is_built();
    state->complete_shown(); // before the first layout
    stack.windows.push_back({state, shell, nullptr});
    shell->setGeometry(stack.native->rect());
    shell->show();
    shell->raise();
    show_native_window();
    focus_into(stack.windows.back());
}

void raise_window(widget_state* state) {
    entry* e = find(state);
    if (e == nullptr || e == &stack.windows.back()) return;
    close_popups(nullptr);
    keep_focus(stack.windows.back());
    std::rotate(e, e + 1, &stack.windows.back() + 1);
    stack.windows.back().shell->raise();
    focus_into(stack.windows.back());
}

void close_window(widget_state* state, uint32_t code) {
    const entry* e = find(state);
    if (e == nullptr) return;
    QWidget* shell = e->shell;
    close_popups(shell);
    const bool was_top = e == &stack.windows.back();
    stack.windows.erase(stack.windows.begin() + (e - stack.windows.data()));
    state->closed = true;
    state->quit_code = code;
    if (modal_run* run = std::exchange(state->modal, nullptr)) {
        run->code = code;
        run->loop.exit();
    }
    stack.graves.emplace_back(shell);
    if (was_top && !stack.windows.empty()) focus_into(stack.windows.back());
    shell->hide();
    QMetaObject::invokeMethod(stack.native, empty_graves, Qt::QueuedConnection);
}

ret_t request_close_window(widget_state* state) {
    const QPointer<widget_state> self(state);
    if (state->fire(event_type::request_close) != RET_OK) return RET_FAIL;
    if (self == nullptr || find(state) == nullptr) return RET_OK;
    const bool last_main = state->kind == widget_kind::window &&
                           std::count_if(stack.windows.begin(), stack.windows.end(),
                                         [](const entry& e) { return e.state->kind == widget_kind::window; }) == 1;
    if (last_main) {
        end_all_loops();
    } else {
        close_window(state, 0);
    }
    return RET_OK;
}

uint32_t run_modal(widget_state* state) {
    modal_run run;
    state->modal = &run;
    stack.modal_depth++;
    wake_pump(); // jobs that the caller's dispatch had still before it run in the dialog's loop
    run.loop.exec();
    stack.modal_depth--;
    // Ended with the program: nobody closed it.
    for (const entry& e : std::vector<entry>(stack.windows)) {
        if (e.state->modal == &run) close_window(e.state, 0);
    }
    if (stack.native != nullptr) QMetaObject::invokeMethod(stack.native, empty_graves, Qt::QueuedConnection);
    return run.code;
}

void end_all_loops() {
    stack.ended = true;
    for (const entry& e : stack.windows) {
        if (e.state->modal != nullptr) e.state->modal->loop.exit();
    }
    QCoreApplication::exit(0);
}

bool loops_ended() { return stack.ended; }
