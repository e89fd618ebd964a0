#pragma once

#include "app/widgets/views/commandcombobox.h"

namespace quillet {

class AppController;
class CreatorMenu;

// The creator menu as a pop-up button: "None", the stored creators, a blank
// item, "Remove Selected Entry" and "Choose an Application ...". The choices
// go to the controller's CreatorMenu; the menu is rebuilt from it after each.
class CreatorComboBox : public CommandComboBox {
    Q_OBJECT
  public:
    CreatorComboBox(CreatorMenu& menu, AppController& controller, QWidget* parent = nullptr);
    // Lists the creators again and selects the stored one.
    void rebuild();

  private:
    void chosen(int index);

    CreatorMenu& m_menu;
    AppController& m_controller;
};

} // namespace quillet
