#pragma once

#include "engine/batch/batcherror.h"
#include "inplace/inplacesession.h"

#include <QString>

namespace quillet {

// How the command-line tool words what the core reports: one line each, the
// window's title and text joined by a colon.
class ConsoleMessages {
  public:
    static QString batchError(const BatchError& error);
    static QString inplaceAlert(InplaceAlert alert);
};

} // namespace quillet
