#pragma once

#include "engine/picture.h"

#include <QByteArray>

#include <functional>
#include <optional>

namespace quillet {

// Fitting an output under a byte limit by its size, once the quality search
// has run out: the finished picture is scaled down in steps and encoded
// again at the lowest quality the search reached.
namespace SizeBudget {

struct Fitted {
    QByteArray bytes;
    int width = 0;
    int height = 0;
};

// At most this many smaller encodings are tried.
constexpr int MaxSteps = 12;

// Each step scales `picture` (never an earlier step's result) by a factor
// guessed from how far the last encoding was over `limit`, at least a tenth
// smaller each time. Nothing when an encoding fails or no step fits.
std::optional<Fitted> shrinkToFit(const Picture& picture,
                                  const std::function<QByteArray(const Picture&)>& encode, qint64 size,
                                  qint64 limit);

// `picture` scaled by `scale` (transparent pixels premultiplied on the way).
Picture scaled(const Picture& picture, double scale);

} // namespace SizeBudget

} // namespace quillet
