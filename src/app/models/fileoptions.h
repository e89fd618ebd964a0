#pragma once

#include <QString>

namespace quillet {

class UserDefaults;

// The five file options of the main window, by the tags of their boxes, kept
// in the settings store. The modification date can only be set together with
// the creation date: while "SetCreationDate" is off its box is disabled and
// shows off, and its stored value is kept for when it comes back.
class FileOptions {
  public:
    enum Tag : int {
        CopyNonImageFiles = 0,
        SetCreationDate = 1,
        SetModificationDate = 2,
        HideExtension = 3,
        CustomIcon = 4,
        Count = 5
    };

    explicit FileOptions(UserDefaults& defaults) : m_defaults(defaults) {}

    static QString key(int tag);
    static QString title(int tag);
    void set(int tag, bool on);
    // The stored value.
    bool value(int tag) const;
    // What the box shows and whether it can be changed.
    bool shown(int tag) const;
    bool enabled(int tag) const;

  private:
    UserDefaults& m_defaults;
};

} // namespace quillet
