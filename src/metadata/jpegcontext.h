#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace quillet {

class FileSystem;
class MetadataNotes;

// State of one JPEG/EXIF call: the section list, the EXIF record and the
// parser's working values. Every entry point of the byte layer takes one of
// these, so two threads each with their own context never share anything.

inline constexpr int MaxSections = 20;
inline constexpr int PseudoImageData = 0x123;

// Read modes of ReadJpegFile.
inline constexpr int ReadMetadata = 1;
inline constexpr int ReadImage = 2;

// Zero bytes kept after every section buffer. The EXIF block's end is
// reckoned two bytes past the section and a value of a few bytes may be read
// from the last entry, so reads near the end land in zeros, never outside.
inline constexpr size_t SectionPadding = 16;

struct Section {
    std::vector<uint8_t> Data; // Size bytes, then SectionPadding zeros
    int Type = 0;
    uint32_t Size = 0;
};

struct ImageInfo {
    char FileName[1025] = {};
    int32_t FileDateTime = 0;
    uint32_t FileSize = 0;
    char CameraMake[32] = {};
    char CameraModel[40] = {};
    char DateTime[20] = {};
    int Height = 0, Width = 0;
    int Orientation = 0;
    int IsColor = 0;
    int Process = 0;
    int FlashUsed = 0;
    float FocalLength = 0;
    float ExposureTime = 0;
    float ApertureFNumber = 0;
    float Distance = 0;
    float CCDWidth = 0;
    float ExposureBias = 0;
    int LightSource = 0;
    int MeteringMode = 0;
    int ExposureProgram = 0;
    int ISOequivalent = 0;
    char Comments[2000] = {};
    uint8_t* ThumbnailPointer = nullptr; // inside an EXIF section's buffer
    uint32_t ThumbnailSize = 0;
    uint8_t* DatePointer = nullptr;
};

// Where messages go by default. The byte layer's "standard output" messages
// can be sent elsewhere (the info command keeps its stdout for records).
// Both default to stdout and stderr; a null stream discards.
void setMetadataMessageStreams(FILE* out, FILE* err);

struct JpegContext {
    JpegContext();

    std::array<Section, MaxSections> Sections;
    int SectionsRead = 0;
    int HaveAll = 0;

    ImageInfo Info;
    std::string CurrentFile; // empty: no file in hand
    int SupressNonFatalErrors = 0;

    // EXIF parser working values.
    int MotorolaOrder = 0;
    // An address kept as a number: it may lie a few bytes past the block.
    uintptr_t LastExifRefd = 0;
    uint8_t* DirWithThumbnailPtrs = nullptr;
    uint8_t* DirWithThumbnailLimit = nullptr; // end of the buffer holding it
    int ExifImageWidth = 0;
    double FocalplaneXRes = 0;
    double FocalplaneUnits = 0;
    uint8_t* OrientationPtr = nullptr;
    int OrientationNumFormat = 0;

    // Bounds of the buffer the parser works in; reads outside give zeros.
    uint8_t* BlockStart = nullptr;
    uint8_t* BlockLimit = nullptr;
    // Directories walked in this parse; a hostile block that links the same
    // directory many times from one level would otherwise fan out without end.
    int DirectoriesWalked = 0;

    FILE* OutStream = stdout;
    FILE* ErrStream = stderr;
    // When set, messages are kept here instead of printed.
    MetadataNotes* Notes = nullptr;
    // The file in hand began with SOI: a failure to read it is damage, not
    // another format.
    bool SawSoi = false;
    FileSystem* Files = nullptr; // null: the standard one
};

// The file system the context's calls go through.
FileSystem& fileSystem(const JpegContext& ctx);

// Messages (jpegsections.cpp). ErrFatal reports and returns: the caller fails
// the step that called it. ErrNonfatal takes a printf format with two ints.
void ErrFatal(JpegContext& ctx, const char* msg);
void ErrNonfatal(JpegContext& ctx, const char* format, int a, int b);
void printOut(JpegContext& ctx, const char* format, ...) __attribute__((format(printf, 2, 3)));
void printErr(JpegContext& ctx, const char* format, ...) __attribute__((format(printf, 2, 3)));

} // namespace quillet
