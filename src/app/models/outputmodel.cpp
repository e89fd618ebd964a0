#include "app/models/outputmodel.h"

namespace quillet {

namespace {

constexpr int DefaultDpi = 72;
constexpr int SizeLimitFill = 100;

} // namespace

OutputModel::OutputModel(QObject* parent) : QObject(parent) {
    reset();
}

bool OutputModel::pinned(const OutputSettings& output) {
    return output.format == FileFormat::Jpeg && output.preserveHeader;
}

bool OutputModel::backgroundEnabled() const {
    return m_value.format == FileFormat::Jpeg || !m_value.preserveTransparency;
}

void OutputModel::applyPin() {
    m_value.resolution = pinned(m_value) ? DefaultDpi : m_freeResolution;
}

void OutputModel::edit(OutputSettings next) {
    if (!pinned(m_value))
        m_freeResolution = next.resolution;
    if (next.hasSizeLimit && !m_value.hasSizeLimit && next.sizeLimit < 2)
        next.sizeLimit = SizeLimitFill;
    else if (!next.hasSizeLimit)
        next.sizeLimit = 0;
    m_value = next;
    applyPin();
    Q_EMIT changed();
}

void OutputModel::load(const OutputSettings& value) {
    m_value = value;
    m_freeResolution = value.dpi();
    m_value.sizeLimit = value.hasSizeLimit ? value.sizeLimitField() : 0;
    if (m_value.hasSizeLimit && m_value.sizeLimit < 2)
        m_value.sizeLimit = SizeLimitFill;
    applyPin();
    Q_EMIT changed();
}

void OutputModel::reset() {
    OutputSettings fresh;
    // The reset leaves the transparency box as it stands.
    fresh.preserveTransparency = m_value.preserveTransparency;
    load(fresh);
}

void OutputModel::settleResolution() {
    if (m_value.resolution >= 1)
        return;
    m_freeResolution = DefaultDpi;
    applyPin();
    Q_EMIT changed();
}

} // namespace quillet
