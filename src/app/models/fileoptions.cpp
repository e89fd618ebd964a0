#include "app/models/fileoptions.h"

#include "settings/userdefaults.h"

#include <QCoreApplication>

namespace quillet {

QString FileOptions::key(int tag) {
    static const char* const keys[Count] = {"CopyNonImageFiles", "SetCreationDate", "SetModificationDate",
                                            "HideExtension", "CustomIcon"};
    return tag >= 0 && tag < Count ? QString::fromLatin1(keys[tag]) : QString();
}

QString FileOptions::title(int tag) {
    static const char* const titles[Count] = {
        QT_TRANSLATE_NOOP("FileOptions", "Copy files that are not pictures"),
        QT_TRANSLATE_NOOP("FileOptions", "Creation date from the picture"),
        QT_TRANSLATE_NOOP("FileOptions", "Modification date from the picture"),
        QT_TRANSLATE_NOOP("FileOptions", "Hide extension"),
        QT_TRANSLATE_NOOP("FileOptions", "Thumbnail icon"),
    };
    return tag >= 0 && tag < Count ? QCoreApplication::translate("FileOptions", titles[tag]) : QString();
}

void FileOptions::set(int tag, bool on) {
    if (!enabled(tag))
        return;
    m_defaults.setBool(key(tag), on);
}

bool FileOptions::value(int tag) const {
    return m_defaults.boolValue(key(tag));
}

bool FileOptions::shown(int tag) const {
    return enabled(tag) && value(tag);
}

bool FileOptions::enabled(int tag) const {
    if (tag < 0 || tag >= Count)
        return false;
    return tag != SetModificationDate || value(SetCreationDate);
}

} // namespace quillet
