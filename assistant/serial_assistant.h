// The assistant without its window: it listens at a module's port while nobody else has it, keeps what it hears,
// and sends single frames. Once started it works until the program ends.
#pragma once

#include "assistant/lines.h"
#include "assistant/sent_history.h"
#include "session/device_session.h"
#include "toolkit/core/worker.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

/// Waits, in milliseconds; tests shorten them before the first start.
struct assistant_timing {
    uint32_t after_read_ms = 500; ///< from a read that brought something to the next
    uint32_t look_again_ms = 50;  ///< at an open port, while somebody else has it or nothing came
    uint32_t port_wait_ms = 200;  ///< a frame waits for the port at most this long
};
assistant_timing& assistant_timing_get();

/// How the port is that is listened at.
enum class assistant_port : uint8_t {
    closed,
    open,
    lost, ///< open, but it has vanished
};

/// Whether something was started on a thread.
enum class assistant_start : uint8_t {
    started,
    busy,      ///< the one before is not done
    no_frame,  ///< the form gives none
    no_thread, ///< the system refuses one
};

/// What became of a frame.
enum class assistant_sent : uint8_t {
    written,
    no_port, ///< not open, or somebody else has it
    failed,  ///< the write failed
};

enum class transcript_part : uint8_t { rows, frames };

/// What a text is to be made of.
struct text_wish {
    transcript_part part = transcript_part::rows;
    std::size_t first = 0;
    std::size_t count = SIZE_MAX;    ///< as far as there are any
    byte_form form = byte_form::hex; ///< of rows
};

/// Everything but what says otherwise belongs to the GUI thread.
class serial_assistant {
  public:
    explicit serial_assistant(std::string history = sent_history_path);
    /// Ends the workers, whatever they wait for.
    ~serial_assistant();
    serial_assistant(const serial_assistant&) = delete;
    serial_assistant& operator=(const serial_assistant&) = delete;

    /// Listens at the device's port from now on (null: at the one before, if any) whenever it is open, and runs
    /// `refresh` on the GUI thread after something came or was sent, and after port() has changed; asked for again
    /// while it is pending it still runs once. The device must live until the assistant is destroyed. Started
    /// again, the threads go on. RET_FAIL: no threads.
    ret_t start(device_session* device, std::function<void()> refresh);
    /// Nobody looks any more: `refresh` does not run from now on.
    void leave() { refresh_ = {}; }

    /// Sends the form's frame, and keeps it in the transcript and in the history when it was written; `done` then
    /// runs on the GUI thread, also after a failure. Waits for nothing. Unless it is started nothing runs.
    assistant_start send(const assistant_form& form, std::function<void(assistant_sent)> done);
    std::span<const assistant_form> history() const { return history_.entries(); }

    transcript& log() { return log_; }
    /// Any thread.
    assistant_port port() const;

    /// Test aid: how often the receive thread has looked at a port. Any thread.
    uint64_t looks() const { return looks_; }

    using text_made = std::function<ret_t(std::string text)>;
    /// Makes one text, a line for each row or frame, on a thread, and gives it to `made` there; what that answers
    /// is given to `done` on the GUI thread. Unless it is started nothing runs.
    assistant_start make_text(const text_wish& wish, text_made made, std::function<void(ret_t)> done);

  private:
    uint32_t receive();
    void show_port(bool lost);
    std::optional<std::size_t> receive_all();
    std::optional<std::size_t> receive_once();
    uint32_t analyse();
    assistant_sent write(std::span<const uint8_t> frame);
    std::string text_of_rows(const text_wish& wish) const;
    std::string text_of_frames(const text_wish& wish) const;
    static assistant_start run(worker* on, const char* name, worker::work work, bool* under_way);
    void ask_refresh();
    void post(std::function<void()> what);

    const std::string refresh_key_;
    transcript log_;
    sent_history history_;
    std::atomic<device_session*> device_{nullptr}; ///< changes only while nobody receives
    std::atomic<bool> lost_{false};
    std::atomic<uint64_t> looks_{0};
    std::function<void()> refresh_; ///< the GUI thread's
    std::shared_ptr<int> alive_;    ///< what is posted does nothing once it is gone
    bool sending_ = false;          ///< the GUI thread's
    bool making_ = false;           ///< the GUI thread's

    worker receiver_, analyser_, sender_, maker_; // last: they use the others
};
