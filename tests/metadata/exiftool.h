#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

// exiftool's numeric reading of a file, the oracle of the metadata suites.
namespace exiftool {

inline bool available() {
    return !QStandardPaths::findExecutable(QStringLiteral("exiftool")).isEmpty();
}

// Tags given as "-Model", "-ISO", ...; an empty object when exiftool fails.
inline QJsonObject read(const QString& path, const QStringList& tags = {}) {
    QProcess p;
    p.start(QStringLiteral("exiftool"),
            QStringList{QStringLiteral("-n"), QStringLiteral("-json")} + tags + QStringList{path});
    if (!p.waitForFinished(60000))
        return {};
    const QJsonArray all = QJsonDocument::fromJson(p.readAllStandardOutput()).array();
    return all.isEmpty() ? QJsonObject() : all.first().toObject();
}

} // namespace exiftool

#define QUILLET_EXIFTOOL_OR_SKIP()                                                                           \
    do {                                                                                                     \
        if (!exiftool::available())                                                                          \
            GTEST_SKIP() << "exiftool is not installed";                                                     \
    } while (0)
