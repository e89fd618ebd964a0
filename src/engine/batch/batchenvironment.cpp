#include "engine/batch/batchenvironment.h"

#include "engine/pipeline/decoderwarnings.h"
#include "metadata/jpegcontext.h"

#include <vips/vips8>

#include <cstdio>
#include <malloc.h>

namespace quillet {

void BatchEnvironment::prepare(const BatchOptions& options) {
    vips_cache_set_max(0);
    // The batch keeps the metadata reader's messages per file and shows the
    // ones about damage in the activity log; anything read outside that
    // (a caller without notes) is not the user's concern mid-batch.
    setMetadataMessageStreams(nullptr, nullptr);
    // libvips's own warnings likewise go to the file being read.
    DecoderWarnings::install();
    // glibc gives every thread its own heap; with libvips's threads that
    // leaves freed picture memory scattered and the process larger than its
    // pictures. Two heaps keep the peak near what is really in use.
    mallopt(M_ARENA_MAX, 2);
    // A batch frees and asks again for buffers of one picture's size with
    // every file. Left to itself, glibc may hand them back to the system and
    // fault them in afresh for the next picture; in the window's process it
    // did so for nearly every file (ten times the command-line tool's page
    // faults, a tenth more CPU for the batch). Buffers up to 32 MB come from
    // the heap, and up to 64 MB of freed heap is kept for the next picture:
    // the values glibc's own adjustment reaches after a large picture.
    mallopt(M_MMAP_THRESHOLD, 32 * 1024 * 1024);
    mallopt(M_TRIM_THRESHOLD, 64 * 1024 * 1024);
    if (options.parallel) {
        // The batch already keeps every core busy with a picture of its own;
        // libvips threads inside each picture would only contend with them.
        vips_concurrency_set(1);
    }
}

} // namespace quillet
