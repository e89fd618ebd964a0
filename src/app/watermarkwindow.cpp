#include "app/watermarkwindow.h"

#include "app/settingsmodel.h"
#include "app/views/colorwell.h"
#include "app/views/kvstepper.h"
#include "app/views/singledropview.h"
#include "settings/settingsschema.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace quillet {

namespace {

namespace K = ParamKey;

QComboBox* menuOf(const char* key, const QString& name) {
    auto* menu = new QComboBox;
    menu->setObjectName(name);
    if (const SettingKey* entry = SettingsSchema::find(QLatin1String(key)))
        for (const SettingChoice& choice : entry->choices)
            menu->addItem(QObject::tr(choice.displayName.toUtf8().constData()), choice.code);
    return menu;
}

// The positions, with "Nowhere" (code 0: the picture is not drawn) apart at
// the end, where it is not taken for a place on the picture.
QComboBox* locationMenu() {
    QComboBox* menu = menuOf(K::WatermarkLocation, QStringLiteral("watermarkLocation"));
    const int nowhere = menu->findData(0);
    if (nowhere < 0)
        return menu;
    const QString title = menu->itemText(nowhere);
    menu->removeItem(nowhere);
    menu->insertSeparator(menu->count());
    menu->addItem(title, 0);
    menu->setItemData(menu->count() - 1, QObject::tr("The picture watermark is not drawn."), Qt::ToolTipRole);
    return menu;
}

void selectCode(QComboBox* menu, int code) {
    const QSignalBlocker block(menu);
    menu->setCurrentIndex(menu->findData(code));
}

void setChecked(QCheckBox* box, bool on) {
    const QSignalBlocker block(box);
    box->setChecked(on);
}

} // namespace

WatermarkWindow::WatermarkWindow(SettingsModel& model, QWidget* parent) : QDialog(parent), m_model(model) {
    setObjectName(QStringLiteral("watermarkWindow"));
    setWindowTitle(tr("Watermarks"));
    build();
    refresh();
    connect(&m_model, &SettingsModel::changed, this, &WatermarkWindow::refresh);
}

void WatermarkWindow::build() {
    m_master = new QCheckBox(tr("Draw watermarks"));
    m_master->setObjectName(QStringLiteral("watermarkEnabled"));

    m_imageOn = new QCheckBox(tr("Picture"));
    m_imageOn->setObjectName(QStringLiteral("imageWatermarkEnabled"));
    m_view = new WatermarkView;
    m_view->setMinimumSize(128, 96);
    m_name = new QLineEdit;
    m_name->setObjectName(QStringLiteral("watermarkName"));
    m_name->setReadOnly(true);
    m_name->setAccessibleName(tr("Watermark file"));
    m_choose = new QPushButton(tr("Choose..."));
    m_choose->setObjectName(QStringLiteral("chooseWatermark"));
    m_clear = new QPushButton(tr("Clear"));
    m_clear->setObjectName(QStringLiteral("clearWatermark"));
    m_location = locationMenu();
    m_location->setAccessibleName(tr("Watermark position"));
    m_opacity = new KVStepper;
    m_opacity->setObjectName(QStringLiteral("watermarkOpacity"));
    m_opacity->setAccessibleName(tr("Watermark opacity"));
    m_opacity->setRange(0, 100);
    m_opacity->setSingleStep(10);
    m_opacity->setSuffix(tr(" %"));

    auto* picture = new QGroupBox;
    auto* pictureLayout = new QGridLayout(picture);
    pictureLayout->addWidget(m_imageOn, 0, 0, 1, 3);
    pictureLayout->addWidget(m_view, 1, 0, 4, 1);
    pictureLayout->addWidget(m_name, 1, 1, 1, 2);
    pictureLayout->addWidget(m_choose, 2, 1);
    pictureLayout->addWidget(m_clear, 2, 2);
    auto* placing = new QFormLayout;
    placing->addRow(tr("Position:"), m_location);
    placing->addRow(tr("Opacity:"), m_opacity);
    pictureLayout->addLayout(placing, 3, 1, 1, 2);

    m_textOn = new QCheckBox(tr("Picture details"));
    m_textOn->setObjectName(QStringLiteral("textWatermarkEnabled"));
    auto* fieldGrid = new QGridLayout;
    if (const SettingKey* entry = SettingsSchema::find(QLatin1String(K::DynWatermarkFields))) {
        for (const SettingChoice& choice : entry->choices) {
            auto* box = new QCheckBox(tr(choice.displayName.toUtf8().constData()));
            box->setObjectName(QStringLiteral("textField%1").arg(choice.code));
            box->setProperty("code", choice.code);
            fieldGrid->addWidget(box, int(m_fields.size()) / 3, int(m_fields.size()) % 3);
            m_fields.append(box);
        }
    }
    m_size = menuOf(K::DynWatermarkSize, QStringLiteral("textSize"));
    m_size->setAccessibleName(tr("Text size"));
    m_style = menuOf(K::DynWatermarkStyle, QStringLiteral("textStyle"));
    m_style->setAccessibleName(tr("Text style"));
    m_band = new ColorWell;
    m_band->setObjectName(QStringLiteral("textBackgroundColor"));
    m_band->setAccessibleName(tr("Band colour"));
    auto* text = new QGroupBox;
    auto* textLayout = new QVBoxLayout(text);
    textLayout->addWidget(m_textOn);
    textLayout->addLayout(fieldGrid);
    auto* looks = new QFormLayout;
    looks->addRow(tr("Size:"), m_size);
    looks->addRow(tr("Style:"), m_style);
    looks->addRow(tr("Band:"), m_band);
    textLayout->addLayout(looks);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_master);
    layout->addWidget(picture);
    layout->addWidget(text);

    SettingsModel& m = m_model;
    connect(m_master, &QCheckBox::toggled, &m, &SettingsModel::setWatermarkEnabled);
    connect(m_imageOn, &QCheckBox::toggled, &m, &SettingsModel::setImageWatermarkEnabled);
    connect(m_textOn, &QCheckBox::toggled, &m, &SettingsModel::setTextWatermarkEnabled);
    connect(m_view, &SingleDropView::dropped, this, &WatermarkWindow::takePicture);
    connect(m_choose, &QPushButton::clicked, this, &WatermarkWindow::choosePicture);
    connect(m_clear, &QPushButton::clicked, &m, &SettingsModel::removeWatermark);
    connect(m_location, &QComboBox::activated, this,
            [this](int index) { m_model.selectWatermarkLocation(m_location->itemData(index).toInt()); });
    connect(m_opacity, &QSpinBox::valueChanged, &m, &SettingsModel::setWatermarkOpacity);
    for (QCheckBox* box : m_fields)
        connect(box, &QCheckBox::toggled, this,
                [this, box](bool on) { m_model.setTextFieldTicked(box->property("code").toInt(), on); });
    connect(m_size, &QComboBox::activated, this,
            [this](int index) { m_model.selectTextSize(m_size->itemData(index).toInt()); });
    connect(m_style, &QComboBox::activated, this,
            [this](int index) { m_model.selectTextStyle(m_style->itemData(index).toInt()); });
    connect(m_band, &ColorWell::colorChosen, &m, &SettingsModel::setTextBackgroundColor);
    setToolTipsHidden(false);
}

void WatermarkWindow::setToolTipsHidden(bool hidden) {
    m_clear->setToolTip(hidden ? QString() : tr("Clear watermark."));
    m_opacity->setToolTip(hidden ? QString() : tr("Set watermark opacity. 0 - invisible; 100 - opaque"));
    // The view's own tip names the file, or says what to drop.
    if (hidden)
        m_view->setToolTip(QString());
    else
        m_view->setPath(m_view->path());
}

void WatermarkWindow::choosePicture() {
    const QString path = QFileDialog::getOpenFileName(
        this, tr("Choose a Watermark Picture"), QString(),
        tr("Pictures (*.png *.jpg *.jpeg *.tif *.tiff *.webp *.gif *.heic *.bmp);;All files (*)"));
    if (!path.isEmpty())
        takePicture(path);
}

void WatermarkWindow::takePicture(const QString& path) {
    if (!SettingsModel::loadsAsImage(path)) {
        QMessageBox::warning(this, tr("Not a Picture"),
                             tr("'%1' cannot be read as a picture.").arg(QFileInfo(path).fileName()));
        return;
    }
    m_model.setWatermarkImage(path);
}

void WatermarkWindow::refresh() {
    const SettingsModel& m = m_model;
    setChecked(m_master, m.watermarkEnabled());
    setChecked(m_imageOn, m.imageWatermarkEnabled());
    setChecked(m_textOn, m.textWatermarkEnabled());
    if (m_view->path() != m.watermarkPath())
        m_view->setPath(m.watermarkPath());
    m_name->setText(QFileInfo(m.watermarkPath()).fileName());
    m_name->setToolTip(m.watermarkPath());
    m_clear->setEnabled(m.canClearWatermark());
    selectCode(m_location, m.watermarkLocation());
    {
        const QSignalBlocker block(m_opacity);
        m_opacity->setValue(m.watermarkOpacity());
    }
    for (QCheckBox* box : m_fields)
        setChecked(box, m.textFieldTicked(box->property("code").toInt()));
    selectCode(m_size, m.textSize());
    selectCode(m_style, m.textStyle());
    m_band->setColor(m.textBackgroundColor());
}

} // namespace quillet
