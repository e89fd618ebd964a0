#pragma once

#include "support/filesystem.h"

#include <QDateTime>
#include <QString>

#include <cstdint>

namespace quillet {

// File attributes a Mac file system keeps natively, mapped onto Linux.
//
// Type and creator codes, the hidden-extension flag and the creation date are
// extended attributes in the user namespace:
//   user.quillet.type      four ASCII bytes, e.g. "JPEG"
//   user.quillet.creator   four ASCII bytes
//   user.quillet.hidden-extension   "1"
//   user.quillet.creation-date      ISO 8601 text with offset
// The modification date is the file's own mtime. A file system without
// extended attributes ignores them silently.
namespace FileAttributes {

inline constexpr char TypeAttribute[] = "user.quillet.type";
inline constexpr char CreatorAttribute[] = "user.quillet.creator";
inline constexpr char HiddenExtensionAttribute[] = "user.quillet.hidden-extension";
inline constexpr char CreationDateAttribute[] = "user.quillet.creation-date";

// 'JPEG' = 0x4A504547: four ASCII bytes, first byte most significant.
constexpr std::uint32_t fourCharCode(const char (&code)[5]) {
    return (std::uint32_t(std::uint8_t(code[0])) << 24) | (std::uint32_t(std::uint8_t(code[1])) << 16) |
           (std::uint32_t(std::uint8_t(code[2])) << 8) | std::uint32_t(std::uint8_t(code[3]));
}
QString fourCharString(std::uint32_t code);

// The HFS type code of an output format (0 for an unknown format).
std::uint32_t typeCodeForFormat(int format);

// _setAttributesForFileAtPath:creator:format:hideExtension:creationDate:modificationDate:
// With creator 0 neither code is set; a modification date is set only together
// with a creation date. Returns true on success (nothing to set is success).
bool setAttributes(const QString& path, std::uint32_t creator, int format, bool hideExtension,
                   const QDateTime& creationDate, const QDateTime& modificationDate,
                   FileSystem& fileSystem = FileSystem::standard());

// Reads back what setAttributes stored (0 / false / invalid when absent).
std::uint32_t typeCode(const QString& path, FileSystem& fileSystem = FileSystem::standard());
std::uint32_t creatorCode(const QString& path, FileSystem& fileSystem = FileSystem::standard());
bool extensionHidden(const QString& path, FileSystem& fileSystem = FileSystem::standard());
QDateTime creationDate(const QString& path, FileSystem& fileSystem = FileSystem::standard());

} // namespace FileAttributes

} // namespace quillet
