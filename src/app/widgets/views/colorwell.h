#pragma once

#include "settings/rgbacolor.h"

#include <QPushButton>

namespace quillet {

class Sheets;

// A button that shows a colour (over a checkerboard, so alpha shows) and
// asks for another through the colour chooser, alpha included, when pressed.
class ColorWell : public QPushButton {
    Q_OBJECT

  public:
    explicit ColorWell(Sheets& sheets, QWidget* parent = nullptr);

    RgbaColor color() const { return m_color; }
    void setColor(const RgbaColor& color);

  Q_SIGNALS:
    // The user picked a colour.
    void colorChosen(const RgbaColor& color);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void choose();

    Sheets& m_sheets;
    RgbaColor m_color = RgbaColor::white();
};

} // namespace quillet
