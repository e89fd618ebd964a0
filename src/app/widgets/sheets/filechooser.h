#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class QWidget;

namespace quillet {

class Sheets;

// File and folder choosers, shown as sheets through the one question service
// (so tests answer them like any other question: code 1 and the path).
namespace FileChooser {

// One picture for the watermark, chosen on top of `window`; none when
// cancelled.
std::optional<QString> chooseWatermark(Sheets& sheets, QWidget* window);
// Pictures to process; none when cancelled. On top of `window` when given,
// else of the main window.
std::optional<QStringList> choosePictures(Sheets& sheets, const QString& startFolder,
                                          QWidget* window = nullptr);
// One folder; none when cancelled. With a drop area, a folder dropped on the
// chooser's drop area is taken as well.
std::optional<QString> chooseFolder(Sheets& sheets, const QString& title, const QString& startFolder,
                                    bool dropArea = false);
// One desktop application (.desktop file), chosen or dropped on the
// chooser's drop area (which ends it with code 10); none when cancelled.
std::optional<QString> chooseApplication(Sheets& sheets, const QString& startFolder);
// A preset file to import (or, with a suggested name, to export to), chosen
// on top of `window`; none when cancelled.
std::optional<QString> choosePresetFile(Sheets& sheets, QWidget* window, const QString& suggestedName = {});

} // namespace FileChooser

} // namespace quillet
