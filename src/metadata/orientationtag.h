#pragma once

#include "support/filesystem.h"

#include <cstdio>

namespace quillet {

// Reads and rewrites the EXIF orientation (tag 0x0112) directly in a JPEG
// file. Only a file whose first segment after SOI is an APP1 "Exif" block,
// with the tag in IFD0, qualifies; anything else gives 0.

// Two bytes, high first, or -1 at the end of the file.
int _read_2_bytes(FILE* file);
// The orientation byte, or 0.
int _getOrientation(const char* path, FileSystem& fileSystem = FileSystem::standard());
// Writes the value as a SHORT into the tag's entry (10 bytes, nothing else)
// and returns the previous value byte, or 0 when nothing was written.
int _setOrientation(const char* path, uint8_t value, FileSystem& fileSystem = FileSystem::standard());

// The same reader and writer for any JPEG whose EXIF block comes before its
// image data, after a JFIF segment or an ICC profile say, as many cameras
// write them. The tag must still be in IFD0 and is rewritten in place.
int readExifOrientation(const char* path, FileSystem& fileSystem = FileSystem::standard());
int writeExifOrientation(const char* path, uint8_t value, FileSystem& fileSystem = FileSystem::standard());

} // namespace quillet
