#pragma once

#include "settings/processingrequest.h"

#include <QObject>

namespace quillet {

// Both watermarks as the watermark window holds them. A picture is only
// taken when it loads; one that no longer does is cleared when a stored value
// is taken, while the master switch keeps its stored state.
class WatermarkModel : public QObject {
    Q_OBJECT
  public:
    // The location item a reset selects: the first of the menu.
    static constexpr int FirstLocation = 1;

    explicit WatermarkModel(QObject* parent = nullptr);

    const WatermarkSettings& value() const { return m_value; }
    // A user's edit of the switches, placing, opacity and text; the picture
    // itself changes only through setPicture() and removePicture().
    void edit(WatermarkSettings next);
    // A new picture chosen or dropped: an opacity of 0 becomes 100 and both
    // switches go on. The caller has checked that it loads.
    void setPicture(const QString& path);
    // No picture, the first location, both the picture's switches off.
    void removePicture();
    void load(const WatermarkSettings& value);
    void reset();

    bool canRemovePicture() const { return !m_value.image.path.isEmpty(); }
    bool fieldTicked(int code) const { return m_value.text.fields.contains(code); }
    // Ticks or clears one text field, keeping the fields in code order.
    void setFieldTicked(int code, bool on);

    // Whether a path loads as a watermark picture.
    static bool loadsAsImage(const QString& path);

  Q_SIGNALS:
    void changed();

  private:
    void takePicture(const QString& path, int location, int opacity);

    WatermarkSettings m_value;
};

} // namespace quillet
