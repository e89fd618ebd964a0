#pragma once

#include <QWidget>

class QCheckBox;
class QComboBox;
class QStackedWidget;

namespace quillet {

class ColorWell;
class DisclosureController;
class KVStepper;
class SettingsModel;
class Sheets;

// The settings controls of the main window: rotation, the sizing mode with
// its fields, interpolation, output format with its page (quality, size
// limit and EXIF for JPEG; transparency for PNG and TIFF), resolution and
// background. It only shows the model and forwards edits to it; the menus'
// items and the fields' ranges come from the settings schema.
class SettingsControls : public QWidget {
    Q_OBJECT

  public:
    SettingsControls(SettingsModel& model, Sheets& sheets, const QStringList& resolutionSet,
                     QWidget* parent = nullptr);

    // Removes or restores the controls' tool tips ("HideToolTips").
    void setToolTipsHidden(bool hidden);
    // Opens the output format menu, as a click on it does.
    void showFormatMenu();
    // Folds the sizing fields away under the sizing mode, and back.
    DisclosureController* scalingDisclosure() const { return m_scalingDisclosure; }
    // Opens the menu of what the output keeps of the metadata.
    void showMetadataMenu();

  Q_SIGNALS:
    // The user chose automatic rotation from the menu (the hint may follow).
    void automaticRotationChosen();

  private:
    void build(Sheets& sheets, const QStringList& resolutionSet);
    void connectControls();
    void refresh();

    SettingsModel& m_model;
    QComboBox* m_rotation = nullptr;
    QComboBox* m_scaleType = nullptr;
    QStackedWidget* m_sizePages = nullptr;
    KVStepper* m_width = nullptr;
    KVStepper* m_height = nullptr;
    KVStepper* m_crop = nullptr;
    QCheckBox* m_flip = nullptr;
    KVStepper* m_percent = nullptr;
    QCheckBox* m_downOnly = nullptr;
    QComboBox* m_interpolation = nullptr;
    DisclosureController* m_scalingDisclosure = nullptr;
    QComboBox* m_format = nullptr;
    QStackedWidget* m_formatPages = nullptr;
    KVStepper* m_quality = nullptr;
    QCheckBox* m_sizeLimitOn = nullptr;
    KVStepper* m_sizeLimit = nullptr;
    QCheckBox* m_preserveHeader = nullptr;
    QComboBox* m_metadata = nullptr; // what of the input's metadata the output keeps
    QCheckBox* m_convertToSrgb = nullptr;
    QCheckBox* m_preserveTransparency = nullptr;
    // WebP, AVIF and JPEG XL share the JPEG page, with these two boxes shown.
    QCheckBox* m_lossless = nullptr;
    QCheckBox* m_fastEncoding = nullptr;
    QCheckBox* m_shrinkToFit = nullptr;
    QCheckBox* m_keepSmaller = nullptr;
    QCheckBox* m_keepsAlpha = nullptr;
    QComboBox* m_resolution = nullptr;
    ColorWell* m_background = nullptr;
    QList<std::pair<QWidget*, QString>> m_toolTips;
};

} // namespace quillet
