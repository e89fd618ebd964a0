#include "app/models/batchnotifier.h"

#include "desktop/desktopnotification.h"

#include <QDir>

namespace quillet {

BatchNotifier::BatchNotifier(const DesktopNotification& notification, std::function<bool()> windowActive,
                             QObject* parent)
    : QObject(parent), m_notification(notification), m_windowActive(std::move(windowActive)) {}

void BatchNotifier::batchEnded(int processed, int total, const QString& outputFolder) {
    if (m_windowActive())
        return;
    m_notification.post(summary(processed, total), body(processed, total, outputFolder));
}

QString BatchNotifier::summary(int processed, int total) {
    return processed == total ? tr("Processing Completed") : tr("Processing Cancelled");
}

QString BatchNotifier::body(int processed, int total, const QString& outputFolder) {
    const QString where = QDir::toNativeSeparators(outputFolder);
    if (processed == total)
        return (processed == 1 ? tr("1 file processed into %1")
                               : tr("%1 files processed into %2").arg(processed))
            .arg(where);
    return tr("%1 of %2 files processed into %3").arg(processed).arg(total).arg(where);
}

} // namespace quillet
