#pragma once

#include <QString>

namespace quillet {

class UserDefaults;

// The five file-option check boxes, by tag: 0 "CopyNonImageFiles",
// 1 "SetCreationDate", 2 "SetModificationDate", 3 "HideExtension",
// 4 "CustomIcon". Each stores its state at once. The modification-date box
// works only while the creation-date box is ticked: otherwise it is disabled
// and shows unticked, and its stored value waits for it.
class FileOptions {
  public:
    enum Tag : int { CopyNonImageFiles = 0, SetCreationDate, SetModificationDate, HideExtension, CustomIcon };
    static constexpr int Count = 5;

    explicit FileOptions(UserDefaults& defaults) : m_defaults(defaults) {}

    static QString key(int tag);
    bool isEnabled(int tag) const;
    // What the box shows.
    bool isChecked(int tag) const;
    void toggle(int tag, bool on);

  private:
    UserDefaults& m_defaults;
};

} // namespace quillet
