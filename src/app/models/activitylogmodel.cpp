#include "app/models/activitylogmodel.h"

namespace quillet {

ActivityLogModel::ActivityLogModel(QObject* parent) : QObject(parent) {}

void ActivityLogModel::writeActivity(const QString& line) {
    append(line, false);
}

void ActivityLogModel::writeWarningActivity(const QString& line) {
    append(line, true);
}

void ActivityLogModel::append(const QString& line, bool warning) {
    {
        std::lock_guard lock(m_mutex);
        m_entries.append(Entry{line, warning});
        if (m_notifyPosted)
            return;
        m_notifyPosted = true;
    }
    m_calls.post([this] {
        {
            std::lock_guard lock(m_mutex);
            m_notifyPosted = false;
        }
        Q_EMIT linesAdded();
    });
}

void ActivityLogModel::clear() {
    {
        std::lock_guard lock(m_mutex);
        m_entries.clear();
    }
    Q_EMIT cleared();
}

qsizetype ActivityLogModel::count() const {
    std::lock_guard lock(m_mutex);
    return m_entries.size();
}

QList<ActivityLogModel::Entry> ActivityLogModel::entries(qsizetype from, qsizetype max) const {
    std::lock_guard lock(m_mutex);
    if (from >= m_entries.size())
        return {};
    return m_entries.mid(from, max);
}

QString ActivityLogModel::text() const {
    std::lock_guard lock(m_mutex);
    QString all;
    for (const Entry& entry : m_entries)
        all += entry.text;
    return all;
}

} // namespace quillet
