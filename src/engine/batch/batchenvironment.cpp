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
    // every file. Left to itself, glibc hands them back to the system and
    // faults them in afresh for the next picture whenever other allocations
    // sit above them in the heap, which a long-running process such as the
    // window always has: ten times the page faults of a fresh process, and a
    // tenth more CPU for the batch. Buffers up to 32 MB come from the heap,
    // and up to 64 MB of freed heap is kept for the next picture: what glibc
    // itself settles on after the first large picture when nothing is in the
    // way.
    mallopt(M_MMAP_THRESHOLD, 32 * 1024 * 1024);
    mallopt(M_TRIM_THRESHOLD, 64 * 1024 * 1024);
    if (options.parallel) {
        // The batch already keeps every core busy with a picture of its own;
        // libvips threads inside each picture would only contend with them.
        vips_concurrency_set(1);
    }
}

} // namespace quillet
