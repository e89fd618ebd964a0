#pragma once

#include <QString>
#include <QStringList>

namespace quillet {

class UserDefaults;

// The destination menu's folders ("Destinations", most recent first) and the
// selected one ("SelectedDestination"), kept in the settings store.
class DestinationList {
  public:
    explicit DestinationList(UserDefaults& defaults) : m_defaults(defaults) {}

    QStringList entries() const;
    // The selected index, 0 when the stored one is out of range.
    int selectedIndex() const;
    // The selected folder; empty only when the list is.
    QString selected() const;
    void select(int index);
    // Removes the selected entry and selects the first, unless it is the only
    // one: the list never becomes empty.
    void removeSelected();
    // Puts the folder first, keeping at most MaxEntries (the same folder may
    // stand twice), and selects it.
    void add(const QString& folder);
    // A cancelled folder chooser selects the first entry, not the one that was
    // selected before.
    void chooserCancelled() { select(0); }

    static constexpr int MaxEntries = 6;

  private:
    UserDefaults& m_defaults;
};

} // namespace quillet
