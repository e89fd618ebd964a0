#pragma once

#include "settings/processingrequest.h"

#include <QObject>

namespace quillet {

// The output format and its options as the window's controls hold them.
// While a JPEG keeps its source's metadata the resolution is pinned at 72 and
// its field disabled; the value typed before comes back when that ends
// (another format, or the metadata box off). The size limit field holds 0
// while the limit is off and at least 100 when it is switched on empty.
class OutputModel : public QObject {
    Q_OBJECT
  public:
    enum class Page { Jpeg, Transparency };

    explicit OutputModel(QObject* parent = nullptr);

    const OutputSettings& value() const { return m_value; }
    // A user's edit; a resolution typed while it is pinned is ignored.
    void edit(OutputSettings next);
    // Takes a stored value, the size limit field as the record shows it.
    void load(const OutputSettings& value);
    void reset();
    // Sets a resolution below 1 (an emptied field) back to 72.
    void settleResolution();

    bool resolutionEnabled() const { return !pinned(m_value); }
    bool sizeLimitEnabled() const { return m_value.hasSizeLimit; }
    // The background well: always for JPEG, else while transparency is off.
    bool backgroundEnabled() const;
    // WebP, AVIF and JPEG XL show the JPEG page, with their own boxes.
    Page page() const {
        return m_value.format == FileFormat::Jpeg || FileFormat::isModern(m_value.format)
                   ? Page::Jpeg
                   : Page::Transparency;
    }

  Q_SIGNALS:
    void changed();

  private:
    static bool pinned(const OutputSettings& output);
    void applyPin();

    OutputSettings m_value;
    // The resolution the user chose, shown again when it is no longer pinned.
    int m_freeResolution = 72;
};

} // namespace quillet
