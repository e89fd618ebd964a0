#include "inplace/filerotation.h"

#include "inplace/jpegtranrunner.h"
#include "metadata/jpegsegmentlist.h"
#include "metadata/kvimageinfo.h"
#include "metadata/metadatanotes.h"
#include "metadata/orientationtag.h"
#include "metadata/xmporientation.h"
#include "metadata/xmpsegments.h"
#include "support/activitylog.h"
#include "support/filesystem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

namespace quillet {

namespace {

QByteArray native(const QString& path) {
    return QFile::encodeName(path);
}

// Mode bits are checked as well as access(): root may write anywhere, but a
// file or folder the user made read-only is still not ours to rewrite.
bool writable(const QFileInfo& info) {
    const auto writeBits = QFileDevice::WriteOwner | QFileDevice::WriteGroup | QFileDevice::WriteOther;
    return info.isWritable() && (info.permissions() & writeBits);
}

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

FileRotation::FileRotation(JpegtranRunner& jpegtran, FileSystem& fileSystem, ActivityLog& log)
    : m_jpegtran(jpegtran), m_fileSystem(fileSystem), m_log(log) {}

QString FileRotation::temporaryPath(const QString& path) {
    const QFileInfo info(path);
    return info.absolutePath() + QStringLiteral("/.qlt.") + info.fileName();
}

QString FileRotation::backupPath(const QString& path) {
    const QFileInfo info(path);
    return info.absolutePath() + QLatin1Char('/') + QLatin1String(BackupFolderName) + QLatin1Char('/') +
           info.fileName();
}

QStringList FileRotation::transformForOrientation(int orientation) {
    switch (orientation) {
    case 2:
        return {QStringLiteral("-flip"), QStringLiteral("horizontal")};
    case 3:
        return {QStringLiteral("-rotate"), QStringLiteral("180")};
    case 4:
        return {QStringLiteral("-flip"), QStringLiteral("vertical")};
    case 5:
        return {QStringLiteral("-transpose")};
    case 6:
        return {QStringLiteral("-rotate"), QStringLiteral("90")};
    case 7:
        return {QStringLiteral("-transverse")};
    case 8:
        return {QStringLiteral("-rotate"), QStringLiteral("270")};
    default: // upright, or no tag
        return {};
    }
}

int FileRotation::turn(const QString& path, const QString& source, const QStringList& transform,
                       bool& trimmed) {
    // Every marker segment goes across (profile, XMP, comments). -perfect
    // refuses a picture whose sides are not whole blocks rather than leave an
    // unturned strip at its edge; that picture is turned again with the
    // partial blocks trimmed off.
    const auto run = [&](const QString& edges) {
        return m_jpegtran.run(QStringList{QStringLiteral("-copy"), QStringLiteral("all"), edges} + transform +
                              QStringList{QStringLiteral("-outfile"), path, source});
    };
    trimmed = false;
    const int status = run(QStringLiteral("-perfect"));
    if (status == 0 || status == -1)
        return status;
    const int retried = run(QStringLiteral("-trim"));
    trimmed = retried == 0;
    return retried == 0 ? 0 : status;
}

FileRotation::Outcome FileRotation::fail(const QString& format, const QString& name) {
    m_log.writeWarningActivity(format.arg(name));
    return Outcome::Bad;
}

FileRotation::Outcome FileRotation::rotate(const QString& path, int degrees, bool keepBackup) {
    const QFileInfo info(path);
    const QString name = info.fileName();
    if (info.isDir())
        return fail(QStringLiteral("'%1' is a folder\n"), name);
    const bool automatic = degrees == 0;
    QStringList transform{QStringLiteral("-rotate"), QString::number(degrees)};
    if (automatic) {
        // The EXIF block may follow a JFIF segment, as in many cameras' files.
        transform = transformForOrientation(readExifOrientation(native(path).constData(), m_fileSystem));
        if (transform.isEmpty()) {
            m_log.writeActivity(QStringLiteral("Skipping '%1'\n").arg(name));
            return Outcome::Skipped;
        }
    }
    if (!info.isFile())
        return fail(QStringLiteral("'%1' was not found\n"), name);
    if (!writable(info) || !writable(QFileInfo(info.absolutePath())))
        return fail(QStringLiteral("'%1' is read-only\n"), name);

    const QString marker = temporaryPath(path);
    if (FileSystem::exists(marker)) // a leftover that could not be put back
        return fail(QStringLiteral("'%1' has an interrupted rotation that could not be undone\n"), name);
    QString source = marker;
    if (keepBackup) {
        if (!m_fileSystem.ensureFolder(info.absolutePath() + QLatin1Char('/') +
                                       QLatin1String(BackupFolderName)))
            return fail(QStringLiteral("Unable to make the backup folder for '%1'\n"), name);
        source = backupPath(path);
        if (!m_fileSystem.linkOrCopy(path, marker))
            return fail(QStringLiteral("Unable to back up '%1'\n"), name);
        // After a restore the backup can be another name of the file itself; a
        // rename between two names of one file does nothing, and the tool would
        // then write over the very original it reads.
        if (FileSystem::sameFile(path, source))
            m_fileSystem.remove(native(source));
    }
    if (!m_fileSystem.rename(native(path), native(source))) {
        if (keepBackup)
            m_fileSystem.remove(native(marker));
        return fail(QStringLiteral("Unable to move '%1' aside\n"), name);
    }

    // The tool reads the moved original and writes the turned picture in its place.
    bool trimmed = false;
    const int status = turn(path, source, transform, trimmed);
    MetadataNotes notes;
    QString failure;
    if (status == -1)
        failure = QStringLiteral("Unable to run jpegtran on '%1'\n");
    else if (status != 0)
        failure = QStringLiteral("'%1' is not a JPEG\n");
    else if (KVImageInfo::copyInfoFromPath(source, path, m_fileSystem, &notes) != 1)
        failure = QStringLiteral("Unable to copy the EXIF data into '%1'\n");
    else if (!restoreSegments(source, path, automatic))
        failure = QStringLiteral("Unable to copy the metadata into '%1'\n");
    else if (automatic && writeExifOrientation(native(path).constData(), 1, m_fileSystem) == 0)
        failure = QStringLiteral("Unable to reset the orientation of '%1'\n");
    notes.writeDamage(m_log, name);
    if (!failure.isEmpty()) {
        putBack(path, source, marker);
        return fail(failure, name);
    }

    // The tool and the EXIF rewrite make new files; keep the original's mode.
    QFile::setPermissions(path, QFileInfo(source).permissions());
    m_fileSystem.remove(native(marker));
    m_log.writeActivity(QStringLiteral("Rotated '%1'\n").arg(name));
    if (trimmed)
        m_log.writeWarningActivity(
            QStringLiteral("\tTrimmed '%1' to whole blocks: its width or height was not a multiple of the "
                           "block size\n")
                .arg(name));
    return Outcome::Rotated;
}

bool FileRotation::restoreSegments(const QString& original, const QString& path, bool uprightXmp) {
    // The EXIF copy leaves out the original's JFIF segment and any APP1 other
    // than EXIF (its XMP); they go back in, byte for byte, where they stood
    // relative to the EXIF block.
    const std::optional<JpegSegmentList> from = JpegSegmentList::parse(readAll(original));
    const QByteArray turnedBytes = readAll(path);
    std::optional<JpegSegmentList> turned = JpegSegmentList::parse(turnedBytes);
    if (!from || !turned)
        return false;
    const auto has = [&turned](const JpegSegmentList::Segment& segment) {
        for (const JpegSegmentList::Segment& own : turned->segments())
            if (own.marker == segment.marker && own.payload == segment.payload)
                return true;
        return false;
    };
    qsizetype at = 0;
    bool changed = false;
    for (const JpegSegmentList::Segment& segment : from->segments()) {
        const bool exif =
            segment.marker == 0xE1 && segment.payload.startsWith(JpegSegmentList::ExifSignature);
        if (exif) {
            const qsizetype own = turned->find(0xE1, JpegSegmentList::ExifSignature);
            at = own >= 0 ? own + 1 : at;
            continue;
        }
        if ((segment.marker == 0xE0 || segment.marker == 0xE1) && !has(segment)) {
            turned->segments().insert(at++, segment);
            changed = true;
        }
    }
    // The EXIF orientation is set to 1 next; a viewer that reads the XMP
    // would otherwise turn the picture once more.
    if (uprightXmp)
        for (JpegSegmentList::Segment& segment : turned->segments())
            if (XmpSegments::isMain(segment))
                changed = XmpOrientation::resetToUpright(segment.payload) || changed;
    return !changed || m_fileSystem.writeAtomically(path, turned->toBytes());
}

void FileRotation::putBack(const QString& path, const QString& source, const QString& marker) {
    // The rename replaces whatever the tool left at the path.
    if (!m_fileSystem.rename(native(source), native(path))) {
        m_log.writeWarningActivity(QStringLiteral("Unable to put back '%1'; the original is '%2'\n")
                                       .arg(QFileInfo(path).fileName(), source));
        return;
    }
    if (source != marker)
        m_fileSystem.remove(native(marker));
}

bool FileRotation::restoreLeftover(const QString& path) {
    const QString marker = temporaryPath(path);
    if (!FileSystem::exists(marker))
        return true;
    const QString name = QFileInfo(path).fileName();
    // Interrupted before the original was moved, or after it was put back.
    if (FileSystem::sameFile(marker, path))
        return m_fileSystem.remove(native(marker));
    // Otherwise the run never finished: whatever stands at the path (nothing, a
    // part-written file, or a turned copy not yet given its EXIF) is its output.
    if (!QFileInfo(marker).isFile() || !m_fileSystem.rename(native(marker), native(path))) {
        m_log.writeWarningActivity(
            QStringLiteral("Unable to put back '%1' from '%2'\n").arg(name, QFileInfo(marker).fileName()));
        return false;
    }
    m_log.writeActivity(QStringLiteral("Restored '%1' from an interrupted rotation\n").arg(name));
    return true;
}

void FileRotation::restoreLeftovers(const QStringList& paths) {
    QSet<QString> listed;
    QStringList folders;
    for (const QString& path : paths) {
        const QFileInfo info(path);
        listed.insert(QDir::cleanPath(info.absoluteFilePath()));
        const QString folder = QDir::cleanPath(info.absolutePath());
        if (!folders.contains(folder))
            folders.append(folder);
    }
    const QLatin1String prefix(".qlt.");
    for (const QString& folder : std::as_const(folders)) {
        const QStringList leftovers = QDir(folder).entryList(
            {prefix + QLatin1Char('*')}, QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
        for (const QString& leftover : leftovers) {
            const QString target = folder + QLatin1Char('/') + leftover.mid(prefix.size());
            if (listed.contains(target) || !FileSystem::exists(target))
                restoreLeftover(target);
        }
    }
}

} // namespace quillet
