#include "app/models/inspectorloader.h"

#include "metadata/metadatanotes.h"

#include <QFileInfo>

namespace quillet {

InspectorLoader::InspectorLoader(Deliver deliver) : m_deliver(std::move(deliver)) {}

InspectorLoader::~InspectorLoader() {
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void InspectorLoader::add(quint64 job, const QStringList& paths) {
    {
        const std::lock_guard lock(m_mutex);
        m_jobs.push_back({job, paths});
        // Started with the first job: most sessions never drop on the inspector.
        if (!m_thread.joinable())
            m_thread = std::thread([this] { run(); });
    }
    m_wake.notify_all();
}

void InspectorLoader::cancelUpTo(quint64 job) {
    const std::lock_guard lock(m_mutex);
    m_cancelledUpTo = std::max(m_cancelledUpTo, job);
    while (!m_jobs.empty() && m_jobs.front().id <= m_cancelledUpTo)
        m_jobs.pop_front();
}

bool InspectorLoader::cancelled(quint64 job) {
    const std::lock_guard lock(m_mutex);
    return m_stopping || job <= m_cancelledUpTo;
}

void InspectorLoader::run() {
    for (;;) {
        Job job;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_stopping || !m_jobs.empty(); });
            if (m_stopping)
                return;
            job = std::move(m_jobs.front());
            m_jobs.pop_front();
        }
        Delivery group{job.id, {}, false};
        for (qsizetype i = 0; i < job.paths.size(); ++i) {
            if (cancelled(job.id))
                break;
            const QString& path = job.paths[i];
            const QFileInfo file(path);
            if (file.exists() && !file.isDir()) {
                // The reader's messages about damaged files are of no use here.
                MetadataNotes notes;
                if (std::optional<KVImageInfo> info = KVImageInfo::fromFile(path, true, false, &notes))
                    group.records.append(std::move(*info));
            }
            if (i % GroupSize == 0 && !group.records.isEmpty()) {
                m_deliver(std::move(group));
                group = Delivery{job.id, {}, false};
            }
        }
        if (cancelled(job.id))
            continue;
        group.last = true;
        m_deliver(std::move(group));
    }
}

} // namespace quillet
