#pragma once

#include <QList>
#include <QPair>
#include <QString>

namespace quillet {

class ProcessingParams;
class Renamer;

// The settings a batch will use, in words, as (label, value) rows: size,
// format, quality, resolution, rotation, metadata and names.
QList<QPair<QString, QString>> settingsSummary(const ProcessingParams& params, const Renamer& renamer);

} // namespace quillet
