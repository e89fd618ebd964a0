#include "app/guitest.h"
#include "engine/batch/batchtree.h"

#include "support/fileattributes.h"

#include <QProcess>

using namespace quillet;
using namespace quillet::guitest;

namespace {

class FrontEndParityTest : public GuiTest {
  protected:
    // `quillet process` on the same settings store, into `dest`.
    int runTool(const QStringList& paths, const QString& dest) {
        models->defaults().store().sync();
        QProcess process;
        process.setStandardInputFile(QProcess::nullDevice());
        process.start(QStringLiteral(QUILLET_CLI_PATH),
                      QStringList{QStringLiteral("--settings"), models->defaults().store().fileName(),
                                  QStringLiteral("process"), QStringLiteral("--dest"), dest} +
                          paths);
        process.waitForFinished(60000);
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }
};

// The desktop application and the command-line tool read one store the same
// way: given only what the store holds (here a sizing and no preferences, so
// the registered ones apply), both write the same tree, the same bytes and
// the same hidden-extension flags, non-pictures copied as registered.
TEST_F(FrontEndParityTest, SameStoreGivesTheSameOutputTree) {
    makePictures(in(QStringLiteral("trip")), 3, 40);
    batchtree::text(in(QStringLiteral("trip/notes.txt")));
    batchtree::text(in(QStringLiteral("trip/.DS_Store")), "\0\0\0\1Bud1");
    batchtree::picture(in(QStringLiteral("trip/day2/scan.png")), 30, 20);
    edit(models->settings().output(), [](OutputSettings& o) { o.jpegQuality = 63; }); // written to the store
    models->defaults().setInt(QStringLiteral("SelectedRename"), 1);
    models->defaults().setValue(QStringLiteral("RenamePrefix"), QStringLiteral("img"));

    ASSERT_TRUE(runBatch({in(QStringLiteral("trip"))}));
    const QString toolOut = scratch->filePath(QStringLiteral("tool"));
    ASSERT_EQ(runTool({in(QStringLiteral("trip"))}, toolOut), 0);

    EXPECT_EQ(models->defaults().intValue(QStringLiteral("JpegQuality")), 63);
    const auto window = batchtree::checksums(out);
    const auto tool = batchtree::checksums(toolOut);
    EXPECT_EQ(window, tool);
    EXPECT_EQ(batchtree::entries(out),
              "trip trip/.DS_Store trip/day2 trip/day2/img0.jpg trip/img0.jpg trip/img1.jpg trip/img2.jpg "
              "trip/notes.txt");
    for (const QString& name : {QStringLiteral("trip/img0.jpg"), QStringLiteral("trip/day2/img0.jpg")}) {
        EXPECT_TRUE(FileAttributes::extensionHidden(o(name))) << name.toStdString();
        EXPECT_TRUE(FileAttributes::extensionHidden(QDir(toolOut).filePath(name))) << name.toStdString();
    }
}

} // namespace
