#pragma once

#include <QGroupBox>

class QFormLayout;

namespace quillet {

class AppController;

// The right-hand panel: what the next batch will do, read from the stored
// settings. The settings controls will take this place.
class SettingsPanel : public QGroupBox {
    Q_OBJECT
  public:
    SettingsPanel(AppController& controller, QWidget* parent = nullptr);
    // Reads the stored settings again.
    void refresh();

  private:
    AppController& m_controller;
    QFormLayout* m_rows;
};

} // namespace quillet
