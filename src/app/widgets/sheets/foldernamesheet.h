#pragma once

#include <QDialog>

#include <optional>

class QLabel;
class QLineEdit;

namespace quillet {

class Sheets;

// Asks for the name of a new output folder inside the destination, showing
// the full path it will have as the name is typed.
class FolderNameSheet : public QDialog {
    Q_OBJECT
  public:
    FolderNameSheet(const QString& destination, QWidget* parent = nullptr);
    QString name() const;

    // The destination joined with the typed name's last component, so a
    // typed path cannot leave the destination; the destination itself when
    // nothing usable was typed.
    static QString outputFolder(const QString& destination, const QString& typed);
    // The chosen output folder, or none when cancelled. Blocks until answered.
    static std::optional<QString> ask(Sheets& sheets, const QString& destination);

  private:
    QString m_destination;
    QLineEdit* m_name;
    QLabel* m_path;
};

} // namespace quillet
