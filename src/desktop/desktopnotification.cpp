#include "desktop/desktopnotification.h"

#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>

namespace quillet {

DesktopNotification::DesktopNotification(const QDBusConnection& bus) : m_bus(bus) {}

QDBusMessage DesktopNotification::message(const QString& summary, const QString& body) const {
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    // The service looks the launcher up by "desktop-entry" to group the
    // notification under the application and show its icon.
    const QVariantMap hints{{QStringLiteral("desktop-entry"), QString::fromLatin1(ApplicationId)}};
    call << QStringLiteral("Quillet") << 0u << QString::fromLatin1(ApplicationId) << summary << body
         << QStringList() << hints << -1;
    return call;
}

bool DesktopNotification::send(const QString& summary, const QString& body, int timeoutMs) const {
    if (!m_bus.isConnected())
        return false;
    const QDBusMessage reply = m_bus.call(message(summary, body), QDBus::Block, timeoutMs);
    return reply.type() == QDBusMessage::ReplyMessage;
}

void DesktopNotification::post(const QString& summary, const QString& body) const {
    if (m_bus.isConnected())
        m_bus.send(message(summary, body)); // the reply, an id, is not needed
}

} // namespace quillet
