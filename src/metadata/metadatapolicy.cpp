#include "metadata/metadatapolicy.h"

#include <QStringList>

namespace quillet {

MetadataPolicy metadataPolicyFromCode(int code) {
    switch (code) {
    case int(MetadataPolicy::NoLocation):
        return MetadataPolicy::NoLocation;
    case int(MetadataPolicy::Minimal):
        return MetadataPolicy::Minimal;
    case int(MetadataPolicy::None):
        return MetadataPolicy::None;
    default:
        return MetadataPolicy::Keep;
    }
}

MetadataRemoval& MetadataRemoval::operator+=(const MetadataRemoval& more) {
    location += more.location;
    identifying += more.identifying;
    other += more.other;
    profile = profile || more.profile;
    return *this;
}

QString MetadataRemoval::summary() const {
    QStringList parts;
    if (location)
        parts << QStringLiteral("%1 location").arg(location);
    if (identifying)
        parts << QStringLiteral("%1 identifying").arg(identifying);
    if (other)
        parts << QStringLiteral("%1 other").arg(other);
    if (profile)
        parts << QStringLiteral("colour profile");
    return parts.join(QStringLiteral(", "));
}

} // namespace quillet
