#pragma once

#include "engine/batch/batchoptions.h"
#include "naming/renamer.h"
#include "settings/processingparams.h"

#include <QSettings>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace quillet {

// Everything `quillet process` was asked to do, parsed from its arguments.
struct ProcessRequest {
    enum class Conflict { Ask, Skip, Replace };

    QStringList paths;
    QString dest;
    ProcessingParams params;
    Renamer renamer;
    BatchOptions options;
    std::uint32_t creator = 0;
    Conflict conflict = Conflict::Ask;
    bool conflictGiven = false; // --on-conflict was on the command line
    QString logFile;
    BatchShard shard; // --shard K/N
    // --versions, else the window's list (settings/versionlist.h); empty:
    // these settings alone.
    QStringList versions;
    bool help = false;
    bool windowDest = false; // --window-dest: the window's selected output folder
    bool notify = false;     // --notify: a desktop notification at the end
    // Stored settings that were refused and replaced by their defaults, one
    // message each, for the tool to show before the batch.
    QStringList notes;
};

// The outcome of parsing: a request, or the message of a usage error.
struct ProcessParse {
    std::optional<ProcessRequest> request;
    QString error;
};

// Parses the arguments after "process". The record starts from the reset
// defaults (or the preset named by --preset), then --set and the friendly
// options apply in command-line order. The renaming scheme and the file
// options start from the settings store.
ProcessParse parseProcessArguments(const QStringList& args, QSettings& settings);

// The option summary printed by --help.
QString processUsage();

} // namespace quillet
