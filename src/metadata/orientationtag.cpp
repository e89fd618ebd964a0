#include "metadata/orientationtag.h"

#include <cstring>
#include <vector>

namespace quillet {

namespace {

// The open file and where its orientation entry lies.
struct OrientationEntry {
    File file;
    std::vector<uint8_t> buffer; // the APP1 payload after "Exif\0\0"
    bool motorola = false;
    long entry = 0;          // index of the tag's 12-byte entry in buffer
    long payloadOffset = 12; // file offset of buffer[0]
};

int get16(const uint8_t* p, bool motorola) {
    return motorola ? p[0] << 8 | p[1] : p[1] << 8 | p[0];
}

// Moves the file to just after the length bytes of its first APP1 "Exif"
// segment, skipping any other segments before it (JFIF, ICC profile, XMP).
// Returns the segment's length, or -1.
int seekExifSegment(FILE* file) {
    uint8_t soi[2];
    if (std::fread(soi, 1, 2, file) != 2 || soi[0] != 0xFF || soi[1] != 0xD8)
        return -1;
    for (;;) {
        if (std::fgetc(file) != 0xFF)
            return -1;
        int marker = std::fgetc(file);
        while (marker == 0xFF)
            marker = std::fgetc(file);
        if (marker == EOF || marker == 0xDA || marker == 0xD9)
            return -1;
        const int length = _read_2_bytes(file);
        if (length < 2)
            return -1;
        if (marker == 0xE1 && length >= 8) {
            uint8_t signature[6];
            if (std::fread(signature, 1, 6, file) != 6)
                return -1;
            if (std::memcmp(signature, "Exif\0\0", 6) == 0)
                return length;
            if (std::fseek(file, length - 8, SEEK_CUR) != 0)
                return -1;
        } else if (std::fseek(file, length - 2, SEEK_CUR) != 0) {
            return -1;
        }
    }
}

// The header walk both routines share. The file is opened for update even to
// read, so a file that cannot be written does not qualify either. The handle
// is closed on every path (the routines used to leave it open when giving up,
// which runs a long batch out of descriptors). Narrow: the EXIF block must be
// the first segment; otherwise it may follow other segments.
bool findEntry(const char* path, FileSystem& fileSystem, OrientationEntry& found, bool narrow) {
    found.file = fileSystem.open(path, "rb+");
    FILE* file = found.file.get();
    if (!file)
        return false;
    int length = -1;
    if (narrow) {
        uint8_t head[4];
        if (std::fread(head, 1, 4, file) != 4 || head[0] != 0xFF || head[1] != 0xD8 || head[2] != 0xFF ||
            head[3] != 0xE1)
            return false;
        length = _read_2_bytes(file);
        if (length < 8)
            return false;
        uint8_t signature[6];
        if (std::fread(signature, 1, 6, file) != 6 || std::memcmp(signature, "Exif\0\0", 6) != 0)
            return false;
    } else {
        length = seekExifSegment(file);
        if (length < 8)
            return false;
    }
    found.payloadOffset = std::ftell(file);
    const size_t payload = size_t(length - 8);
    if (payload < 12)
        return false;
    found.buffer.assign(payload, 0);
    if (std::fread(found.buffer.data(), 1, payload, file) != payload)
        return false;
    const uint8_t* b = found.buffer.data();
    long offset = 0;
    if (b[0] == 'I' && b[1] == 'I' && b[2] == 0x2A && b[3] == 0) {
        found.motorola = false;
        if (b[6] != 0 || b[7] != 0)
            return false;
        offset = get16(b + 4, false);
    } else if (b[0] == 'M' && b[1] == 'M' && b[2] == 0 && b[3] == 0x2A) {
        found.motorola = true;
        if (b[4] != 0 || b[5] != 0)
            return false;
        offset = get16(b + 6, true);
    } else {
        return false;
    }
    if (offset > length - 10)
        return false;
    int count = get16(b + offset, found.motorola);
    if (count == 0)
        return false;
    for (long p = offset + 2;; p += 12) {
        if (p > length - 20)
            return false;
        if (get16(b + p, found.motorola) == 0x0112) {
            found.entry = p;
            return true;
        }
        if (--count == 0)
            return false;
    }
}

int valueByte(const OrientationEntry& found) {
    return found.buffer[size_t(found.entry) + (found.motorola ? 9 : 8)];
}

} // namespace

int _read_2_bytes(FILE* file) {
    const int high = std::fgetc(file);
    if (high == EOF)
        return -1;
    const int low = std::fgetc(file);
    if (low == EOF)
        return -1;
    return high << 8 | low;
}

namespace {

int getOrientation(const char* path, FileSystem& fileSystem, bool narrow) {
    OrientationEntry found;
    if (!findEntry(path, fileSystem, found, narrow))
        return 0;
    return valueByte(found);
}

int setOrientation(const char* path, uint8_t value, FileSystem& fileSystem, bool narrow) {
    OrientationEntry found;
    if (!findEntry(path, fileSystem, found, narrow))
        return 0;
    const int old = valueByte(found);
    // Format SHORT, count 1, the value in the first half of the value field.
    const uint8_t intel[10] = {0x03, 0x00, 0x01, 0x00, 0x00, 0x00, value, 0x00, 0x00, 0x00};
    const uint8_t motorola[10] = {0x00, 0x03, 0x00, 0x00, 0x00, 0x01, 0x00, value, 0x00, 0x00};
    FILE* file = found.file.get();
    if (std::fseek(file, found.payloadOffset + found.entry + 2, SEEK_SET) != 0 ||
        std::fwrite(found.motorola ? motorola : intel, 1, 10, file) != 10)
        return 0;
    return found.file.close() ? old : 0;
}

} // namespace

int _getOrientation(const char* path, FileSystem& fileSystem) {
    return getOrientation(path, fileSystem, true);
}

int _setOrientation(const char* path, uint8_t value, FileSystem& fileSystem) {
    return setOrientation(path, value, fileSystem, true);
}

int readExifOrientation(const char* path, FileSystem& fileSystem) {
    return getOrientation(path, fileSystem, false);
}

int writeExifOrientation(const char* path, uint8_t value, FileSystem& fileSystem) {
    return setOrientation(path, value, fileSystem, false);
}

} // namespace quillet
