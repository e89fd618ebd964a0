#include "app/widgets/settings/watermarkwindow.h"

#include "app/models/watermarkmodel.h"
#include "app/widgets/sheets/filechooser.h"
#include "app/widgets/sheets/sheets.h"
#include "app/widgets/views/colorwell.h"
#include "app/widgets/views/kvstepper.h"
#include "app/widgets/views/schemamenu.h"
#include "app/widgets/views/singledropview.h"
#include "settings/settingsschema.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace quillet {

namespace {

namespace K = ParamKey;

// The positions, with "Nowhere" (code 0: the picture is not drawn) apart at
// the end, where it is not taken for a place on the picture.
QComboBox* locationMenu() {
    QComboBox* menu = schemaMenu(K::WatermarkLocation, QStringLiteral("watermarkLocation"));
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

void setChecked(QCheckBox* box, bool on) {
    const QSignalBlocker block(box);
    box->setChecked(on);
}

} // namespace

WatermarkWindow::WatermarkWindow(WatermarkModel& model, Sheets& sheets, QWidget* parent)
    : QDialog(parent), m_model(model), m_sheets(sheets) {
    setObjectName(QStringLiteral("watermarkWindow"));
    setWindowTitle(tr("Watermarks"));
    build();
    refresh();
    connect(&m_model, &WatermarkModel::changed, this, &WatermarkWindow::refresh);
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
    m_size = schemaMenu(K::DynWatermarkSize, QStringLiteral("textSize"));
    m_size->setAccessibleName(tr("Text size"));
    m_style = schemaMenu(K::DynWatermarkStyle, QStringLiteral("textStyle"));
    m_style->setAccessibleName(tr("Text style"));
    m_band = new ColorWell(m_sheets);
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

    WatermarkModel& m = m_model;
    // Each control changes one member of the model's value.
    const auto edit = [&m](auto change) {
        return [&m, change](auto value) {
            WatermarkSettings next = m.value();
            change(next, value);
            m.edit(next);
        };
    };
    const auto code = [](QComboBox* menu, int index) { return menu->itemData(index).toInt(); };
    connect(m_master, &QCheckBox::toggled, this, edit([](WatermarkSettings& w, bool on) { w.enabled = on; }));
    connect(m_imageOn, &QCheckBox::toggled, this,
            edit([](WatermarkSettings& w, bool on) { w.image.enabled = on; }));
    connect(m_textOn, &QCheckBox::toggled, this,
            edit([](WatermarkSettings& w, bool on) { w.text.enabled = on; }));
    connect(m_view, &SingleDropView::dropped, this, &WatermarkWindow::takePicture);
    connect(m_choose, &QPushButton::clicked, this, &WatermarkWindow::choosePicture);
    connect(m_clear, &QPushButton::clicked, &m, &WatermarkModel::removePicture);
    connect(m_location, &QComboBox::activated, this, edit([this, code](WatermarkSettings& w, int index) {
                w.image.location = code(m_location, index);
            }));
    connect(m_opacity, &QSpinBox::valueChanged, this,
            edit([](WatermarkSettings& w, int percent) { w.image.opacity = percent; }));
    for (QCheckBox* box : m_fields)
        connect(box, &QCheckBox::toggled, this,
                [this, box](bool on) { m_model.setFieldTicked(box->property("code").toInt(), on); });
    connect(m_size, &QComboBox::activated, this,
            edit([this, code](WatermarkSettings& w, int index) { w.text.size = code(m_size, index); }));
    connect(m_style, &QComboBox::activated, this,
            edit([this, code](WatermarkSettings& w, int index) { w.text.style = code(m_style, index); }));
    connect(m_band, &ColorWell::colorChosen, this,
            edit([](WatermarkSettings& w, const RgbaColor& color) { w.text.background = color; }));
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
    if (const auto path = FileChooser::chooseWatermark(m_sheets, this))
        takePicture(*path);
}

void WatermarkWindow::takePicture(const QString& path) {
    if (!WatermarkModel::loadsAsImage(path)) {
        m_sheets.runMessageSheet(this, tr("Not a Picture"),
                                 tr("'%1' cannot be read as a picture.").arg(QFileInfo(path).fileName()));
        return;
    }
    m_model.setPicture(path);
}

void WatermarkWindow::refresh() {
    const WatermarkSettings& w = m_model.value();
    setChecked(m_master, w.enabled);
    setChecked(m_imageOn, w.image.enabled);
    setChecked(m_textOn, w.text.enabled);
    if (m_view->path() != w.image.path)
        m_view->setPath(w.image.path);
    m_name->setText(QFileInfo(w.image.path).fileName());
    m_name->setToolTip(w.image.path);
    m_clear->setEnabled(m_model.canRemovePicture());
    selectCode(m_location, w.image.location);
    {
        const QSignalBlocker block(m_opacity);
        m_opacity->setValue(w.image.opacity);
    }
    for (QCheckBox* box : m_fields)
        setChecked(box, m_model.fieldTicked(box->property("code").toInt()));
    selectCode(m_size, w.text.size);
    selectCode(m_style, w.text.style);
    m_band->setColor(w.text.background);
}

} // namespace quillet
