#include "cli/processoptions.h"
#include "cli/processvalues.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

QStringList split(const char* line) {
    return QString::fromUtf8(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

class ProcessOptionsTest : public ::testing::Test {
  protected:
    ProcessParse parse(const char* line) { return parseProcessArguments(split(line), settings); }
    ProcessParse parse(const QStringList& args) { return parseProcessArguments(args, settings); }

    QTemporaryDir dir;
    QSettings settings{dir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat};
};

// One option line and the record values it must give.
struct OptionCase {
    const char* args;
    std::vector<std::pair<const char*, QVariant>> expected;
};

class OptionTableTest : public ProcessOptionsTest, public ::testing::WithParamInterface<OptionCase> {};

TEST_P(OptionTableTest, FriendlyOptionsSetTheRecordKeys) {
    const auto parsed =
        parse((QStringLiteral("in --dest out ") + QLatin1String(GetParam().args)).toUtf8().constData());
    ASSERT_TRUE(parsed.request) << qPrintable(parsed.error);
    for (const auto& [key, value] : GetParam().expected)
        EXPECT_EQ(parsed.request->params.values().value(QLatin1String(key)), value) << key;
}

INSTANTIATE_TEST_SUITE_P(
    Options, OptionTableTest,
    ::testing::Values(
        OptionCase{"--fit 320x240", {{"ScaleType", 4}, {"Width", 320}, {"Height", 240}}},
        OptionCase{"--crop 100x50",
                   {{"ScaleType", 5}, {"Width", 100}, {"Height", 50}, {"CropAreaPercentage", 100}}},
        OptionCase{"--crop 100X50@80", {{"ScaleType", 5}, {"CropAreaPercentage", 80}}},
        OptionCase{"--fill 10x20", {{"ScaleType", 8}}}, OptionCase{"--stretch 10x20", {{"ScaleType", 6}}},
        OptionCase{"--width 640", {{"ScaleType", 2}, {"Width", 640}}},
        OptionCase{"--height 480", {{"ScaleType", 3}, {"Height", 480}}},
        OptionCase{"--percent 25", {{"ScaleType", 7}, {"ScalePercent", 25}}},
        // The later sizing option wins.
        OptionCase{"--fit 9x9 --percent 50", {{"ScaleType", 7}, {"Width", 9}}},
        OptionCase{"--rotate auto", {{"Rotation", 4}}}, OptionCase{"--rotate ccw", {{"Rotation", 2}}},
        OptionCase{"--format png --dpi 300", {{"FileFormat", 102}, {"Resolution", 300}}},
        OptionCase{"--format tiff", {{"FileFormat", 103}}}, OptionCase{"--quality 0", {{"JpegQuality", 0}}},
        OptionCase{"--max-size 200", {{"HasFizeLimit", true}, {"SizeLimit", 200}}},
        OptionCase{"--no-keep-exif", {{"PreserveHeader", false}}},
        OptionCase{"--metadata no-location", {{"MetadataPolicy", 1}}},
        OptionCase{"--metadata none", {{"MetadataPolicy", 3}}},
        OptionCase{"--keep-transparency", {{"PreserveTransparency", true}}},
        OptionCase{"--format webp --fast-encoding", {{"FileFormat", 104}, {"FastEncoding", true}}},
        OptionCase{"--fast-encoding --no-fast-encoding", {{"FastEncoding", false}}},
        OptionCase{"--background #ff0000", {{"BackgroundColor", RgbaColor{1, 0, 0, 1}.toVariant()}}},
        OptionCase{"--watermark /w.png --watermark-opacity 40",
                   {{"WatermarkEnabled", true},
                    {"ImageWatermarkEnabled", true},
                    {"WatermarkPath", QStringLiteral("/w.png")},
                    {"WatermarkOpacity", 40}}},
        OptionCase{"--text filename,date,4",
                   {{"DynWatermarkEnabled", true}, {"DynWatermarkFields", QVariantList{0, 4, 4}}}},
        OptionCase{"--set JpegQuality=55 --set ScaleDownOnly=yes --set Name=x=y",
                   {{"JpegQuality", 55}, {"ScaleDownOnly", true}, {"Name", QStringLiteral("x=y")}}},
        OptionCase{"--set DynWatermarkFields=1,2", {{"DynWatermarkFields", QVariantList{1, 2}}}}));

TEST_F(ProcessOptionsTest, BadUsageIsRefusedWithAMessage) {
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"in", "--dest"},
        {"--dest out", "no pictures"},
        {"in --dest out --fit 320", "WIDTHxHEIGHT"},
        {"in --dest out --fit 0x10", "\"Width\" must be a whole number from 1 to"},
        {"in --dest out --fit 10x10@5", "WIDTHxHEIGHT"},
        {"in --dest out --quality 101", "0 to 100"},
        {"in --dest out --format gif", "jpeg"},
        {"in --dest out --metadata gps", "no-location"},
        {"in --dest out --set Nope=1", "unknown key 'Nope'"},
        {"in --dest out --set JpegQuality=high", "whole number"},
        {"in --dest out --set HasFizeLimit=maybe", "true or false"},
        {"in --dest out --set BackgroundColor=pink", "colour"},
        {"in --dest out --creator ABC", "four"},
        {"in --dest out --frobnicate", "unknown option '--frobnicate'"},
        {"in --dest", "needs a value"},
        {"in --dest out --preset Nothing-Such", "no preset named"},
    };
    for (const auto& [line, message] : cases) {
        const auto parsed = parse(line);
        EXPECT_FALSE(parsed.request) << line;
        EXPECT_TRUE(parsed.error.contains(QLatin1String(message)))
            << line << " -> " << qPrintable(parsed.error);
    }
}

TEST_F(ProcessOptionsTest, NamingFileOptionsAndRunningOptionsReachTheRequest) {
    settings.setValue(QStringLiteral("CopyNonImageFiles"), true);
    settings.setValue(QStringLiteral("SelectedRename"), 2);
    settings.setValue(QStringLiteral("RenamePrefix"), QStringLiteral("stored-"));
    const auto parsed =
        parse("a b --dest o --suffix -s --hide-extension --creator 8BIM --on-conflict replace "
              "--jobs 1 --log l.txt -- --odd");
    ASSERT_TRUE(parsed.request) << qPrintable(parsed.error);
    const ProcessRequest& r = *parsed.request;
    EXPECT_EQ(r.paths, (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("--odd")}));
    EXPECT_EQ(r.renamer.renameType(), Renamer::PrefixSuffix);
    EXPECT_EQ(r.renamer.nameFromInputName(QStringLiteral("x"), nullptr, 0), QStringLiteral("stored-x-s"));
    EXPECT_TRUE(r.options.copyNonImageFiles);
    EXPECT_TRUE(r.options.hideExtension);
    EXPECT_FALSE(r.options.parallel);
    EXPECT_EQ(r.creator, 0x3842494Du);
    EXPECT_EQ(r.conflict, ProcessRequest::Conflict::Replace);
    EXPECT_TRUE(r.conflictGiven);
    EXPECT_EQ(r.logFile, QStringLiteral("l.txt"));
    // Without options the record is the reset defaults and the run is parallel.
    const auto plain = parse("a --dest o");
    ASSERT_TRUE(plain.request);
    EXPECT_EQ(plain.request->params, ProcessingParams::defaults());
    EXPECT_TRUE(plain.request->options.parallel);
    EXPECT_FALSE(plain.request->conflictGiven);
    EXPECT_EQ(plain.request->creator, 0u);
    // The window's selected creator is stamped too, unless --creator says otherwise.
    settings.setValue(QStringLiteral("Creators"),
                      QVariantList{QVariantMap{{QStringLiteral("label"), QStringLiteral("Viewer")},
                                               {QStringLiteral("code"), 0x70727677u}}});
    settings.setValue(QStringLiteral("SelectedCreator"), 1);
    EXPECT_EQ(parse("a --dest o").request->creator, 0x70727677u);
    EXPECT_EQ(parse("a --dest o --creator 8BIM").request->creator, 0x3842494Du);
}

// The file managers' "Convert with Quillet" writes where a drop on the window
// would: the folder selected in its "Output to" menu.
TEST_F(ProcessOptionsTest, WindowDestIsTheWindowsSelectedFolder) {
    settings.setValue(QStringLiteral("Destinations"),
                      QStringList{QStringLiteral("/d0"), QStringLiteral("/d1")});
    settings.setValue(QStringLiteral("SelectedDestination"), 1);
    const auto parsed = parse("a --window-dest --notify");
    ASSERT_TRUE(parsed.request) << qPrintable(parsed.error);
    EXPECT_EQ(parsed.request->dest, QStringLiteral("/d1"));
    EXPECT_TRUE(parsed.request->notify);
    // A selection past the list (a hand-edited store) is the first entry, as in the window.
    settings.setValue(QStringLiteral("SelectedDestination"), 5);
    EXPECT_EQ(parse("a --window-dest").request->dest, QStringLiteral("/d0"));
    EXPECT_FALSE(parse("a --window-dest --dest o").request);
}

TEST(ProcessValuesTest, ColoursAndCodes) {
    EXPECT_EQ(ProcessValues::parseColor(QStringLiteral("#00ff0080")), (RgbaColor{0, 1, 0, 128 / 255.0}));
    EXPECT_EQ(ProcessValues::parseColor(QStringLiteral("#fff")), RgbaColor::white());
    EXPECT_EQ(ProcessValues::parseColor(RgbaColor{0.25, 0.5, 0.75, 1}.toString()),
              (RgbaColor{0.25, 0.5, 0.75, 1}));
    EXPECT_FALSE(ProcessValues::parseColor(QStringLiteral("#12345")));
    EXPECT_FALSE(ProcessValues::parseFourCharCode(QStringLiteral("ABCDE")));
    EXPECT_FALSE(ProcessValues::parseFourCharCode(QStringLiteral("AB\u00e9D")));
    EXPECT_FALSE(ProcessValues::parseTextFields(QStringLiteral("filename,15")));
    EXPECT_FALSE(ProcessValues::parseInt(QStringLiteral("99999999999"), 0, 100));
}

} // namespace
