#include "app/widgets/sheets/filechooser.h"

#include "app/widgets/sheets/sheets.h"
#include "app/widgets/views/singledropview.h"

#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QStandardPaths>
#include <QUrl>

namespace quillet {

namespace {

constexpr int DroppedCode = 10;

// Puts a drop area for one item under Qt's own file dialog; a drop there ends
// the dialog with code 10 and the dropped path.
void addDropArea(QFileDialog* dialog, SingleDropView* drop) {
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    drop->setParent(dialog);
    drop->setMinimumHeight(56);
    if (auto* grid = qobject_cast<QGridLayout*>(dialog->layout()))
        grid->addWidget(drop, grid->rowCount(), 0, 1, grid->columnCount());
    QObject::connect(drop, &SingleDropView::dropped, dialog,
                     [dialog] { static_cast<QDialog*>(dialog)->done(DroppedCode); });
}

std::optional<QStringList> run(Sheets& sheets, const QString& title, const QString& startFolder,
                               QFileDialog::FileMode mode, bool folderDrop = false,
                               QWidget* window = nullptr) {
    SheetRequest request;
    request.title = title;
    request.message = startFolder;
    request.window = window;
    request.makeDialog = [=](QWidget* window) {
        auto* dialog = new QFileDialog(window, title, startFolder);
        dialog->setObjectName(QStringLiteral("fileChooser"));
        dialog->setFileMode(mode);
        if (mode != QFileDialog::Directory)
            dialog->setNameFilters({QFileDialog::tr("Pictures (*.jpg *.jpeg *.png *.tif *.tiff *.gif *.bmp "
                                                    "*.webp *.heic *.JPG *.JPEG *.PNG *.TIF *.TIFF)"),
                                    QFileDialog::tr("All files (*)")});
        if (folderDrop)
            addDropArea(dialog, new FolderView);
        return dialog;
    };
    request.readAnswer = [](QDialog* dialog, int result) {
        if (result == DroppedCode)
            return SheetAnswer{1, dialog->findChild<SingleDropView*>()->path()};
        // Several files travel as one text, a line each.
        return SheetAnswer{result == QDialog::Accepted ? 1 : 0,
                           static_cast<QFileDialog*>(dialog)->selectedFiles().join(QLatin1Char('\n'))};
    };
    const SheetAnswer answer = sheets.run(std::move(request));
    if (answer.code != 1 || answer.text.isEmpty())
        return std::nullopt;
    return answer.text.split(QLatin1Char('\n'));
}

} // namespace

std::optional<QStringList> FileChooser::choosePictures(Sheets& sheets, const QString& startFolder,
                                                       QWidget* window) {
    return run(sheets, QFileDialog::tr("Open Pictures"), startFolder, QFileDialog::ExistingFiles, false,
               window);
}

std::optional<QString> FileChooser::chooseWatermark(Sheets& sheets, QWidget* window) {
    const auto chosen = run(sheets, QFileDialog::tr("Choose a Watermark Picture"), QString(),
                            QFileDialog::ExistingFile, false, window);
    if (!chosen)
        return std::nullopt;
    return chosen->first();
}

std::optional<QString> FileChooser::chooseFolder(Sheets& sheets, const QString& title,
                                                 const QString& startFolder, bool dropArea) {
    const auto chosen = run(sheets, title, startFolder, QFileDialog::Directory, dropArea);
    if (!chosen)
        return std::nullopt;
    return chosen->first();
}

std::optional<QString> FileChooser::chooseApplication(Sheets& sheets, const QString& startFolder) {
    SheetRequest request;
    request.title = QFileDialog::tr("Choose an Application");
    request.message = startFolder;
    request.makeDialog = [title = request.title, startFolder](QWidget* window) {
        auto* dialog = new QFileDialog(window, title, startFolder);
        dialog->setObjectName(QStringLiteral("applicationChooser"));
        dialog->setFileMode(QFileDialog::ExistingFile);
        dialog->setNameFilters({QFileDialog::tr("Applications (*.desktop)")});
        // The system's applications and the user's own.
        dialog->setSidebarUrls(
            {QUrl::fromLocalFile(startFolder),
             QUrl::fromLocalFile(QStandardPaths::writableLocation(QStandardPaths::ApplicationsLocation))});
        addDropArea(dialog, new AppDropView);
        return dialog;
    };
    request.readAnswer = [](QDialog* dialog, int result) {
        if (result == DroppedCode)
            return SheetAnswer{1, dialog->findChild<AppDropView*>()->path()};
        const QStringList files = static_cast<QFileDialog*>(dialog)->selectedFiles();
        return SheetAnswer{result == QDialog::Accepted ? 1 : 0, files.value(0)};
    };
    const SheetAnswer answer = sheets.run(std::move(request));
    if (answer.code != 1 || answer.text.isEmpty())
        return std::nullopt;
    return answer.text;
}

std::optional<QString> FileChooser::choosePresetFile(Sheets& sheets, QWidget* window,
                                                     const QString& suggestedName) {
    const bool saving = !suggestedName.isEmpty();
    SheetRequest request;
    request.title = saving ? QFileDialog::tr("Export Preset") : QFileDialog::tr("Import Preset");
    request.message = suggestedName;
    request.window = window;
    request.makeDialog = [title = request.title, saving, suggestedName](QWidget* window) {
        auto* dialog = new QFileDialog(window, title, QDir::homePath());
        dialog->setObjectName(QStringLiteral("presetFileChooser"));
        dialog->setNameFilters({QFileDialog::tr("Presets (*.json)"), QFileDialog::tr("All files (*)")});
        if (saving) {
            dialog->setAcceptMode(QFileDialog::AcceptSave);
            dialog->setDefaultSuffix(QStringLiteral("json"));
            dialog->selectFile(suggestedName);
        } else {
            dialog->setFileMode(QFileDialog::ExistingFile);
        }
        return dialog;
    };
    request.readAnswer = [](QDialog* dialog, int result) {
        const QStringList files = static_cast<QFileDialog*>(dialog)->selectedFiles();
        return SheetAnswer{result == QDialog::Accepted ? 1 : 0, files.value(0)};
    };
    const SheetAnswer answer = sheets.run(std::move(request));
    if (answer.code != 1 || answer.text.isEmpty())
        return std::nullopt;
    return answer.text;
}

} // namespace quillet
