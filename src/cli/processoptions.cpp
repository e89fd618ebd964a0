#include "cli/processoptions.h"

#include "cli/processvalues.h"
#include "settings/presetstore.h"
#include "settings/settingsschema.h"
#include "settings/userdefaults.h"
#include "settings/versionlist.h"

#include <QVariantList>
#include <QVariantMap>

#include <climits>
#include <functional>
#include <map>

namespace quillet {

namespace {

using Params = ProcessingParams;

struct Parser {
    ProcessRequest request;
    QStringList args;
    int at = 0;
    QString error;
    std::optional<QString> preset;

    bool fail(const QString& message) {
        if (error.isEmpty())
            error = message;
        return false;
    }
    // The value after option `name`.
    std::optional<QString> value(const QString& name) {
        if (at >= args.size()) {
            fail(QStringLiteral("option '%1' needs a value").arg(name));
            return std::nullopt;
        }
        return args[at++];
    }
    // A refusal from the settings schema, prefixed with the option it came through.
    bool refuse(const QString& name, const QString& message) {
        return fail(name + QStringLiteral(": ") + message);
    }
    // A number for key, which the option may hold to a stricter minimum.
    std::optional<int> intValue(const QString& name, const SettingKey& key) {
        const auto text = value(name);
        if (!text)
            return std::nullopt;
        const auto number = ProcessValues::parseInt(*text, INT_MIN, INT_MAX);
        if (!number || !key.allows(*number)) {
            refuse(name, key.refusal(SettingKey::shownValue(*text)));
            return std::nullopt;
        }
        return number;
    }
    std::optional<int> intValue(const QString& name, const char* key, int minimum = INT_MIN) {
        return intValue(name, SettingsSchema::entry(key).withMinimum(minimum));
    }
    // Every size of a box is one or more: an empty size means nothing here.
    bool box(const QString& name, int scaleType, bool withCrop = false) {
        const auto text = value(name);
        if (!text)
            return false;
        const auto size = ProcessValues::parseBox(*text, withCrop);
        if (!size)
            return fail(QStringLiteral("option '%1' wants WIDTHxHEIGHT%2, not '%3'")
                            .arg(name, withCrop ? QStringLiteral("[@PERCENT]") : QString(), *text));
        const std::pair<const char*, int> parts[] = {
            {ParamKey::Width, size->width},
            {ParamKey::Height, size->height},
            {ParamKey::CropAreaPercentage, size->percent},
        };
        for (const auto& [key, number] : parts) {
            const SettingKey entry = SettingsSchema::entry(key).withMinimum(1);
            if (!entry.allows(number))
                return refuse(name, entry.refusal(QString::number(number)));
        }
        Params& p = request.params;
        p.setInt(ParamKey::ScaleType, scaleType);
        p.setInt(ParamKey::Width, size->width);
        p.setInt(ParamKey::Height, size->height);
        if (withCrop)
            p.setInt(ParamKey::CropAreaPercentage, size->percent);
        return true;
    }
    // One of key's choices, by its command-line word, or by its code when
    // the choices have no words.
    bool choice(const QString& name, const char* key, const std::function<void(int)>& apply) {
        const SettingKey& entry = SettingsSchema::entry(key);
        if (entry.words().isEmpty()) {
            const auto code = intValue(name, entry);
            return code && (apply(*code), true);
        }
        const auto text = value(name);
        if (!text)
            return false;
        const auto code = entry.codeOfWord(*text);
        if (!code)
            return refuse(name, entry.wordRefusal(*text));
        apply(*code);
        return true;
    }
    // A choice of a running option, which the settings store does not keep.
    bool choice(const QString& name, const std::map<QString, int>& choices,
                const std::function<void(int)>& apply) {
        const auto text = value(name);
        if (!text)
            return false;
        const auto found = choices.find(text->toLower());
        if (found == choices.end()) {
            QStringList names;
            for (const auto& [key, code] : choices)
                names.append(key);
            return fail(QStringLiteral("option '%1' wants one of %2, not '%3'")
                            .arg(name, names.join(QStringLiteral(", ")), *text));
        }
        apply(found->second);
        return true;
    }
    bool color(const QString& name, const char* key) {
        const auto text = value(name);
        if (!text)
            return false;
        const SettingKey& entry = SettingsSchema::entry(key);
        const auto parsed = ProcessValues::parseColor(*text);
        const auto good = parsed ? entry.checked(parsed->toVariant()) : std::nullopt;
        if (!good)
            return refuse(name, entry.refusal(SettingKey::shownValue(*text)) + QLatin1Char(' ') +
                                    ProcessValues::colourHint());
        request.params.values().insert(entry.key, *good);
        return true;
    }
    // Text for key, within its length.
    std::optional<QString> textValue(const QString& name, const char* key) {
        const auto v = value(name);
        if (v && !SettingsSchema::entry(key).checked(*v)) {
            refuse(name, SettingsSchema::entry(key).refusal(SettingKey::shownValue(*v)));
            return std::nullopt;
        }
        return v;
    }

    bool option(const QString& name);
};

bool Parser::option(const QString& name) {
    Params& p = request.params;
    Renamer& r = request.renamer;
    BatchOptions& o = request.options;
    const auto setBool = [&](const char* key, bool on) {
        p.setBool(QLatin1String(key), on);
        return true;
    };

    if (name == QLatin1String("--dest")) {
        const auto v = value(name);
        return v && (request.dest = *v, true);
    }
    if (name == QLatin1String("--window-dest"))
        return request.windowDest = true;
    if (name == QLatin1String("--notify"))
        return request.notify = true;
    if (name == QLatin1String("--preset")) {
        const auto v = value(name);
        return v && (preset = *v, true);
    }
    if (name == QLatin1String("--versions")) {
        const auto v = value(name);
        if (!v)
            return false;
        request.versions = VersionList::split(*v);
        return !request.versions.isEmpty() ||
               fail(QStringLiteral("option '--versions' wants preset names separated by commas"));
    }
    if (name == QLatin1String("--set")) {
        const auto v = value(name);
        if (!v)
            return false;
        const QString problem = ProcessValues::applySetting(p, *v);
        return problem.isEmpty() || fail(problem);
    }
    if (name == QLatin1String("--rotate"))
        return choice(name, ParamKey::Rotation, [&](int code) { p.setInt(ParamKey::Rotation, code); });
    if (name == QLatin1String("--width") || name == QLatin1String("--height")) {
        const bool width = name == QLatin1String("--width");
        // Scaling to a width or height of nothing means nothing.
        const auto v = intValue(name, width ? ParamKey::Width : ParamKey::Height, 1);
        if (!v)
            return false;
        p.setInt(ParamKey::ScaleType, width ? ScaleType::ToWidth : ScaleType::ToHeight);
        p.setInt(width ? ParamKey::Width : ParamKey::Height, *v);
        return true;
    }
    if (name == QLatin1String("--fit"))
        return box(name, ScaleType::Fit);
    if (name == QLatin1String("--fill"))
        return box(name, ScaleType::Fill);
    if (name == QLatin1String("--stretch"))
        return box(name, ScaleType::Stretch);
    if (name == QLatin1String("--crop"))
        return box(name, ScaleType::Crop, true);
    if (name == QLatin1String("--percent")) {
        const auto v = intValue(name, ParamKey::ScalePercent, 1);
        return v && (p.setInt(ParamKey::ScaleType, ScaleType::Percent), p.setInt(ParamKey::ScalePercent, *v),
                     true);
    }
    if (name == QLatin1String("--no-scale"))
        return p.setInt(ParamKey::ScaleType, ScaleType::None), true;
    if (name == QLatin1String("--down-only"))
        return setBool(ParamKey::ScaleDownOnly, true);
    if (name == QLatin1String("--flip-portrait"))
        return setBool(ParamKey::FlipRatio, true);
    if (name == QLatin1String("--interpolation"))
        return choice(name, ParamKey::ScaleQuality,
                      [&](int code) { p.setInt(ParamKey::ScaleQuality, code); });
    if (name == QLatin1String("--format"))
        return choice(name, ParamKey::FileFormat, [&](int code) { p.setInt(ParamKey::FileFormat, code); });
    if (name == QLatin1String("--quality")) {
        const auto v = intValue(name, ParamKey::JpegQuality);
        return v && (p.setInt(ParamKey::JpegQuality, *v), true);
    }
    if (name == QLatin1String("--max-size")) {
        // An option that switches the limit on wants a limit.
        const auto v = intValue(name, ParamKey::SizeLimit, 1);
        return v && (p.setBool(ParamKey::HasFizeLimit, true), p.setInt(ParamKey::SizeLimit, *v), true);
    }
    if (name == QLatin1String("--no-max-size"))
        return setBool(ParamKey::HasFizeLimit, false);
    if (name == QLatin1String("--shrink-to-fit") || name == QLatin1String("--no-shrink-to-fit"))
        return setBool(ParamKey::ShrinkToFit, name == QLatin1String("--shrink-to-fit"));
    if (name == QLatin1String("--keep-smaller") || name == QLatin1String("--no-keep-smaller"))
        return setBool(ParamKey::KeepSmallerOriginal, name == QLatin1String("--keep-smaller"));
    if (name == QLatin1String("--lossless") || name == QLatin1String("--no-lossless"))
        return setBool(ParamKey::LosslessOutput, name == QLatin1String("--lossless"));
    if (name == QLatin1String("--fast-encoding") || name == QLatin1String("--no-fast-encoding"))
        return setBool(ParamKey::FastEncoding, name == QLatin1String("--fast-encoding"));
    if (name == QLatin1String("--dpi")) {
        // The stored 0 stands for an emptied field, read as 72; asked for, it means nothing.
        const auto v = intValue(name, ParamKey::Resolution, 1);
        return v && (p.setInt(ParamKey::Resolution, *v), true);
    }
    if (name == QLatin1String("--keep-exif") || name == QLatin1String("--no-keep-exif"))
        return setBool(ParamKey::PreserveHeader, name == QLatin1String("--keep-exif"));
    if (name == QLatin1String("--metadata"))
        return choice(name, ParamKey::MetadataPolicy,
                      [&](int code) { p.setInt(ParamKey::MetadataPolicy, code); });
    if (name == QLatin1String("--srgb") || name == QLatin1String("--no-srgb"))
        return setBool(ParamKey::ConvertToSRGB, name == QLatin1String("--srgb"));
    if (name == QLatin1String("--keep-transparency") || name == QLatin1String("--no-keep-transparency"))
        return setBool(ParamKey::PreserveTransparency, name == QLatin1String("--keep-transparency"));
    if (name == QLatin1String("--background"))
        return color(name, ParamKey::BackgroundColor);
    if (name == QLatin1String("--watermark")) {
        const auto v = textValue(name, ParamKey::WatermarkPath);
        if (!v)
            return false;
        p.setBool(ParamKey::WatermarkEnabled, true);
        p.setBool(ParamKey::ImageWatermarkEnabled, true);
        p.setString(ParamKey::WatermarkPath, *v);
        return true;
    }
    if (name == QLatin1String("--watermark-opacity")) {
        const auto v = intValue(name, ParamKey::WatermarkOpacity);
        return v && (p.setInt(ParamKey::WatermarkOpacity, *v), true);
    }
    if (name == QLatin1String("--watermark-location"))
        return choice(name, ParamKey::WatermarkLocation,
                      [&](int code) { p.setInt(ParamKey::WatermarkLocation, code); });
    if (name == QLatin1String("--text")) {
        const auto v = value(name);
        if (!v)
            return false;
        const auto fields = ProcessValues::parseTextFields(*v);
        if (!fields)
            return refuse(
                name,
                SettingsSchema::entry(ParamKey::DynWatermarkFields).refusal(SettingKey::shownValue(*v)) +
                    QStringLiteral(" (fields by name: %1)")
                        .arg(ProcessValues::textFieldNames().join(QStringLiteral(", "))));
        p.setBool(ParamKey::WatermarkEnabled, true);
        p.setBool(ParamKey::DynWatermarkEnabled, true);
        p.setIntList(ParamKey::DynWatermarkFields, *fields);
        return true;
    }
    if (name == QLatin1String("--text-size"))
        return choice(name, ParamKey::DynWatermarkSize,
                      [&](int code) { p.setInt(ParamKey::DynWatermarkSize, code); });
    if (name == QLatin1String("--text-style"))
        return choice(name, ParamKey::DynWatermarkStyle,
                      [&](int code) { p.setInt(ParamKey::DynWatermarkStyle, code); });
    if (name == QLatin1String("--text-background"))
        return color(name, ParamKey::DynWatermarkBackgroundColor);

    if (name == QLatin1String("--rename"))
        return choice(name, StoreKey::SelectedRename, [&](int code) { r.setType(code); });
    if (name == QLatin1String("--prefix") || name == QLatin1String("--suffix")) {
        const bool prefix = name == QLatin1String("--prefix");
        const auto v = textValue(name, prefix ? StoreKey::RenamePrefix : StoreKey::RenameSuffix);
        if (!v)
            return false;
        prefix ? r.setPrefix(*v) : r.setSuffix(*v);
        return true;
    }
    if (name == QLatin1String("--digits")) {
        const auto v = intValue(name, StoreKey::RenameDigits);
        return v && (r.setDigits(*v), true);
    }
    if (name == QLatin1String("--start")) {
        const auto v = intValue(name, StoreKey::RenameStartFrom);
        return v && (r.setStartFrom(*v), true);
    }
    if (name == QLatin1String("--date-format")) {
        const auto v = intValue(name, StoreKey::RenameDateFormatTag);
        return v && (r.setDateFormatTag(*v), true);
    }
    if (name == QLatin1String("--date-conflict"))
        return choice(name, StoreKey::RenameConflictFormatTag, [&](int tag) { r.setConflictFormatTag(tag); });
    if (name == QLatin1String("--date-fallback"))
        return choice(name, StoreKey::DateFallbackTag, [&](int tag) { r.setDateFallbackTag(tag); });

    if (name == QLatin1String("--creator")) {
        const auto v = value(name);
        if (!v)
            return false;
        const auto code = ProcessValues::parseFourCharCode(*v);
        return code
                   ? (request.creator = *code, true)
                   : fail(QStringLiteral("option '--creator' wants four ASCII characters, not '%1'").arg(*v));
    }
    const std::map<QString, std::pair<bool*, bool>> flags = {
        {QStringLiteral("--copy-non-images"), {&o.copyNonImageFiles, true}},
        {QStringLiteral("--skip-non-images"), {&o.copyNonImageFiles, false}},
        {QStringLiteral("--set-creation-date"), {&o.setCreationDate, true}},
        {QStringLiteral("--no-set-creation-date"), {&o.setCreationDate, false}},
        {QStringLiteral("--set-modification-date"), {&o.setModificationDate, true}},
        {QStringLiteral("--no-set-modification-date"), {&o.setModificationDate, false}},
        {QStringLiteral("--hide-extension"), {&o.hideExtension, true}},
        {QStringLiteral("--no-hide-extension"), {&o.hideExtension, false}},
        {QStringLiteral("--custom-icon"), {&o.customIcon, true}},
        {QStringLiteral("--no-custom-icon"), {&o.customIcon, false}},
        {QStringLiteral("--serial"), {&o.parallel, false}},
    };
    if (const auto flag = flags.find(name); flag != flags.end()) {
        *flag->second.first = flag->second.second;
        return true;
    }
    if (name == QLatin1String("--jobs")) {
        const auto text = value(name);
        if (!text)
            return false;
        const auto v = ProcessValues::parseInt(*text, 1, 64);
        if (!v)
            return fail(
                QStringLiteral("option '%1' wants a whole number from 1 to 64, not '%2'").arg(name, *text));
        o.parallel = *v > 1;
        o.renderThreads = *v > 1 ? *v : 0;
        return true;
    }
    if (name == QLatin1String("--on-conflict"))
        return choice(name,
                      {{QStringLiteral("ask"), int(ProcessRequest::Conflict::Ask)},
                       {QStringLiteral("skip"), int(ProcessRequest::Conflict::Skip)},
                       {QStringLiteral("replace"), int(ProcessRequest::Conflict::Replace)}},
                      [&](int code) {
                          request.conflict = ProcessRequest::Conflict(code);
                          request.conflictGiven = true;
                      });
    if (name == QLatin1String("--shard")) {
        const auto v = value(name);
        if (!v)
            return false;
        const auto shard = BatchShard::parse(*v);
        return shard ? (request.shard = *shard, true)
                     : fail(QStringLiteral("option '--shard' wants K/N with 1 <= K <= N, not '%1'").arg(*v));
    }
    if (name == QLatin1String("--log")) {
        const auto v = value(name);
        return v && (request.logFile = *v, true);
    }
    return fail(QStringLiteral("unknown option '%1'").arg(name));
}

} // namespace

ProcessParse parseProcessArguments(const QStringList& args, QSettings& settings) {
    Parser parser;
    parser.args = args;
    const UserDefaults defaults(settings);
    parser.request.params = defaults.processingParams();
    parser.request.renamer = Renamer(settings);
    parser.request.options = BatchOptions::fromDefaults(defaults);
    // The creator the window has selected, as its batches stamp it; --creator overrides.
    const QVariantList creators = defaults.value(QStringLiteral("Creators")).toList();
    const int selected = defaults.intValue(QStringLiteral("SelectedCreator"));
    if (selected >= 1 && selected <= creators.size())
        parser.request.creator = creators.at(selected - 1).toMap().value(QStringLiteral("code")).toUInt();
    parser.request.versions = defaults.stringList(QLatin1String(StoreKey::OutputVersions));
    parser.request.notes = defaults.problems();

    // The preset comes first wherever it stands, so every other option refines it.
    for (int i = 0; i + 1 < args.size(); ++i) {
        if (args[i] == QLatin1String("--preset")) {
            const PresetStore store = PresetStore::load(settings);
            const int index = store.indexOfName(args[i + 1]);
            if (index < 0)
                return {std::nullopt, QStringLiteral("no preset named '%1'").arg(args[i + 1])};
            parser.request.params = store.presets().at(index);
            parser.request.notes += store.problems();
        }
    }

    bool onlyPaths = false;
    while (parser.at < args.size()) {
        const QString arg = args[parser.at++];
        if (onlyPaths || !arg.startsWith(QLatin1Char('-')) || arg == QLatin1String("-")) {
            parser.request.paths.append(arg);
        } else if (arg == QLatin1String("--")) {
            onlyPaths = true;
        } else if (arg == QLatin1String("-h") || arg == QLatin1String("--help")) {
            parser.request.help = true;
        } else if (!parser.option(arg)) {
            return {std::nullopt, parser.error};
        }
    }
    ProcessRequest& request = parser.request;
    if (request.help)
        return {std::move(request), {}};
    if (request.paths.isEmpty())
        return {std::nullopt, QStringLiteral("no pictures or folders to process")};
    if (request.windowDest) {
        if (!request.dest.isEmpty())
            return {std::nullopt, QStringLiteral("give either --dest DIR or --window-dest, not both")};
        // The folder selected in the window's "Output to" menu, as a drop on
        // the window would use it.
        const QStringList destinations = defaults.stringList(QStringLiteral("Destinations"));
        const int selected = defaults.intValue(QStringLiteral("SelectedDestination"));
        if (!destinations.isEmpty())
            request.dest = destinations.at(selected >= 0 && selected < destinations.size() ? selected : 0);
    }
    if (request.dest.isEmpty())
        return {std::nullopt, QStringLiteral("no output folder: give it with --dest DIR")};
    return {std::move(request), {}};
}

namespace {

// A key's command-line words as "a|b|c", else its codes or range as "0-7".
QString valuesOf(const SettingKey& key) {
    if (!key.words().isEmpty())
        return key.words().join(QLatin1Char('|'));
    int low = key.min, high = key.max;
    if (!key.choices.isEmpty()) {
        low = key.choices.first().code;
        high = key.choices.last().code;
    }
    return QStringLiteral("%1-%2").arg(low).arg(high);
}

// The words joined by ", ", broken into lines of the help's second column;
// the first line starts at column `start`.
QString wrapped(const QStringList& words, qsizetype start) {
    const QString indent(29, QLatin1Char(' '));
    QString out, line;
    for (const QString& word : words) {
        const QString piece = line.isEmpty() ? word : QStringLiteral(", ") + word;
        if (start + line.size() + piece.size() > 79) {
            out += line + QStringLiteral(",\n") + indent;
            line = word;
            start = indent.size();
        } else {
            line += piece;
        }
    }
    return out + line;
}

} // namespace

QString processUsage() {
    QString usage = QStringLiteral(
        "Usage: quillet process [options] PATH... --dest DIR\n"
        "\n"
        "Converts pictures, and folder trees of pictures, into DIR. Each folder given\n"
        "becomes a folder of the same name in DIR; originals are never overwritten.\n"
        "\n"
        "Settings (applied in order, after the reset defaults or --preset):\n"
        "  --preset NAME              start from a stored preset\n"
        "  --set KEY=VALUE            any key of the settings record (e.g. JpegQuality=90)\n"
        "  --rotate {Rotation}\n"
        "  --width N | --height N     scale to a width or a height\n"
        "  --fit WxH                  fit inside the box\n"
        "  --fill WxH                 fit inside the box and pad it with the background\n"
        "  --crop WxH[@PERCENT]       crop to the box's proportions (PERCENT of the area, 100)\n"
        "  --stretch WxH              stretch to the box\n"
        "  --percent N                scale by N percent\n"
        "  --no-scale                 keep the size\n"
        "  --down-only                never enlarge\n"
        "  --flip-portrait            turn the box for portrait pictures\n"
        "  --interpolation {ScaleQuality}\n"
        "  --format {FileFormat}   --quality N ({JpegQuality})   --dpi N\n"
        "  --max-size KB | --no-max-size   file size limit (JPEG, WebP, AVIF, JPEG XL)\n"
        "  --shrink-to-fit | --no-shrink-to-fit   make the picture smaller when the lowest\n"
        "                             quality is still over the size limit\n"
        "  --lossless | --no-lossless      WebP and JPEG XL without loss\n"
        "  --fast-encoding | --no-fast-encoding   WebP, AVIF and JPEG XL encoded several times\n"
        "                             faster, up to a tenth larger at the same quality\n"
        "  --keep-smaller | --no-keep-smaller   copy the input instead when an output in its\n"
        "                             format would be larger\n"
        "  --keep-exif | --no-keep-exif\n"
        "  --metadata {MetadataPolicy}\n"
        "                             what the output keeps: everything; all but location and\n"
        "                             serial numbers; orientation, date, copyright, profile;\n"
        "                             nothing (colours converted to sRGB)\n"
        "  --srgb | --no-srgb         convert colours to sRGB instead of keeping the profile\n"
        "  --keep-transparency | --no-keep-transparency\n"
        "  --background COLOR         #rrggbb[aa], white, black, transparent\n"
        "  --watermark FILE           image watermark; --watermark-opacity N ({WatermarkOpacity}),\n"
        "                             --watermark-location N ({WatermarkLocation})\n"
        "  --text FIELD,...           text watermark of {DynWatermarkFields}\n"
        "  --text-size N ({DynWatermarkSize})  --text-style {DynWatermarkStyle}\n"
        "  --text-background COLOR\n"
        "  --versions NAME,...        write each picture once per preset named, each\n"
        "                             into DIR/NAME, or beside the others as NAME:SUFFIX;\n"
        "                             * is these settings into DIR itself (the default:\n"
        "                             the window's list of versions)\n"
        "\n"
        "Names (start from the stored renaming scheme):\n"
        "  --rename {SelectedRename}\n"
        "  --prefix TEXT  --suffix TEXT  --digits N ({RenameDigits})  --start N\n"
        "  --date-format N ({RenameDateFormatTag})  --date-conflict {RenameConflictFormatTag}\n"
        "  --date-fallback {DateFallbackTag}\n"
        "\n"
        "Files (start from the stored preferences):\n"
        "  --copy-non-images | --skip-non-images\n"
        "  --set-creation-date  --set-modification-date  --hide-extension  --custom-icon\n"
        "  (each also as --no-...)   --creator CODE (four characters; default: the window's)\n"
        "\n"
        "Running:\n"
        "  --on-conflict ask|skip|replace   when an output exists (ask needs a terminal;\n"
        "                             the default is ask on a terminal, else skip)\n"
        "  --serial | --jobs N        one file at a time, or N files rendered at once\n"
        "  --log FILE                 also write the activity log to FILE\n"
        "  --window-dest              write into the folder selected in the window's\n"
        "                             \"Output to\" menu instead of --dest DIR\n"
        "  --notify                   say how the run ended in a desktop notification\n"
        "  --shard K/N                run only part K of N of the batch: whole output\n"
        "                             folders, so the N parts give the tree of one run\n"
        "\n"
        "While running: p or space pauses and resumes, Ctrl-Z / fg too; Ctrl-C cancels\n"
        "after the current file. Exit status: 0 all files handled, 1 a folder or file\n"
        "could not be written or the run was cancelled, 2 bad usage.\n");
    // Choices and ranges come from the settings schema, so the help and the
    // parser cannot drift apart.
    for (const SettingKey& key : SettingsSchema::keys()) {
        const QString field = QLatin1Char('{') + key.key + QLatin1Char('}');
        const qsizetype at = usage.indexOf(field);
        if (at < 0)
            continue;
        const qsizetype column = at - usage.lastIndexOf(QLatin1Char('\n'), at) - 1;
        usage.replace(field, key.type == SettingType::IntList ? wrapped(key.words(), column) : valuesOf(key));
    }
    return usage;
}

} // namespace quillet
