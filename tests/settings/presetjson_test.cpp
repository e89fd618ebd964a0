#include "settings/presetjson.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

namespace K = ParamKey;

ProcessingParams fullPreset() {
    ProcessingParams p = ProcessingParams::defaults();
    p.setString(K::Name, QStringLiteral("Web – small"));
    p.setInt(K::Height, 1000000);
    p.setColor(K::BackgroundColor, RgbaColor{0.1, 1.0 / 3.0, 0.7000000000000001, 1});
    p.setIntList(K::DynWatermarkFields, {0, 4, 14, 4});
    return p;
}

QByteArray withPreset(const QByteArray& presetJson) {
    return R"({"format": "quillet-preset", "version": 1, "preset": )" + presetJson + "}";
}

template <class F> void expectRefused(F read, const std::string& messagePart) {
    try {
        read();
        ADD_FAILURE() << "accepted; expected a refusal with: " << messagePart;
    } catch (const PresetFileError& e) {
        EXPECT_NE(std::string(e.what()).find(messagePart), std::string::npos) << e.what();
    }
}

TEST(PresetJson, RoundTripsTypedValuesWithoutTheIdAndAcceptsOlderPartialRecords) {
    ProcessingParams preset = fullPreset();
    preset.setInt(K::Id, 12);
    const QByteArray json = PresetJson::toJson(preset);
    EXPECT_FALSE(json.contains(R"("Id")"));
    EXPECT_EQ(PresetJson::fromJson(json), fullPreset());
    // An older partial record: the name trimmed, the id dropped, no defaults filled in.
    EXPECT_EQ(PresetJson::fromJson(withPreset(R"({"Name": " Old ", "Id": 4, "Rotation": 2.0})")).values(),
              (QVariantMap{{K::Name, "Old"}, {K::Rotation, 2}}));
}

TEST(PresetJson, TruncatedWronglyTypedAndHugeInputIsRefused) {
    const QByteArray json = PresetJson::toJson(fullPreset()).trimmed();
    for (qsizetype n = 0; n < json.size(); ++n)
        EXPECT_THROW(PresetJson::fromJson(json.left(n)), PresetFileError) << "cut at " << n;
    const QByteArray head = R"({"format": "quillet-preset", "version": )", a = R"({"Name": "A", )";
    const char* whole = "\"Width\" must be a whole";
    // clang-format off
    const std::pair<QByteArray, const char*> cases[] = {
        {"[1, 2]", "JSON object"}, {QByteArray(5000, '['), "not valid JSON"},
        {R"({"format": "other", "version": 1, "preset": {"Name": "A"}})", "format"},
        {head + R"(2, "preset": {"Name": "A"}})", "version"}, {head + "1}", "\"preset\" must be an object"},
        {head + R"(1, "preset": {"Name": "A"}, "x": 0})", "unknown key \"x\""},
        {withPreset(a + R"("HasSizeLimit": true})"), "unknown key \"HasSizeLimit\""},
        {withPreset(R"({"Name": "   "})"), "no \"Name\""}, {withPreset(R"({"Name": 5})"), "\"Name\" must be text of at most 255 characters, not 5"},
        {withPreset(a + R"("Width": 1.5})"), whole}, {withPreset(a + R"("Width": 3000000000})"), whole},
        {withPreset(a + R"("FlipRatio": 1})"), "true or false"},
        {withPreset(a + R"j("BackgroundColor": "rgba(2, 0, 0, 1)"})j"), "colour"},
        {withPreset(a + R"("DynWatermarkFields": [1, "2"]})"), "a list of at most 64 whole numbers from 0 to 14, not [1, 2]"},
        {withPreset("{\"Name\": \"" + QByteArray(256, 'n') + "\"}"), "at most 255 characters, not nnn"},
        {withPreset(a + "\"DynWatermarkFields\": [" + QByteArray("1,").repeated(64) + "1]}"), "at most 64 whole numbers"},
        {withPreset(R"({"Name": "A"})") + QByteArray(1 << 20, ' '), "larger than"}};
    // clang-format on
    for (const auto& [bytes, messagePart] : cases)
        expectRefused([&] { PresetJson::fromJson(bytes); }, messagePart);
}

TEST(PresetJson, HugeMissingOrUnwritableFilesFailNamingThePath) {
    QTemporaryDir dir;
    QFile huge(dir.filePath(QStringLiteral("huge.json")));
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly) && huge.resize(512LL << 20)); // sparse: costs no disk
    for (const QString& p : {huge.fileName(), dir.filePath(QStringLiteral("missing.json")), dir.path()})
        expectRefused([&] { PresetJson::readFile(p); }, p.toStdString());
    // A failed write throws and leaves nothing behind.
    EXPECT_THROW(PresetJson::writeFile(dir.path(), fullPreset()), PresetFileError);
    EXPECT_THROW(PresetJson::writeFile(dir.filePath("no/p.json"), fullPreset()), PresetFileError);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), QStringList{"huge.json"});
}

} // namespace
