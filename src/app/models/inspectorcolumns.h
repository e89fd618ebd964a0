#pragma once

#include "metadata/kvimageinfo.h"

#include <QString>
#include <QVariant>

#include <vector>

namespace quillet {

// The inspector's columns: every one the window knows, shown or not, in a
// fixed order whose positions are the columns' numbers everywhere (the
// model's column, the chooser's boxes, the stored layout). A column is named
// by the record property it shows; "outputFilename" shows the name the
// renaming scheme gives the row instead.
class InspectorColumns {
  public:
    using Comparison = int (KVImageInfo::*)(const KVImageInfo&) const;

    struct Column {
        QString identifier;
        QString title;
        Qt::Alignment alignment;
        int width;         // initial width, pixels
        bool shownAtFirst; // part of the layout before the user changes it
    };

    static const std::vector<Column>& all();
    static int count() { return int(all().size()); }
    // The column's number, or -1 for an identifier no column has.
    static int indexOf(const QString& identifier);

    static constexpr char ThumbnailedName[] = "thumbnailedName";
    static constexpr char OutputFilename[] = "outputFilename";

    // The record's comparison for a column: the one named "compare" and the
    // identifier with its first letter upper case and the rest lower case.
    // Null when the record has none ("outputFilename").
    static Comparison comparison(const QString& identifier);

    // What a column shows of a record, as text; the thumbnailed name and the
    // output name are the model's business.
    static QString text(const KVImageInfo& info, const QString& identifier);
};

} // namespace quillet
