#pragma once

#include "support/activitylog.h"

#include <QString>

#include <vector>

namespace quillet {

// Activity-log lines held back so they can be shown later, in the order a
// one-file-at-a-time run would have written them.
class BatchLog final : public ActivityLog {
  public:
    struct Line {
        QString text;
        bool warning = false;
        friend bool operator==(const Line&, const Line&) = default;
    };

    void writeActivity(const QString& line) override { m_lines.push_back({line, false}); }
    void writeWarningActivity(const QString& line) override { m_lines.push_back({line, true}); }

    const std::vector<Line>& lines() const { return m_lines; }
    // Writes every held line to `log`, in order.
    void replay(ActivityLog& log) const {
        for (const Line& line : m_lines)
            line.warning ? log.writeWarningActivity(line.text) : log.writeActivity(line.text);
    }

  private:
    std::vector<Line> m_lines;
};

} // namespace quillet
