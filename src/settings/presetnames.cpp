#include "settings/presetnames.h"

namespace quillet {

bool PresetNames::isAcceptable(const QString& name, const QStringList& existing) {
    return !name.isEmpty() && name != QLatin1String(NoneTitle) && !existing.contains(name);
}

bool PresetNames::endsInCopy(const QString& name) {
    return name.size() >= 6 && name.endsWith(QLatin1String(" copy"));
}

QString PresetNames::duplicateName(const QString& name, const QStringList& existing) {
    QString base = name;
    // Ends: each round either makes a new " copy" name or counts up, and only
    // finitely many names exist.
    for (qint64 n = 1;; ++n) {
        QString candidate;
        if (endsInCopy(base)) {
            candidate = base + QLatin1Char(' ') + QString::number(n);
        } else {
            candidate = base + QLatin1String(" copy");
            base = candidate;
        }
        if (isAcceptable(candidate, existing))
            return candidate;
    }
}

QStringList PresetNames::menuTitles(const QStringList& names) {
    QStringList titles{QLatin1String(NoneTitle)};
    int untitled = 0;
    for (const QString& name : names)
        titles.append(name.isEmpty() ? QStringLiteral("Untitled %1").arg(untitled++) : name);
    return titles;
}

} // namespace quillet
