#pragma once

#include "settings/rgbacolor.h"

#include <QPushButton>

namespace quillet {

// A button that shows a colour (over a checkerboard, so alpha shows) and
// opens the colour chooser, alpha included, when pressed.
class ColorWell : public QPushButton {
    Q_OBJECT

  public:
    explicit ColorWell(QWidget* parent = nullptr);

    RgbaColor color() const { return m_color; }
    void setColor(const RgbaColor& color);

  Q_SIGNALS:
    // The user picked a colour.
    void colorChosen(const RgbaColor& color);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void choose();

    RgbaColor m_color = RgbaColor::white();
};

} // namespace quillet
