#pragma once

#include <QComboBox>

namespace quillet {

// A pop-up menu of entries followed by commands ("Remove Selected Entry",
// "Choose a Folder ..."), as the destination and creator menus are. A command
// runs only when picked from the open menu: the wheel, the arrow keys and
// typing move among the entries alone, so nothing is removed or asked for by
// passing over it.
class CommandComboBox : public QComboBox {
    Q_OBJECT
  public:
    explicit CommandComboBox(QWidget* parent = nullptr);

    // Appends a command item.
    void addCommand(const QString& title);
    bool isCommand(int index) const;

  protected:
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    bool isEntry(int index) const;
    // Selects and activates the entry `steps` entries away from the current
    // one, stopping at the first and last.
    void stepEntries(int steps);
    void activateEntry(int index);
};

} // namespace quillet
