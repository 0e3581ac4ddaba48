#include "cli/program_visit.h"

#include "profile/compare.h"

program_visit::program_visit(const cli_context& with, const profile& from, const std::string& port)
    : with_(with), steps_{session_kind::connect, session_kind::write}, link_(with, from.model, port) {
    static_cast<void>(profile_apply(from, link_.dev()));
    written_ = link_.dev().image;
    if (with.options.check) steps_.push_back(session_kind::read);
}

void program_visit::start(std::function<void()> ended) {
    ended_ = std::move(ended);
    next();
}

void program_visit::next() {
    if (at_ == steps_.size()) {
        compare();
        return leave();
    }
    link_.start(steps_[at_++], with_.options.alternative, [this](std::optional<cli_error> error) {
        error_ = std::move(error);
        error_ ? leave() : next();
    });
}

void program_visit::compare() {
    if (!with_.options.check) return;
    std::string keys;
    for (const image_difference& one : image_differences(link_.dev().of, written_, link_.in_module()))
        if (!one.always_same) keys += std::string(keys.empty() ? "" : " ") + one.what->key;
    if (!keys.empty())
        error_ =
            cli_error{.status = exit_different, .where = link_.port(), .step = "校验", .text = "不一致: " + keys};
}

void program_visit::leave() {
    if (!link_.dev().session.connected()) return end();
    link_.leave([this](std::optional<cli_error> error) {
        if (!error_) error_ = std::move(error);
        end();
    });
}

void program_visit::end() {
    done_ = true;
    ended_();
}
