#pragma once

#include "support/activitylog.h"

#include <QList>
#include <QString>

namespace quillet {

// Messages of the JPEG/EXIF reader for one file, kept instead of printed so
// the batch can show them in that file's log lines. Only damage is worth the
// user's attention: a block that breaks its own rules, a JPEG cut short. A
// picture that is simply not a JPEG is a note, not damage.
class MetadataNotes {
  public:
    struct Note {
        QString text;
        bool damage = false;
    };

    void add(const QString& text, bool damage) { m_notes.append({text, damage}); }
    const QList<Note>& notes() const { return m_notes; }
    bool hasDamage() const;

    // One warning naming the file, listing each distinct damage note once;
    // nothing when there is none.
    void writeDamage(ActivityLog& log, const QString& fileName) const;

  private:
    QList<Note> m_notes;
};

} // namespace quillet
