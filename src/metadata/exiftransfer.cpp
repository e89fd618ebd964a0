#include "metadata/exiftransfer.h"

#include "support/unnamedfile.h"

#include "metadata/exifparser.h"
#include "metadata/jpegsections.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

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

// A fresh file beside `path`, for writing the new contents before they take
// its place. Empty when none can be made.
std::string siblingTempName(const char* path) {
    std::string name = std::string(path) + ".XXXXXX";
    const int fd = ::mkstemp(name.data());
    if (fd < 0)
        return {};
    ::close(fd);
    return name;
}

// The new contents written into a file that gets its name only once it is
// complete, so a process killed while writing leaves nothing behind. Falls back
// to a named temporary where the file system has no unnamed files. Returns the
// written file's name, empty on failure.
std::string unnamedCopy(JpegContext& ctx, const char* destination) {
    const std::string path(destination);
    const auto slash = path.find_last_of('/');
    UnnamedFile unnamed(slash == std::string::npos ? "." : path.substr(0, std::max<size_t>(slash, 1)));
    if (!unnamed.isOpen()) {
        const std::string temp = siblingTempName(destination);
        if (!temp.empty() && !WriteJpegFile(ctx, temp.c_str())) {
            std::remove(temp.c_str());
            return {};
        }
        return temp;
    }
    FILE* out = ::fdopen(::dup(unnamed.fd()), "wb");
    if (!out)
        return {};
    const bool written = WriteJpegStream(ctx, out);
    if (std::fclose(out) != 0 || !written)
        return {};
    return unnamed.nameBeside(path);
}

int fail(JpegContext& ctx) {
    DiscardData(ctx);
    return 0;
}

} // namespace

int parseFile(JpegContext& ctx, const char* path) {
    startFile(ctx, path, path);
    ctx.FilesMatched = 1;
    if (!ReadJpegFile(ctx, path, ReadMetadata))
        return 0;
    if (CheckFileSkip(ctx)) {
        DiscardData(ctx);
        return 0;
    }
    return 1;
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
    if (ctx.Info.ThumbnailPointer)
        RemoveThumbnail(ctx, ctx.Info.ThumbnailPointer, ctx.Info.ThumbnailSize);

    ctx.FilesMatched = 1;
    if (!ReadJpegFile(ctx, destination, ReadImage))
        return 0;

    // The new contents are written beside the destination first, so a full
    // disk or a failed write leaves the destination as it was.
    const MetadataFileOps& ops = fileOps(ctx);
    const std::string temp = ctx.FileOps ? siblingTempName(destination) : unnamedCopy(ctx, destination);
    if (temp.empty() || (ctx.FileOps && !WriteJpegFile(ctx, temp.c_str()))) {
        if (!temp.empty())
            ops.remove(temp.c_str());
        return fail(ctx);
    }
    struct stat st {};
    if (::stat(destination, &st) == 0)
        ::chmod(temp.c_str(), st.st_mode & 07777);

    const std::string backup = std::string(destination) + ".t";
    ops.remove(backup.c_str());
    if (ops.rename(destination, backup.c_str()) != 0) {
        ops.remove(temp.c_str());
        return fail(ctx);
    }
    if (ops.rename(temp.c_str(), destination) != 0) {
        ops.rename(backup.c_str(), destination); // the old contents go back
        ops.remove(temp.c_str());
        return fail(ctx);
    }
    ops.remove(backup.c_str());
    DiscardData(ctx);
    return 1;
}

} // namespace quillet
