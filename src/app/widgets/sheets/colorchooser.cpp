#include "app/widgets/sheets/colorchooser.h"

#include "app/widgets/sheets/sheets.h"

#include <QColor>
#include <QColorDialog>

namespace quillet {

std::optional<RgbaColor> ColorChooser::choose(Sheets& sheets, QWidget* window, const QString& title,
                                              const RgbaColor& start) {
    const QColor initial =
        QColor::fromRgbF(float(start.red), float(start.green), float(start.blue), float(start.alpha));
    SheetRequest request;
    request.title = title;
    request.message = initial.name(QColor::HexArgb);
    request.window = window;
    request.makeDialog = [title, initial](QWidget* parent) {
        auto* dialog = new QColorDialog(initial, parent);
        dialog->setObjectName(QStringLiteral("colorChooser"));
        dialog->setWindowTitle(title);
        dialog->setOption(QColorDialog::ShowAlphaChannel);
        return dialog;
    };
    request.readAnswer = [](QDialog* dialog, int result) {
        const QColor chosen = static_cast<QColorDialog*>(dialog)->selectedColor();
        return SheetAnswer{result == QDialog::Accepted ? 1 : 0, chosen.name(QColor::HexArgb)};
    };
    const SheetAnswer answer = sheets.run(std::move(request));
    const QColor color(answer.text);
    if (answer.code != 1 || !color.isValid())
        return std::nullopt;
    return RgbaColor{color.redF(), color.greenF(), color.blueF(), color.alphaF()};
}

} // namespace quillet
