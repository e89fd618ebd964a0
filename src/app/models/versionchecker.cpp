#include "app/models/versionchecker.h"

#include "app/models/versionnumber.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>

namespace quillet {

namespace {

// The answer is a few characters; a server that sends more is not read on.
constexpr qsizetype MostRead = 256;

} // namespace

VersionChecker::VersionChecker(const QString& server, const QString& appName, unsigned version,
                               QObject* parent)
    : QObject(parent), m_server(server.trimmed()), m_appName(appName), m_version(version) {}

VersionChecker::~VersionChecker() {
    if (m_reply) {
        m_reply->disconnect(this);
        delete m_reply;
    }
}

QString VersionChecker::address() const {
    if (m_server.isEmpty())
        return {};
    return QStringLiteral("http://%1/%2/version").arg(m_server, m_appName);
}

void VersionChecker::latestVersion(std::function<void(unsigned)> done) {
    const QUrl url(address(), QUrl::StrictMode);
    if (m_latest != 0 || !url.isValid() || url.host().isEmpty()) {
        // Through the event loop as an answer from the server would come, so
        // the caller sees one order of events either way.
        QTimer::singleShot(0, this, [this, done = std::move(done), latest = m_latest] { done(latest); });
        return;
    }
    m_waiting.push_back(std::move(done));
    if (m_reply)
        return;
    QNetworkRequest request(url);
    request.setTransferTimeout(m_timeoutMs);
    m_body.clear();
    m_reply = m_network.get(request);
    connect(m_reply, &QNetworkReply::readyRead, this, [this] {
        m_body += m_reply->read(MostRead - m_body.size());
        if (m_body.size() >= MostRead)
            m_reply->abort();
    });
    connect(m_reply, &QNetworkReply::finished, this, &VersionChecker::finished);
}

void VersionChecker::finished() {
    QNetworkReply* reply = m_reply;
    m_reply = nullptr;
    reply->deleteLater();
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    // An error page is no answer, even one that starts with digits ("404").
    const bool answered = status >= 200 && status < 300 &&
                          (reply->error() == QNetworkReply::NoError || m_body.size() >= MostRead);
    if (answered && m_body.size() < MostRead)
        m_body += reply->read(MostRead - m_body.size());
    const unsigned latest = answered ? VersionNumber::fromServerText(m_body) : 0;
    if (latest != 0)
        m_latest = latest;
    std::vector<std::function<void(unsigned)>> waiting;
    waiting.swap(m_waiting);
    for (const auto& done : waiting)
        done(latest);
}

} // namespace quillet
