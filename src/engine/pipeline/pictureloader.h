#pragma once

#include "engine/picture.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace quillet {

// Opens input pictures for the batch: sRGB 8-bit pixels, three bands or four
// with straight alpha, decoded once into memory, optionally shrunk while
// decoding.
class PictureLoader {
  public:
    enum class Status { Loaded, NotAPicture, Corrupted };

    struct Result {
        Status status = Status::NotAPicture;
        Picture picture; // valid when Loaded
    };

    // Pixel size from the file's header alone; none when no loader we accept
    // recognises the file.
    struct Header {
        int width = 0;
        int height = 0;
        bool isJpeg = false;
    };
    static std::optional<Header> readHeader(const QString& path);

    // Decodes the picture. `shrink` (1, 2, 4 or 8) is honoured for JPEG only;
    // the Picture keeps the full pixel size as its logical size either way.
    // Never throws: a file no accepted loader opens is NotAPicture, one whose
    // pixels fail to decode is Corrupted.
    static Result load(const QString& path, int shrink = 1);
    // The same with the header already read by readHeader. A `boxShrink`
    // above 1 then averages blocks of that many pixels a side as the rows
    // stream in from the decoder, so that only the shrunk picture is ever
    // held in memory, whatever the size of the file.
    static Result load(const QString& path, const Header& header, int shrink, int boxShrink = 1);
    // The same picture, opened but not decoded: its pixels are made as they
    // are read, once, from top to bottom, and a fault in them shows only
    // then. For a consumer that reads it in that order exactly once.
    static Result open(const QString& path, const Header& header, int shrink, int boxShrink = 1);

    // The pixels as the decoder gives them (shrunk by `shrink` for JPEG), in
    // memory, for several pictures of one file that differ only in their
    // block average: picture() then gives, for each, what load() gives.
    class Decode {
      public:
        Decode(const QString& path, const Header& header, int shrink);
        Status status() const { return m_status; }
        Result picture(int boxShrink) const;

      private:
        Header m_header;
        Status m_status = Status::Corrupted;
        vips::VImage m_image;
    };

    // The largest JPEG shrink factor (1, 2, 4 or 8) whose decoded size still
    // covers `drawnWidth` x `drawnHeight`.
    static int jpegShrinkFor(int width, int height, double drawnWidth, double drawnHeight);

    // Lower-case extensions of the picture formats the installed loaders read.
    static const QStringList& readableExtensions();
    static bool isReadableExtension(const QString& suffix);
};

} // namespace quillet
