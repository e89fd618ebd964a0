#pragma once

#include <QStringList>

namespace quillet {

// The "DateFormats" resource: the calendar formats offered for date naming,
// in the order of their tags.
namespace DateFormats {

// Read once from the resource compiled into the core library; the capture-date
// form alone if the resource cannot be read.
QStringList list();

} // namespace DateFormats

} // namespace quillet
