#include "app/models/sizingmodel.h"

namespace quillet {

namespace {

// A field enabled while holding less than 2 gets this value.
constexpr int SizeFill = 480;
constexpr int PercentFill = 100;

bool knownMode(int code) {
    return code >= ScaleType::None && code <= ScaleType::Fill;
}

bool usesSizes(int code) {
    return code != ScaleType::None && code != ScaleType::Percent;
}

void enableField(int& value, bool on, int fill) {
    if (!on)
        value = 0;
    else if (value < 2)
        value = fill;
}

} // namespace

SizingModel::SizingModel(QObject* parent) : QObject(parent) {
    reset();
}

bool SizingModel::widthEnabled() const {
    return usesSizes(m_value.scaleType) && m_value.scaleType != ScaleType::ToHeight;
}

bool SizingModel::heightEnabled() const {
    return usesSizes(m_value.scaleType) && m_value.scaleType != ScaleType::ToWidth;
}

SizingModel::Page SizingModel::page() const {
    switch (m_value.scaleType) {
    case ScaleType::None:
        return Page::None;
    case ScaleType::Percent:
        return Page::Percent;
    default:
        return Page::Sizes;
    }
}

void SizingModel::applyMode(Sizing& s) {
    const int code = s.scaleType;
    // The percentage page hides the size fields and leaves them as they are.
    if (code == ScaleType::Percent) {
        if (s.percent < 2)
            s.percent = PercentFill;
        return;
    }
    const bool sizes = usesSizes(code);
    enableField(s.width, sizes && code != ScaleType::ToHeight, SizeFill);
    enableField(s.height, sizes && code != ScaleType::ToWidth, SizeFill);
    enableField(s.cropAreaPercentage, code == ScaleType::Crop, PercentFill);
}

void SizingModel::setRotation(int code) {
    m_rotation = code;
    Q_EMIT changed();
}

void SizingModel::chooseMode(int code) {
    if (!knownMode(code))
        return;
    m_value.scaleType = code;
    applyMode(m_value);
    Q_EMIT changed();
}

void SizingModel::edit(Sizing next) {
    if (!knownMode(next.scaleType))
        next.scaleType = m_value.scaleType;
    if (next.scaleType != m_value.scaleType) {
        applyMode(next);
    } else if (m_value.scaleType != ScaleType::Percent) {
        if (!widthEnabled())
            next.width = m_value.width;
        if (!heightEnabled())
            next.height = m_value.height;
        if (!cropEnabled())
            next.cropAreaPercentage = m_value.cropAreaPercentage;
    }
    m_value = next;
    Q_EMIT changed();
}

void SizingModel::load(int rotation, const Sizing& value) {
    m_rotation = rotation;
    m_value = value;
    if (!knownMode(m_value.scaleType))
        m_value.scaleType = ScaleType::None;
    applyMode(m_value);
    Q_EMIT changed();
}

void SizingModel::reset() {
    Sizing fresh;
    // The reset leaves the percentage and the flip as they stand.
    fresh.percent = m_value.percent;
    fresh.flipForPortrait = m_value.flipForPortrait;
    load(Rotation::None, fresh);
}

} // namespace quillet
