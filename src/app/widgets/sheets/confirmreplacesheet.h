#pragma once

#include <QDialog>

class QCheckBox;

namespace quillet {

class Sheets;

// The question asked when an output file exists: Replace (1) or Skip (0),
// plus 2 when "Apply to all" is ticked, as BatchShell::ReplaceAnswer counts.
class ConfirmReplaceSheet : public QDialog {
    Q_OBJECT
  public:
    ConfirmReplaceSheet(const QString& path, QWidget* parent = nullptr);
    bool appliesToAll() const;

    // Asks through the sheets service; blocks until answered.
    static int ask(Sheets& sheets, const QString& path);

  private:
    QCheckBox* m_applyToAll;
};

} // namespace quillet
