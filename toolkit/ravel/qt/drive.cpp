#include "toolkit/ravel/drive.h"

#include "toolkit/core/date_time.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/qt/drive_strokes.h"
#include "toolkit/ravel/qt/window_stack.h"
#include "toolkit/ravel/ravel.h"

#include <QApplication>
#include <QTimer>

namespace {

constexpr int between_lines_ms = 10;
constexpr int status_failed = 3;
constexpr int look_again_ms = 5;
constexpr uint32_t size_patience_ms = 10000;

class player final : public QObject {
  public:
    player(std::vector<drive_action> actions, drive_reports reports)
        : QObject(qApp), actions_(std::move(actions)), reports_(std::move(reports)),
          strokes_(drive_first_strokes()) {
        clock_.setSingleShot(true);
        QObject::connect(&clock_, &QTimer::timeout, this, [this] { step(); });
        QObject::connect(qApp, &QCoreApplication::aboutToQuit, this, [this] { on_quit(); });
        clock_.start(0);
    }

  private:
    /// One stroke. The next step is on its way before the stroke is done: what it does may run a dialog's loop, and
    /// the script goes on in there. After a stroke that is done this object may be gone.
    void step() {
        if (strokes_.empty()) {
            begin_line();
            return;
        }
        drive_stroke_t now = std::move(strokes_.front());
        strokes_.pop_front();
        if (!trying_) tried_since_ms_ = time_now_ms();
        trying_ = false;
        clock_.start(strokes_.empty() ? now.pause_ms + between_lines_ms : now.pause_ms);
        const drive_outcome outcome = now.run(time_now_ms() - tried_since_ms_);
        if (outcome.what == drive_outcome::again) {
            trying_ = true;
            strokes_.push_front(std::move(now));
            clock_.start(outcome.again_ms);
        } else if (outcome.what == drive_outcome::failed) {
            fail(outcome.why);
        }
    }

    /// Tells of the line before and takes the next one up.
    void begin_line() {
        tell_good();
        if (begun_ == actions_.size()) {
            finish(true);
            return;
        }
        const drive_action& action = actions_[begun_++];
        told_ = false;
        strokes_ = drive_strokes_of(action);
        // Once the window is closed nobody is left to tell.
        if (action.verb == drive_verb::close) tell_good();
        clock_.start(0);
    }

    void tell_good() {
        if (told_) return;
        told_ = true;
        reports_.echo(tk_format("ok   %u ", actions_[begun_ - 1].line) + actions_[begun_ - 1].text + "\n");
    }

    void fail(const std::string& why) {
        const bool early = begun_ == 0; // no window ever came
        const std::string line =
            early ? std::string("0") : std::to_string(actions_[begun_ - 1].line) + " " + actions_[begun_ - 1].text;
        reports_.echo("FAIL " + line + ": " + why + "\n");
        finish(false);
    }

    /// The main loop ends; a line that had no chance to be played is a failure.
    void on_quit() {
        if (finished_) return;
        if (strokes_.empty()) tell_good();
        if (strokes_.empty() && begun_ == actions_.size()) {
            finish(true);
            return;
        }
        if (told_) begun_++;
        fail("the program ended before this line was played");
    }

    void finish(bool good) {
        if (finished_) return;
        finished_ = true;
        clock_.stop();
        deleteLater();
        reports_.ended(good);
    }

    const std::vector<drive_action> actions_;
    const drive_reports reports_;
    drive_strokes strokes_; ///< what is left of the line under way
    std::size_t begun_ = 0; ///< how many lines were taken up
    bool told_ = true;      ///< the line under way was told of
    bool trying_ = false;   ///< the next stroke is a further try
    int64_t tried_since_ms_ = 0;
    bool finished_ = false;
    QTimer clock_;
};

} // namespace

ret_t drive_play(const std::string& script, drive_reports reports) {
    if (!reports.echo || !reports.ended || qApp == nullptr) return RET_BAD_PARAMS;
    std::vector<drive_action> actions;
    std::string error;
    if (drive_parse(script, &actions, &error)) {
        new player(std::move(actions), std::move(reports));
        return RET_OK;
    }
    const auto tell = [error, reports = std::move(reports)] {
        reports.echo("FAIL " + error + "\n");
        reports.ended(false);
    };
    QTimer::singleShot(0, qApp, tell);
    return RET_OK;
}

bool drive_wait(const std::function<bool()>& done, uint32_t timeout_ms) {
    if (qApp == nullptr || !done) return false;
    if (done()) return true;
    const int64_t end = time_now_ms() + timeout_ms;
    bool answer = false;
    QEventLoop loop;
    QTimer clock;
    QObject::connect(&clock, &QTimer::timeout, &loop, [&] {
        answer = done();
        if (answer || time_now_ms() >= end) loop.quit();
    });
    clock.start(look_again_ms);
    loop.exec();
    return answer;
}

ret_t drive_window_size(int32_t w, int32_t h) {
    if (native_window() == nullptr) return RET_FAIL;
    const QSize wanted = QSize(w, h).expandedTo(native_window()->minimumSize());
    native_window()->resize(wanted);
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    return drive_wait([&] { return native_window()->size() == wanted; }, size_patience_ms) ? RET_OK : RET_FAIL;
}

ret_t drive_paint(widget* w) {
    const widget_state* state = live(w);
    if (state == nullptr) return RET_BAD_PARAMS;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    state->w->repaint();
    return RET_OK;
}

std::string drive_word(const std::string& text) { return drive_quote(text, text.size()); }

ret_t tk_drive(const char* script_path) {
    std::string script;
    if (script_path == nullptr) return RET_BAD_PARAMS;
    if (!fs_read_all(script_path, &script)) return RET_FAIL;
    return drive_play(script, {log_console, [](bool good) {
                                   if (!good) tk_quit(status_failed);
                               }});
}
