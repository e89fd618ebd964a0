#include "app/models/watermarkmodel.h"
#include "app/widgets/settings/watermarkwindow.h"
#include "app/widgets/sheets/sheets.h"
#include "testsupport.h"

#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

// The watermark window on its own model, with every question recorded.
class WatermarkWindowTest : public ::testing::Test {
  protected:
    void SetUp() override {
        QObject::connect(&sheets, &Sheets::sheetShown,
                         [this](const QString& title, const QString&) { asked.append(title); });
    }
    template <class T> T* child(const char* name) { return window.findChild<T*>(QLatin1String(name)); }

    WatermarkModel model;
    Sheets sheets;
    WatermarkWindow window{model, sheets};
    QStringList asked;
    QTemporaryDir dir;
};

} // namespace

TEST_F(WatermarkWindowTest, ChosenPictureIsTakenAndAFileThatIsNoPictureIsRefused) {
    const QString mark = dir.filePath(QStringLiteral("mark.png"));
    testsupport::solidImage(8, 8, 1, 2, 3).write_to_file(mark.toUtf8().constData());
    sheets.setNextAnswer(1, mark);
    child<QPushButton>("chooseWatermark")->click();
    EXPECT_EQ(asked, QStringList{QStringLiteral("Choose a Watermark Picture")});
    EXPECT_EQ(model.value().image.path, mark);
    EXPECT_TRUE(model.value().enabled);
    EXPECT_EQ(child<QLineEdit>("watermarkName")->text(), QStringLiteral("mark.png"));

    // A text file: the picture stays, and the user is told why.
    const QString text = dir.filePath(QStringLiteral("notes.png"));
    QFile file(text);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("not a picture");
    file.close();
    sheets.setNextAnswer(1, text);
    sheets.setNextAnswer(1); // "Okay"
    child<QPushButton>("chooseWatermark")->click();
    EXPECT_EQ(asked.value(1), QStringLiteral("Choose a Watermark Picture"));
    EXPECT_EQ(asked.value(2), QStringLiteral("Not a Picture"));
    EXPECT_EQ(model.value().image.path, mark);

    // Cancelled: nothing asked after the chooser, nothing changed.
    sheets.setNextAnswer(0);
    child<QPushButton>("chooseWatermark")->click();
    EXPECT_EQ(asked.size(), 4);
    EXPECT_EQ(model.value().image.path, mark);
}

TEST_F(WatermarkWindowTest, BandColourIsAskedThroughTheSheets) {
    auto* band = child<QPushButton>("textBackgroundColor");
    ASSERT_TRUE(band);
    sheets.setNextAnswer(1, QStringLiteral("#66000000"));
    band->click();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(model.value().text.background.red, 0.0);
    EXPECT_NEAR(model.value().text.background.alpha, 0.4, 0.01);
}
