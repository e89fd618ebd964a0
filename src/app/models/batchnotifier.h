#pragma once

#include <QObject>
#include <QString>

#include <functional>

namespace quillet {

class DesktopNotification;

// Tells the user that a batch ended while they were looking elsewhere: a
// desktop notification when the window is not the active one, nothing while
// it is (its status line says the same).
class BatchNotifier : public QObject {
    Q_OBJECT
  public:
    BatchNotifier(const DesktopNotification& notification, std::function<bool()> windowActive,
                  QObject* parent = nullptr);

    // The end of a batch into `outputFolder`, as AppController reports it.
    void batchEnded(int processed, int total, const QString& outputFolder);

    // The notification's title and text for such an end.
    static QString summary(int processed, int total);
    static QString body(int processed, int total, const QString& outputFolder);

  private:
    const DesktopNotification& m_notification;
    std::function<bool()> m_windowActive;
};

} // namespace quillet
