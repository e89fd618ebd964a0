#pragma once

#include <QString>

namespace quillet {

// How much of an input's metadata its output keeps. The stored values are
// these codes; Keep is what every output got before there was a choice.
enum class MetadataPolicy {
    Keep = 0,       // everything
    NoLocation = 1, // everything but where it was taken and who owns the camera
    Minimal = 2,    // orientation, capture date, copyright, artist, colour profile
    None = 3,       // nothing; the colours are converted to sRGB first
};

MetadataPolicy metadataPolicyFromCode(int code);

// What a filter took out, counted by what it would give away.
struct MetadataRemoval {
    int location = 0;    // GPS fields, place names
    int identifying = 0; // serial numbers, the owner's name, unique image IDs
    int other = 0;       // camera settings, thumbnails, editing history, comments
    bool profile = false;

    int total() const { return location + identifying + other + (profile ? 1 : 0); }
    MetadataRemoval& operator+=(const MetadataRemoval& more);
    // "3 location, 2 identifying, 40 other, colour profile"; empty when nothing.
    QString summary() const;
};

} // namespace quillet
