#pragma once

#include "engine/batch/batcherror.h"

#include <QCoreApplication>
#include <QString>

namespace quillet {

// How the window words a batch error: the message sheet's title and text.
class BatchErrorText {
    Q_DECLARE_TR_FUNCTIONS(BatchErrorText)

  public:
    static QString title(const BatchError& error);
    static QString message(const BatchError& error);
};

} // namespace quillet
