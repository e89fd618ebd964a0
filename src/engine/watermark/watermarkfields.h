#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace quillet {

class KVImageInfo;

// The text of one text-watermark field (codes in TextField) for a picture's
// record. Numbers are written with a '.' whatever the locale. Gives nothing
// for codes above 14 and for text fields the record leaves empty (name,
// camera model, date, caption, comment); numeric fields always give a text.
std::optional<QString> imageInfoField(const KVImageInfo& info, int field);

// The texts of the fields in order; a field with no text is left out rather
// than shown as a blank, so the bar never holds an empty slot.
QStringList watermarkTexts(const KVImageInfo& info, const QList<int>& fields);

} // namespace quillet
