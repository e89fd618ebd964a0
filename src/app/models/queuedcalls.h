#pragma once

#include <QObject>

#include <functional>

namespace quillet {

// Calls posted from any thread, run one by one on the owner's thread from its
// event loop, in the order posted. Calls still waiting when the owner is
// deleted are dropped with it.
//
// Qt's queued invokeMethod does the same, but it hands the call over through
// locks inside Qt, which ThreadSanitizer cannot see into, so everything the
// call carries would be reported as a race. Here the hand-over is marked for
// it, and what a call carries is checked like any other shared data.
class QueuedCalls : public QObject {
  public:
    // A child of `owner`, on its thread.
    explicit QueuedCalls(QObject* owner);

    void post(std::function<void()> call);

  protected:
    bool event(QEvent* event) override;
};

} // namespace quillet
