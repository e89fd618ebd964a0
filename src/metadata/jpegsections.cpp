#include "metadata/jpegsections.h"

#include "metadata/exifparser.h"
#include "metadata/metadatanotes.h"
#include "support/filesystem.h"

#include <atomic>
#include <cstdarg>
#include <cstring>
#include <new>

namespace quillet {

namespace {

std::atomic<FILE*> defaultOut{stdout};
std::atomic<FILE*> defaultErr{stderr};

const uint8_t JfifHead[18] = {0xFF, 0xE0, 0x00, 0x10, 0x4A, 0x46, 0x49, 0x46, 0x00,
                              0x01, 0x01, 0x01, 0x01, 0x2C, 0x01, 0x2C, 0x00, 0x00};

void vprint(FILE* stream, const char* format, va_list args) {
    if (stream)
        std::vfprintf(stream, format, args);
}

bool isSof(int marker) {
    switch (marker) {
    case 0xC0:
    case 0xC1:
    case 0xC2:
    case 0xC3:
    case 0xC5:
    case 0xC6:
    case 0xC7:
    case 0xC9:
    case 0xCA:
    case 0xCB:
    case 0xCD:
    case 0xCE:
    case 0xCF:
        return true;
    default:
        return false;
    }
}

// Copies the first comment into the record: CR before LF dropped, control
// bytes other than LF and TAB shown as '?'.
void storeComment(JpegContext& ctx, const Section& section) {
    const uint32_t nch = section.Size < 2000 ? section.Size : 2000;
    const uint8_t* data = section.Data.data();
    size_t out = 0;
    for (uint32_t a = 2; a < nch; a++) {
        const uint8_t ch = data[a];
        if (ch == '\r' && a + 1 < section.Size && data[a + 1] == '\n')
            continue;
        ctx.Info.Comments[out++] = (ch >= 32 || ch == '\n' || ch == '\t') ? char(ch) : '?';
    }
    ctx.Info.Comments[out] = '\0';
}

void storeFrame(JpegContext& ctx, const Section& section, int marker) {
    const uint8_t* data = section.Data.data(); // padded: short frames read zeros
    ctx.Info.Height = data[3] * 256 + data[4];
    ctx.Info.Width = data[5] * 256 + data[6];
    const int components = data[7];
    ctx.Info.IsColor = components == 3 ? 1 : 0;
    ctx.Info.Process = marker;
}

void dropLast(JpegContext& ctx) {
    ctx.SectionsRead -= 1;
    ctx.Sections[size_t(ctx.SectionsRead)] = Section{};
}

// Reads everything after the SOS header as the image-data entry.
int readImageData(JpegContext& ctx, ByteSource& source) {
    // The table has no room for the image data after a 20th section; such a
    // file is refused whole rather than written back without its pixels.
    if (ctx.SectionsRead >= MaxSections) {
        ErrFatal(ctx, "Too many sections in jpg file");
        return 0;
    }
    const long long size = source.remaining();
    Section& image = ctx.Sections[size_t(ctx.SectionsRead)];
    try {
        if (size < 0 || uint64_t(size) > UINT32_MAX - SectionPadding)
            throw std::bad_alloc();
        image.Data.assign(size_t(size) + SectionPadding, 0);
    } catch (const std::bad_alloc&) {
        image = Section{};
        ErrFatal(ctx, "could not allocate data for entire image");
        return 0;
    }
    if (source.read(image.Data.data(), size_t(size)) != size_t(size)) {
        image = Section{};
        ErrFatal(ctx, "could not read the rest of the image");
        return 0;
    }
    image.Type = PseudoImageData;
    image.Size = uint32_t(size);
    ctx.SectionsRead += 1;
    ctx.HaveAll = 1;
    return 1;
}

} // namespace

void setMetadataMessageStreams(FILE* out, FILE* err) {
    defaultOut = out;
    defaultErr = err;
}

JpegContext::JpegContext() : OutStream(defaultOut.load()), ErrStream(defaultErr.load()) {}

FileSystem& fileSystem(const JpegContext& ctx) {
    return ctx.Files ? *ctx.Files : FileSystem::standard();
}

namespace {

// The message as one line for the notes, without its line feed.
void keepNote(JpegContext& ctx, bool damage, const char* format, va_list args) {
    QString text = QString::vasprintf(format, args);
    while (text.endsWith(QLatin1Char('\n')))
        text.chop(1);
    ctx.Notes->add(text, damage);
}

} // namespace

void printOut(JpegContext& ctx, const char* format, ...) {
    va_list args;
    va_start(args, format);
    // What goes to standard output is about the file's structure: damage once
    // the file has shown itself a JPEG.
    if (ctx.Notes)
        keepNote(ctx, ctx.SawSoi, format, args);
    else
        vprint(ctx.OutStream, format, args);
    va_end(args);
}

void printErr(JpegContext& ctx, const char* format, ...) {
    va_list args;
    va_start(args, format);
    if (ctx.Notes)
        keepNote(ctx, false, format, args);
    else
        vprint(ctx.ErrStream, format, args);
    va_end(args);
}

void ErrFatal(JpegContext& ctx, const char* msg) {
    if (ctx.Notes) {
        ctx.Notes->add(QString::fromLocal8Bit(msg), true);
        return;
    }
    printErr(ctx, "Error : %s\n", msg);
    if (!ctx.CurrentFile.empty())
        printErr(ctx, "in file '%s'\n", ctx.CurrentFile.c_str());
}

void ErrNonfatal(JpegContext& ctx, const char* format, int a, int b) {
    if (ctx.SupressNonFatalErrors)
        return;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    if (ctx.Notes) {
        ctx.Notes->add(QString::asprintf(format, a, b), true);
        return;
    }
#pragma GCC diagnostic pop
    if (!ctx.ErrStream)
        return;
    std::fputs("Nonfatal Error : ", ctx.ErrStream);
    if (!ctx.CurrentFile.empty())
        std::fprintf(ctx.ErrStream, "'%s' ", ctx.CurrentFile.c_str());
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::fprintf(ctx.ErrStream, format, a, b);
#pragma GCC diagnostic pop
    std::fputc('\n', ctx.ErrStream);
}

void ResetJpgfile(JpegContext& ctx) {
    for (Section& section : ctx.Sections)
        section = Section{};
    ctx.SectionsRead = 0;
    ctx.HaveAll = 0;
}

void DiscardData(JpegContext& ctx) {
    for (int a = 0; a < ctx.SectionsRead; a++)
        ctx.Sections[size_t(a)] = Section{};
    ctx.Info = ImageInfo{};
    ctx.SectionsRead = 0;
    ctx.HaveAll = 0;
    // Pointers into the freed buffers must not outlive them.
    ctx.LastExifRefd = 0;
    ctx.DirWithThumbnailPtrs = nullptr;
    ctx.OrientationPtr = nullptr;
}

int ReadJpegSections(JpegContext& ctx, ByteSource& source, int mode) {
    ctx.SawSoi = false;
    if (source.get() != 0xFF || source.get() != 0xD8)
        return 0;
    ctx.SawSoi = true;
    bool haveComment = false;
    for (;;) {
        if (ctx.SectionsRead > MaxSections - 1) {
            ErrFatal(ctx, "Too many sections in jpg file");
            return 0;
        }
        int marker = 0;
        for (int a = 0; a < 7; a++) {
            marker = source.get();
            if (marker != 0xFF)
                break;
            if (a >= 6) {
                printOut(ctx, "too many padding bytes\n");
                return 0;
            }
        }
        Section& section = ctx.Sections[size_t(ctx.SectionsRead)];
        section.Type = marker;

        const int lh = source.get();
        const int ll = source.get();
        if (lh < 0 || ll < 0 || lh * 256 + ll < 2) {
            ErrFatal(ctx, "invalid marker");
            return 0;
        }
        const uint32_t length = uint32_t(lh * 256 + ll);
        section.Data.assign(length + SectionPadding, 0);
        section.Data[0] = uint8_t(lh);
        section.Data[1] = uint8_t(ll);
        if (source.read(section.Data.data() + 2, length - 2) != length - 2) {
            section = Section{};
            ErrFatal(ctx, "Premature end of file?");
            return 0;
        }
        section.Size = length;
        ctx.SectionsRead += 1;

        switch (marker) {
        case 0xDA: // SOS
            if (!(mode & ReadImage))
                return 1;
            return readImageData(ctx, source);
        case 0xD9: // EOI
            printOut(ctx, "No image in jpeg!\n");
            return 0;
        case 0xE0: // JFIF is made afresh on writing when needed
            dropLast(ctx);
            break;
        case 0xE1:
            if ((mode & ReadMetadata) && length >= 6 &&
                std::memcmp(section.Data.data() + 2, "Exif", 4) == 0) {
                process_EXIF(ctx, section.Data.data(), length, section.Data.data() + section.Data.size());
            } else {
                dropLast(ctx);
            }
            break;
        case 0xFE:
            if ((mode & ReadMetadata) && !haveComment) {
                haveComment = true;
                storeComment(ctx, section);
            } else {
                dropLast(ctx);
            }
            break;
        default:
            if (isSof(marker))
                storeFrame(ctx, section, marker);
            break;
        }
    }
}

static int finishRead(JpegContext& ctx, int ok, const char* name) {
    if (!ok) {
        printOut(ctx, "Not JPEG (or bad one): %s\n", name);
        DiscardData(ctx);
    }
    return ok;
}

int ReadJpegFile(JpegContext& ctx, const char* path, int mode) {
    File file = fileSystem(ctx).open(path, "rb");
    if (!file) {
        printErr(ctx, "can't open '%s'\n", path);
        return 0;
    }
    FileByteSource source(file.get());
    const int ok = ReadJpegSections(ctx, source, mode);
    file.close();
    return finishRead(ctx, ok, path);
}

int ReadJpegBuffer(JpegContext& ctx, const uint8_t* data, size_t size, int mode) {
    MemoryByteSource source(data, size);
    return finishRead(ctx, ReadJpegSections(ctx, source, mode), ctx.CurrentFile.c_str());
}

Section* FindSection(JpegContext& ctx, int type) {
    for (int a = 0; a < ctx.SectionsRead - 1; a++) {
        if (ctx.Sections[size_t(a)].Type == type)
            return &ctx.Sections[size_t(a)];
    }
    return nullptr;
}

void DiscardAllButExif(JpegContext& ctx) {
    Section exif;
    Section comment;
    for (int a = 0; a < ctx.SectionsRead; a++) {
        Section& section = ctx.Sections[size_t(a)];
        if (section.Type == 0xE1 && exif.Type == 0)
            exif = std::move(section);
        else if (section.Type == 0xFE && comment.Type == 0)
            comment = std::move(section);
        section = Section{};
    }
    // Pointers the parser left in a freed block are forgotten; those into the
    // kept EXIF block stay valid, its buffer having moved without copying.
    const auto inExif = [&exif](const uint8_t* p) {
        return p && !exif.Data.empty() && p >= exif.Data.data() && p < exif.Data.data() + exif.Data.size();
    };
    if (!inExif(ctx.Info.ThumbnailPointer)) {
        ctx.Info.ThumbnailPointer = nullptr;
        ctx.Info.ThumbnailSize = 0;
    }
    if (!inExif(ctx.Info.DatePointer))
        ctx.Info.DatePointer = nullptr;
    if (!inExif(ctx.DirWithThumbnailPtrs))
        ctx.DirWithThumbnailPtrs = nullptr;
    if (!inExif(ctx.OrientationPtr))
        ctx.OrientationPtr = nullptr;

    ctx.SectionsRead = 0;
    if (exif.Type != 0)
        ctx.Sections[size_t(ctx.SectionsRead++)] = std::move(exif);
    if (comment.Type != 0)
        ctx.Sections[size_t(ctx.SectionsRead++)] = std::move(comment);
}

int WriteJpegFile(JpegContext& ctx, const char* path) {
    File file = fileSystem(ctx).open(path, "wb");
    if (!file) {
        ErrFatal(ctx, "Could not open file for write");
        return 0;
    }
    const bool ok = WriteJpegStream(ctx, file);
    return file.close() && ok ? 1 : 0;
}

bool WriteJpegStream(JpegContext& ctx, File& out) {
    if (!ctx.HaveAll)
        ErrFatal(ctx, "Can't write back - didn't read all"); // and carries on, as it always has
    FileSystem& files = fileSystem(ctx);
    bool ok = true;
    const auto put = [&](const void* data, size_t size) { ok = ok && files.write(out, data, size); };
    const auto marker = [&](int type) {
        const uint8_t bytes[2] = {0xFF, uint8_t(type & 0xFF)};
        put(bytes, 2);
    };
    marker(0xD8);
    if (ctx.SectionsRead > 0 && ctx.Sections[0].Type != 0xE0 && ctx.Sections[0].Type != 0xE1)
        put(JfifHead, sizeof JfifHead);
    // An empty list writes only the SOI: there is no image-data entry to end it.
    for (int a = 0; a < ctx.SectionsRead - 1; a++) {
        const Section& section = ctx.Sections[size_t(a)];
        marker(section.Type);
        put(section.Data.data(), section.Size);
    }
    if (ctx.SectionsRead > 0) {
        const Section& last = ctx.Sections[size_t(ctx.SectionsRead - 1)];
        put(last.Data.data(), last.Size);
    }
    return ok;
}

} // namespace quillet
