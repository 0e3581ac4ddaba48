#include "toolkit/core/log.h"
#include "toolkit/core/thread.h"
#include "toolkit/core/worker.h"

#include <atomic>
#include <cstdlib>
#include <mutex>

struct tk_mutex {
    std::mutex lock;
    std::atomic<uint64_t> owner{0}; ///< thread_token() of the holder, 0 for none
    std::atomic<uint32_t> users{0}; ///< threads inside tk_mutex_lock
};

struct tk_semaphore {
    std::mutex lock;
    stop_condition posted;
    uint32_t count = 0;
    uint32_t waiters = 0;
};

namespace {

#ifdef NDEBUG
constexpr bool abort_on_misuse = false;
#else
constexpr bool abort_on_misuse = true;
#endif

/// A number of the calling thread's own, never given twice.
uint64_t thread_token() {
    static std::atomic<uint64_t> last{0};
    thread_local const uint64_t token = last.fetch_add(1) + 1;
    return token;
}

ret_t misuse(const char* what) {
    log_write(LOG_LEVEL_ERROR, what);
    if (abort_on_misuse) std::abort();
    return RET_FAIL;
}

} // namespace

tk_mutex* tk_mutex_create() { return new tk_mutex; }

ret_t tk_mutex_lock(tk_mutex* mutex) {
    if (mutex == nullptr) return RET_BAD_PARAMS;
    const uint64_t self = thread_token();
    if (mutex->owner.load() == self) return misuse("tk_mutex_lock: the calling thread holds this mutex already\n");
    mutex->users.fetch_add(1);
    mutex->lock.lock();
    mutex->owner.store(self);
    mutex->users.fetch_sub(1);
    return RET_OK;
}

ret_t tk_mutex_try_lock(tk_mutex* mutex) {
    if (mutex == nullptr) return RET_BAD_PARAMS;
    const uint64_t self = thread_token();
    if (mutex->owner.load() == self || !mutex->lock.try_lock()) return RET_FAIL;
    mutex->owner.store(self);
    return RET_OK;
}

ret_t tk_mutex_unlock(tk_mutex* mutex) {
    if (mutex == nullptr) return RET_BAD_PARAMS;
    if (mutex->owner.load() != thread_token()) return RET_FAIL;
    mutex->owner.store(0);
    mutex->lock.unlock();
    return RET_OK;
}

ret_t tk_mutex_destroy(tk_mutex* mutex) {
    if (mutex == nullptr) return RET_BAD_PARAMS;
    const bool held = mutex->owner.load() != 0 || mutex->users.load() != 0 || !mutex->lock.try_lock();
    if (held) return misuse("tk_mutex_destroy: a thread holds this mutex or waits for it\n");
    mutex->lock.unlock();
    delete mutex;
    return RET_OK;
}

tk_semaphore* tk_semaphore_create(uint32_t count) {
    auto* const semaphore = new tk_semaphore;
    semaphore->count = count;
    return semaphore;
}

ret_t tk_semaphore_wait(tk_semaphore* semaphore, uint32_t timeout_ms) {
    if (semaphore == nullptr) return RET_BAD_PARAMS;
    const auto available = [semaphore] { return semaphore->count > 0; };
    std::unique_lock<std::mutex> guard(semaphore->lock);
    semaphore->waiters++;
    const bool taken = semaphore->posted.wait(guard, worker_stop_token(), timeout_ms, available);
    semaphore->waiters--;
    if (!taken) return RET_FAIL;
    semaphore->count--;
    return RET_OK;
}

ret_t tk_semaphore_post(tk_semaphore* semaphore) {
    if (semaphore == nullptr) return RET_BAD_PARAMS;
    const std::lock_guard<std::mutex> guard(semaphore->lock);
    if (semaphore->count == UINT32_MAX) return RET_FAIL;
    semaphore->count++;
    semaphore->posted.notify_all();
    return RET_OK;
}

ret_t tk_semaphore_destroy(tk_semaphore* semaphore) {
    if (semaphore == nullptr) return RET_BAD_PARAMS;
    bool waited_for = false;
    {
        const std::lock_guard<std::mutex> guard(semaphore->lock);
        waited_for = semaphore->waiters != 0;
    }
    if (waited_for) return misuse("tk_semaphore_destroy: a thread waits for this semaphore\n");
    delete semaphore;
    return RET_OK;
}
