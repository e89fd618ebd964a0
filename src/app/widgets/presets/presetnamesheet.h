#pragma once

#include <QDialog>

#include <functional>
#include <optional>

class QLineEdit;
class QPushButton;

namespace quillet {

class Sheets;

// Asks for the name of a new preset. "Add" is enabled only while the typed
// name is one the presets may take.
class PresetNameSheet : public QDialog {
    Q_OBJECT
  public:
    using Acceptable = std::function<bool(const QString&)>;

    PresetNameSheet(Acceptable acceptable, QWidget* parent = nullptr);
    QString name() const;

    // The typed name, or none when cancelled. Blocks until answered.
    static std::optional<QString> ask(Sheets& sheets, const Acceptable& acceptable);

  private:
    Acceptable m_acceptable;
    QLineEdit* m_name;
    QPushButton* m_ok = nullptr;
};

} // namespace quillet
