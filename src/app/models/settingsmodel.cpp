#include "app/models/settingsmodel.h"

#include <QScopedValueRollback>

namespace quillet {

SettingsModel::SettingsModel(QObject* parent) : QObject(parent) {
    connect(&m_sizing, &SizingModel::changed, this, &SettingsModel::partChanged);
    connect(&m_output, &OutputModel::changed, this, &SettingsModel::partChanged);
    connect(&m_watermarks, &WatermarkModel::changed, this, &SettingsModel::partChanged);
}

void SettingsModel::partChanged() {
    if (!m_applying)
        Q_EMIT changed();
}

ProcessingRequest SettingsModel::value() const {
    ProcessingRequest r;
    r.rotation = m_sizing.rotation();
    r.sizing = m_sizing.value();
    r.output = m_output.value();
    r.watermarks = m_watermarks.value();
    return r;
}

ProcessingRequest SettingsModel::request() {
    m_output.settleResolution();
    return value();
}

void SettingsModel::apply(const ProcessingRequest& request) {
    {
        const QScopedValueRollback applying(m_applying, true);
        m_watermarks.load(request.watermarks);
        m_sizing.load(request.rotation, request.sizing);
        m_output.load(request.output);
    }
    Q_EMIT changed();
}

void SettingsModel::load(const ProcessingParams& record) {
    ProcessingRequest request = ProcessingRequest::fromRecord(record);
    if (!record.contains(QLatin1String(ParamKey::BackgroundColor)))
        request.output.background = m_output.value().background;
    apply(request);
}

void SettingsModel::reset() {
    {
        const QScopedValueRollback applying(m_applying, true);
        m_watermarks.reset();
        m_sizing.reset();
        m_output.reset();
    }
    Q_EMIT changed();
}

} // namespace quillet
