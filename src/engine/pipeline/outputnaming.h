#pragma once

#include <QString>

namespace quillet {

// The path rules of the batch's output files; plain functions of strings.
namespace OutputNaming {

// The input's file name, without its extension when that names a picture type
// we read (scan.raw2 stays scan.raw2, IMG_1.JPG becomes IMG_1).
QString baseName(const QString& inputPath);

// Folder + name + the format's extension ("jpg", "png", "tiff"; none for an
// unknown format). A "/" in the name becomes ":", since it cannot stand in a
// file name.
QString outputPathForName(const QString& name, const QString& dir, int format);

// True for a path whose second component is "tmp" (it lies under /tmp): files
// there are replaced without a question.
bool isUnderTmp(const QString& path);

// Whether writing `output` would replace `source`, comparing without regard to
// case as the original's file system did.
bool wouldOverwriteSource(const QString& output, const QString& source);

} // namespace OutputNaming

} // namespace quillet
