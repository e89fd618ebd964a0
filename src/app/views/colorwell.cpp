#include "app/views/colorwell.h"

#include <QColorDialog>
#include <QPainter>
#include <QStyleOptionButton>

namespace quillet {

ColorWell::ColorWell(QWidget* parent) : QPushButton(parent) {
    setMinimumSize(48, 24);
    connect(this, &QPushButton::clicked, this, &ColorWell::choose);
}

void ColorWell::setColor(const RgbaColor& color) {
    m_color = color;
    setAccessibleDescription(color.toString());
    update();
}

void ColorWell::choose() {
    const QColor start =
        QColor::fromRgbF(float(m_color.red), float(m_color.green), float(m_color.blue), float(m_color.alpha));
    const QColor picked =
        QColorDialog::getColor(start, this, accessibleName(), QColorDialog::ShowAlphaChannel);
    if (!picked.isValid())
        return;
    setColor({picked.redF(), picked.greenF(), picked.blueF(), picked.alphaF()});
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
