#include "metadata/metadatanotes.h"

#include <QStringList>

namespace quillet {

bool MetadataNotes::hasDamage() const {
    for (const Note& note : m_notes)
        if (note.damage)
            return true;
    return false;
}

void MetadataNotes::writeDamage(ActivityLog& log, const QString& fileName) const {
    QStringList texts;
    for (const Note& note : m_notes)
        if (note.damage && !texts.contains(note.text))
            texts.append(note.text);
    if (texts.isEmpty())
        return;
    // A badly broken block repeats itself; a few lines say enough.
    constexpr qsizetype shown = 3;
    QString line = QStringLiteral("\tDamaged metadata in '%1': %2")
                       .arg(fileName, texts.mid(0, shown).join(QStringLiteral("; ")));
    if (texts.size() > shown)
        line += QStringLiteral(" (and %1 more)").arg(texts.size() - shown);
    log.writeWarningActivity(line + QLatin1Char('\n'));
}

} // namespace quillet
