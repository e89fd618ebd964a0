#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <QThread>
#include <QVariantMap>

#include <memory>
#include <mutex>
#include <vector>

namespace quillet::testsupport {

// One Notify call as the service received it.
struct ReceivedNotification {
    QString appName, icon, summary, body, desktopEntry;
    int timeout = 0;
};

// The notification service's side of the bus: records each Notify call and
// answers it with an id, as a desktop's notification daemon does.
class NotificationRecorder : public QDBusVirtualObject {
  public:
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() != QLatin1String("Notify") ||
            message.signature() != QLatin1String("susssasa{sv}i"))
            return false;
        const QVariantList a = message.arguments();
        const QVariantMap hints = qdbus_cast<QVariantMap>(a.at(6));
        {
            const std::lock_guard lock(m_mutex);
            m_received.push_back({a.at(0).toString(), a.at(2).toString(), a.at(3).toString(),
                                  a.at(4).toString(), hints.value(QStringLiteral("desktop-entry")).toString(),
                                  a.at(7).toInt()});
        }
        connection.send(message.createReply(QVariant::fromValue(7u)));
        return true;
    }
    std::vector<ReceivedNotification> received() const {
        const std::lock_guard lock(m_mutex);
        return m_received;
    }

  private:
    mutable std::mutex m_mutex;
    std::vector<ReceivedNotification> m_received;
};

// A session bus of the test's own (dbus-daemon), so no test depends on, or
// shows anything on, the desktop it runs on.
class PrivateBus {
  public:
    PrivateBus() {
        const QString daemon = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
        if (daemon.isEmpty())
            return;
        m_daemon.start(daemon, {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                QStringLiteral("--print-address")});
        if (m_daemon.waitForReadyRead(5000))
            m_address = QString::fromLatin1(m_daemon.readLine().trimmed());
    }
    ~PrivateBus() {
        for (const QString& name : m_names)
            QDBusConnection::disconnectFromBus(name);
        m_serviceThread.quit();
        m_serviceThread.wait();
        m_recorder.reset();
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    bool running() const { return !m_address.isEmpty(); }
    // A fresh connection to the bus, as another program would have.
    QDBusConnection connect(const QString& name) {
        m_names.append(name);
        return QDBusConnection::connectToBus(m_address, name);
    }
    // Puts the notification service on the bus; null when it could not be.
    // It answers on a thread of its own, as another program would, so a
    // caller may block on the reply.
    NotificationRecorder* serveNotifications() {
        m_recorder = std::make_unique<NotificationRecorder>();
        m_serviceThread.start();
        m_recorder->moveToThread(&m_serviceThread);
        QDBusConnection service = connect(QStringLiteral("notification-service"));
        if (!service.registerVirtualObject(QStringLiteral("/org/freedesktop/Notifications"),
                                           m_recorder.get()) ||
            !service.registerService(QStringLiteral("org.freedesktop.Notifications")))
            return nullptr;
        return m_recorder.get();
    }

  private:
    QProcess m_daemon;
    QThread m_serviceThread;
    std::unique_ptr<NotificationRecorder> m_recorder;
    QString m_address;
    QStringList m_names;
};

} // namespace quillet::testsupport
