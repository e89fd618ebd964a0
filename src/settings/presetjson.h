#pragma once

#include "settings/processingparams.h"

#include <QByteArray>
#include <QString>

class QIODevice;

#include <stdexcept>

namespace quillet {

// A preset file that cannot be read or written; the message says why.
class PresetFileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The shareable file form of one preset (described in docs/presets.md):
//   {"format": "quillet-preset", "version": 1, "preset": {"Name": ..., ...}}
// Reading is strict: every key must be a record key with its own JSON type
// and a value the settings schema allows, and a file that breaks any rule is
// refused whole.
namespace PresetJson {

inline constexpr char FormatName[] = "quillet-preset";
inline constexpr int Version = 1;
// Larger files are refused before they are parsed.
inline constexpr qint64 MaxFileSize = 1024 * 1024;

// The file form of preset; its "Id" belongs to one store and is left out.
QByteArray toJson(const ProcessingParams& preset);
// The preset of a file form, without an "Id". Throws PresetFileError.
ProcessingParams fromJson(const QByteArray& bytes);

// Reads a device (a file, standard input) to its end or just past the cap.
ProcessingParams read(QIODevice& device);
ProcessingParams readFile(const QString& path);
// Replaces the file whole or leaves it as it was. Throws PresetFileError.
void writeFile(const QString& path, const ProcessingParams& preset);

} // namespace PresetJson

} // namespace quillet
