#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace quillet {

// "Never a bigger file": an output in the same format as its input that
// comes out larger than the input is replaced by the input's own bytes.
namespace SmallerOriginal {

// The output format code (FileFormat) a file's first bytes say it is in; 0
// for anything else.
int formatOfBytes(const QByteArray& head);

// The input's bytes when `input` is a file in `format` smaller than
// `outputSize` bytes; nothing otherwise (another format, not smaller,
// unreadable).
std::optional<QByteArray> ifSmaller(const QString& input, int format, qint64 outputSize);

} // namespace SmallerOriginal

} // namespace quillet
