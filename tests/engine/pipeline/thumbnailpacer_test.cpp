#include "engine/pipeline/thumbnailpacer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace quillet;
using namespace std::chrono_literals;

TEST(ThumbnailPacer, EveryFileWithoutAnIntervalOneFileAPeriodWithOne) {
    ThumbnailPacer every(0ms);
    EXPECT_TRUE(every.take());
    EXPECT_TRUE(every.take());

    ThumbnailPacer paced(50ms);
    EXPECT_TRUE(paced.take()); // the first file always brings one
    EXPECT_FALSE(paced.take());
    std::this_thread::sleep_for(60ms);
    EXPECT_TRUE(paced.take());
    EXPECT_FALSE(paced.take());
}

// Render threads asking at once: exactly one of them gets the period's
// thumbnail.
TEST(ThumbnailPacer, OneWinnerAmongThreads) {
    ThumbnailPacer paced(10s);
    std::atomic<int> taken{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 1000; ++n)
                taken += paced.take() ? 1 : 0;
        });
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(taken.load(), 1);
}
