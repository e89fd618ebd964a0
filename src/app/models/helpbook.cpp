#include "app/models/helpbook.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace quillet {

QList<HelpBook::Topic> HelpBook::topics() {
    return {
        {QStringLiteral("index.html"), QCoreApplication::translate("HelpBook", "Quillet Help")},
        {QStringLiteral("batch.html"), QCoreApplication::translate("HelpBook", "Running a Batch")},
        {QStringLiteral("sizing.html"), QCoreApplication::translate("HelpBook", "Rotation and Sizing")},
        {QStringLiteral("output.html"), QCoreApplication::translate("HelpBook", "Output Format")},
        {QStringLiteral("watermarks.html"), QCoreApplication::translate("HelpBook", "Watermarks")},
        {QStringLiteral("renaming.html"), QCoreApplication::translate("HelpBook", "Renaming")},
        {QStringLiteral("presets.html"), QCoreApplication::translate("HelpBook", "Presets")},
        {QStringLiteral("inplace.html"), QCoreApplication::translate("HelpBook", "Working in Place")},
        {QStringLiteral("command-line.html"), QCoreApplication::translate("HelpBook", "The Command Line")},
        {QStringLiteral("desktop.html"), QCoreApplication::translate("HelpBook", "From the File Manager")}};
}

QString HelpBook::folder() {
    QStringList candidates{QCoreApplication::applicationDirPath() + QStringLiteral("/../share/quillet/help")};
#ifdef QUILLET_SOURCE_HELP_DIR
    candidates.append(QStringLiteral(QUILLET_SOURCE_HELP_DIR));
#endif
    for (const QString& data : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation))
        candidates.append(data + QStringLiteral("/quillet/help"));
    for (const QString& candidate : std::as_const(candidates))
        if (QFileInfo::exists(candidate + QStringLiteral("/index.html")))
            return QDir::cleanPath(QFileInfo(candidate).absoluteFilePath());
    return {};
}

QUrl HelpBook::url(const QString& page) {
    const QString dir = folder();
    if (dir.isEmpty() || !QFileInfo::exists(dir + QLatin1Char('/') + page))
        return {};
    return QUrl::fromLocalFile(dir + QLatin1Char('/') + page);
}

} // namespace quillet
