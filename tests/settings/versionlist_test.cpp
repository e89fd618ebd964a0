#include "settings/presetstore.h"
#include "settings/userdefaults.h"
#include "settings/versionlist.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

class VersionListTest : public testing::Test {
  protected:
    void SetUp() override {
        QSettings settings(dir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
        PresetStore store = PresetStore::load(settings);
        for (const char* name : {"Web", "a/b", "..", "Thumb: small"}) {
            ProcessingParams preset = ProcessingParams::defaults();
            preset.setInt(ParamKey::Width, 320);
            store.addPreset(QString::fromUtf8(name), preset);
        }
        presets = store;
        current.sizing.width = 999;
    }
    VersionList::Resolved resolve(const QStringList& entries) const {
        return VersionList::resolve(entries, presets, current);
    }

    QTemporaryDir dir;
    PresetStore presets;
    ProcessingRequest current;
};

TEST_F(VersionListTest, EntriesNameAFolderOrASuffixAndStarIsTheBatchsOwnSettings) {
    const auto resolved =
        resolve(VersionList::split(QStringLiteral(" *, Web ,,a/b, Web:_w, Thumb: small:-s ")));
    ASSERT_TRUE(resolved.error.isEmpty()) << qPrintable(resolved.error);
    ASSERT_EQ(resolved.versions.size(), 5u);
    const auto& v = resolved.versions;
    EXPECT_EQ(v[0].request.sizing.width, 999);
    EXPECT_EQ(v[0].folder, QString());
    EXPECT_EQ(v[1].request.sizing.width, 320);
    EXPECT_EQ(v[1].folder, QStringLiteral("Web"));
    // A slash cannot stand in a folder's name.
    EXPECT_EQ(v[2].folder, QStringLiteral("a:b"));
    EXPECT_EQ(v[3].folder, QString());
    EXPECT_EQ(v[3].nameSuffix, QStringLiteral("_w"));
    // Only the last colon starts the suffix.
    EXPECT_EQ(v[4].nameSuffix, QStringLiteral("-s"));
    EXPECT_EQ(v[4].request.sizing.width, 320);

    // Nothing stored is the batch's own settings alone.
    const auto plain = resolve({});
    ASSERT_EQ(plain.versions.size(), 1u);
    EXPECT_EQ(plain.versions[0], (OutputVersion{current, {}, {}}));
}

TEST_F(VersionListTest, ListsThatCannotRunAreRefusedNamingTheEntry) {
    for (const auto& [entries, message] : std::vector<std::pair<QStringList, QString>>{
             {{"Web", "Missing"}, "'Missing' names no preset"},
             {{":_x"}, "'' names no preset"},
             {{".."}, "'..' cannot be a folder"},
             {{"Web", "*", "Web"}, "'Web' would write the same files"},
             {{"*:_s", "Web:_s", "*"}, "'Web:_s' would write the same files"},
         }) {
        const auto resolved = resolve(entries);
        EXPECT_TRUE(resolved.versions.empty());
        EXPECT_TRUE(resolved.error.contains(message)) << qPrintable(resolved.error);
    }
    EXPECT_TRUE(resolve({"..:_up"}).error.isEmpty());
}

TEST_F(VersionListTest, TheStoredListReadsBackAsWritten) {
    QSettings settings(dir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    UserDefaults defaults(settings);
    EXPECT_EQ(VersionList::effective(defaults.stringList(QStringLiteral("OutputVersions"))),
              QStringList{QStringLiteral("*")});
    const QStringList entries = {QStringLiteral("*"), QStringLiteral("Web"),
                                 QStringLiteral("Thumb: small:_t")};
    defaults.setValue(QStringLiteral("OutputVersions"), entries);
    QSettings again(dir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    EXPECT_EQ(UserDefaults(again).stringList(QStringLiteral("OutputVersions")), entries);
}

} // namespace
