#include "app/fileoptions.h"

#include "settings/userdefaults.h"

namespace quillet {

QString FileOptions::key(int tag) {
    static const char* const keys[Count] = {"CopyNonImageFiles", "SetCreationDate", "SetModificationDate",
                                            "HideExtension", "CustomIcon"};
    return tag >= 0 && tag < Count ? QLatin1String(keys[tag]) : QString();
}

bool FileOptions::isEnabled(int tag) const {
    return tag != SetModificationDate || m_defaults.boolValue(key(SetCreationDate));
}

bool FileOptions::isChecked(int tag) const {
    return isEnabled(tag) && m_defaults.boolValue(key(tag));
}

void FileOptions::toggle(int tag, bool on) {
    if (tag >= 0 && tag < Count && isEnabled(tag))
        m_defaults.setBool(key(tag), on);
}

} // namespace quillet
