#include "support/file.h"

#include <utility>

namespace quillet {

File::File(File&& other) noexcept
    : m_stream(std::exchange(other.m_stream, nullptr)), m_path(std::move(other.m_path)) {}

File& File::operator=(File&& other) noexcept {
    if (this != &other) {
        close();
        m_stream = std::exchange(other.m_stream, nullptr);
        m_path = std::move(other.m_path);
    }
    return *this;
}

bool File::close() {
    if (!m_stream)
        return true;
    return std::fclose(std::exchange(m_stream, nullptr)) == 0;
}

} // namespace quillet
