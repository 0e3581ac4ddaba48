// What was edited of one device, step by step, so that it can be taken back and done again. A step is one thing
// that the user did, whatever it changed; it keeps what changed, not a copy of all. GUI thread only.
#pragma once

#include "profile/value.h"
#include "session/dev_obj.h"

#include <deque>

inline constexpr std::size_t edit_steps_max = 500;

/// A value as the store holds it, before and after.
struct value_change {
    const field* what;
    field_value before, after;
};
/// A byte of the image: what a reply holds beside the fields is taken back too.
struct byte_change {
    std::size_t at;
    uint8_t before, after;
};

struct edit_step {
    std::string name{}; ///< for people: a field's label, or what changed many
    std::vector<value_change> values{};
    std::vector<byte_change> bytes{};
    bool restored_before = false; ///< whether the code view showed restored defaults (code_form::restored)
    bool restored_after = false;
    const field* typed = nullptr; ///< more strokes at this field belong to the same step
};

class edit_log {
  public:
    /// `dev` must outlive it, and be changed on this thread only.
    explicit edit_log(dev_obj& dev);

    /// What has changed since the last call becomes one step; nothing changed: none. Steps that were taken back are
    /// forgotten then. `restored`: as the code view shows it now.
    void note(const edit_cause& cause, bool restored);

    /// The code view shows the device now, as restored defaults or not. Where nothing has changed since the last
    /// call of note() the next step starts from there.
    void shown(bool restored);

    /// The step that would be taken back, or done again, next; null when there is none.
    const edit_step* undoable() const { return done_ == 0 ? nullptr : &steps_[done_ - 1]; }
    const edit_step* redoable() const { return done_ == steps_.size() ? nullptr : &steps_[done_]; }
    /// Takes a step back, or does it again: store and image are what they were, byte for byte. The step, null when
    /// there is none.
    const edit_step* undo();
    const edit_step* redo();

  private:
    void apply(const edit_step& step, bool back);

    dev_obj& dev_;
    std::vector<field_value> values_; ///< of dev_.of.fields, as they were noted last
    std::vector<uint8_t> image_;
    bool restored_ = false;
    std::deque<edit_step> steps_;
    std::size_t done_ = 0; ///< steps in front of it are done, others were taken back
};
