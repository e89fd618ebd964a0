#pragma once

#include "engine/batch/batchshard.h"

#include <cstdint>

namespace quillet {

class UserDefaults;

// The application preferences a batch reads, handed to the engine as values.
// Field names follow the settings keys of the same names.
struct BatchOptions {
    bool copyNonImageFiles = false;   // "CopyNonImageFiles"
    bool setCreationDate = false;     // "SetCreationDate"
    bool setModificationDate = false; // "SetModificationDate"
    bool hideExtension = false;       // "HideExtension"
    bool customIcon = false;          // "CustomIcon"
    // Render the pixels of the next files on other cores while the current one
    // is committed. Off gives the plain one-file-at-a-time run; what the user
    // sees is the same either way.
    bool parallel = true;
    // Files rendered ahead at most (0: one per core).
    int renderThreads = 0;
    // The part of the batch this run does; the whole batch by default.
    BatchShard shard;

    // The five preferences as the settings store holds them, registered
    // defaults filling the gaps.
    static BatchOptions fromDefaults(const UserDefaults& defaults);
};

} // namespace quillet
