#include "settings/presetjson.h"

#include <QFile>
#include <QIODevice>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cmath>
#include <limits>

namespace quillet {

namespace {

enum class Kind { Int, Bool, String, Colour, IntList };

struct KeyKind {
    const char* key;
    Kind kind;
};

namespace K = ParamKey;

// Every key a preset may hold, with its type in the record.
const KeyKind keyKinds[] = {
    {K::Name, Kind::String},
    {K::Rotation, Kind::Int},
    {K::ScaleType, Kind::Int},
    {K::Width, Kind::Int},
    {K::Height, Kind::Int},
    {K::ScalePercent, Kind::Int},
    {K::CropAreaPercentage, Kind::Int},
    {K::FlipRatio, Kind::Bool},
    {K::ScaleDownOnly, Kind::Bool},
    {K::ScaleQuality, Kind::Int},
    {K::Resolution, Kind::Int},
    {K::FileFormat, Kind::Int},
    {K::JpegQuality, Kind::Int},
    {K::HasFizeLimit, Kind::Bool},
    {K::SizeLimit, Kind::Int},
    {K::PreserveHeader, Kind::Bool},
    {K::PreserveTransparency, Kind::Bool},
    {K::BackgroundColor, Kind::Colour},
    {K::WatermarkEnabled, Kind::Bool},
    {K::ImageWatermarkEnabled, Kind::Bool},
    {K::WatermarkPath, Kind::String},
    {K::WatermarkOpacity, Kind::Int},
    {K::WatermarkLocation, Kind::Int},
    {K::DynWatermarkEnabled, Kind::Bool},
    {K::DynWatermarkBackgroundColor, Kind::Colour},
    {K::DynWatermarkBackgroundOpacity, Kind::Int},
    {K::DynWatermarkSize, Kind::Int},
    {K::DynWatermarkStyle, Kind::Int},
    {K::DynWatermarkFields, Kind::IntList},
};

// Bounds that no real preset comes near; they keep a hostile file small.
constexpr qsizetype maxNameLength = 255;
constexpr qsizetype maxPathLength = 4096;
constexpr qsizetype maxFields = 64;

const KeyKind* kindOf(const QString& key) {
    for (const KeyKind& entry : keyKinds)
        if (key == QLatin1String(entry.key))
            return &entry;
    return nullptr;
}

[[noreturn]] void refuse(const QString& message) {
    throw PresetFileError(message.toStdString());
}

QString quoted(const QString& key) {
    return QLatin1Char('"') + key + QLatin1Char('"');
}

int integerOf(const QJsonValue& value, const QString& what) {
    const double d = value.toDouble();
    if (!value.isDouble() || !std::isfinite(d) || d != std::floor(d) || d < std::numeric_limits<int>::min() ||
        d > std::numeric_limits<int>::max())
        refuse(QStringLiteral("%1 must be a whole number").arg(what));
    return static_cast<int>(d);
}

bool isUnit(double v) {
    return v >= 0.0 && v <= 1.0;
}

void readKey(ProcessingParams& preset, const QString& key, const QJsonValue& value) {
    // An id belongs to the store it came from; a file may carry one, but it is
    // checked and dropped.
    if (key == QLatin1String(K::Id)) {
        integerOf(value, quoted(key));
        return;
    }
    const KeyKind* entry = kindOf(key);
    if (!entry)
        refuse(QStringLiteral("unknown key %1 in the preset").arg(quoted(key)));
    const QString what = quoted(key);
    switch (entry->kind) {
    case Kind::Int:
        preset.setInt(key, integerOf(value, what));
        break;
    case Kind::Bool:
        if (!value.isBool())
            refuse(QStringLiteral("%1 must be true or false").arg(what));
        preset.setBool(key, value.toBool());
        break;
    case Kind::String: {
        if (!value.isString())
            refuse(QStringLiteral("%1 must be a string").arg(what));
        const qsizetype limit = key == QLatin1String(K::Name) ? maxNameLength : maxPathLength;
        if (value.toString().size() > limit)
            refuse(QStringLiteral("%1 is longer than %2 characters").arg(what).arg(limit));
        preset.setString(key, value.toString());
        break;
    }
    case Kind::Colour: {
        const std::optional<RgbaColor> colour =
            value.isString() ? RgbaColor::fromVariant(value.toString()) : std::nullopt;
        if (!colour || !isUnit(colour->red) || !isUnit(colour->green) || !isUnit(colour->blue) ||
            !isUnit(colour->alpha))
            refuse(QStringLiteral("%1 must be a colour \"rgba(r, g, b, a)\" with components from 0 to 1")
                       .arg(what));
        preset.setColor(key, *colour);
        break;
    }
    case Kind::IntList: {
        if (!value.isArray())
            refuse(QStringLiteral("%1 must be an array of whole numbers").arg(what));
        const QJsonArray array = value.toArray();
        if (array.size() > maxFields)
            refuse(QStringLiteral("%1 holds more than %2 entries").arg(what).arg(maxFields));
        QList<int> list;
        for (const QJsonValue& item : array)
            list.append(integerOf(item, QStringLiteral("every entry of %1").arg(what)));
        preset.setIntList(key, list);
        break;
    }
    }
}

QJsonValue jsonOf(const ProcessingParams& preset, const KeyKind& entry) {
    const QString key = QString::fromLatin1(entry.key);
    switch (entry.kind) {
    case Kind::Int:
        return preset.intValue(key);
    case Kind::Bool:
        return preset.boolValue(key);
    case Kind::String:
        return preset.stringValue(key);
    case Kind::Colour: {
        const std::optional<RgbaColor> colour = preset.colorValue(key);
        return colour ? QJsonValue(colour->toString()) : QJsonValue(QJsonValue::Undefined);
    }
    case Kind::IntList: {
        QJsonArray array;
        for (int n : preset.intList(key))
            array.append(n);
        return array;
    }
    }
    return QJsonValue(QJsonValue::Undefined);
}

} // namespace

QByteArray PresetJson::toJson(const ProcessingParams& preset) {
    QJsonObject record;
    for (const KeyKind& entry : keyKinds) {
        if (!preset.contains(QString::fromLatin1(entry.key)))
            continue;
        const QJsonValue value = jsonOf(preset, entry);
        if (!value.isUndefined())
            record.insert(QString::fromLatin1(entry.key), value);
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
