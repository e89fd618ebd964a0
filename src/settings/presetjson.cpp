#include "settings/presetjson.h"

#include "settings/settingsschema.h"

#include <QFile>
#include <QIODevice>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <algorithm>
#include <cmath>

namespace quillet {

namespace {

namespace K = ParamKey;

[[noreturn]] void refuse(const QString& message) {
    throw PresetFileError(message.toStdString());
}

QString quoted(const QString& key) {
    return QLatin1Char('"') + key + QLatin1Char('"');
}

// The value as messages show it, the same from a file as from the store.
QString jsonText(const QJsonValue& value) {
    return SettingKey::shownValue(value.toVariant());
}

// Whether the JSON type is the key's own: the file form is strict where a
// settings store is not (no numbers written as text, no 1 for true).
bool hasJsonType(const SettingKey& entry, const QJsonValue& value) {
    switch (entry.type) {
    case SettingType::Int:
        return value.isDouble();
    case SettingType::Bool:
        return value.isBool();
    case SettingType::String:
    case SettingType::Colour:
        return value.isString();
    case SettingType::IntList: {
        if (!value.isArray())
            return false;
        const QJsonArray array = value.toArray();
        return std::all_of(array.begin(), array.end(),
                           [](const QJsonValue& item) { return item.isDouble(); });
    }
    default:
        return false;
    }
}

void readKey(ProcessingParams& preset, const QString& key, const QJsonValue& value) {
    // An id belongs to the store it came from; a file may carry one, but it is
    // checked and dropped.
    if (key == QLatin1String(K::Id)) {
        if (!value.isDouble() || value.toDouble() != std::floor(value.toDouble()))
            refuse(QStringLiteral("%1 must be a whole number, not %2").arg(quoted(key), jsonText(value)));
        return;
    }
    const SettingKey* entry = SettingsSchema::find(key);
    if (!entry || entry->group != SettingGroup::Processing)
        refuse(QStringLiteral("unknown key %1 in the preset").arg(quoted(key)));
    const std::optional<QVariant> good =
        hasJsonType(*entry, value) ? entry->checked(value.toVariant()) : std::nullopt;
    if (!good)
        refuse(entry->refusal(jsonText(value)));
    preset.values().insert(key, *good);
}

QJsonValue jsonOf(const ProcessingParams& preset, const SettingKey& entry) {
    const QString& key = entry.key;
    switch (entry.type) {
    case SettingType::Int:
        return preset.intValue(key);
    case SettingType::Bool:
        return preset.boolValue(key);
    case SettingType::String:
        return preset.stringValue(key);
    case SettingType::Colour: {
        const std::optional<RgbaColor> colour = preset.colorValue(key);
        return colour ? QJsonValue(colour->toString()) : QJsonValue(QJsonValue::Undefined);
    }
    case SettingType::IntList: {
        QJsonArray array;
        for (int n : preset.intList(key))
            array.append(n);
        return array;
    }
    default:
        return QJsonValue(QJsonValue::Undefined);
    }
}

} // namespace

QByteArray PresetJson::toJson(const ProcessingParams& preset) {
    QJsonObject record;
    for (const SettingKey* entry : SettingsSchema::group(SettingGroup::Processing)) {
        if (!preset.contains(entry->key))
            continue;
        const QJsonValue value = jsonOf(preset, *entry);
        if (!value.isUndefined())
            record.insert(entry->key, value);
    }
    QJsonObject top;
    top.insert(QStringLiteral("format"), QString::fromLatin1(FormatName));
    top.insert(QStringLiteral("version"), Version);
    top.insert(QStringLiteral("preset"), record);
    return QJsonDocument(top).toJson(QJsonDocument::Indented);
}

ProcessingParams PresetJson::fromJson(const QByteArray& bytes) {
    if (bytes.size() > MaxFileSize)
        refuse(QStringLiteral("the file is larger than %1 bytes").arg(MaxFileSize));
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError)
        refuse(QStringLiteral("not valid JSON (%1 at byte %2)").arg(error.errorString()).arg(error.offset));
    if (!document.isObject())
        refuse(QStringLiteral("the file does not hold a JSON object"));
    const QJsonObject top = document.object();
    for (auto it = top.begin(); it != top.end(); ++it)
        if (it.key() != QLatin1String("format") && it.key() != QLatin1String("version") &&
            it.key() != QLatin1String("preset"))
            refuse(QStringLiteral("unknown key %1 in the file").arg(quoted(it.key())));
    if (top.value(QLatin1String("format")) != QJsonValue(QString::fromLatin1(FormatName)))
        refuse(QStringLiteral("not a Quillet preset (\"format\" must be \"%1\")")
                   .arg(QLatin1String(FormatName)));
    const QJsonValue version = top.value(QLatin1String("version"));
    if (!version.isDouble() || version.toDouble() != Version)
        refuse(QStringLiteral("unsupported \"version\" (this program reads version %1)").arg(Version));
    const QJsonValue record = top.value(QLatin1String("preset"));
    if (!record.isObject())
        refuse(QStringLiteral("\"preset\" must be an object"));

    ProcessingParams preset;
    const QJsonObject object = record.toObject();
    for (auto it = object.begin(); it != object.end(); ++it)
        readKey(preset, it.key(), it.value());
    const QString name = preset.stringValue(QString::fromLatin1(K::Name)).trimmed();
    if (name.isEmpty())
        refuse(QStringLiteral("the preset has no \"Name\""));
    preset.setString(K::Name, name);
    return preset;
}

ProcessingParams PresetJson::read(QIODevice& device) {
    // Pipes hand their data over in pieces; read to the end, but never more
    // than one byte past the cap.
    QByteArray bytes;
    while (bytes.size() <= MaxFileSize) {
        const QByteArray chunk = device.read(MaxFileSize + 1 - bytes.size());
        // An empty read is the end of a file; other devices may still be waiting.
        if (chunk.isEmpty() && !device.waitForReadyRead(-1))
            break;
        bytes += chunk;
    }
    return fromJson(bytes);
}

ProcessingParams PresetJson::readFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        refuse(QStringLiteral("cannot read '%1': %2").arg(path, file.errorString()));
    try {
        return read(file);
    } catch (const PresetFileError& e) {
        refuse(QStringLiteral("'%1': %2").arg(path, QString::fromStdString(e.what())));
    }
}

void PresetJson::writeFile(const QString& path, const ProcessingParams& preset) {
    QSaveFile file(path);
    const QByteArray bytes = toJson(preset);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        refuse(QStringLiteral("cannot write '%1': %2").arg(path, file.errorString()));
}

} // namespace quillet
