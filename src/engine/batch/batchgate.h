#pragma once

#include <condition_variable>
#include <mutex>

namespace quillet {

// Pause and cancel for a running batch, both taking effect between files.
// Any thread may pause, resume or cancel; the batch thread waits in pass().
class BatchGate {
  public:
    // Toggles between running and paused; returns true when now paused.
    bool togglePause() {
        std::lock_guard lock(m_mutex);
        m_paused = !m_paused;
        m_changed.notify_all();
        return m_paused;
    }
    // Cancels the batch; a paused batch wakes up and ends.
    void cancel() {
        std::lock_guard lock(m_mutex);
        m_cancelled = true;
        m_paused = false;
        m_changed.notify_all();
    }
    bool isCancelled() const {
        std::lock_guard lock(m_mutex);
        return m_cancelled;
    }
    bool isPaused() const {
        std::lock_guard lock(m_mutex);
        return m_paused;
    }
    // Waits while paused; returns false once the batch is cancelled.
    bool pass() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_paused || m_cancelled; });
        return !m_cancelled;
    }

  private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_paused = false;
    bool m_cancelled = false;
};

} // namespace quillet
