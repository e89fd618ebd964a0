#pragma once

namespace quillet {

class UserDefaults;

// The six preferences the preferences sheet edits, as one value: read from
// the store when the sheet opens, written back only when it is accepted.
struct Preferences {
    // What a drop of one file does ("SingleFile"): 0 a batch, 1 into the
    // desktop folder, 2 onto the clipboard, 3 converted and opened.
    int singleFile = 0;
    bool revealFolder = true;
    bool hideOnDeactivate = false;
    bool hideToolTips = false;
    // The textured window look; the main window reads it when it is made.
    bool brushMetal = false;
    bool onTheFlyFolder = true;

    static Preferences read(const UserDefaults& defaults);
    void write(UserDefaults& defaults) const;

    bool operator==(const Preferences&) const = default;
};

} // namespace quillet
