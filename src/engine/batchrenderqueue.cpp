#include "engine/batchrenderqueue.h"

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
    return task < m_paths.size() && task < m_nextTake + m_window;
}

void BatchRenderQueue::work() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_stopping || startable(m_nextStart); });
        if (m_stopping)
            return;
        const int task = m_nextStart++;
        m_inWork.insert(task);
        lock.unlock();
        RenderedFile result = m_render(m_paths[task]);
        lock.lock();
        m_inWork.erase(task);
        if (task >= m_nextTake)
            m_done.emplace(task, std::move(result));
        m_changed.notify_all();
    }
}

RenderedFile BatchRenderQueue::take(int task) {
    std::unique_lock lock(m_mutex);
    if (task < m_nextTake || task >= m_paths.size())
        throw std::out_of_range("render task taken out of order");
    // Drop what was rendered for files passed over.
    m_done.erase(m_done.begin(), m_done.lower_bound(task));
    m_nextTake = task + 1;
    if (m_nextStart < task)
        m_nextStart = task;
    bool renderHere = false;
    if (m_nextStart == task) {
        // Nobody has started it: render it here rather than wait for a thread.
        ++m_nextStart;
        renderHere = true;
    } else {
        m_changed.wait(lock, [&] { return !m_inWork.contains(task); });
        renderHere = m_stale.contains(task) || !m_done.contains(task);
    }
    m_stale.erase(task);
    // The window moved: threads may start the next tasks.
    m_changed.notify_all();
    if (renderHere) {
        m_done.erase(task);
        lock.unlock();
        return m_render(m_paths[task]);
    }
    RenderedFile result = std::move(m_done.at(task));
    m_done.erase(task);
    return result;
}

void BatchRenderQueue::fileWritten(const QString& path) {
    std::lock_guard lock(m_mutex);
    for (int task = m_nextTake; task < m_nextStart; ++task)
        if (m_paths[task] == path)
            m_stale.insert(task);
}
