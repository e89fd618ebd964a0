#include "engine/pipeline/thumbnailpacer.h"

namespace quillet {

bool ThumbnailPacer::take() {
    if (m_interval.count() <= 0)
        return true;
    const Clock::rep now = Clock::now().time_since_epoch().count();
    Clock::rep next = m_next.load(std::memory_order_relaxed);
    // One thread wins each interval; the others leave their files without.
    while (now >= next)
        if (m_next.compare_exchange_weak(next, now + m_interval.count(), std::memory_order_relaxed))
            return true;
    return false;
}

} // namespace quillet
