#include "app/models/inspectorcolumnlayout.h"

#include "app/models/inspectorcolumns.h"
#include "settings/userdefaults.h"

#include <QStringList>

namespace quillet {

namespace {

// Narrower than this and the column is lost in the header.
constexpr int MinimumWidth = 16;

} // namespace

InspectorColumnLayout::InspectorColumnLayout(UserDefaults& defaults) : m_defaults(defaults) {
    const std::vector<InspectorColumns::Column>& columns = InspectorColumns::all();
    for (const InspectorColumns::Column& column : columns)
        m_lastWidths.append(column.width);
    // Stored as "identifier:width" from left to right.
    const QStringList stored = defaults.value(QLatin1String(Key)).toStringList();
    for (const QString& entry : stored) {
        const int colon = entry.lastIndexOf(QLatin1Char(':'));
        const int column = InspectorColumns::indexOf(colon < 0 ? entry : entry.left(colon));
        if (column < 0 || isShown(column))
            continue;
        bool ok = false;
        const int width = colon < 0 ? 0 : entry.mid(colon + 1).toInt(&ok);
        if (ok && width >= MinimumWidth)
            m_lastWidths[column] = width;
        m_shown.append({column, m_lastWidths[column]});
    }
    if (!m_shown.isEmpty())
        return;
    for (int i = 0; i < InspectorColumns::count(); ++i)
        if (columns[size_t(i)].shownAtFirst)
            m_shown.append({i, columns[size_t(i)].width});
}

bool InspectorColumnLayout::isShown(int column) const {
    return std::any_of(m_shown.begin(), m_shown.end(),
                       [column](const Shown& s) { return s.column == column; });
}

void InspectorColumnLayout::setShown(int column, bool shown) {
    if (column < 0 || column >= InspectorColumns::count() || isShown(column) == shown)
        return;
    if (shown)
        m_shown.append({column, m_lastWidths[column]});
    else
        m_shown.removeIf([column](const Shown& s) { return s.column == column; });
    save();
}

void InspectorColumnLayout::setOrder(const QList<int>& columns) {
    QList<Shown> ordered;
    for (const int column : columns)
        for (const Shown& s : std::as_const(m_shown))
            if (s.column == column && !ordered.contains(s))
                ordered.append(s);
    // A shown column the new order leaves out keeps its place at the end.
    for (const Shown& s : std::as_const(m_shown))
        if (!ordered.contains(s))
            ordered.append(s);
    if (ordered == m_shown)
        return;
    m_shown = ordered;
    save();
}

void InspectorColumnLayout::setWidth(int column, int width) {
    if (column < 0 || column >= InspectorColumns::count() || width < MinimumWidth)
        return;
    m_lastWidths[column] = width;
    for (Shown& s : m_shown)
        if (s.column == column && s.width != width) {
            s.width = width;
            save();
        }
}

void InspectorColumnLayout::save() const {
    QStringList stored;
    for (const Shown& s : m_shown)
        stored.append(
            QStringLiteral("%1:%2").arg(InspectorColumns::all()[size_t(s.column)].identifier).arg(s.width));
    m_defaults.setValue(QLatin1String(Key), stored);
}

} // namespace quillet
