#pragma once

#include "app/models/queuedcalls.h"
#include "inplace/inplacesession.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

namespace quillet {

class ActivityLogModel;
class UserDefaults;

// The in-place panel's state without its widgets: starts a run for a drop on
// one of its seven targets, follows its progress, passes its lines to the
// activity log and words what it ends with. The run reports on its own
// thread; everything here changes on the main thread, through queued calls.
//
// After a rotation with backups kept, the panel offers to put the originals
// back (undo) for as long as at least one of them can come back unchanged.
class InplaceModel : public QObject, private InplaceView {
    Q_OBJECT
  public:
    static constexpr char VisibleKey[] = "InplaceVisible";

    // Without a runner, jpegtran is looked up as the command-line tool does
    // (QUILLET_JPEGTRAN, then PATH).
    InplaceModel(ActivityLogModel& log, UserDefaults& defaults, std::unique_ptr<JpegtranRunner> jpegtran = {},
                 QObject* parent = nullptr);
    // Cancels a run still going and waits for the file in hand.
    ~InplaceModel() override;

    // A drop: starts the action on the files. False when nothing started (no
    // files, a run still going, or no jpegtran, which raises an alert).
    bool drop(InplaceAction action, const QStringList& paths);
    // The progress sheet's Cancel: the run stops before its next file.
    void cancel();
    // Puts back the originals of the last rotation; false when there are none.
    bool undo();

    bool isRunning() const { return m_running; }
    QString status() const { return m_status; }
    int progress() const { return m_progress; }
    int progressMaximum() const { return m_maximum; }
    bool canUndo() const { return m_canUndo; }
    // Looks again whether the backups are still there (the user may have
    // removed them or changed the files meanwhile).
    void refreshUndo();

    // "KeepBackup": stored at once, used from the next drop.
    bool keepBackup() const { return m_session->keepBackup(); }
    void setKeepBackup(bool keep) { m_session->toggleKeepBackup(keep); }
    // The date choice: the modification date is set too.
    bool setsModificationDate() const { return m_modificationDate; }
    void setSetsModificationDate(bool on);

    // "InplaceVisible": whether the panel was open when last left.
    bool wasOpen() const;
    void setOpen(bool open);

  Q_SIGNALS:
    // The progress sheet goes up (a run started) or down (it ended).
    void runningChanged(bool running);
    void progressChanged(const QString& status, int value, int maximum);
    // Something to tell the user once a run has ended, or instead of one.
    void alertRaised(const QString& title, const QString& message);
    void undoAvailableChanged(bool available);

  private:
    // InplaceView, called on the run's thread (beginProgress on this one).
    void beginProgress(int maximum) override;
    void showProgress(const QString& status, int value) override;
    void endProgress() override;
    void showAlert(InplaceAlert alert, const QStringList& files) override;

    void started(bool started);
    void setCanUndo(bool available);

    UserDefaults& m_defaults;
    bool m_running = false;
    bool m_canUndo = false;
    bool m_modificationDate = false;
    QString m_status;
    int m_progress = 0;
    int m_maximum = 0;
    // Declared before the session, so that it outlives the run's last post.
    QueuedCalls m_calls{this};
    std::unique_ptr<InplaceSession> m_session;
};

} // namespace quillet
