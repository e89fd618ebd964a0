#pragma once

#include "metadata/bytesource.h"
#include "metadata/jpegcontext.h"
#include "support/file.h"

namespace quillet {

// A JPEG file as a list of at most 20 marker sections held in the context.
// Reading functions return 1 on success, 0 on failure, and print their
// errors; none of them ends the process.

// Clears the list without freeing; for a context that holds no buffers.
void ResetJpgfile(JpegContext& ctx);
// Frees every section and clears the EXIF record.
void DiscardData(JpegContext& ctx);
int ReadJpegSections(JpegContext& ctx, ByteSource& source, int mode);
// Opens and reads path; a failed read leaves no sections and a cleared record.
int ReadJpegFile(JpegContext& ctx, const char* path, int mode);
// The same over bytes in memory ("Not JPEG" names the context's CurrentFile).
int ReadJpegBuffer(JpegContext& ctx, const uint8_t* data, size_t size, int mode);
// The first section of the type among all but the last, or null.
Section* FindSection(JpegContext& ctx, int type);
// Keeps the first EXIF APP1 and then the first comment, nothing else.
void DiscardAllButExif(JpegContext& ctx);
// Writes the list as a JPEG file; 1 when every byte reached the disk.
int WriteJpegFile(JpegContext& ctx, const char* path);
// The body of WriteJpegFile on an open file, written through the context's
// file system; true when every byte went out.
bool WriteJpegStream(JpegContext& ctx, File& out);

} // namespace quillet
