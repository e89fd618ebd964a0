#include "app/models/settingsmodel.h"
#include "app/widgets/settings/settingscontrols.h"
#include "app/widgets/sheets/sheets.h"
#include "app/widgets/views/imageandtext.h"
#include "app/widgets/views/kvstepper.h"
#include "app/widgets/views/singledropview.h"

#include <QCheckBox>
#include <QComboBox>
#include <QMimeData>
#include <QPushButton>
#include <QStackedWidget>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

void choose(QComboBox* menu, int code) {
    const int index = menu->findData(code);
    menu->setCurrentIndex(index);
    Q_EMIT menu->activated(index);
}

} // namespace

TEST(SettingsControls, ControlsShowTheModelAndForwardEdits) {
    SettingsModel model;
    Sheets sheets;
    SettingsControls controls(model, sheets, {QStringLiteral("72"), QStringLiteral("300")});
    auto* scaleType = controls.findChild<QComboBox*>(QStringLiteral("scaleType"));
    auto* width = controls.findChild<KVStepper*>(QStringLiteral("width"));
    auto* height = controls.findChild<KVStepper*>(QStringLiteral("height"));
    auto* pages = controls.findChild<QStackedWidget*>(QStringLiteral("sizePages"));
    ASSERT_TRUE(scaleType && width && height && pages);
    EXPECT_FALSE(width->isEnabled());
    EXPECT_EQ(width->text(), QStringLiteral(" ")); // an emptied field shows nothing

    choose(scaleType, ScaleType::ToWidth);
    EXPECT_TRUE(width->isEnabled());
    EXPECT_FALSE(height->isEnabled());
    EXPECT_EQ(width->value(), 480);
    EXPECT_EQ(pages->currentIndex(), 1);

    // Typing moves the model at once, each keystroke.
    width->selectAll();
    QTest::keyClicks(width, QStringLiteral("1024"));
    EXPECT_EQ(model.sizing().value().width, 1024);

    // The model drives the controls back: EXIF kept pins 72 dpi for JPEG only.
    EXPECT_FALSE(controls.findChild<QComboBox*>(QStringLiteral("resolution"))->isEnabled());
    ProcessingParams p = ProcessingParams::defaults();
    p.setInt(ParamKey::FileFormat, FileFormat::Png);
    p.setBool(ParamKey::PreserveTransparency, true);
    p.setInt(ParamKey::Resolution, 300);
    model.load(p);
    EXPECT_EQ(controls.findChild<QStackedWidget*>(QStringLiteral("formatPages"))->currentIndex(), 1);
    EXPECT_FALSE(controls.findChild<QWidget*>(QStringLiteral("backgroundColor"))->isEnabled());
    EXPECT_TRUE(controls.findChild<QComboBox*>(QStringLiteral("resolution"))->isEnabled());
    EXPECT_EQ(controls.findChild<QComboBox*>(QStringLiteral("resolution"))->currentText(),
              QStringLiteral("300"));
    controls.findChild<QCheckBox*>(QStringLiteral("preserveTransparency"))->click();
    EXPECT_TRUE(controls.findChild<QWidget*>(QStringLiteral("backgroundColor"))->isEnabled());

    controls.setToolTipsHidden(true);
    EXPECT_TRUE(width->toolTip().isEmpty());
    controls.setToolTipsHidden(false);
    EXPECT_EQ(width->toolTip(), QStringLiteral("Width in pixels."));
}

TEST(KVStepper, ArrowStepsLandOnMultiples) {
    KVStepper stepper;
    stepper.setRange(0, 100);
    stepper.setSingleStep(10);
    stepper.setValue(25);
    stepper.stepBy(1);
    EXPECT_EQ(stepper.value(), 30);
    stepper.setValue(25);
    stepper.stepBy(-1);
    EXPECT_EQ(stepper.value(), 20);
    stepper.stepBy(-1);
    EXPECT_EQ(stepper.value(), 10);
}

TEST(SingleDropView, TakesExactlyOneFileThatPassesItsTest) {
    QTemporaryDir dir;
    FolderView view;
    QMimeData one;
    one.setUrls({QUrl::fromLocalFile(dir.path())});
    EXPECT_EQ(SingleDropView::singleLocalPath(&one), dir.path());
    EXPECT_TRUE(view.accepts(dir.path()));
    QMimeData two;
    two.setUrls({QUrl::fromLocalFile(dir.path()), QUrl::fromLocalFile(dir.path())});
    EXPECT_TRUE(SingleDropView::singleLocalPath(&two).isEmpty());
    QMimeData remote;
    remote.setUrls({QUrl(QStringLiteral("https://example.org/a.jpg"))});
    EXPECT_TRUE(SingleDropView::singleLocalPath(&remote).isEmpty());
    WatermarkView watermark;
    EXPECT_FALSE(watermark.accepts(dir.path()));
    EXPECT_EQ(watermark.toolTip(), QStringLiteral("Drop watermark file here."));
}

TEST(ImageAndTextDelegate, PictureSitsThreeInAndCentredWithTheTextBesideIt) {
    const QRect cell(10, 20, 200, 40);
    EXPECT_EQ(ImageAndTextDelegate::imageRect(cell, QSize(32, 32)), QRect(13, 24, 32, 32));
    EXPECT_EQ(ImageAndTextDelegate::imageRect(cell, QSize(32, 31)).top(), 25); // odd offset rounds up
    EXPECT_EQ(ImageAndTextDelegate::textRect(cell, QSize(32, 32)), QRect(45, 20, 165, 40));
    EXPECT_TRUE(ImageAndTextDelegate::imageRect(cell, QSize()).isNull());
    EXPECT_EQ(ImageAndTextDelegate::textRect(cell, QSize()), cell);
}

namespace {

// What every control of the panel shows, by object name.
QStringList shown(const SettingsControls& controls) {
    QStringList states;
    for (const QComboBox* menu : controls.findChildren<QComboBox*>())
        states
            << QStringLiteral("%1=%2/%3").arg(menu->objectName(), menu->currentText()).arg(menu->isEnabled());
    for (const KVStepper* field : controls.findChildren<KVStepper*>())
        states << QStringLiteral("%1=%2/%3").arg(field->objectName(), field->text()).arg(field->isEnabled());
    for (const QCheckBox* box : controls.findChildren<QCheckBox*>())
        states
            << QStringLiteral("%1=%2/%3").arg(box->objectName()).arg(box->isChecked()).arg(box->isEnabled());
    for (const QStackedWidget* pages : controls.findChildren<QStackedWidget*>())
        states << QStringLiteral("%1=%2").arg(pages->objectName()).arg(pages->currentIndex());
    return states;
}

} // namespace

TEST(SettingsControls, RecordFromTheControlsLoadsBackIntoTheSameControls) {
    const QStringList resolutions{QStringLiteral("72"), QStringLiteral("300")};
    for (const int mode : {ScaleType::ToHeight, ScaleType::Crop, ScaleType::Percent}) {
        SCOPED_TRACE(mode);
        SettingsModel model;
        Sheets sheets;
        SettingsControls controls(model, sheets, resolutions);
        choose(controls.findChild<QComboBox*>(QStringLiteral("scaleType")), mode);
        choose(controls.findChild<QComboBox*>(QStringLiteral("rotation")), Rotation::HalfTurn);
        choose(controls.findChild<QComboBox*>(QStringLiteral("fileFormat")), FileFormat::Jpeg);
        controls.findChild<KVStepper*>(QStringLiteral("height"))->setValue(333);
        controls.findChild<QCheckBox*>(QStringLiteral("hasSizeLimit"))->click();
        controls.findChild<KVStepper*>(QStringLiteral("sizeLimit"))->setValue(250);
        controls.findChild<QCheckBox*>(QStringLiteral("preserveHeader"))->click();
        controls.findChild<QComboBox*>(QStringLiteral("resolution"))->setEditText(QStringLiteral("144"));
        controls.findChild<QCheckBox*>(QStringLiteral("convertToSrgb"))->click();
        choose(controls.findChild<QComboBox*>(QStringLiteral("metadataPolicy")),
               int(MetadataPolicy::Minimal));
        const ProcessingParams record = model.record();
        EXPECT_EQ(record.intValue(ParamKey::Resolution), 144);
        EXPECT_EQ(record.intValue(ParamKey::MetadataPolicy), int(MetadataPolicy::Minimal));

        SettingsModel other;
        SettingsControls again(other, sheets, resolutions);
        other.load(record);
        EXPECT_EQ(shown(again), shown(controls));
        EXPECT_TRUE(other.record() == record);
    }
}

// The background well asks through the window's sheets: a chosen colour
// reaches the model, a cancelled chooser changes nothing.
TEST(SettingsControls, BackgroundWellAsksThroughTheSheets) {
    SettingsModel model;
    Sheets sheets;
    SettingsControls controls(model, sheets, {QStringLiteral("72")});
    auto* well = controls.findChild<QPushButton*>(QStringLiteral("backgroundColor"));
    ASSERT_TRUE(well);
    QStringList asked;
    QObject::connect(&sheets, &Sheets::sheetShown,
                     [&](const QString& title, const QString& start) { asked << title << start; });
    sheets.setNextAnswer(1, QStringLiteral("#8000ff00"));
    well->click();
    EXPECT_EQ(asked, (QStringList{well->accessibleName(), QStringLiteral("#ffffffff")}));
    const RgbaColor chosen = model.output().value().background;
    EXPECT_DOUBLE_EQ(chosen.green, 1.0);
    EXPECT_DOUBLE_EQ(chosen.red, 0.0);
    EXPECT_NEAR(chosen.alpha, 0.5, 0.01);
    sheets.setNextAnswer(0, QStringLiteral("#ffff0000"));
    well->click();
    EXPECT_EQ(model.output().value().background, chosen);
}

// WebP, AVIF and JPEG XL share the quality page with boxes of their own; a
// format this system cannot write stays in the menu, disabled, saying why.
TEST(SettingsControls, ModernFormatsShowTheirBoxesAndUnwritableOnesSayWhy) {
    SettingsModel model;
    Sheets sheets;
    SettingsControls controls(model, sheets, {QStringLiteral("72")});
    auto* format = controls.findChild<QComboBox*>(QStringLiteral("fileFormat"));
    auto* lossless = controls.findChild<QCheckBox*>(QStringLiteral("lossless"));
    auto* quality = controls.findChild<KVStepper*>(QStringLiteral("jpegQuality"));
    ASSERT_TRUE(format && lossless && quality);
    const auto* items = qobject_cast<const QStandardItemModel*>(format->model());
    for (const int code : {FileFormat::WebP, FileFormat::Avif, FileFormat::JpegXl}) {
        const int index = format->findData(code);
        ASSERT_GE(index, 0) << code;
        EXPECT_EQ(items->item(index)->isEnabled(),
                  format->itemData(index, Qt::ToolTipRole).toString().isEmpty())
            << code;
    }
    EXPECT_TRUE(lossless->isHidden());
    choose(format, FileFormat::WebP);
    EXPECT_EQ(controls.findChild<QStackedWidget*>(QStringLiteral("formatPages"))->currentIndex(), 0);
    EXPECT_FALSE(lossless->isHidden());
    lossless->click();
    EXPECT_TRUE(model.record().boolValue(ParamKey::LosslessOutput));
    EXPECT_FALSE(quality->isEnabled()); // lossless has no quality
    choose(format, FileFormat::Avif);
    EXPECT_FALSE(lossless->isEnabled());
    EXPECT_TRUE(quality->isEnabled());
    controls.findChild<QCheckBox*>(QStringLiteral("modernTransparency"))->click();
    EXPECT_TRUE(model.record().boolValue(ParamKey::PreserveTransparency));
    auto* fast = controls.findChild<QCheckBox*>(QStringLiteral("fastEncoding"));
    ASSERT_TRUE(fast);
    EXPECT_FALSE(fast->isHidden());
    fast->click();
    EXPECT_TRUE(model.record().boolValue(ParamKey::FastEncoding));
    choose(format, FileFormat::Jpeg);
    EXPECT_TRUE(fast->isHidden());
}
