#include "settings/settingstable.h"

#include "naming/dateformats.h"
#include "settings/processingparams.h"
#include "settings/settingsschema.h"

#include <QStandardPaths>

namespace quillet {

namespace {

using T = SettingType;
using G = SettingGroup;
using Choices = QList<SettingChoice>;

// One row, built by chained calls so the table reads as a table.
struct Row {
    SettingKey k;

    Row(const char* key, SettingType type, SettingGroup group) {
        k.key = QLatin1String(key);
        k.type = type;
        k.group = group;
    }
    Row& range(int min, int max) {
        k.min = min;
        k.max = max;
        return *this;
    }
    Row& choices(Choices list) {
        k.choices = std::move(list);
        return *this;
    }
    Row& longest(qsizetype n) {
        k.maxLength = n;
        return *this;
    }
    // The store answers this when it holds no value.
    Row& registered(QVariant value) {
        k.registered = true;
        k.fixedDefault = std::move(value);
        return *this;
    }
    Row& registeredAs(QVariant (*compute)()) {
        k.registered = true;
        k.computedDefault = compute;
        return *this;
    }
    // In the reset record only; the store never holds the key by itself.
    Row& resetTo(QVariant value) {
        k.fixedDefault = std::move(value);
        return *this;
    }
    operator SettingKey() const { return k; }
};

QVariant homeFolders() {
    return QStringList{QStandardPaths::writableLocation(QStandardPaths::DesktopLocation),
                       QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)};
}

QVariant creator(const char* label, const char code[5]) {
    const uint packed = uint(uchar(code[0])) << 24 | uint(uchar(code[1])) << 16 | uint(uchar(code[2])) << 8 |
                        uint(uchar(code[3]));
    return QVariantMap{{QStringLiteral("label"), QLatin1String(label)}, {QStringLiteral("code"), packed}};
}

const Choices rotations = {{Rotation::None, "None", {"none"}},
                           {Rotation::Clockwise, "90° clockwise", {"cw"}},
                           {Rotation::CounterClockwise, "90° counter-clockwise", {"ccw"}},
                           {Rotation::HalfTurn, "180°", {"180"}},
                           {Rotation::Automatic, "Automatic", {"auto"}}};
const Choices scaleTypes = {{ScaleType::None, "No scaling", {}},
                            {ScaleType::ToWidth, "Scale to width", {}},
                            {ScaleType::ToHeight, "Scale to height", {}},
                            {ScaleType::Fit, "Scale to fit", {}},
                            {ScaleType::Crop, "Crop to fit", {}},
                            {ScaleType::Stretch, "Stretch", {}},
                            {ScaleType::Percent, "Scale by percentage", {}},
                            {ScaleType::Fill, "Scale to fill", {}}};
const Choices scaleQualities = {{ScaleQuality::Default, "Default", {"default"}},
                                {ScaleQuality::None, "None", {"none"}},
                                {ScaleQuality::Low, "Low", {"low"}},
                                {ScaleQuality::High, "High", {"high"}}};
const Choices fileFormats = {
    {FileFormat::Jpeg, "JPEG", {"jpeg", "jpg"}}, {FileFormat::Png, "PNG", {"png"}},
    {FileFormat::Tiff, "TIFF", {"tiff", "tif"}}, {FileFormat::WebP, "WebP", {"webp"}},
    {FileFormat::Avif, "AVIF", {"avif"}},        {FileFormat::JpegXl, "JPEG XL", {"jxl"}}};
const Choices metadataPolicies = {{0, "Keep everything", {"keep"}},
                                  {1, "Remove location and serial numbers", {"no-location"}},
                                  {2, "Only orientation, date, copyright, profile", {"minimal"}},
                                  {3, "Nothing at all", {"none"}}};
const Choices locations = {{0, "Nowhere", {}},    {1, "Bottom left", {}}, {2, "Bottom right", {}},
                           {3, "Top left", {}},   {4, "Top right", {}},   {5, "Bottom centre", {}},
                           {6, "Top centre", {}}, {7, "Centre", {}}};
const Choices textSizes = {
    {0, "Smallest", {}}, {1, "Small", {}}, {2, "Medium", {}}, {3, "Large", {}}, {4, "Largest", {}}};
const Choices textStyles = {{TextStyle::WhiteShadow, "White with shadow", {"white-shadow"}},
                            {TextStyle::Black, "Black", {"black"}},
                            {TextStyle::BlackGlow, "Black with glow", {"black-glow"}}};
const Choices textFields = {{TextField::FileName, "File name", {"filename"}},
                            {TextField::Dimensions, "Dimensions", {"dimensions"}},
                            {TextField::FileSize, "File size", {"filesize"}},
                            {TextField::CameraModel, "Camera", {"camera"}},
                            {TextField::CreationDate, "Date", {"date"}},
                            {TextField::Iso, "ISO", {"iso"}},
                            {TextField::Flash, "Flash", {"flash"}},
                            {TextField::FocalLength, "Focal length", {"focal"}},
                            {TextField::FocalLength35, "Focal length (35 mm)", {"focal35"}},
                            {TextField::ExposureTime, "Exposure time", {"exposure"}},
                            {TextField::Aperture, "Aperture", {"aperture"}},
                            {TextField::Distance, "Subject distance", {"distance"}},
                            {TextField::ExposureBias, "Exposure bias", {"bias"}},
                            {TextField::Caption, "Caption", {"caption"}},
                            {TextField::Comment, "Comment", {"comment"}}};
const Choices singleFileActions = {{0, "Process as a batch", {}},
                                   {1, "Convert to the Desktop", {}},
                                   {2, "Copy to the clipboard", {}},
                                   {3, "Convert and open in the image viewer", {}}};
const Choices renameTypes = {{0, "Keep the name", {"keep"}},
                             {1, "Sequence number", {"sequence"}},
                             {2, "Prefix and suffix", {"prefix-suffix"}},
                             {3, "Capture date", {"date"}}};
const Choices conflictSeparators = {{0, "-", {"dash"}}, {1, "_", {"underscore"}}, {2, "blank", {"space"}}};
const Choices dateFallbacks = {{0, "Use the file's date", {"file-date"}},
                               {1, "Keep the input name", {"name"}}};

} // namespace

QList<SettingKey> settingsTable() {
    namespace K = ParamKey;
    namespace S = StoreKey;
    // Sizes and limits: 0 is what an emptied field stores, and "Resolution"
    // and "SizeLimit" read a 0 as 72 and 100. The upper bounds are far past
    // any real picture, file or print.
    constexpr int maxPixels = 1000000;
    // Names, prefixes and suffixes end up in file names, which stop at 255 bytes.
    constexpr qsizetype maxName = 255;
    const int lastDateFormat = int(DateFormats::list().size()) - 1;

    return {
        Row(K::Name, T::String, G::Processing).longest(maxName).resetTo(QString()),
        Row(K::Rotation, T::Int, G::Processing).choices(rotations).registered(Rotation::None),
        Row(K::ScaleType, T::Int, G::Processing).choices(scaleTypes).registered(ScaleType::None),
        Row(K::Width, T::Int, G::Processing).range(0, maxPixels).registered(0),
        Row(K::Height, T::Int, G::Processing).range(0, maxPixels).registered(0),
        Row(K::ScalePercent, T::Int, G::Processing).range(0, 10000).registered(100),
        Row(K::CropAreaPercentage, T::Int, G::Processing).range(0, 100).registered(0),
        Row(K::FlipRatio, T::Bool, G::Processing).registered(false),
        Row(K::ScaleDownOnly, T::Bool, G::Processing).registered(false),
        Row(K::ScaleQuality, T::Int, G::Processing).choices(scaleQualities).registered(ScaleQuality::High),
        Row(K::Resolution, T::Int, G::Processing).range(0, 100000).registered(72),
        Row(K::FileFormat, T::Int, G::Processing).choices(fileFormats).registered(FileFormat::Jpeg),
        Row(K::JpegQuality, T::Int, G::Processing).range(0, 100).registered(80),
        Row(K::HasFizeLimit, T::Bool, G::Processing).registered(false),
        Row(K::SizeLimit, T::Int, G::Processing).range(0, 4000000).registered(0), // kilobytes
        Row(K::PreserveHeader, T::Bool, G::Processing).registered(true),
        Row(K::PreserveTransparency, T::Bool, G::Processing).registered(false),
        Row(K::ConvertToSRGB, T::Bool, G::Processing).registered(false),
        // Keep everything: what every output got before there was a choice.
        Row(K::MetadataPolicy, T::Int, G::Processing).choices(metadataPolicies).registered(0),
        // Off, the defaults of records saved before they existed.
        Row(K::LosslessOutput, T::Bool, G::Processing).registered(false),
        Row(K::ShrinkToFit, T::Bool, G::Processing).registered(false),
        Row(K::KeepSmallerOriginal, T::Bool, G::Processing).registered(false),
        Row(K::FastEncoding, T::Bool, G::Processing).registered(false),
        Row(K::BackgroundColor, T::Colour, G::Processing).registered(RgbaColor::white().toVariant()),
        Row(K::WatermarkEnabled, T::Bool, G::Processing).registered(false),
        Row(K::ImageWatermarkEnabled, T::Bool, G::Processing).registered(false),
        Row(K::WatermarkPath, T::String, G::Processing).longest(4096), // PATH_MAX
        Row(K::WatermarkOpacity, T::Int, G::Processing).range(0, 100).registered(100),
        Row(K::WatermarkLocation, T::Int, G::Processing).choices(locations).registered(1),
        Row(K::DynWatermarkEnabled, T::Bool, G::Processing).registered(false),
        // Text shadows are always available here, so a clear band and the
        // shadowed style are the defaults.
        Row(K::DynWatermarkBackgroundColor, T::Colour, G::Processing)
            .registered(RgbaColor::white(0).toVariant()),
        Row(K::DynWatermarkBackgroundOpacity, T::Int, G::Processing).range(0, 100),
        Row(K::DynWatermarkSize, T::Int, G::Processing).choices(textSizes).registered(2),
        Row(K::DynWatermarkStyle, T::Int, G::Processing)
            .choices(textStyles)
            .registered(TextStyle::WhiteShadow),
        // Bounded only to keep a hostile preset small; there are 15 fields.
        Row(K::DynWatermarkFields, T::IntList, G::Processing)
            .choices(textFields)
            .longest(64)
            .registered(QVariantList()),

        Row(S::Destinations, T::StringList, G::Application).registeredAs(&homeFolders),
        // At most six destinations and five creators are kept.
        Row(S::SelectedDestination, T::Int, G::Application).range(0, 5).registered(0),
        Row(S::ResolutionSet, T::StringList, G::Application)
            .registered(QStringList{"72", "144", "300", "600", "720"}),
        Row(S::Creators, T::CreatorList, G::Application)
            .registered(QVariantList{creator("Adobe Photoshop", "8BIM"), creator("Preview", "prvw"),
                                     creator("Safari", "sfri")}),
        Row(S::SelectedCreator, T::Int, G::Application).range(0, 5),
        Row(S::CopyNonImageFiles, T::Bool, G::Application).registered(true),
        Row(S::SetCreationDate, T::Bool, G::Application).registered(false),
        Row(S::SetModificationDate, T::Bool, G::Application).registered(false),
        Row(S::HideExtension, T::Bool, G::Application).registered(true),
        Row(S::CustomIcon, T::Bool, G::Application).registered(false),
        Row(S::ActivityLogVisible, T::Bool, G::Application).registered(false),
        Row(S::InspectorVisible, T::Bool, G::Application),
        Row(S::PreviewVisible, T::Bool, G::Application).registered(false),
        Row(S::ShowAutoRotateHint, T::Bool, G::Application).registered(true),
        Row(S::ShowCustomIconHint, T::Bool, G::Application).registered(true),
        Row(S::SUMS, T::Bool, G::Application),
        // Empty: the current settings alone. A few dozen versions is plenty.
        Row(S::OutputVersions, T::StringList, G::Application).longest(64).registered(QStringList()),

        Row(S::SingleFile, T::Int, G::Preference).choices(singleFileActions).registered(0),
        Row(S::RevealFolder, T::Bool, G::Preference).registered(true),
        Row(S::HideOnDeactivate, T::Bool, G::Preference).registered(false),
        Row(S::HideToolTips, T::Bool, G::Preference).registered(false),
        Row(S::BrushMetal, T::Bool, G::Preference).registered(false),
        Row(S::OnTheFlyFolder, T::Bool, G::Preference).registered(true),

        Row(S::SelectedRename, T::Int, G::Renamer).choices(renameTypes).registered(0),
        Row(S::RenamePrefix, T::String, G::Renamer).longest(maxName),
        Row(S::RenameSuffix, T::String, G::Renamer).longest(maxName),
        // More digits than any file name wants.
        Row(S::RenameDigits, T::Int, G::Renamer).range(0, 20),
        Row(S::RenameStartFrom, T::Int, G::Renamer).range(-1000000000, 1000000000),
        Row(S::RenameDateFormatTag, T::Int, G::Renamer).range(0, lastDateFormat),
        Row(S::RenameConflictFormatTag, T::Int, G::Renamer).choices(conflictSeparators),
        Row(S::DateFallbackTag, T::Int, G::Renamer).choices(dateFallbacks),

        Row(S::KeepBackup, T::Bool, G::InPlace),
        Row(S::InplaceVisible, T::Bool, G::InPlace),

        Row(S::Presets, T::RecordList, G::Presets),
        Row(S::PresetsDictionaries, T::Map, G::Presets).registered(QVariantMap()),
        Row(S::SelectedPreset, T::Int, G::Presets).range(0, INT_MAX).registered(0),
        Row(K::Id, T::Int, G::Presets).range(1, INT_MAX),

        // A day counted from 1 January of year 1.
        Row(S::NextCheckVersion, T::Int, G::Version).range(0, INT_MAX),
        // No server unless one is set, so a machine without a network never
        // waits for an answer.
        Row(S::UpdateServer, T::String, G::Version).longest(255).registered(QString()),
        // korvane.example stands for the maker's site until a deployment sets it.
        Row(S::HomePage, T::String, G::Application)
            .longest(2048)
            .registered(QStringLiteral("https://korvane.example/")),
        Row(S::ContactAddress, T::String, G::Application)
            .longest(254)
            .registered(QStringLiteral("quillet@korvane.example")),
        Row(S::ScaleOptionsExpanded, T::Bool, G::Application).registered(true),
    };
}

} // namespace quillet
