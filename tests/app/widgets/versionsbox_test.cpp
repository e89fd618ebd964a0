#include "app/guitest.h"
#include "app/widgets/settings/versionsbox.h"
#include "settings/presetstore.h"

#include <QDirIterator>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QScopeGuard>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

using namespace quillet;
using namespace quillet::guitest;

namespace {

class VersionsBoxTest : public GuiTest {
  protected:
    void addPreset(const QString& name, int side, int format) {
        PresetStore presets = PresetStore::load(models->store());
        ProcessingParams preset = models->settings().record();
        preset.setInt(ParamKey::Width, side);
        preset.setInt(ParamKey::Height, side);
        preset.setInt(ParamKey::FileFormat, format);
        presets.addPreset(name, preset);
        presets.save(models->store());
    }
    QStringList rows(const VersionsBox& box) const {
        QStringList out;
        for (int i = 0; i < box.list()->topLevelItemCount(); ++i) {
            const QTreeWidgetItem* item = box.list()->topLevelItem(i);
            QStringList columns;
            for (int column = 0; column < item->columnCount(); ++column)
                columns.append(item->text(column));
            out.append(columns.join(QLatin1Char('|')));
        }
        return out;
    }
    QStringList written() const {
        QStringList found;
        for (QDirIterator it(out, QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
            found.append(QDir(out).relativeFilePath(it.next()));
        found.sort();
        return found;
    }
};

TEST_F(VersionsBoxTest, TheListAddsPresetsTakesSuffixesAndEveryBatchWritesEachVersion) {
    addPreset(QStringLiteral("Web"), 8, FileFormat::Png);
    addPreset(QStringLiteral("Thumb"), 4, FileFormat::Jpeg);
    VersionsBox box(models->versions(), models->settings());
    EXPECT_EQ(rows(box), QStringList{"Current settings|JPEG 80 · fit 16×16||Into the destination"});
    EXPECT_FALSE(box.findChild<QToolButton*>(QStringLiteral("removeVersionButton"))->isEnabled());

    // The + menu offers the presets; the current settings are there already.
    QMenu* menu = box.findChild<QToolButton*>(QStringLiteral("addVersionButton"))->menu();
    Q_EMIT menu->aboutToShow();
    ASSERT_EQ(menu->actions().size(), 2);
    menu->actions().at(0)->trigger();
    menu->actions().at(1)->trigger();
    box.list()->topLevelItem(2)->setText(2, QStringLiteral("_t"));
    EXPECT_EQ(rows(box), (QStringList{"Current settings|JPEG 80 · fit 16×16||Into the destination",
                                      "Web|PNG · fit 8×8||Into the folder 'Web'",
                                      "Thumb|JPEG 80 · fit 4×4|_t|Names ending in '_t'"}));
    // A double-click anywhere on a row edits its suffix.
    QTreeWidget* list = box.list();
    box.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&box));
    const QRect web = list->visualItemRect(list->topLevelItem(1));
    const QPoint title(web.left() + 5, web.center().y());
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, title);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, title);
    QLineEdit* editor = list->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->geometry().left(), list->header()->sectionViewportPosition(2));
    QTest::keyClicks(editor, QStringLiteral("_w"));
    QTest::keyClick(editor, Qt::Key_Return);
    QCoreApplication::processEvents();
    EXPECT_EQ(list->topLevelItem(1)->text(2), QStringLiteral("_w"));
    EXPECT_EQ(models->defaults().stringList(QStringLiteral("OutputVersions")),
              (QStringList{"*", "Web:_w", "Thumb:_t"}));
    list->topLevelItem(1)->setText(2, QString());
    EXPECT_EQ(models->defaults().stringList(QStringLiteral("OutputVersions")),
              (QStringList{"*", "Web", "Thumb:_t"}));

    // The current settings' row follows the controls.
    ProcessingRequest edited = models->settings().value();
    edited.output.hasSizeLimit = true;
    edited.output.sizeLimit = 200;
    models->settings().apply(edited);
    EXPECT_EQ(box.list()->topLevelItem(0)->text(1), QStringLiteral("JPEG 80, ≤ 200 KB · fit 16×16"));
    edited.output.hasSizeLimit = false;
    models->settings().apply(edited);

    makePictures(in(), 2, 32);
    ASSERT_TRUE(runBatch({in()}));
    EXPECT_EQ(written(), (QStringList{"Web/in/pic00.png", "Web/in/pic01.png", "in/pic00.jpg",
                                      "in/pic00_t.jpg", "in/pic01.jpg", "in/pic01_t.jpg"}));
    EXPECT_EQ(controller->status(), "Processing Completed (2 files processed)");

    // Back to one version: the store holds nothing again.
    box.list()->setCurrentItem(box.list()->topLevelItem(1));
    box.findChild<QToolButton*>(QStringLiteral("removeVersionButton"))->click();
    box.list()->setCurrentItem(box.list()->topLevelItem(1));
    box.findChild<QToolButton*>(QStringLiteral("removeVersionButton"))->click();
    EXPECT_EQ(rows(box), QStringList{"Current settings|JPEG 80 · fit 16×16||Into the destination"});
    EXPECT_TRUE(models->defaults().stringList(QStringLiteral("OutputVersions")).isEmpty());
}

TEST_F(VersionsBoxTest, AVersionWhosePresetIsGoneStopsTheBatchBeforeAnyFile) {
    addPreset(QStringLiteral("Web"), 8, FileFormat::Png);
    models->versions().add(QStringLiteral("Web"));
    models->versions().add(QStringLiteral("Gone"));
    VersionsBox box(models->versions(), models->settings());
    EXPECT_EQ(box.list()->topLevelItem(2)->text(3), QStringLiteral("No preset of this name"));

    makePictures(in(), 2);
    sheets.setNextAnswer(1);
    controller->processFiles({in()});
    EXPECT_EQ(asked, QStringList{"Versions"});
    EXPECT_FALSE(controller->isBatchRunning());
    EXPECT_FALSE(QFileInfo::exists(out));
}

// A single file dropped with "convert onto the desktop" is a batch of one
// file, with every version; the clipboard takes one picture, the current
// settings', and a version that cannot run stops the desktop run alike.
TEST_F(VersionsBoxTest, ASingleFileOnTheDesktopGetsEveryVersionAndTheClipboardOne) {
    addPreset(QStringLiteral("Web"), 8, FileFormat::Png);
    models->versions().add(QStringLiteral("Web"));
    const QStringList picture = makePictures(in(), 1);
    const QString desktopFolder = AppController::desktopFolder();
    const auto cleanup = qScopeGuard([&] { QDir(desktopFolder).removeRecursively(); });

    models->defaults().setInt(QStringLiteral("SingleFile"), 1);
    ASSERT_TRUE(runBatch(picture));
    EXPECT_TRUE(QFileInfo::exists(desktopFolder + QStringLiteral("/pic00.jpg")));
    EXPECT_TRUE(QFileInfo::exists(desktopFolder + QStringLiteral("/Web/pic00.png")));

    models->defaults().setInt(QStringLiteral("SingleFile"), 2);
    controller->processFiles(picture);
    ASSERT_TRUE(waitForIdle());
    ASSERT_EQ(desktop.copied.size(), 1);
    EXPECT_TRUE(desktop.copied.first().endsWith(QStringLiteral("/pic00.jpg")));

    QDir(desktopFolder).removeRecursively();
    models->versions().add(QStringLiteral("Gone"));
    models->defaults().setInt(QStringLiteral("SingleFile"), 1);
    sheets.setNextAnswer(1);
    controller->processFiles(picture);
    EXPECT_EQ(asked, QStringList{"Versions"});
    EXPECT_FALSE(controller->isProcessing());
    EXPECT_FALSE(QFileInfo::exists(desktopFolder));
}

} // namespace
