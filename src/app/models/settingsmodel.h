#pragma once

#include "app/models/outputmodel.h"
#include "app/models/sizingmodel.h"
#include "app/models/watermarkmodel.h"
#include "settings/processingrequest.h"

#include <QObject>

namespace quillet {

// The window's processing settings: one ProcessingRequest, edited through
// three models by concern (sizing, output, watermarks), each with its own
// rules and its own controls. This facade turns them into the value the next
// batch takes and applies a stored value or a reset to all three.
class SettingsModel : public QObject {
    Q_OBJECT
  public:
    explicit SettingsModel(QObject* parent = nullptr);

    SizingModel& sizing() { return m_sizing; }
    OutputModel& output() { return m_output; }
    WatermarkModel& watermarks() { return m_watermarks; }
    const SizingModel& sizing() const { return m_sizing; }
    const OutputModel& output() const { return m_output; }
    const WatermarkModel& watermarks() const { return m_watermarks; }

    // The value of the controls as they stand.
    ProcessingRequest value() const;
    // The value the next batch takes: as value(), with an emptied resolution
    // field set back to 72 in the field as well.
    ProcessingRequest request();
    // The value in its stored form.
    ProcessingParams record() const { return value().toRecord(); }
    // False while the resolution field is empty for typing a new value: the
    // store would otherwise be set back to 72 under the user's fingers.
    bool isStorable() const { return m_output.value().resolution >= 1; }

    // Sets the controls from a value, as applying a preset does.
    void apply(const ProcessingRequest& request);
    // Sets the controls from a stored record; a record without
    // "BackgroundColor" leaves the background well as it stands.
    void load(const ProcessingParams& record);
    // The controls of a fresh window.
    void reset();

  Q_SIGNALS:
    // Any value or enabled state changed; once per apply, load or reset.
    void changed();

  private:
    void partChanged();

    SizingModel m_sizing;
    OutputModel m_output;
    WatermarkModel m_watermarks;
    bool m_applying = false;
};

} // namespace quillet
