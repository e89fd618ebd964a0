#include "app/widgets/main/brushedmetal.h"

#include <QImage>
#include <QPalette>
#include <QPixmap>
#include <QWidget>

#include <random>

namespace quillet {

namespace {

// Grain: every row a slightly different grey, smeared along the row so that
// it reads as streaks rather than noise. Seeded, so every start looks alike.
QImage metalTexture() {
    constexpr int Size = 256;
    QImage texture(Size, Size, QImage::Format_RGB32);
    std::mt19937 random(20260);
    std::uniform_int_distribution<int> jitter(-9, 9);
    for (int y = 0; y < Size; ++y) {
        const int base = 206 + jitter(random) / 3;
        auto* line = reinterpret_cast<QRgb*>(texture.scanLine(y));
        int level = base;
        for (int x = 0; x < Size; ++x) {
            level = (level * 7 + base + jitter(random)) / 8;
            line[x] = qRgb(level, level, level + 2);
        }
    }
    return texture;
}

} // namespace

void applyBrushedMetal(QWidget* window) {
    QPalette palette = window->palette();
    palette.setBrush(QPalette::Window, QBrush(QPixmap::fromImage(metalTexture())));
    palette.setColor(QPalette::WindowText, QColor(20, 20, 20));
    palette.setColor(QPalette::Button, QColor(214, 214, 216));
    palette.setColor(QPalette::ButtonText, QColor(20, 20, 20));
    window->setPalette(palette);
    window->setAutoFillBackground(true);
}

} // namespace quillet
