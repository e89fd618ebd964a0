#include "settings/versionlist.h"

#include "settings/presetstore.h"

#include <QSet>

namespace quillet {

namespace VersionList {

Entry parse(const QString& text) {
    const QString trimmed = text.trimmed();
    // A preset name may hold a colon; only the last one starts the suffix.
    const qsizetype colon = trimmed.lastIndexOf(QLatin1Char(':'));
    if (colon < 0)
        return {trimmed, {}};
    return {trimmed.left(colon).trimmed(), trimmed.mid(colon + 1)};
}

QString text(const Entry& entry) {
    return entry.suffix.isEmpty() ? entry.preset : entry.preset + QLatin1Char(':') + entry.suffix;
}

QStringList split(const QString& commaList) {
    QStringList out;
    for (const QString& item : commaList.split(QLatin1Char(',')))
        if (!item.trimmed().isEmpty())
            out.append(item.trimmed());
    return out;
}

QStringList effective(const QStringList& entries) {
    return entries.isEmpty() ? QStringList{QLatin1String(CurrentSettings)} : entries;
}

Resolved resolve(const QStringList& entries, const PresetStore& presets, const ProcessingRequest& current) {
    const auto refuse = [](const QString& message) { return Resolved{{}, message}; };
    Resolved out;
    // Where each version's files go: its folder and its suffix.
    QSet<QString> places;
    for (const QString& item : effective(entries)) {
        const Entry entry = parse(item);
        OutputVersion version;
        version.nameSuffix = entry.suffix;
        if (entry.isCurrent()) {
            version.request = current;
        } else {
            const int index = presets.indexOfName(entry.preset);
            if (entry.preset.isEmpty() || index < 0) {
                return refuse(QStringLiteral("the version '%1' names no preset").arg(entry.preset));
            }
            version.request = ProcessingRequest::fromRecord(presets.presets().at(index));
            // A preset without a suffix gets a folder of its name; "/" cannot
            // stand in one, so it reads as ":", as in output names.
            if (entry.suffix.isEmpty()) {
                version.folder = QString(entry.preset).replace(QLatin1Char('/'), QLatin1Char(':'));
                if (version.folder == QLatin1String(".") || version.folder == QLatin1String(".."))
                    return refuse(QStringLiteral("the version '%1' cannot be a folder's name; give it a "
                                                 "suffix instead")
                                      .arg(entry.preset));
            }
        }
        const QString place = version.folder + QLatin1Char('\n') + version.nameSuffix;
        if (places.contains(place))
            return refuse(QStringLiteral("the version '%1' would write the same files as an earlier one")
                              .arg(text(entry)));
        places.insert(place);
        out.versions.push_back(std::move(version));
    }
    return out;
}

} // namespace VersionList

} // namespace quillet
