#include "engine/batchrenderqueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

QStringList taskPaths(int n) {
    QStringList paths;
    for (int i = 0; i < n; ++i)
        paths.append(QStringLiteral("/f%1").arg(i));
    return paths;
}

// Renders by recording the path; optionally slow, counting how many run at once.
struct CountingRender {
    std::atomic<int> running{0};
    std::atomic<int> peak{0};
    std::atomic<int> calls{0};
    int delayMs = 0;

    RenderedFile operator()(const QString& path) {
        const int now = ++running;
        int seen = peak.load();
        while (now > seen && !peak.compare_exchange_weak(seen, now)) {
        }
        ++calls;
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        --running;
        RenderedFile file;
        file.path = path;
        file.bytes = path.toUtf8();
        return file;
    }
};

class RenderQueueTest : public ::testing::TestWithParam<int> {};

TEST_P(RenderQueueTest, ResultsComeInTaskOrderWithAtMostOnePerThreadInWork) {
    CountingRender render;
    render.delayMs = 5;
    const int threads = GetParam();
    {
        BatchRenderQueue queue(taskPaths(20), [&](const QString& p) { return render(p); }, threads);
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(queue.take(i).path, QStringLiteral("/f%1").arg(i));
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
    EXPECT_EQ(render.calls.load(), 20);
    // The taker may render the task it waits for itself, besides the threads.
    EXPECT_LE(render.peak.load(), std::max(1, threads));
}

TEST_P(RenderQueueTest, TasksPassedOverAreDroppedAndNeverRenderedLate) {
    CountingRender render;
    BatchRenderQueue queue(taskPaths(50), [&](const QString& p) { return render(p); }, GetParam());
    EXPECT_EQ(queue.take(0).path, QStringLiteral("/f0"));
    EXPECT_EQ(queue.take(40).path, QStringLiteral("/f40"));
    EXPECT_EQ(queue.take(41).path, QStringLiteral("/f41"));
    EXPECT_THROW(queue.take(41), std::out_of_range);
    // Only the tasks within reach of the window were rendered.
    EXPECT_LE(render.calls.load(), 3 + 2 * GetParam() + 1);
}

TEST_P(RenderQueueTest, ResultMadeFromAReplacedInputIsRenderedAgain) {
    std::atomic<int> version{0};
    std::atomic<int> calls{0};
    BatchRenderQueue queue(
        {QStringLiteral("/a"), QStringLiteral("/b"), QStringLiteral("/c")},
        [&](const QString& p) {
            ++calls;
            RenderedFile file;
            file.path = p;
            file.bytes = QByteArray::number(version.load());
            return file;
        },
        GetParam());
    queue.take(0);
    std::this_thread::sleep_for(std::chrono::milliseconds(50)); // let the threads render b and c
    version = 1;
    queue.fileWritten(QStringLiteral("/b"));
    EXPECT_EQ(queue.take(1).bytes, QByteArray("1"));
    EXPECT_EQ(queue.take(2).path, QStringLiteral("/c"));
}

INSTANTIATE_TEST_SUITE_P(Threads, RenderQueueTest, ::testing::Values(0, 1, 2, 4));

} // namespace
