#pragma once

#include "settings/processingrequest.h"

#include <QObject>

namespace quillet {

// Rotation and sizing as the window's controls hold them. A mode decides
// which fields take input: choosing it puts 480 (100 for the crop area) into
// a field it enables that holds less than 2 and empties the fields it
// disables; the percentage mode puts 100 into a percentage below 2.
class SizingModel : public QObject {
    Q_OBJECT
  public:
    enum class Page { None, Sizes, Percent };

    explicit SizingModel(QObject* parent = nullptr);

    int rotation() const { return m_rotation; }
    const Sizing& value() const { return m_value; }

    void setRotation(int code);
    // The mode chosen from the menu, the one on show included: its rules
    // apply again. Codes above 8 change nothing.
    void chooseMode(int code);
    // A user's edit. A new mode applies its rules; codes above 8 change
    // nothing; a field the mode does not enable keeps what it holds.
    void edit(Sizing next);
    // Takes a stored value: its fields as they are, then its mode's rules.
    void load(int rotation, const Sizing& value);
    void reset();

    bool widthEnabled() const;
    bool heightEnabled() const;
    bool cropEnabled() const { return m_value.scaleType == ScaleType::Crop; }
    bool flipEnabled() const { return widthEnabled() && heightEnabled(); }
    bool downOnlyEnabled() const { return m_value.scaleType != ScaleType::Percent; }
    Page page() const;

  Q_SIGNALS:
    void changed();

  private:
    static void applyMode(Sizing& sizing);

    int m_rotation = Rotation::None;
    Sizing m_value;
};

} // namespace quillet
