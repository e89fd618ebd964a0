#pragma once

#include <QDBusConnection>
#include <QString>

namespace quillet {

// A desktop notification through the freedesktop notification service
// (org.freedesktop.Notifications) on the session bus. Where the session has
// no such service, or no bus at all, nothing is shown and nothing fails.
class DesktopNotification {
  public:
    // The application's id: its launcher's name and its icon's.
    static constexpr char ApplicationId[] = "com.korvane.Quillet";

    explicit DesktopNotification(const QDBusConnection& bus = QDBusConnection::sessionBus());

    // Shows the notification and waits (at most `timeoutMs`) for the service
    // to take it, for a process that exits right after. True when it did.
    bool send(const QString& summary, const QString& body, int timeoutMs = 2000) const;
    // Shows the notification without waiting for the service.
    void post(const QString& summary, const QString& body) const;

  private:
    QDBusMessage message(const QString& summary, const QString& body) const;

    QDBusConnection m_bus;
};

} // namespace quillet
