#pragma once

#include "engine/batch/imageprocessorhelper.h"
#include "support/activitylog.h"

#include <QFileInfo>
#include <QString>
#include <QStringList>

#include <functional>
#include <set>
#include <vector>

namespace quillet {

// Turns the paths given to a batch into its workers: one for the loose files,
// then a pre-order walk of the folders (each folder followed by its
// subfolders), every folder level writing into a folder of its own name.
// A dropped tree may hold a hundred thousand files, so this runs on the batch
// thread and can be stopped part way.
class InputListing {
  public:
    // `log` hears of paths that are missing and of folders met twice. `stop`
    // is asked between folders and every few hundred entries; once it answers
    // true the walk ends with the workers found so far.
    explicit InputListing(ActivityLog& log, std::function<bool()> stop = {});

    // The workers for `paths` (made absolute) writing under `outputDir`. A path
    // that does not exist gets the warning "Unable to find '<path>'" and is
    // left out. Symbolic links are followed, but a folder met again (a link to
    // an ancestor, or the same folder twice) is not entered a second time.
    std::vector<ImageProcessorHelper> list(const QStringList& paths, const QString& outputDir);
    // Whether the last list() was cut short by `stop`.
    bool stopped() const { return m_stopped; }

    // Every entry of the folder, hidden ones included, sorted by name.
    static QFileInfoList directoryContentsAtPath(const QString& path);

  private:
    struct Split {
        QStringList files;       // existing non-folders, in order
        QStringList directories; // existing folders, in order
    };
    Split split(const QFileInfoList& entries);
    void collect(const Split& level, const QString& outputDir, std::vector<ImageProcessorHelper>& helpers);
    bool shouldStop();

    ActivityLog& m_log;
    std::function<bool()> m_stop;
    std::set<QString> m_visited;
    bool m_stopped = false;
};

} // namespace quillet
