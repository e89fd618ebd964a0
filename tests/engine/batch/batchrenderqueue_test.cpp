#include "engine/batch/batchrenderqueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

using namespace quillet;

namespace {

// Renders /f0, /f1, ... into the current version number, slowly if asked, counting how many run at once.
struct CountingRender {
    std::atomic<int> running{0}, peak{0}, calls{0}, version{0};
    int delayMs = 0;

    BatchRenderQueue::Rendered operator()(const QString& path) {
        const int now = ++running;
        for (int seen = peak.load(); now > seen && !peak.compare_exchange_weak(seen, now);) {
        }
        ++calls;
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        --running;
        RenderedFile file;
        file.path = path;
        file.bytes = QByteArray::number(version.load());
        return {file};
    }
    BatchRenderQueue queue(int tasks, int threads) {
        QStringList paths;
        for (int i = 0; i < tasks; ++i)
            paths.append(QStringLiteral("/f%1").arg(i));
        return BatchRenderQueue(
            paths, [this](const QString& path) { return (*this)(path); }, threads);
    }
};

class RenderQueueTest : public ::testing::TestWithParam<int> {};

TEST_P(RenderQueueTest, ResultsComeInTaskOrderWithAtMostOnePerThreadInWork) {
    CountingRender render;
    render.delayMs = 5;
    {
        BatchRenderQueue queue = render.queue(20, GetParam());
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(queue.take(i).front().path, QStringLiteral("/f%1").arg(i));
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
    EXPECT_EQ(render.calls.load(), 20);
    // The taker may render the task it waits for itself, besides the threads.
    EXPECT_LE(render.peak.load(), std::max(1, GetParam()));
}

TEST_P(RenderQueueTest, ResultMadeFromAReplacedInputIsRenderedAgain) {
    CountingRender render;
    BatchRenderQueue queue = render.queue(3, GetParam());
    queue.take(0);
    std::this_thread::sleep_for(std::chrono::milliseconds(50)); // let the threads render f1 and f2
    render.version = 1;
    queue.fileWritten("/f1");
    EXPECT_EQ(queue.take(1).front().bytes, "1");
    EXPECT_EQ(queue.take(2).front().path, "/f2");
}

INSTANTIATE_TEST_SUITE_P(Threads, RenderQueueTest, ::testing::Values(0, 1, 2, 4));

} // namespace
