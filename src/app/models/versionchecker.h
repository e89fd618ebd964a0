#pragma once

#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <vector>

class QNetworkReply;

namespace quillet {

// Finds out the latest release from the update server: an HTTP GET of
// "http://<server>/<app>/version", whose body starts with the packed release
// number in hexadecimal. The request never blocks its caller: the answer
// comes through the event loop, after at most the time-out. Only a found
// number is kept; 0 (no answer, an error status, no number) is asked again
// the next time.
class VersionChecker : public QObject {
    Q_OBJECT
  public:
    // `server` is "host" or "host:port"; an empty one never asks and answers 0.
    VersionChecker(const QString& server, const QString& appName, unsigned version,
                   QObject* parent = nullptr);
    // A request still running is dropped unanswered.
    ~VersionChecker() override;

    unsigned version() const { return m_version; }
    // The address asked; empty without a server.
    QString address() const;
    // How long a request may go without data before it is given up.
    void setTimeout(int milliseconds) { m_timeoutMs = milliseconds; }

    // Calls `done` with the latest release, from the cache when it holds one
    // (at once), else once the server has answered or failed. Calls made
    // while a request runs share its answer.
    void latestVersion(std::function<void(unsigned latest)> done);
    unsigned cachedLatestVersion() const { return m_latest; }
    bool isNewer(unsigned latest) const { return latest > m_version; }
    void clearCache() { m_latest = 0; }

  private:
    void finished();

    QString m_server;
    QString m_appName;
    unsigned m_version;
    unsigned m_latest = 0;
    int m_timeoutMs = 15000;
    QNetworkAccessManager m_network;
    QPointer<QNetworkReply> m_reply;
    QByteArray m_body;
    std::vector<std::function<void(unsigned)>> m_waiting;
};

} // namespace quillet
