#pragma once

#include "naming/renamer.h"

#include <QObject>

class QSettings;

namespace quillet {

// The renaming scheme as the window edits it: the renaming panel changes the
// renamer live (its examples follow every keystroke), and the edit ends by
// storing the scheme or by reading it back from the store.
class RenamingModel : public QObject {
    Q_OBJECT
  public:
    RenamingModel(QSettings& store, QObject* parent = nullptr);

    Renamer& renamer() { return m_renamer; }
    const Renamer& renamer() const { return m_renamer; }

    // Starts an edit from the stored scheme.
    void beginEdit();
    // OK stores the edited scheme, anything else reloads the stored one.
    void endEdit(bool accepted);
    // Reads the stored scheme again: a batch starts from what is stored.
    void reload();

    // "e.g. <examples> ...", or "Same as input filename" for no renaming.
    QString summary() const;

  Q_SIGNALS:
    void summaryChanged(const QString& summary);

  private:
    QSettings& m_store;
    Renamer m_renamer;
};

} // namespace quillet
