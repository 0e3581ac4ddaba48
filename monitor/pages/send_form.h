// The widgets that say what is sent, and their settings: every change is stored under the widget's name. GUI
// thread.
#pragma once

#include "monitor/compose.h"
#include "monitor/periodic.h"
#include "monitor/traffic.h"
#include "toolkit/ravel/widget.h"

#include <string>

/// The form of one opening of the page.
class send_form {
  public:
    /// Finds the widgets, shows what the settings file says (a setting that is missing leaves what the layout
    /// shows, one that is no option the first of them), and follows what the user does from then on.
    send_form(widget* page, traffic& with, std::string settings);
    send_form(const send_form&) = delete;
    send_form& operator=(const send_form&) = delete;

    /// What is to be sent now; its frame is shown. False when the user was told what stands against it.
    bool compose(traffic_request* request);
    /// What a tick of periodic sending adds.
    periodic_step step() const;
    /// Milliseconds from one tick to the next, 1 or more.
    uint32_t period_ms() const;
    /// While periodic sending runs, what it was started with cannot be changed.
    void lock_periodic(bool locked) const;

    /// Text of a setting; `usual` when there is none.
    std::string setting(const char* key, const char* usual) const;
    void store(const char* key, const std::string& text) const;

  private:
    struct selector;
    static const selector selectors[];

    widget* at(const char* name) const { return widget_need(page_, name); }
    void bind_selector(const selector& row);
    void bind_lengths();
    void offer_lengths(const std::string& wanted);
    void protocol_changed();
    void bind_check_mode();
    void bind_text(const char* name);
    void bind_switch(const char* name);
    void show_hint() const;

    widget* const page_;
    traffic& traffic_;
    const std::string settings_;
    send_parameters now_;
};
