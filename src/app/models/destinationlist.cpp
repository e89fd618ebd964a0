#include "app/models/destinationlist.h"

#include "settings/userdefaults.h"

namespace quillet {

namespace {

constexpr char ListKey[] = "Destinations";
constexpr char SelectedKey[] = "SelectedDestination";

} // namespace

QStringList DestinationList::entries() const {
    return m_defaults.stringList(QLatin1String(ListKey));
}

int DestinationList::selectedIndex() const {
    const int index = m_defaults.intValue(QLatin1String(SelectedKey));
    return index >= 0 && index < entries().size() ? index : 0;
}

QString DestinationList::selected() const {
    const QStringList list = entries();
    return list.isEmpty() ? QString() : list.at(selectedIndex());
}

void DestinationList::select(int index) {
    m_defaults.setInt(QLatin1String(SelectedKey), index);
}

void DestinationList::removeSelected() {
    QStringList list = entries();
    if (list.size() >= 2) {
        list.removeAt(selectedIndex());
        m_defaults.setValue(QLatin1String(ListKey), list);
    }
    select(0);
}

void DestinationList::add(const QString& folder) {
    QStringList list = entries();
    list.prepend(folder);
    while (list.size() > MaxEntries)
        list.removeLast();
    m_defaults.setValue(QLatin1String(ListKey), list);
    select(0);
}

} // namespace quillet
