#pragma once

namespace quillet {

class MetadataNotes;

// Warnings libvips logs while it decodes or encodes a picture ("Corrupt JPEG
// data", "read gave 100 warnings"), kept for the file in hand instead of
// printed on the standard error stream. They are kept as notes, not damage:
// libvips also warns about files that are fine (a HEIF container read past
// its end), and a picture that does not decode is reported on its own.
class DecoderWarnings {
  public:
    // Takes over libvips's warnings for the whole process (once; later calls
    // do nothing). Warnings logged on a thread with no scope open are dropped.
    static void install();

    // While it lives, warnings logged on this thread go into `notes`.
    explicit DecoderWarnings(MetadataNotes& notes);
    ~DecoderWarnings();
    DecoderWarnings(const DecoderWarnings&) = delete;
    DecoderWarnings& operator=(const DecoderWarnings&) = delete;

  private:
    MetadataNotes* m_previous;
};

} // namespace quillet
