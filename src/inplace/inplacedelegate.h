#pragma once

#include "support/activitylog.h"

#include <QString>
#include <QStringList>

namespace quillet {

// What a LosslessProcessor run reports to whoever started it (the in-place
// panel, or the command-line tool). Every call comes on the run's own thread;
// an implementation that touches an interface moves the work to its thread.
class InplaceDelegate : public ActivityLog {
  public:
    // Before each file, with the progress text ("Rotating photo.jpg").
    virtual void showMessage(const QString& text) = 0;
    // End of a rotation run, with the files that could not be rotated.
    virtual void didCompleteWithBadFiles(const QStringList& badFiles) = 0;
    // End of a date or icon run.
    virtual void didComplete() = 0;
};

} // namespace quillet
