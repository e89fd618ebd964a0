#include "metadata/exiftransfer.h"

#include "metadata/exifparser.h"
#include "metadata/jpegsections.h"
#include "support/filesystem.h"

#include <sys/stat.h>

#include <cstring>

namespace quillet {

namespace {

void startFile(JpegContext& ctx, const char* currentFile, const char* examined) {
    ctx.CurrentFile = currentFile ? currentFile : "";
    ResetJpgfile(ctx);
    ctx.Info = ImageInfo{};
    ctx.Info.FlashUsed = -1;
    ctx.Info.MeteringMode = -1;
    struct stat st {};
    if (::stat(examined, &st) == 0) {
        ctx.Info.FileDateTime = int32_t(st.st_mtime);
        ctx.Info.FileSize = uint32_t(st.st_size);
    } else {
        ErrFatal(ctx, "No such file"); // the read that follows fails on its own
    }
}

int fail(JpegContext& ctx) {
    DiscardData(ctx);
    return 0;
}

} // namespace

int parseFile(JpegContext& ctx, const char* path) {
    startFile(ctx, path, path);
    return ReadJpegFile(ctx, path, ReadMetadata);
}

int copyExif(JpegContext& ctx, const char* source, const char* destination) {
    startFile(ctx, destination, source);
    std::strncpy(ctx.Info.FileName, source, sizeof ctx.Info.FileName - 1);

    if (!ReadJpegFile(ctx, source, ReadMetadata))
        return 0;
    DiscardAllButExif(ctx);
    // Handing the thumbnail's own bytes to RemoveThumbnail is what it has
    // always done: the re-parse fails its header check ("Incorrect Exif
    // header") and the removal works on the directory the read above found.
    if (ctx.Info.ThumbnailPointer) {
        // Where messages are kept for the user, that expected complaint is
        // left out: it says nothing about either file.
        const int suppressed = ctx.SupressNonFatalErrors;
        if (ctx.Notes)
            ctx.SupressNonFatalErrors = 1;
        RemoveThumbnail(ctx, ctx.Info.ThumbnailPointer, ctx.Info.ThumbnailSize);
        ctx.SupressNonFatalErrors = suppressed;
    }

    if (!ReadJpegFile(ctx, destination, ReadImage))
        return 0;

    // The new contents are written beside the destination first, so a full
    // disk or a failed write leaves the destination as it was.
    FileSystem& files = fileSystem(ctx);
    const QByteArray temp =
        files.writeBeside(destination, [&ctx](File& out) { return WriteJpegStream(ctx, out); });
    if (temp.isEmpty())
        return fail(ctx);
    struct stat st {};
    if (::stat(destination, &st) == 0)
        ::chmod(temp.constData(), st.st_mode & 07777);

    const QByteArray backup = QByteArray(destination) + ".t";
    files.remove(backup);
    if (!files.rename(destination, backup)) {
        files.remove(temp);
        return fail(ctx);
    }
    if (!files.rename(temp, destination)) {
        files.rename(backup, destination); // the old contents go back
        files.remove(temp);
        return fail(ctx);
    }
    files.remove(backup);
    DiscardData(ctx);
    return 1;
}

} // namespace quillet
