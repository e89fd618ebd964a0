#pragma once

#include "metadata/jpegcontext.h"

namespace quillet {

// Decodes the TIFF structure of an APP1 "Exif" section into ctx.Info.
// `buffer` is the whole section as held in the list, its two length bytes
// first; `limit` is the end of the memory that may be read (the section's
// padded end), or null for buffer + length. Faults print and are skipped.
void process_EXIF(JpegContext& ctx, uint8_t* buffer, uint32_t length, uint8_t* limit = nullptr);

// Walks one directory and the ones it links to. Positions count from the
// start of the block the parser works in.
void ProcessExifDir(JpegContext& ctx, uint64_t dirStart, uint64_t offsetBase, uint64_t exifLength,
                    int nestingLevel);

// The value at `value` in TIFF `format`, as a double; 0 for text and unknown
// formats, and for bytes that lie outside the block.
double ConvertAnyFormat(JpegContext& ctx, const uint8_t* value, int format);

// Deletes the ThumbnailOffset and ThumbnailLength tags of the directory the
// last successful parse found, in place. Returns LastExifRefd - buffer.
long long RemoveThumbnail(JpegContext& ctx, uint8_t* buffer, uint32_t length);

// 16- and 32-bit values in the block's byte order.
int Get16u(const JpegContext& ctx, const uint8_t* p);
int Get32s(const JpegContext& ctx, const uint8_t* p);
uint32_t Get32u(const JpegContext& ctx, const uint8_t* p);
void Put16u(const JpegContext& ctx, uint8_t* p, int value);

} // namespace quillet
