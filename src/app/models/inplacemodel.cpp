#include "app/models/inplacemodel.h"

#include "app/models/activitylogmodel.h"
#include "app/models/inplacealerttext.h"
#include "inplace/jpegtranrunner.h"
#include "settings/userdefaults.h"

namespace quillet {

InplaceModel::InplaceModel(ActivityLogModel& log, UserDefaults& defaults,
                           std::unique_ptr<JpegtranRunner> jpegtran, QObject* parent)
    : QObject(parent), m_defaults(defaults),
      m_session(std::make_unique<InplaceSession>(log, static_cast<InplaceView&>(*this), defaults,
                                                 std::move(jpegtran))) {}

InplaceModel::~InplaceModel() {
    // Quitting during a run finishes the file in hand and no more.
    m_session->requestCancel();
    m_session.reset();
}

bool InplaceModel::drop(InplaceAction action, const QStringList& paths) {
    if (m_running)
        return false;
    // The last run has reported its end; let its thread finish that call.
    m_session->wait();
    m_session->setResetModificationDate(m_modificationDate);
    try {
        started(m_session->start(action, paths));
    } catch (const JpegtranMissing&) {
        Q_EMIT alertRaised(InplaceAlertText::missingJpegtranTitle(),
                           InplaceAlertText::missingJpegtranMessage());
        return false;
    }
    return m_running;
}

bool InplaceModel::undo() {
    if (m_running)
        return false;
    m_session->wait();
    started(m_session->undoLastRotation());
    return m_running;
}

void InplaceModel::started(bool started) {
    if (!started)
        return;
    m_running = true;
    setCanUndo(false);
    Q_EMIT runningChanged(true);
}

void InplaceModel::cancel() {
    if (m_running)
        m_session->cancel();
}

void InplaceModel::refreshUndo() {
    if (!m_running)
        setCanUndo(m_session->canUndo());
}

void InplaceModel::setCanUndo(bool available) {
    if (available == m_canUndo)
        return;
    m_canUndo = available;
    Q_EMIT undoAvailableChanged(available);
}

void InplaceModel::setSetsModificationDate(bool on) {
    m_modificationDate = on;
}

bool InplaceModel::wasOpen() const {
    return m_defaults.boolValue(QLatin1String(VisibleKey));
}

void InplaceModel::setOpen(bool open) {
    m_defaults.setBool(QLatin1String(VisibleKey), open);
}

void InplaceModel::beginProgress(int maximum) {
    m_calls.post([this, maximum] {
        m_maximum = maximum;
        m_progress = 0;
        m_status.clear();
        Q_EMIT progressChanged(m_status, m_progress, m_maximum);
    });
}

void InplaceModel::showProgress(const QString& status, int value) {
    m_calls.post([this, status, value] {
        m_status = status;
        m_progress = value;
        Q_EMIT progressChanged(m_status, m_progress, m_maximum);
    });
}

void InplaceModel::endProgress() {
    m_calls.post([this] {
        m_running = false;
        Q_EMIT runningChanged(false);
        refreshUndo();
    });
}

void InplaceModel::showAlert(InplaceAlert alert, const QStringList&) {
    m_calls.post([this, alert] {
        Q_EMIT alertRaised(InplaceAlertText::title(alert), InplaceAlertText::message(alert));
    });
}

} // namespace quillet
