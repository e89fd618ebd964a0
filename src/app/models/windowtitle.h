#pragma once

#include <QString>

#include <optional>

namespace quillet {

// The title a window shows: "<title> <suffix>", or the title alone without a
// suffix; a missing title shows as "null", as it always has.
inline QString shownWindowTitle(const std::optional<QString>& title, const std::optional<QString>& suffix) {
    const QString base = title.value_or(QStringLiteral("null"));
    return suffix ? QStringLiteral("%1 %2").arg(base, *suffix) : base;
}

} // namespace quillet
