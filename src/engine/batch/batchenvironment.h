#pragma once

#include "engine/batch/batchoptions.h"

namespace quillet {

// Process-wide settings the batch engine runs best with. Each front end calls
// prepare() once, before its first batch, from its main thread.
namespace BatchEnvironment {

// Turns off libvips's operation cache (every picture is read once, and the
// cache would only keep decoded pictures alive), caps malloc's arenas and
// keeps picture-sized buffers in the heap from one picture to the next, sends
// the metadata reader's notes to standard error, and, for a parallel batch,
// keeps libvips to one thread per picture.
void prepare(const BatchOptions& options);

} // namespace BatchEnvironment

} // namespace quillet
