#pragma once

#include <QList>
#include <QString>

#include <cstdint>
#include <optional>

namespace quillet {

class UserDefaults;

// One entry of the creator menu: a label and a four-character creator code.
struct Creator {
    QString label;
    std::uint32_t code = 0;
    friend bool operator==(const Creator&, const Creator&) = default;
};

// The creator menu without its widget: "None", then the stored creators
// ("Creators", most recent first, at most five), a blank item, "Remove
// Selected Entry" and "Choose an Application ...". Menu index 0 is "None" and
// index n is creator n - 1; the selection is kept in "SelectedCreator".
class CreatorMenu {
  public:
    static constexpr int MaxCreators = 5;
    static constexpr char CreatorsKey[] = "Creators";
    static constexpr char SelectedKey[] = "SelectedCreator";

    explicit CreatorMenu(UserDefaults& defaults);

    QList<Creator> creators() const;
    int selectedIndex() const { return m_selected; }
    // The code the next batch stamps on its files; 0 for "None".
    std::uint32_t currentCode() const { return m_code; }
    // Whether "Remove Selected Entry" is enabled.
    bool canRemove() const { return m_selected > 0; }

    // An index outside 1..count selects "None".
    void select(int menuIndex);
    void removeSelected();
    // Puts the creator first, drops the oldest beyond five and selects it.
    void add(const Creator& creator);

    // The creator of a desktop application: its .desktop file's Name (or file
    // name without extension) and the four characters of its
    // "X-Quillet-Creator" key. Nothing for a file that is no application
    // entry, has no such key, or has "????".
    static std::optional<Creator> creatorWithPath(const QString& desktopFile);
    // The name the "No Creator Code" sheet shows for a refused application.
    static QString applicationName(const QString& desktopFile);
    // The first four bytes of the text, first byte most significant.
    static std::uint32_t osTypeFromString(const QString& text);

  private:
    void store(const QList<Creator>& creators);

    UserDefaults& m_defaults;
    int m_selected = 0;
    std::uint32_t m_code = 0;
};

} // namespace quillet
