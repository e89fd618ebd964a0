#pragma once

#include "metadata/kvimageinfo.h"

#include <QList>
#include <QStringList>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace quillet {

// Builds the inspector's records from dropped paths on a thread of its own,
// so that a drop of thousands of files never holds up the window. Jobs run
// one after the other in the order added. A job's records come out in
// groups: the first file's alone, then one group every 20 paths, then the
// rest with the job's end, so the list grows in steps the window can follow.
// Folders and files that give no record are left out. Records are built
// without thumbnails: those are made for the rows on show only.
class InspectorLoader {
  public:
    struct Delivery {
        quint64 job = 0;
        QList<KVImageInfo> records;
        bool last = false; // the job's final delivery, empty or not
    };
    // Called on the loader's thread.
    using Deliver = std::function<void(Delivery)>;

    static constexpr int GroupSize = 20;

    explicit InspectorLoader(Deliver deliver);
    // Stops after the file in hand and waits for the thread.
    ~InspectorLoader();
    InspectorLoader(const InspectorLoader&) = delete;
    InspectorLoader& operator=(const InspectorLoader&) = delete;

    void add(quint64 job, const QStringList& paths);
    // Jobs numbered up to `job` are dropped, a running one before its next
    // file; dropped jobs deliver nothing more.
    void cancelUpTo(quint64 job);

  private:
    struct Job {
        quint64 id;
        QStringList paths;
    };
    void run();
    bool cancelled(quint64 job);

    Deliver m_deliver;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Job> m_jobs;
    quint64 m_cancelledUpTo = 0;
    bool m_stopping = false;
    std::thread m_thread;
};

} // namespace quillet
