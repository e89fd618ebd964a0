#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;

namespace quillet {

class ColorWell;
class KVStepper;
class Sheets;
class WatermarkModel;
class WatermarkView;

// The watermark settings: the master switch, the image watermark (a picture
// dropped or chosen, its position and opacity) and the text watermark (which
// picture details to print, its size, style and band colour). Shows the
// watermark model and forwards every edit to it; its file, colour and
// message questions go through the window's sheets.
class WatermarkWindow : public QDialog {
    Q_OBJECT

  public:
    WatermarkWindow(WatermarkModel& model, Sheets& sheets, QWidget* parent = nullptr);

    void setToolTipsHidden(bool hidden);

  private:
    void build();
    void refresh();
    void choosePicture();
    void takePicture(const QString& path);

    WatermarkModel& m_model;
    Sheets& m_sheets;
    QCheckBox* m_master = nullptr;
    QCheckBox* m_imageOn = nullptr;
    WatermarkView* m_view = nullptr;
    QLineEdit* m_name = nullptr;
    QPushButton* m_choose = nullptr;
    QPushButton* m_clear = nullptr;
    QComboBox* m_location = nullptr;
    KVStepper* m_opacity = nullptr;
    QCheckBox* m_textOn = nullptr;
    QList<QCheckBox*> m_fields;
    QComboBox* m_size = nullptr;
    QComboBox* m_style = nullptr;
    ColorWell* m_band = nullptr;
};

} // namespace quillet
