#include "app/widgets/settings/settingscontrols.h"

#include "app/models/settingsmodel.h"
#include "app/widgets/views/colorwell.h"
#include "app/widgets/views/disclosurecontroller.h"
#include "app/widgets/views/kvstepper.h"
#include "app/widgets/views/schemamenu.h"
#include "engine/pipeline/modernencoder.h"
#include "settings/settingsschema.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QStandardItemModel>
#include <QToolButton>
#include <QVBoxLayout>

namespace quillet {

namespace {

namespace K = ParamKey;

// A number field; an empty field (a disabled one) holds 0, shown as nothing.
KVStepper* numberField(const char* key, const QString& name, int step, const QString& suffix = {}) {
    auto* field = new KVStepper;
    field->setObjectName(name);
    const SettingKey* entry = SettingsSchema::find(QLatin1String(key));
    field->setRange(entry ? qMax(entry->min, 0) : 0, entry ? qMin(entry->max, 1000000) : 1000000);
    field->setSingleStep(step);
    field->setSpecialValueText(QStringLiteral(" "));
    field->setSuffix(suffix);
    return field;
}

// Formats this system has no working encoder for stay in the menu, disabled,
// with the reason as their tool tip.
void disableUnwritableFormats(QComboBox* menu) {
    auto* items = qobject_cast<QStandardItemModel*>(menu->model());
    for (int i = 0; items && i < menu->count(); ++i) {
        const int format = menu->itemData(i).toInt();
        if (!FileFormat::isModern(format))
            continue;
        const QString reason = ModernEncoder::unavailableReason(format);
        if (reason.isEmpty())
            continue;
        items->item(i)->setEnabled(false);
        menu->setItemData(i, reason, Qt::ToolTipRole);
    }
}

void display(KVStepper* field, int value, bool enabled) {
    const QSignalBlocker block(field);
    field->setEnabled(enabled);
    field->setValue(value);
}

void display(QCheckBox* box, bool on, bool enabled = true) {
    const QSignalBlocker block(box);
    box->setChecked(on);
    box->setEnabled(enabled);
}

// A stacked widget as tall as its page on show, not as its tallest page.
void showPage(QStackedWidget* pages, int index) {
    for (int i = 0; i < pages->count(); ++i)
        pages->widget(i)->setSizePolicy(QSizePolicy::Preferred,
                                        i == index ? QSizePolicy::Preferred : QSizePolicy::Ignored);
    pages->setCurrentIndex(index);
    pages->adjustSize();
}

QWidget* row(std::initializer_list<QWidget*> widgets) {
    auto* holder = new QWidget;
    auto* layout = new QHBoxLayout(holder);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QWidget* widget : widgets)
        layout->addWidget(widget);
    layout->addStretch(1);
    return holder;
}

// The pages sit in forms of their own; one label width for all of them keeps
// every field in one column.
void alignLabels(QWidget* top) {
    QList<QWidget*> labels;
    int width = 0;
    for (QFormLayout* form : top->findChildren<QFormLayout*>()) {
        for (int row = 0; row < form->rowCount(); ++row) {
            QLayoutItem* item = form->itemAt(row, QFormLayout::LabelRole);
            if (!item || !item->widget())
                continue;
            labels.append(item->widget());
            width = qMax(width, item->widget()->sizeHint().width());
        }
    }
    for (QWidget* label : labels)
        label->setMinimumWidth(width);
}

} // namespace

SettingsControls::SettingsControls(SettingsModel& model, Sheets& sheets, const QStringList& resolutionSet,
                                   QWidget* parent)
    : QWidget(parent), m_model(model) {
    setObjectName(QStringLiteral("settingsControls"));
    build(sheets, resolutionSet);
    connectControls();
    refresh();
    connect(&m_model, &SettingsModel::changed, this, &SettingsControls::refresh);
}

void SettingsControls::build(Sheets& sheets, const QStringList& resolutionSet) {
    m_rotation = schemaMenu(K::Rotation, QStringLiteral("rotation"));
    m_scaleType = schemaMenu(K::ScaleType, QStringLiteral("scaleType"));
    m_width = numberField(K::Width, QStringLiteral("width"), 1, tr(" px"));
    m_height = numberField(K::Height, QStringLiteral("height"), 1, tr(" px"));
    m_crop = numberField(K::CropAreaPercentage, QStringLiteral("cropArea"), 5, tr(" %"));
    m_flip = new QCheckBox(tr("Flip for portrait pictures"));
    m_flip->setObjectName(QStringLiteral("flipRatio"));
    m_percent = numberField(K::ScalePercent, QStringLiteral("scalePercent"), 10, tr(" %"));
    m_downOnly = new QCheckBox(tr("Only scale down"));
    m_downOnly->setObjectName(QStringLiteral("scaleDownOnly"));
    m_interpolation = schemaMenu(K::ScaleQuality, QStringLiteral("scaleQuality"));

    auto* nonePage = new QLabel(tr("Pictures keep their size."));
    auto* sizesPage = new QWidget;
    auto* sizes = new QFormLayout(sizesPage);
    sizes->setContentsMargins(0, 0, 0, 0);
    sizes->addRow(tr("Width:"), m_width);
    sizes->addRow(tr("Height:"), m_height);
    sizes->addRow(tr("Crop area:"), m_crop);
    sizes->addRow(QString(), m_flip);
    auto* percentPage = new QWidget;
    auto* percent = new QFormLayout(percentPage);
    percent->setContentsMargins(0, 0, 0, 0);
    percent->addRow(tr("Scale:"), m_percent);
    m_sizePages = new QStackedWidget;
    m_sizePages->setObjectName(QStringLiteral("sizePages"));
    m_sizePages->addWidget(nonePage);
    m_sizePages->addWidget(sizesPage);
    m_sizePages->addWidget(percentPage);

    // The sizing fields fold away under the sizing mode.
    auto* geometry = new QGroupBox(tr("Rotation and size"));
    auto* scalingTop = new QWidget;
    auto* topForm = new QFormLayout(scalingTop);
    topForm->setContentsMargins(0, 0, 0, 0);
    auto* disclose = new QToolButton;
    disclose->setObjectName(QStringLiteral("scalingDisclosure"));
    topForm->addRow(tr("Rotate:"), m_rotation);
    auto* sizeRow = new QHBoxLayout;
    sizeRow->addWidget(m_scaleType, 1);
    sizeRow->addWidget(disclose);
    topForm->addRow(tr("Size:"), sizeRow);
    auto* scalingBottom = new QWidget;
    scalingBottom->setObjectName(QStringLiteral("scalingOptions"));
    auto* bottomForm = new QFormLayout(scalingBottom);
    bottomForm->setContentsMargins(0, 0, 0, 0);
    bottomForm->addRow(m_sizePages);
    bottomForm->addRow(QString(), m_downOnly);
    bottomForm->addRow(tr("Interpolation:"), m_interpolation);
    auto* geometryLayout = new QVBoxLayout(geometry);
    geometryLayout->addWidget(scalingTop);
    geometryLayout->addWidget(scalingBottom);
    m_scalingDisclosure = new DisclosureController(disclose, scalingBottom, this);

    m_format = schemaMenu(K::FileFormat, QStringLiteral("fileFormat"));
    disableUnwritableFormats(m_format);
    m_quality = numberField(K::JpegQuality, QStringLiteral("jpegQuality"), 5);
    m_quality->setSpecialValueText(QString());
    m_sizeLimitOn = new QCheckBox(tr("Limit file size to"));
    m_sizeLimitOn->setObjectName(QStringLiteral("hasSizeLimit"));
    m_sizeLimit = numberField(K::SizeLimit, QStringLiteral("sizeLimit"), 10, tr(" KB"));
    m_preserveHeader = new QCheckBox(tr("Keep EXIF data"));
    m_preserveHeader->setObjectName(QStringLiteral("preserveHeader"));
    m_metadata = schemaMenu(K::MetadataPolicy, QStringLiteral("metadataPolicy"));
    auto* jpegPage = new QWidget;
    auto* jpeg = new QFormLayout(jpegPage);
    jpeg->setContentsMargins(0, 0, 0, 0);
    jpeg->addRow(tr("Quality:"), m_quality);
    jpeg->addRow(QString(), row({m_sizeLimitOn, m_sizeLimit}));
    m_shrinkToFit = new QCheckBox(tr("Make the picture smaller when needed"));
    m_shrinkToFit->setObjectName(QStringLiteral("shrinkToFit"));
    jpeg->addRow(QString(), m_shrinkToFit);
    jpeg->addRow(QString(), row({m_preserveHeader, m_metadata}));
    m_lossless = new QCheckBox(tr("Lossless"));
    m_lossless->setObjectName(QStringLiteral("lossless"));
    m_keepsAlpha = new QCheckBox(tr("Keep transparency"));
    m_keepsAlpha->setObjectName(QStringLiteral("modernTransparency"));
    m_fastEncoding = new QCheckBox(tr("Fast encoding"));
    m_fastEncoding->setObjectName(QStringLiteral("fastEncoding"));
    m_fastEncoding->setToolTip(tr("Encodes several times faster, for files up to a tenth larger at the "
                                  "same quality"));
    jpeg->addRow(QString(), row({m_lossless, m_keepsAlpha, m_fastEncoding}));
    m_preserveTransparency = new QCheckBox(tr("Keep transparency"));
    m_preserveTransparency->setObjectName(QStringLiteral("preserveTransparency"));
    auto* transparencyPage = new QWidget;
    auto* transparency = new QFormLayout(transparencyPage);
    transparency->setContentsMargins(0, 0, 0, 0);
    // A label of its own, or the box would start in the label column.
    transparency->addRow(new QLabel, m_preserveTransparency);
    m_formatPages = new QStackedWidget;
    m_formatPages->setObjectName(QStringLiteral("formatPages"));
    m_formatPages->addWidget(jpegPage);
    m_formatPages->addWidget(transparencyPage);

    m_resolution = new QComboBox;
    m_resolution->setObjectName(QStringLiteral("resolution"));
    m_resolution->setEditable(true);
    m_resolution->addItems(resolutionSet);
    m_resolution->setValidator(new QIntValidator(0, 100000, m_resolution));
    m_resolution->setInsertPolicy(QComboBox::NoInsert);
    m_convertToSrgb = new QCheckBox(tr("Convert to sRGB"));
    m_convertToSrgb->setObjectName(QStringLiteral("convertToSrgb"));
    m_background = new ColorWell(sheets);
    m_background->setObjectName(QStringLiteral("backgroundColor"));

    auto* output = new QGroupBox(tr("Output"));
    auto* outputForm = new QFormLayout(output);
    outputForm->addRow(tr("Format:"), m_format);
    outputForm->addRow(m_formatPages);
    outputForm->addRow(tr("Resolution:"), row({m_resolution, new QLabel(tr("dpi"))}));
    outputForm->addRow(tr("Background:"), m_background);
    outputForm->addRow(QString(), m_convertToSrgb);
    m_keepSmaller = new QCheckBox(tr("Keep the original when the output would be larger"));
    m_keepSmaller->setObjectName(QStringLiteral("keepSmallerOriginal"));
    outputForm->addRow(QString(), m_keepSmaller);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(geometry);
    layout->addWidget(output);
    layout->addStretch(1);
    alignLabels(this);

    // Accessible names for the controls whose label is a form row's.
    const std::pair<QWidget*, QString> names[] = {{m_rotation, tr("Rotation")},
                                                  {m_scaleType, tr("Sizing mode")},
                                                  {m_width, tr("Width")},
                                                  {m_height, tr("Height")},
                                                  {m_crop, tr("Crop area")},
                                                  {m_percent, tr("Scale percentage")},
                                                  {m_interpolation, tr("Interpolation")},
                                                  {m_format, tr("Output format")},
                                                  {m_metadata, tr("Metadata to keep")},
                                                  {m_quality, tr("JPEG quality")},
                                                  {m_sizeLimit, tr("File size limit")},
                                                  {m_resolution, tr("Resolution")},
                                                  {m_background, tr("Background colour")}};
    for (const auto& [widget, name] : names)
        widget->setAccessibleName(name);
    m_toolTips = {
        {m_width, tr("Width in pixels.")},
        {m_height, tr("Height in pixels.")},
        {m_crop, tr("Set to 100 to get the biggest possible crop with the specified aspect ratio.")},
        {m_flip, tr("If checked, the aspect ratio is flipped for portrait input image.")},
        {m_downOnly, tr("If unchecked, images will be scaled up if needed.")},
        {m_resolution, tr("Resolution in dpi (72 dpi is a common default).")},
        {m_metadata, tr("What the output keeps of the picture's metadata. Without location: no GPS,\n"
                        "serial numbers or owner. Only orientation, date, copyright and profile.\n"
                        "Nothing at all: the colours are converted to sRGB first.")},
        {m_shrinkToFit, tr("When even the lowest quality is over the size limit, the picture is\nscaled down "
                           "until it fits.")},
        {m_background, tr("This color shows through the transparent area (no effect\non input images with no "
                          "transparent area).")},
    };
    setToolTipsHidden(false);
}

void SettingsControls::setToolTipsHidden(bool hidden) {
    for (const auto& [widget, tip] : m_toolTips)
        widget->setToolTip(hidden ? QString() : tip);
}

void SettingsControls::showFormatMenu() {
    m_format->setFocus();
    m_format->showPopup();
}

void SettingsControls::showMetadataMenu() {
    m_metadata->setFocus();
    m_metadata->showPopup();
}

void SettingsControls::connectControls() {
    SizingModel& sizing = m_model.sizing();
    OutputModel& output = m_model.output();
    const auto code = [](QComboBox* menu, int index) { return menu->itemData(index).toInt(); };
    // Each control changes one member of its model's value.
    const auto editSizing = [&sizing](auto change) {
        return [&sizing, change](auto value) {
            Sizing next = sizing.value();
            change(next, value);
            sizing.edit(next);
        };
    };
    const auto editOutput = [&output](auto change) {
        return [&output, change](auto value) {
            OutputSettings next = output.value();
            change(next, value);
            output.edit(next);
        };
    };
    connect(m_rotation, &QComboBox::activated, this, [this, &sizing, code](int index) {
        sizing.setRotation(code(m_rotation, index));
        if (sizing.rotation() == Rotation::Automatic)
            Q_EMIT automaticRotationChosen();
    });
    connect(m_scaleType, &QComboBox::activated, this,
            [this, &sizing, code](int index) { sizing.chooseMode(code(m_scaleType, index)); });
    connect(m_interpolation, &QComboBox::activated, this, editSizing([this, code](Sizing& s, int index) {
                s.interpolation = code(m_interpolation, index);
            }));
    connect(m_width, &QSpinBox::valueChanged, this, editSizing([](Sizing& s, int v) { s.width = v; }));
    connect(m_height, &QSpinBox::valueChanged, this, editSizing([](Sizing& s, int v) { s.height = v; }));
    connect(m_crop, &QSpinBox::valueChanged, this,
            editSizing([](Sizing& s, int v) { s.cropAreaPercentage = v; }));
    connect(m_percent, &QSpinBox::valueChanged, this, editSizing([](Sizing& s, int v) { s.percent = v; }));
    connect(m_flip, &QCheckBox::toggled, this,
            editSizing([](Sizing& s, bool on) { s.flipForPortrait = on; }));
    connect(m_downOnly, &QCheckBox::toggled, this, editSizing([](Sizing& s, bool on) { s.downOnly = on; }));

    connect(m_format, &QComboBox::activated, this,
            editOutput([this, code](OutputSettings& o, int index) { o.format = code(m_format, index); }));
    connect(m_quality, &QSpinBox::valueChanged, this,
            editOutput([](OutputSettings& o, int v) { o.jpegQuality = v; }));
    connect(m_sizeLimit, &QSpinBox::valueChanged, this,
            editOutput([](OutputSettings& o, int v) { o.sizeLimit = v; }));
    connect(m_sizeLimitOn, &QCheckBox::toggled, this,
            editOutput([](OutputSettings& o, bool on) { o.hasSizeLimit = on; }));
    connect(m_preserveHeader, &QCheckBox::toggled, this,
            editOutput([](OutputSettings& o, bool on) { o.preserveHeader = on; }));
    connect(m_metadata, &QComboBox::activated, this, editOutput([this, code](OutputSettings& o, int index) {
                o.metadata = metadataPolicyFromCode(code(m_metadata, index));
            }));
    connect(m_convertToSrgb, &QCheckBox::toggled, this,
            editOutput([](OutputSettings& o, bool on) { o.convertToSrgb = on; }));
    connect(m_preserveTransparency, &QCheckBox::toggled, this,
            editOutput([](OutputSettings& o, bool on) { o.preserveTransparency = on; }));
    connect(m_keepsAlpha, &QCheckBox::toggled, this,
            editOutput([](OutputSettings& o, bool on) { o.preserveTransparency = on; }));
    connect(m_keepSmaller, &QCheckBox::toggled, this,
            editOutput([](OutputSettings& o, bool on) { o.keepSmallerOriginal = on; }));
    connect(m_shrinkToFit, &QCheckBox::toggled, this,
            editOutput([](OutputSettings& o, bool on) { o.shrinkToFit = on; }));
    connect(m_lossless, &QCheckBox::toggled, this,
            editOutput([](OutputSettings& o, bool on) { o.lossless = on; }));
    connect(m_fastEncoding, &QCheckBox::toggled, this,
            editOutput([](OutputSettings& o, bool on) { o.fastEncoding = on; }));
    connect(m_background, &ColorWell::colorChosen, this,
            editOutput([](OutputSettings& o, const RgbaColor& c) { o.background = c; }));
    connect(m_resolution, &QComboBox::currentTextChanged, this,
            editOutput([](OutputSettings& o, const QString& text) {
                bool ok = false;
                const int dpi = text.toInt(&ok);
                o.resolution = ok ? dpi : 0;
            }));
}

void SettingsControls::refresh() {
    const SizingModel& sizing = m_model.sizing();
    const Sizing& s = sizing.value();
    selectCode(m_rotation, sizing.rotation());
    selectCode(m_scaleType, s.scaleType);
    showPage(m_sizePages, int(sizing.page()));
    display(m_width, s.width, sizing.widthEnabled());
    display(m_height, s.height, sizing.heightEnabled());
    display(m_crop, s.cropAreaPercentage, sizing.cropEnabled());
    display(m_percent, s.percent, true);
    display(m_flip, s.flipForPortrait, sizing.flipEnabled());
    display(m_downOnly, s.downOnly, sizing.downOnlyEnabled());
    selectCode(m_interpolation, s.interpolation);

    const OutputModel& output = m_model.output();
    const OutputSettings& o = output.value();
    selectCode(m_format, o.format);
    showPage(m_formatPages, output.page() == OutputModel::Page::Jpeg ? 0 : 1);
    display(m_quality, o.jpegQuality, true);
    display(m_sizeLimitOn, o.hasSizeLimit);
    display(m_sizeLimit, o.sizeLimit, output.sizeLimitEnabled());
    display(m_shrinkToFit, o.shrinkToFit, output.sizeLimitEnabled());
    display(m_preserveHeader, o.preserveHeader);
    selectCode(m_metadata, int(o.metadata));
    display(m_preserveTransparency, o.preserveTransparency);
    display(m_keepsAlpha, o.preserveTransparency);
    display(m_lossless, o.lossless, FileFormat::hasLossless(o.format));
    m_keepsAlpha->setVisible(FileFormat::isModern(o.format));
    m_lossless->setVisible(FileFormat::isModern(o.format));
    display(m_fastEncoding, o.fastEncoding);
    m_fastEncoding->setVisible(FileFormat::isModern(o.format));
    // Lossless leaves the quality unused.
    m_quality->setEnabled(!o.writesLossless());
    display(m_convertToSrgb, o.convertToSrgb);
    display(m_keepSmaller, o.keepSmallerOriginal);
    {
        const QSignalBlocker block(m_resolution);
        const QString dpi = QString::number(o.resolution);
        if (m_resolution->currentText() != dpi)
            m_resolution->setEditText(dpi);
        m_resolution->setEnabled(output.resolutionEnabled());
    }
    m_background->setColor(o.background);
    m_background->setEnabled(output.backgroundEnabled());
}

} // namespace quillet
