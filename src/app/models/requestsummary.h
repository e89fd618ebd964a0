#pragma once

#include "settings/processingrequest.h"

#include <QString>

namespace quillet {

// What a set of processing settings makes, in a few words for a list row:
// "JPEG 80 · fit 2560×2560", "WebP lossless · 50 %", "PNG · original size",
// with "≤ 200 KB" after a lossy format's size limit.
namespace RequestSummary {

QString of(const ProcessingRequest& request);

} // namespace RequestSummary

} // namespace quillet
