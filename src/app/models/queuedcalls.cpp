#include "app/models/queuedcalls.h"

#include <QCoreApplication>
#include <QEvent>

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace quillet {

namespace {

const QEvent::Type CallEventType = static_cast<QEvent::Type>(QEvent::registerEventType());

// Marks for ThreadSanitizer that the posting thread's writes (the event and
// its call included) happen before the receiving thread reads the event.
void handOver([[maybe_unused]] QEvent* event) {
#if defined(__SANITIZE_THREAD__)
    __tsan_release(event);
#endif
}

void takeOver([[maybe_unused]] QEvent* event) {
#if defined(__SANITIZE_THREAD__)
    __tsan_acquire(event);
#endif
}

class CallEvent : public QEvent {
  public:
    explicit CallEvent(std::function<void()> call) : QEvent(CallEventType), m_call(std::move(call)) {}
    void run() const { m_call(); }

  private:
    std::function<void()> m_call;
};

} // namespace

QueuedCalls::QueuedCalls(QObject* owner) : QObject(owner) {}

void QueuedCalls::post(std::function<void()> call) {
    auto* event = new CallEvent(std::move(call));
    handOver(event);
    QCoreApplication::postEvent(this, event);
}

bool QueuedCalls::event(QEvent* event) {
    takeOver(event); // before the event is read at all
    if (event->type() != CallEventType)
        return QObject::event(event);
    static_cast<CallEvent*>(event)->run();
    return true;
}

} // namespace quillet
