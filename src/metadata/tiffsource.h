#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace quillet {

// Random access to the bytes of a TIFF file. A TIFF may be gigabytes, so its
// metadata is read piece by piece where its directories point, never whole.
class TiffSource {
  public:
    virtual ~TiffSource() = default;
    // Reads `n` bytes at `offset`; false unless all of them were there.
    virtual bool readAt(quint64 offset, char* into, qsizetype n) = 0;
};

class FileTiffSource final : public TiffSource {
  public:
    explicit FileTiffSource(const QString& path);
    bool isOpen() const { return m_file.isOpen(); }
    bool readAt(quint64 offset, char* into, qsizetype n) override;

  private:
    QFile m_file;
};

// Bytes in memory (tests and the fuzzer).
class MemoryTiffSource final : public TiffSource {
  public:
    explicit MemoryTiffSource(QByteArray bytes) : m_bytes(std::move(bytes)) {}
    bool readAt(quint64 offset, char* into, qsizetype n) override;

  private:
    QByteArray m_bytes;
};

} // namespace quillet
