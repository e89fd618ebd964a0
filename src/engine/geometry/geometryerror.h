#pragma once

#include <stdexcept>
#include <string>

namespace quillet {

// A geometry step that cannot give a picture: no pixels to start from, or a
// canvas with a side below one pixel or beyond what can be encoded.
class GeometryError : public std::runtime_error {
  public:
    explicit GeometryError(const std::string& what) : std::runtime_error(what) {}
};

} // namespace quillet
