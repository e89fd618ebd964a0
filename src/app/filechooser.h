#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace quillet {

class Sheets;

// File and folder choosers, shown as sheets through the one question service
// (so tests answer them like any other question: code 1 and the path).
namespace FileChooser {

// Pictures to process; none when cancelled.
std::optional<QStringList> choosePictures(Sheets& sheets, const QString& startFolder);
// One folder; none when cancelled.
std::optional<QString> chooseFolder(Sheets& sheets, const QString& title, const QString& startFolder);

} // namespace FileChooser

} // namespace quillet
