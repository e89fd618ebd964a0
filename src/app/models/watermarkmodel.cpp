#include "app/models/watermarkmodel.h"

#include <QFile>
#include <QFileInfo>

#include <vips/vips8>

#include <algorithm>

namespace quillet {

WatermarkModel::WatermarkModel(QObject* parent) : QObject(parent) {
    reset();
}

bool WatermarkModel::loadsAsImage(const QString& path) {
    if (path.isEmpty() || !QFileInfo(path).isFile())
        return false;
    VipsImage* image = vips_image_new_from_file(QFile::encodeName(path).constData(), nullptr);
    if (!image) {
        vips_error_clear();
        return false;
    }
    g_object_unref(image);
    return true;
}

void WatermarkModel::takePicture(const QString& path, int location, int opacity) {
    ImageWatermarkSettings& image = m_value.image;
    if (!path.isEmpty() && loadsAsImage(path)) {
        image.path = path;
        image.location = location;
        image.opacity = opacity;
    } else {
        // The opacity stays as its field stands.
        image.path.clear();
        image.location = FirstLocation;
    }
}

void WatermarkModel::edit(WatermarkSettings next) {
    next.image.path = m_value.image.path;
    std::sort(next.text.fields.begin(), next.text.fields.end());
    m_value = next;
    Q_EMIT changed();
}

void WatermarkModel::setPicture(const QString& path) {
    m_value.image.path = path;
    if (m_value.image.opacity == 0)
        m_value.image.opacity = 100;
    m_value.enabled = true;
    m_value.image.enabled = true;
    Q_EMIT changed();
}

void WatermarkModel::removePicture() {
    m_value.enabled = false;
    m_value.image.enabled = false;
    takePicture({}, FirstLocation, m_value.image.opacity);
    Q_EMIT changed();
}

void WatermarkModel::load(const WatermarkSettings& value) {
    const int opacityBefore = m_value.image.opacity;
    m_value = value;
    m_value.image.opacity = opacityBefore;
    std::sort(m_value.text.fields.begin(), m_value.text.fields.end());
    m_value.text.fields.erase(std::unique(m_value.text.fields.begin(), m_value.text.fields.end()),
                              m_value.text.fields.end());
    takePicture(value.image.path, value.image.location, value.image.opacity);
    Q_EMIT changed();
}

void WatermarkModel::reset() {
    WatermarkSettings fresh;
    // Text shadows are always drawn here, so the shadowed style and a clear
    // band are the reset state; the opacity stays as its field stands.
    fresh.image.opacity = m_value.image.opacity;
    fresh.image.location = FirstLocation;
    load(fresh);
}

void WatermarkModel::setFieldTicked(int code, bool on) {
    WatermarkSettings next = m_value;
    next.text.fields.removeAll(code);
    if (on)
        next.text.fields.append(code);
    edit(next);
}

} // namespace quillet
