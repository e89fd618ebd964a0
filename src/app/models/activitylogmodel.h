#pragma once

#include "app/models/queuedcalls.h"
#include "support/activitylog.h"

#include <QList>
#include <QObject>
#include <QString>

#include <mutex>

namespace quillet {

// The activity log's lines, in the order written, from any thread. Views are
// told once per burst (linesAdded, on the main thread) and read what they have
// not shown yet, so a fast batch costs them one update per burst, not per line.
class ActivityLogModel : public QObject, public ActivityLog {
    Q_OBJECT
  public:
    struct Entry {
        QString text;
        bool warning = false;
    };

    explicit ActivityLogModel(QObject* parent = nullptr);

    // Appends the text as given; it carries its own line break.
    void writeActivity(const QString& line) override;
    void writeWarningActivity(const QString& line) override;
    // Main thread only.
    void clear();

    qsizetype count() const;
    // Up to `max` entries from index `from`.
    QList<Entry> entries(qsizetype from, qsizetype max) const;
    // The whole log as plain text.
    QString text() const;

  Q_SIGNALS:
    void linesAdded();
    void cleared();

  private:
    void append(const QString& line, bool warning);

    mutable std::mutex m_mutex;
    QList<Entry> m_entries;
    bool m_notifyPosted = false;
    QueuedCalls m_calls{this};
};

} // namespace quillet
