#pragma once

#include "engine/pipeline/renderfile.h"

#include <QString>
#include <QStringList>

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace quillet {

// Runs the pixel stage of the files ahead of the one being committed, on a
// bounded set of threads, and hands the results back strictly in task order.
//
// Task i renders paths[i], one result per version of the batch. Only the queue's threads render, each one
// task at a time, and none runs further than `threads` tasks past the last one taken: at most `threads`
// decoded pictures are alive at once. With no threads each task is rendered when it is taken, on the taker's
// thread: the plain serial run.
class BatchRenderQueue {
  public:
    using Rendered = std::vector<RenderedFile>;
    using Render = std::function<Rendered(const QString&)>;

    BatchRenderQueue(QStringList paths, Render render, int threads);
    // Stops the threads; work in hand is finished and thrown away.
    ~BatchRenderQueue();
    BatchRenderQueue(const BatchRenderQueue&) = delete;
    BatchRenderQueue& operator=(const BatchRenderQueue&) = delete;

    // The rendered task, waiting for it if need be. Tasks must be taken in
    // rising order; tasks passed over are dropped (their files were never
    // committed).
    Rendered take(int task);
    // An input file has just been replaced by the batch's own output: any
    // result made ahead from it is stale and is rendered again when taken.
    void fileWritten(const QString& path);

  private:
    void work();
    bool startable(int task) const;

    const QStringList m_paths;
    const Render m_render;
    const int m_window;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_current = 0;    // the task taken last (or about to be)
    bool m_taken = false; // whether m_current has been taken
    int m_nextStart = 0;  // lowest task no thread has started
    std::map<int, Rendered> m_done;
    std::set<int> m_stale;
    bool m_stopping = false;
    std::vector<std::thread> m_threads;
};

} // namespace quillet
