// The widgets that say what is sent: selectors with their options, the identifier, the data and their limits. GUI
// thread.
#pragma once

#include "assistant/send_frame.h"
#include "toolkit/ravel/widget.h"

#include <optional>

/// The form of one opening of the dialog.
class send_rows {
  public:
    /// Finds the widgets, offers the options, shows what is kept, if anything is, and keeps what stands in the
    /// widgets from then on; `kept` must live as long as the window.
    send_rows(widget* win, std::optional<assistant_form>* kept);
    send_rows(const send_rows&) = delete;
    send_rows& operator=(const send_rows&) = delete;

    /// What stands in the widgets.
    assistant_form form() const;
    /// Shows a form, with the limits that go with it.
    void show(const assistant_form& form);

  private:
    widget* at(const char* name) const { return widget_need(win_, name); }
    void limit();
    void follow();

    widget* const win_;
    std::optional<assistant_form>* const kept_;
};
