#pragma once

#include "metadata/jpegcontext.h"

namespace quillet {

// The two doors into the JPEG/EXIF layer.

// Reads path's metadata (up to its SOS) into ctx.Info. Returns 1 when the file
// was read as a JPEG; the sections then stay held until DiscardData.
int parseFile(JpegContext& ctx, const char* path);

// Puts source's EXIF block (thumbnail pointers removed) and first comment in
// front of destination's own image sections. Returns 1 when the destination
// was rewritten. The destination is replaced whole or not at all: its old
// contents go to "<destination>.t" only while the new file is put in place.
int copyExif(JpegContext& ctx, const char* source, const char* destination);

} // namespace quillet
