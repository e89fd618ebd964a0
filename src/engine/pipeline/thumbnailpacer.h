#pragma once

#include <atomic>
#include <chrono>

namespace quillet {

// Decides which files get a status thumbnail: every one, or at most one per
// interval. A window shows one thumbnail at a time and merges fast status
// updates, so drawing one for each file of a fast batch is work it drops.
// take() may be called from any render thread.
class ThumbnailPacer {
  public:
    using Clock = std::chrono::steady_clock;

    explicit ThumbnailPacer(std::chrono::milliseconds interval) : m_interval(interval) {}

    // True for the first call, then once the interval has passed since the
    // last true answer; always true with an interval of 0.
    bool take();

  private:
    const Clock::duration m_interval;
    std::atomic<Clock::rep> m_next{Clock::duration::min().count()};
};

} // namespace quillet
