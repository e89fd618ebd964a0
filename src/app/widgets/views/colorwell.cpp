#include "app/widgets/views/colorwell.h"

#include "app/widgets/sheets/colorchooser.h"

#include <QPainter>
#include <QStyleOptionButton>

namespace quillet {

ColorWell::ColorWell(Sheets& sheets, QWidget* parent) : QPushButton(parent), m_sheets(sheets) {
    setMinimumSize(48, 24);
    connect(this, &QPushButton::clicked, this, &ColorWell::choose);
}

void ColorWell::setColor(const RgbaColor& color) {
    m_color = color;
    setAccessibleDescription(color.toString());
    update();
}

void ColorWell::choose() {
    const auto picked = ColorChooser::choose(m_sheets, window(), accessibleName(), m_color);
    if (!picked)
        return;
    setColor(*picked);
    Q_EMIT colorChosen(m_color);
}

void ColorWell::paintEvent(QPaintEvent* event) {
    QPushButton::paintEvent(event);
    QPainter painter(this);
    const QRect swatch = rect().adjusted(6, 5, -6, -5);
    // A checkerboard under the colour, so a translucent one reads as such.
    const int cell = 6;
    for (int y = swatch.top(); y < swatch.bottom(); y += cell)
        for (int x = swatch.left(); x < swatch.right(); x += cell)
            painter.fillRect(QRect(x, y, cell, cell).intersected(swatch),
                             ((x - swatch.left()) / cell + (y - swatch.top()) / cell) % 2 ? Qt::lightGray
                                                                                          : Qt::white);
    painter.fillRect(swatch, QColor::fromRgbF(float(m_color.red), float(m_color.green), float(m_color.blue),
                                              float(m_color.alpha)));
    painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::Mid));
    painter.drawRect(swatch.adjusted(0, 0, -1, -1));
    if (!isEnabled())
        painter.fillRect(swatch, QColor(128, 128, 128, 140));
}

} // namespace quillet
