#pragma once

#include "engine/batchfilesystem.h"
#include "engine/batchoptions.h"
#include "engine/batchshell.h"
#include "engine/renderfile.h"
#include "naming/renamer.h"

#include <QString>

#include <cstdint>
#include <functional>

// What every worker of one batch shares: the shell it reports to, the naming
// scheme, the disk, the preferences and the pixel-stage settings. Owned by the
// job for the length of the batch.
struct BatchContext {
    BatchShell& shell;
    Renamer& renamer;
    BatchFileSystem& fileSystem;
    BatchOptions options;
    std::uint32_t creator = 0;
    RenderSettings render;
    // Told of every file the batch writes, so work done ahead on an input that
    // has just been replaced can be redone.
    std::function<void(const QString&)> fileWritten;
};
