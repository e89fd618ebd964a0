#pragma once

#include "engine/batch/batchoptions.h"
#include "engine/batch/batchshell.h"
#include "engine/pipeline/renderfile.h"
#include "naming/renamer.h"
#include "support/filesystem.h"

#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>

namespace quillet {

// What every worker of one batch shares: the shell it reports to, the naming
// scheme, the disk, the preferences and the pixel-stage settings (one context
// per version of the batch). Owned by the job for the length of the batch.
struct BatchContext {
    BatchShell& shell;
    Renamer& renamer;
    FileSystem& fileSystem;
    BatchOptions options;
    std::uint32_t creator = 0;
    RenderSettings render;
    // Told of every file the batch writes, so work done ahead on an input that
    // has just been replaced can be redone.
    std::function<void(const QString&)> fileWritten;
    // Settings that cannot take effect in full are said once a batch, by
    // whichever worker meets them first.
    std::atomic<bool> textSizeCapSaid = false;
    // Added to every output name, before the extension: a version of the
    // batch that writes beside the others.
    QString nameSuffix = {};
};

} // namespace quillet
