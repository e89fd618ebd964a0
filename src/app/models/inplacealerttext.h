#pragma once

#include "inplace/inplacesession.h"

#include <QCoreApplication>
#include <QString>

namespace quillet {

// How the in-place panel words what it tells the user: an alert's title and
// text.
class InplaceAlertText {
    Q_DECLARE_TR_FUNCTIONS(InplaceAlertText)

  public:
    static QString title(InplaceAlert alert);
    static QString message(InplaceAlert alert);
    // A rotation was asked for and there is no jpegtran to run.
    static QString missingJpegtranTitle();
    static QString missingJpegtranMessage();
};

} // namespace quillet
