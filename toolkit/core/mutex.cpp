#include "toolkit/core/lock_grave.h"
#include "toolkit/core/log.h"
#include "toolkit/core/thread.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <vector>

struct tk_mutex {
    std::mutex lock;
    std::atomic<uint64_t> owner{0}; ///< thread_token() of the holder, 0 for none
    std::atomic<uint32_t> users{0}; ///< threads inside tk_mutex_lock
};

struct tk_semaphore {
    std::mutex lock;
    std::condition_variable posted;
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

/// Keeps what cannot be freed where it stays reachable.
template <typename T>
void bury(T* object) {
    static std::mutex lock;
    static std::vector<T*>* const grave = new std::vector<T*>;
    const std::lock_guard<std::mutex> guard(lock);
    grave->push_back(object);
}

} // namespace

tk_mutex* tk_mutex_create() { return new tk_mutex; }

ret_t tk_mutex_lock(tk_mutex* mutex) {
    if (mutex == nullptr) return RET_BAD_PARAMS;
    const uint64_t self = thread_token();
    if (mutex->owner.load() == self) {
        log_write(LOG_LEVEL_ERROR, "tk_mutex_lock: the calling thread holds this mutex already\n");
        if (abort_on_misuse) std::abort();
        return RET_FAIL;
    }
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
    if (!held) mutex->lock.unlock();
    if (held || tk_thread_any_let_go()) {
        bury(mutex);
    } else {
        delete mutex;
    }
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
    if (timeout_ms == UINT32_MAX) {
        semaphore->posted.wait(guard, available);
    } else {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
        semaphore->posted.wait_until(guard, end, available);
    }
    semaphore->waiters--;
    if (semaphore->count == 0) return RET_FAIL;
    semaphore->count--;
    return RET_OK;
}

ret_t tk_semaphore_post(tk_semaphore* semaphore) {
    if (semaphore == nullptr) return RET_BAD_PARAMS;
    const std::lock_guard<std::mutex> guard(semaphore->lock);
    if (semaphore->count == UINT32_MAX) return RET_FAIL;
    semaphore->count++;
    semaphore->posted.notify_one();
    return RET_OK;
}

ret_t tk_semaphore_destroy(tk_semaphore* semaphore) {
    if (semaphore == nullptr) return RET_BAD_PARAMS;
    bool waited_for = false;
    {
        const std::lock_guard<std::mutex> guard(semaphore->lock);
        waited_for = semaphore->waiters != 0;
    }
    if (waited_for || tk_thread_any_let_go()) {
        bury(semaphore);
    } else {
        delete semaphore;
    }
    return RET_OK;
}
