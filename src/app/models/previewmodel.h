#pragma once

#include "app/models/previewworker.h"
#include "app/models/queuedcalls.h"

#include <QImage>
#include <QObject>
#include <QStringList>

#include <memory>

namespace quillet {

class RenamingModel;
class SettingsModel;

// The preview's state: the queue of the last drop or open, the picture shown
// from it, and that picture as the batch would write it under the settings
// of the moment. Each change of settings, renaming or picture starts a new
// render on the worker thread, which makes any older one stale; results come
// back through the event loop. Renders run only while the preview is active.
class PreviewModel : public QObject {
    Q_OBJECT
  public:
    PreviewModel(SettingsModel& settings, RenamingModel& renaming, QObject* parent = nullptr);
    ~PreviewModel() override;

    // The pictures of a drop or open; a folder stands for the files directly in it.
    void setQueue(const QStringList& paths);
    const QStringList& queue() const { return m_queue; }
    int currentIndex() const { return m_index; }
    QString currentPath() const { return m_queue.value(m_index); }
    bool canGoPrevious() const { return m_index > 0; }
    bool canGoNext() const { return m_index + 1 < m_queue.size(); }
    void previous();
    void next();
    // Shows a given picture: its place in the queue when it has one, else as
    // a queue of its own.
    void showPicture(const QString& path);

    void setActive(bool active);
    bool isActive() const { return m_active; }
    // The longest side of the pictures shown.
    void setDisplaySide(int side) { m_displaySide = side; }

    // True from a change until its rendered picture is in.
    bool isBusy() const { return m_busy; }
    QImage original() const { return m_original; }
    QImage output() const { return m_output; }
    const PreviewResult& result() const { return m_result; }
    // Bytes for the whole queue, from a sample; -1 until known.
    qint64 batchEstimate() const { return m_estimate; }
    quint64 generation() const { return m_generation; }

  Q_SIGNALS:
    void queueChanged();
    void originalChanged();
    // The output picture: a quick draft first, then the file as written.
    void outputChanged();
    // The file as written and its figures (the output picture changed too).
    void resultChanged();
    void estimateChanged();
    void busyChanged(bool busy);

  private:
    void schedule();
    void receive(const PreviewUpdate& update);
    void setBusy(bool busy);

    SettingsModel& m_settings;
    RenamingModel& m_renaming;
    QStringList m_queue;
    int m_index = 0;
    bool m_active = false;
    bool m_busy = false;
    int m_displaySide = 1024;
    quint64 m_generation = 0;
    quint64 m_resultGeneration = 0; // of m_result
    QImage m_original;
    QImage m_output;
    PreviewResult m_result;
    qint64 m_estimate = -1;
    // Results from the workers reach the main thread through here.
    QueuedCalls m_calls{this};
    std::unique_ptr<PreviewWorker> m_quick;
    std::unique_ptr<PreviewWorker> m_full;
};

} // namespace quillet
