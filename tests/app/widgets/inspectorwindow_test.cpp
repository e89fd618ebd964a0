#include "app/guitest.h"
#include "app/models/inspectorcolumns.h"
#include "app/models/inspectormodel.h"
#include "app/widgets/inspector/inspectorcolumnchooser.h"
#include "app/widgets/inspector/inspectorwindow.h"
#include "app/widgets/main/mainwindow.h"

#include <QAction>
#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>

using namespace quillet;
using namespace quillet::guitest;

namespace {

class InspectorWindowTest : public GuiTest {
  protected:
    void fill(InspectorModel& model, const QStringList& paths) {
        model.addFiles(paths);
        ASSERT_TRUE(waitFor([&] { return !model.isAdding(); }));
    }
    template <typename T> T* child(QWidget& window, const char* name) {
        return window.findChild<T*>(QLatin1String(name));
    }
};

TEST_F(InspectorWindowTest, ButtonsFollowTheListAndRestWhileFilesAreRead) {
    InspectorWindow window(models->inspector(), models->defaults());
    auto* process = child<QPushButton>(window, "inspectorProcess");
    auto* clear = child<QPushButton>(window, "inspectorClear");
    auto* summary = child<QLabel>(window, "inspectorSummary");
    EXPECT_EQ(summary->text(), "0 item");
    EXPECT_FALSE(process->isEnabled());

    QSignalSpy enabled(&models->inspector(), &InspectorModel::addingChanged);
    models->inspector().addFiles(makePictures(in(), 3));
    EXPECT_FALSE(window.table()->isEnabled());
    ASSERT_TRUE(waitFor([&] { return !models->inspector().isAdding(); }));
    EXPECT_TRUE(window.table()->isEnabled());
    EXPECT_EQ(summary->text(), "3 items");
    EXPECT_TRUE(process->isEnabled());
    EXPECT_FALSE(clear->isEnabled());

    window.table()->selectRow(1);
    ASSERT_TRUE(clear->isEnabled());
    clear->click();
    EXPECT_EQ(models->inspector().rowCount(), 2);
    EXPECT_EQ(summary->text(), "2 items");
    EXPECT_FALSE(clear->isEnabled());
}

TEST_F(InspectorWindowTest, ProcessHandsTheListInListOrderAndTheSelectionGoesToThePreview) {
    MainWindow main(*controller, *models, sheets);
    InspectorWindow& window = *main.inspector();
    const QStringList pictures = makePictures(in(), 3);
    fill(models->inspector(), pictures);
    models->inspector().moveRows({2}, 0);
    ASSERT_EQ(models->inspector().paths(), QStringList({pictures[2], pictures[0], pictures[1]}));

    window.table()->selectRow(2);
    EXPECT_EQ(models->preview().currentPath(), pictures[1]);

    QSignalSpy started(controller.get(), &AppController::processingChanged);
    child<QPushButton>(window, "inspectorProcess")->click();
    ASSERT_TRUE(waitForIdle());
    ASSERT_FALSE(started.isEmpty());
    EXPECT_TRUE(QFileInfo::exists(o("pic00.jpg")));
    // Converted in list order.
    const QString log = models->log().text();
    const qsizetype first = log.indexOf("'pic02.jpg'"), second = log.indexOf("'pic00.jpg'"),
                    third = log.indexOf("'pic01.jpg'");
    EXPECT_TRUE(first >= 0 && first < second && second < third) << log.toStdString();
}

TEST_F(InspectorWindowTest, TheColumnChooserAndTheHeaderShareOneLayoutKeptInTheStore) {
    const int iso = InspectorColumns::indexOf("iso");
    const int distance = InspectorColumns::indexOf("distance");
    {
        InspectorWindow window(models->inspector(), models->defaults());
        QHeaderView* header = window.table()->horizontalHeader();
        ASSERT_TRUE(header->isSectionHidden(distance));
        window.columnChooser()->box(distance)->click();
        EXPECT_FALSE(header->isSectionHidden(distance));
        // At the right end of the shown columns.
        EXPECT_EQ(header->visualIndex(distance), header->count() - header->hiddenSectionCount() - 1);
        window.columnChooser()->box(iso)->click();
        EXPECT_TRUE(header->isSectionHidden(iso));
        header->moveSection(header->visualIndex(distance), 0);
        header->resizeSection(distance, 140);
    }
    restart();
    InspectorWindow window(models->inspector(), models->defaults());
    QHeaderView* header = window.table()->horizontalHeader();
    EXPECT_EQ(header->visualIndex(distance), 0);
    EXPECT_EQ(header->sectionSize(distance), 140);
    EXPECT_TRUE(header->isSectionHidden(iso));
    window.columnChooser()->updateBoxes();
    EXPECT_FALSE(window.columnChooser()->box(iso)->isChecked());
    EXPECT_TRUE(window.columnChooser()->box(distance)->isChecked());
}

TEST_F(InspectorWindowTest, TheWindowMenuOpensItAndAStartReopensIt) {
    {
        MainWindow main(*controller, *models, sheets);
        QAction* action = main.findChild<QAction*>(QStringLiteral("actionInspector"));
        ASSERT_NE(action, nullptr);
        action->trigger();
        EXPECT_TRUE(main.inspector()->isVisible());
        EXPECT_TRUE(action->isChecked());
    }
    restart();
    MainWindow main(*controller, *models, sheets);
    EXPECT_TRUE(waitFor([&] { return main.inspector()->isVisible(); }, 2000));
}

} // namespace
