#include "app/models/previewmodel.h"

#include "app/models/renamingmodel.h"
#include "app/models/settingsmodel.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>

namespace quillet {

namespace {

// A few pictures spread over the queue: enough for an estimate that does
// not swing from one change to the next, few enough to come soon after the
// picture itself.
constexpr int kSampleSize = 5;

} // namespace

PreviewModel::PreviewModel(SettingsModel& settings, RenamingModel& renaming, QObject* parent)
    : QObject(parent), m_settings(settings), m_renaming(renaming) {
    // The workers outlive no update: their destructors join them before
    // this object goes, and updates posted by then are dropped with it.
    const auto deliver = [this](PreviewUpdate update) {
        m_calls.post([this, update = std::move(update)] { receive(update); });
    };
    m_quick = std::make_unique<PreviewWorker>(PreviewWorker::Quick, deliver);
    m_full = std::make_unique<PreviewWorker>(PreviewWorker::Full, deliver);
    connect(&settings, &SettingsModel::changed, this, &PreviewModel::schedule);
    connect(&renaming, &RenamingModel::summaryChanged, this, &PreviewModel::schedule);
}

PreviewModel::~PreviewModel() {
    m_quick.reset();
    m_full.reset();
}

void PreviewModel::setQueue(const QStringList& paths) {
    QStringList files;
    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (info.isDir()) {
            const QDir dir(path);
            for (const QString& name : dir.entryList(QDir::Files, QDir::Name))
                files.append(dir.filePath(name));
        } else {
            files.append(path);
        }
    }
    m_queue = files;
    m_index = 0;
    m_estimate = -1;
    Q_EMIT queueChanged();
    Q_EMIT estimateChanged();
    schedule();
}

void PreviewModel::previous() {
    if (!canGoPrevious())
        return;
    --m_index;
    Q_EMIT queueChanged();
    schedule();
}

void PreviewModel::next() {
    if (!canGoNext())
        return;
    ++m_index;
    Q_EMIT queueChanged();
    schedule();
}

void PreviewModel::showPicture(const QString& path) {
    const qsizetype at = m_queue.indexOf(path);
    if (at < 0) {
        setQueue({path});
        return;
    }
    if (at == m_index)
        return;
    m_index = int(at);
    Q_EMIT queueChanged();
    schedule();
}

void PreviewModel::setActive(bool active) {
    if (m_active == active)
        return;
    m_active = active;
    if (active)
        schedule();
}

void PreviewModel::schedule() {
    ++m_generation;
    if (!m_active || m_queue.isEmpty()) {
        setBusy(false);
        return;
    }
    PreviewJob job;
    job.generation = m_generation;
    job.path = currentPath();
    job.index = m_index;
    job.request = m_settings.value();
    job.renamer = m_renaming.renamer();
    job.sample = PreviewRender::sample(m_queue, kSampleSize);
    job.count = int(m_queue.size());
    job.displaySide = m_displaySide;
    setBusy(true);
    m_quick->submit(job);
    m_full->submit(std::move(job));
}

void PreviewModel::receive(const PreviewUpdate& update) {
    if (update.generation != m_generation)
        return;
    switch (update.kind) {
    case PreviewUpdate::Original:
        m_original = update.image;
        Q_EMIT originalChanged();
        break;
    case PreviewUpdate::Draft:
        // A small picture's file can be in before its draft.
        if (m_resultGeneration == update.generation)
            break;
        m_output = update.image;
        Q_EMIT outputChanged();
        break;
    case PreviewUpdate::Output:
        m_output = update.image;
        m_result = update.result;
        m_resultGeneration = update.generation;
        setBusy(false);
        Q_EMIT outputChanged();
        Q_EMIT resultChanged();
        break;
    case PreviewUpdate::Estimate:
        m_estimate = update.estimate;
        Q_EMIT estimateChanged();
        break;
    }
}

void PreviewModel::setBusy(bool busy) {
    if (m_busy == busy)
        return;
    m_busy = busy;
    Q_EMIT busyChanged(busy);
}

} // namespace quillet
