#include "engine/pipeline/decoderwarnings.h"

#include "metadata/metadatanotes.h"

#include <glib.h>

#include <mutex>

namespace quillet {

namespace {

thread_local MetadataNotes* current = nullptr;

void keep(const gchar*, GLogLevelFlags, const gchar* message, gpointer) {
    if (current && message)
        current->add(QString::fromUtf8(message).trimmed(), false);
}

} // namespace

void DecoderWarnings::install() {
    static std::once_flag once;
    std::call_once(once, [] { g_log_set_handler("VIPS", G_LOG_LEVEL_WARNING, keep, nullptr); });
}

DecoderWarnings::DecoderWarnings(MetadataNotes& notes) : m_previous(current) {
    current = &notes;
}

DecoderWarnings::~DecoderWarnings() {
    current = m_previous;
}

} // namespace quillet
