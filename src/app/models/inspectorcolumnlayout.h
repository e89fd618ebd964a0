#pragma once

#include <QList>

namespace quillet {

class UserDefaults;

// Which of the inspector's columns are shown, in which order and how wide,
// kept in the settings store from one start to the next. Columns are the
// numbers of InspectorColumns; the store names them by identifier, so a
// stored layout survives columns being added later.
class InspectorColumnLayout {
  public:
    struct Shown {
        int column;
        int width;
        friend bool operator==(const Shown&, const Shown&) = default;
    };

    static constexpr char Key[] = "InspectorAutosave2";

    // The stored layout; the columns shown at first when none is stored or
    // nothing stored names a column.
    explicit InspectorColumnLayout(UserDefaults& defaults);

    // The shown columns from left to right.
    const QList<Shown>& shown() const { return m_shown; }
    bool isShown(int column) const;
    // A column shown comes in at the right end, with the width it had last.
    void setShown(int column, bool shown);
    // The shown columns in a new order (a header dragged); others are ignored.
    void setOrder(const QList<int>& columns);
    void setWidth(int column, int width);

  private:
    void save() const;

    UserDefaults& m_defaults;
    QList<Shown> m_shown;
    QList<int> m_lastWidths; // per column, for a column shown again
};

} // namespace quillet
