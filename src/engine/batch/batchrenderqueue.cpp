#include "engine/batch/batchrenderqueue.h"

namespace quillet {

BatchRenderQueue::BatchRenderQueue(QStringList paths, Render render, int threads)
    : m_paths(std::move(paths)), m_render(std::move(render)), m_window(std::max(0, threads)) {
    for (int i = 0; i < m_window; ++i)
        m_threads.emplace_back([this] { work(); });
}

BatchRenderQueue::~BatchRenderQueue() {
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

bool BatchRenderQueue::startable(int task) const {
    // The task being taken and the next `m_window` ones; only the threads
    // render, so no more than `m_window` pictures are decoded at once.
    return task < m_paths.size() && task <= m_current + m_window;
}

void BatchRenderQueue::work() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_stopping || startable(m_nextStart); });
        if (m_stopping)
            return;
        const int task = m_nextStart++;
        lock.unlock();
        Rendered result = m_render(m_paths[task]);
        lock.lock();
        if (task >= m_current)
            m_done.emplace(task, std::move(result));
        m_changed.notify_all();
    }
}

BatchRenderQueue::Rendered BatchRenderQueue::take(int task) {
    std::unique_lock lock(m_mutex);
    if (task < m_current || task >= m_paths.size() || (task == m_current && m_taken))
        throw std::out_of_range("render task taken out of order");
    // Drop what was rendered for files passed over.
    m_done.erase(m_done.begin(), m_done.lower_bound(task));
    m_current = task;
    m_taken = true;
    if (m_nextStart < task)
        m_nextStart = task;
    m_changed.notify_all();
    if (m_window == 0) {
        m_nextStart = task + 1;
        lock.unlock();
        return m_render(m_paths[task]);
    }
    m_changed.wait(lock, [&] { return m_done.contains(task); });
    Rendered result = std::move(m_done.at(task));
    m_done.erase(task);
    const bool stale = m_stale.erase(task) > 0;
    lock.unlock();
    // Rare: the batch itself replaced this input after it was read ahead.
    return stale ? m_render(m_paths[task]) : result;
}

void BatchRenderQueue::fileWritten(const QString& path) {
    std::lock_guard lock(m_mutex);
    for (int task = m_current + 1; task < m_nextStart; ++task)
        if (m_paths[task] == path)
            m_stale.insert(task);
}

} // namespace quillet
