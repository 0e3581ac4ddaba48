// The widgets that say what is sent: selectors with their options, the identifier, the data and their limits. GUI
// thread.
#pragma once

#include "assistant/send_frame.h"
#include "toolkit/ravel/widget.h"

/// The form of one opening of the dialog.
class send_rows {
  public:
    /// Finds the widgets, offers the options, and follows what the user does from then on.
    explicit send_rows(widget* win);
    send_rows(const send_rows&) = delete;
    send_rows& operator=(const send_rows&) = delete;

    /// What stands in the widgets.
    assistant_form form() const;
    /// Shows a form, with the limits that go with it.
    void show(const assistant_form& form);

  private:
    widget* at(const char* name) const { return widget_need(win_, name); }
    void limit();
    void show_hints() const;

    widget* const win_;
};
