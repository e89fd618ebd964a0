#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

class QLocalServer;

namespace quillet {

// One window per user and settings store. The first start listens on a
// local socket; a later start hands its paths to it and exits, so pictures
// opened from the file manager while the window is up join that window.
class SingleInstance : public QObject {
    Q_OBJECT
  public:
    enum class Start {
        First,      // this process listens; later starts reach it
        HandedOver, // a running instance took the paths: exit now
        Unanswered, // an instance is there but did not take the paths in time
        Alone,      // no socket could be made; run without one
    };

    // `socketPath` names the instance; see socketPathFor.
    explicit SingleInstance(const QString& socketPath, QObject* parent = nullptr);
    ~SingleInstance() override;

    // Hands `paths` (absolute) to a running instance, or becomes the one that
    // later starts reach. A socket left by a crashed instance is taken over.
    Start start(const QStringList& paths);

    // The socket of the instance using the settings store `settingsFile`:
    // in the user's runtime folder, else the temporary folder with the
    // user's id in the name.
    static QString socketPathFor(const QString& settingsFile);

  Q_SIGNALS:
    // A later start's paths; empty when it named none (it wants the window).
    void pathsReceived(const QStringList& paths);

  private:
    enum class HandOver { NoInstance, Taken, NoAnswer };
    HandOver handOver(const QStringList& paths);
    bool listen();
    void acceptConnection();

    QString m_socketPath;
    QLocalServer* m_server = nullptr;
};

} // namespace quillet
