// Contexts, starting and ending of session threads.
#include "serial/session.h"

#include "config/cfg_image.h"
#include "serial/b_ops.h"
#include "serial/image_ops.h"
#include "serial/session_engine.h"
#include "serial/session_threads.h"
#include "toolkit/core/date_time.h"

#include <algorithm>
#include <array>
#include <mutex>

namespace {

constexpr int64_t start_wait_ms = 500;

/// What the next thread of a family starts with.
struct session_order {
    session_input input;
    session_reports reports;
};
std::mutex order_lock;
std::array<session_order, family_count> orders;
session_reports reports_now;

/// Threads that have not returned from their work: per family, and the disconnect worker's.
std::array<std::atomic<uint32_t>, family_count + 1> running{};

std::size_t index_of(family of) { return static_cast<std::size_t>(of); }

void generic_copy_out(std::span<uint8_t, session_image_bytes> image) {
    std::ranges::copy(cfg_image_get(family::generic), image.begin());
}
void generic_put_in(std::span<const uint8_t, session_image_bytes> bytes) {
    cfg_image_change(family::generic, [bytes](image_bytes& image) { std::ranges::copy(bytes, image.begin()); });
}
std::array<image_ops, family_count> images = {{{generic_copy_out, generic_put_in}, {}, {}}};
b_session_ops b_ops;

template <family F, session_kind K>
uint32_t entry() {
    session_order order;
    {
        const std::lock_guard hold(order_lock);
        order = orders[index_of(F)];
    }
    return session_run(F, *session_script_of(F, K), std::move(order.input), std::move(order.reports)).run();
}

using entry_t = uint32_t (*)();
template <family F>
entry_t entry_of(session_kind kind) {
    switch (kind) {
    case session_kind::connect:
        return entry<F, session_kind::connect>;
    case session_kind::read:
        return entry<F, session_kind::read>;
    case session_kind::write:
        return entry<F, session_kind::write>;
    default:
        return nullptr;
    }
}

tk_thread** slot_of(session_context& context, session_kind kind) {
    if (kind == session_kind::connect) return &context.connect_thread;
    return kind == session_kind::read ? &context.read_thread : &context.write_thread;
}

/// Whether what the family's reads and writes need has been registered.
bool can_exchange(family of) {
    if (of == family::b)
        return b_ops.read_request != nullptr && b_ops.write_frame != nullptr && b_ops.accept_image != nullptr;
    return image_ops_of(of).copy_out != nullptr && image_ops_of(of).put_in != nullptr;
}

// A session that has just reported its end may still have a moment to go; one that hangs must not take the window
// with it.
bool lock_soon(family of, tk_mutex* mutex) {
    const int64_t until = time_now_ms() + start_wait_ms;
    while (running[index_of(of)] != 0 || tk_mutex_try_lock(mutex) != RET_OK) {
        if (time_now_ms() >= until) return false;
        sleep_ms(1);
    }
    return true;
}

void join_slot(tk_thread** slot) {
    if (*slot == nullptr) return;
    tk_thread_join(*slot);
    tk_thread_destroy(*slot);
    *slot = nullptr;
}

} // namespace

void image_ops_register(family of, const image_ops& ops) { images[index_of(of)] = ops; }
const image_ops& image_ops_of(family of) { return images[index_of(of)]; }
void b_session_ops_register(const b_session_ops& ops) { b_ops = ops; }
const b_session_ops& b_session_ops_get() { return b_ops; }

session_context& session_of(family of) {
    static std::array<session_context, family_count> contexts = {
        {{.of = family::generic}, {.of = family::a}, {.of = family::b}}};
    return contexts[index_of(of)];
}

tk_mutex* session_lock(family of) {
    if (of == family::generic) return generic_session_lock();
    const dev_obj* dev = dev_get(of);
    return dev == nullptr ? nullptr : dev->mutex;
}

bool session_any_running() {
    return std::ranges::any_of(running, [](const auto& count) { return count > 0; });
}

session_timing& session_timing_get() {
    static session_timing timing;
    return timing;
}

std::string& session_log_path() {
    static std::string path = "../log/p_v_info.txt";
    return path;
}

void session_set_reports(session_reports reports) {
    const std::lock_guard hold(order_lock);
    reports_now = std::move(reports);
}

session_reports session_reports_get() {
    const std::lock_guard hold(order_lock);
    return reports_now;
}

uint32_t (*session_entry_of(family of, session_kind kind))() {
    switch (of) {
    case family::a:
        return entry_of<family::a>(kind);
    case family::b:
        return entry_of<family::b>(kind);
    default:
        return entry_of<family::generic>(kind);
    }
}

tk_thread* session_thread_start(const char* name, std::size_t place, std::function<uint32_t()> work) {
    std::atomic<uint32_t>& count = running[place];
    ++count;
    tk_thread* thread = worker_start(name, [&count, work = std::move(work)] {
        const uint32_t result = work();
        --count;
        return result;
    });
    if (thread == nullptr) --count;
    return thread;
}

tk_thread* worker_start(const char* name, std::function<uint32_t()> work) {
    constexpr uint32_t priority = 4;
    constexpr uint32_t stack_bytes = 4096;
    tk_thread* thread = tk_thread_create(std::move(work));
    tk_thread_set_name(thread, name);
    tk_thread_set_priority(thread, priority);
    tk_thread_set_stack_size(thread, stack_bytes);
    if (tk_thread_start(thread) == RET_OK) return thread;
    tk_thread_destroy(thread);
    return nullptr;
}

ret_t session_start(family of, session_kind kind, const session_input& input) {
    const session_script* script = session_script_of(of, kind);
    tk_mutex* mutex = session_lock(of);
    if (script == nullptr || mutex == nullptr) return RET_FAIL;
    if (kind != session_kind::connect && !can_exchange(of)) return RET_FAIL;
    if (!lock_soon(of, mutex)) return RET_FAIL;
    {
        const std::lock_guard hold(order_lock);
        orders[index_of(of)] = {input, reports_now};
    }
    session_context& context = session_of(of);
    tk_thread** slot = slot_of(context, kind);
    tk_thread* thread = session_thread_start(script->thread_name, index_of(of), session_entry_of(of, kind));
    if (thread != nullptr) {
        session_release_thread(slot);
        *slot = thread;
        context.operation = static_cast<uint8_t>(kind);
    }
    tk_mutex_unlock(mutex);
    return thread != nullptr ? RET_OK : RET_FAIL;
}

void session_join_threads(family of) {
    session_context& context = session_of(of);
    join_slot(&context.connect_thread);
    join_slot(&context.read_thread);
    join_slot(&context.write_thread);
}

void session_release_thread(tk_thread** slot) {
    tk_thread_release(*slot);
    *slot = nullptr;
}

HANDLE session_take_port(family of) {
    session_context& context = session_of(of);
    context.port_open = false;
    return context.port.exchange(INVALID_HANDLE_VALUE);
}

void session_close_port(family of) { owned_handle port(session_take_port(of)); }
