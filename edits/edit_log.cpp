#include "edits/edit_log.h"

#include <utility>

namespace {

/// As the store holds it: a hex text may stand there unformed.
field_value raw_value(const field& row, const tk_object* props) {
    if (row.key == nullptr) return {};
    return value_is_text(row) ? field_value{0, field_text(row, props)} : value_of(row, props);
}

std::vector<field_value> raw_values(const dev_obj& dev) {
    std::vector<field_value> out;
    out.reserve(dev.of.fields.size());
    for (const field& row : dev.of.fields) out.push_back(raw_value(row, dev.props.get()));
    return out;
}

std::string step_name(const edit_cause& cause, const edit_step& step) {
    if (*cause.name != '\0') return cause.name;
    const field* what = cause.what != nullptr && *cause.what->label != '\0' ? cause.what
                        : step.values.empty()                               ? &no_field
                                                                            : step.values.front().what;
    return what->label;
}

/// Adds what `more` changed behind `step`; what came back to where it was is no change.
template <typename Change, typename Same>
void merge(std::vector<Change>& changes, const std::vector<Change>& more, Same same_place) {
    for (const Change& change : more) {
        Change* before = nullptr;
        for (Change& one : changes)
            if (same_place(one, change)) before = &one;
        if (before == nullptr)
            changes.push_back(change);
        else
            before->after = change.after;
    }
    std::erase_if(changes, [](const Change& one) { return one.before == one.after; });
}

} // namespace

edit_log::edit_log(dev_obj& dev) : dev_(dev), values_(raw_values(dev)), image_(dev.image) {}

void edit_log::note(const edit_cause& cause, bool restored) {
    edit_step step{.restored_before = restored_, .restored_after = restored};
    std::vector<field_value> now = raw_values(dev_);
    for (std::size_t i = 0; i < now.size(); ++i)
        if (now[i] != values_[i]) step.values.push_back({&dev_.of.fields[i], values_[i], now[i]});
    for (std::size_t i = 0; i < image_.size(); ++i)
        if (dev_.image[i] != image_[i]) step.bytes.push_back({i, image_[i], dev_.image[i]});
    restored_ = restored;
    edit_step* last = done_ == 0 ? nullptr : &steps_[done_ - 1];
    const bool goes_on = last != nullptr && last->typed != nullptr && last->typed == cause.what && cause.typing;
    if (last != nullptr && !goes_on) last->typed = nullptr;
    if (step.values.empty() && step.bytes.empty()) return;

    values_ = std::move(now);
    image_ = dev_.image;
    steps_.resize(done_);
    if (goes_on) {
        merge(last->values, step.values, [](const auto& a, const auto& b) { return a.what == b.what; });
        merge(last->bytes, step.bytes, [](const auto& a, const auto& b) { return a.at == b.at; });
        last->restored_after = restored;
        if (last->values.empty() && last->bytes.empty()) steps_.resize(--done_);
        return;
    }
    step.name = step_name(cause, step);
    step.typed = cause.typing ? cause.what : nullptr;
    steps_.push_back(std::move(step));
    if (steps_.size() > edit_steps_max) steps_.pop_front();
    done_ = steps_.size();
}

void edit_log::shown(bool restored) {
    if (dev_.image == image_ && raw_values(dev_) == values_) restored_ = restored;
}

void edit_log::apply(const edit_step& step, bool back) {
    for (const value_change& change : step.values) {
        const field_value& value = back ? change.before : change.after;
        static_cast<void>(value_store(*change.what, value, dev_.props.get()));
        values_[static_cast<std::size_t>(change.what - dev_.of.fields.data())] = value;
    }
    for (const byte_change& change : step.bytes)
        image_[change.at] = dev_.image[change.at] = back ? change.before : change.after;
    restored_ = back ? step.restored_before : step.restored_after;
}

const edit_step* edit_log::undo() {
    if (done_ == 0) return nullptr;
    edit_step& step = steps_[--done_];
    step.typed = nullptr;
    apply(step, true);
    return &step;
}

const edit_step* edit_log::redo() {
    if (done_ == steps_.size()) return nullptr;
    const edit_step& step = steps_[done_++];
    apply(step, false);
    return &step;
}
