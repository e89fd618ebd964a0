#pragma once

#include "settings/processingrequest.h"

#include <QString>

namespace quillet {

// One version of every picture a batch writes: the settings it is made with
// and where its files go. A batch of one version with no folder and no suffix
// is the plain batch.
struct OutputVersion {
    ProcessingRequest request;
    // A folder inside the destination that holds this version's whole tree;
    // empty: the destination itself.
    QString folder;
    // Appended to every output name of this version, before the extension.
    QString nameSuffix;

    friend bool operator==(const OutputVersion&, const OutputVersion&) = default;
};

} // namespace quillet
