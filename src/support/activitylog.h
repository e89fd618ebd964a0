#pragma once

#include <QString>

namespace quillet {

// Where the engine and the in-place operations write their activity-log lines.
// Lines are passed as they are, trailing line feed included.
class ActivityLog {
  public:
    virtual ~ActivityLog() = default;
    virtual void writeActivity(const QString& line) = 0;
    virtual void writeWarningActivity(const QString& line) = 0;
};

// Swallows every line; for callers that do not keep a log.
class NullActivityLog final : public ActivityLog {
  public:
    void writeActivity(const QString&) override {}
    void writeWarningActivity(const QString&) override {}
};

} // namespace quillet
