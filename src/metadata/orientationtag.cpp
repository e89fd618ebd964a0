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
    long entry = 0; // index of the tag's 12-byte entry in buffer
};

int get16(const uint8_t* p, bool motorola) {
    return motorola ? p[0] << 8 | p[1] : p[1] << 8 | p[0];
}

// The header walk both routines share. The file is opened for update even to
// read, so a file that cannot be written does not qualify either. The handle
// is closed on every path (the routines used to leave it open when giving up,
// which runs a long batch out of descriptors).
bool findEntry(const char* path, FileSystem& fileSystem, OrientationEntry& found) {
    found.file = fileSystem.open(path, "rb+");
    FILE* file = found.file.get();
    if (!file)
        return false;
    uint8_t head[4];
    if (std::fread(head, 1, 4, file) != 4 || head[0] != 0xFF || head[1] != 0xD8 || head[2] != 0xFF ||
        head[3] != 0xE1)
        return false;
    const int length = _read_2_bytes(file);
    if (length < 8)
        return false;
    uint8_t signature[6];
    if (std::fread(signature, 1, 6, file) != 6 || std::memcmp(signature, "Exif\0\0", 6) != 0)
        return false;
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

int _getOrientation(const char* path, FileSystem& fileSystem) {
    OrientationEntry found;
    if (!findEntry(path, fileSystem, found))
        return 0;
    return valueByte(found);
}

int _setOrientation(const char* path, uint8_t value, FileSystem& fileSystem) {
    OrientationEntry found;
    if (!findEntry(path, fileSystem, found))
        return 0;
    const int old = valueByte(found);
    // Format SHORT, count 1, the value in the first half of the value field.
    const uint8_t intel[10] = {0x03, 0x00, 0x01, 0x00, 0x00, 0x00, value, 0x00, 0x00, 0x00};
    const uint8_t motorola[10] = {0x00, 0x03, 0x00, 0x00, 0x00, 0x01, 0x00, value, 0x00, 0x00};
    FILE* file = found.file.get();
    if (std::fseek(file, 12 + found.entry + 2, SEEK_SET) != 0 ||
        std::fwrite(found.motorola ? motorola : intel, 1, 10, file) != 10)
        return 0;
    return found.file.close() ? old : 0;
}

} // namespace quillet
