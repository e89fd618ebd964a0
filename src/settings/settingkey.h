#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <climits>
#include <optional>

namespace quillet {

// How a stored value is typed. CreatorList is a list of {"label", "code"}
// maps; Map and RecordList hold preset records.
enum class SettingType { Int, Bool, String, Colour, IntList, StringList, CreatorList, Map, RecordList };

// Who owns a key: the processing record, the main window's application
// settings, the preferences sheet, the renamer, the in-place panel, the preset
// store, or the update checker.
enum class SettingGroup { Processing, Application, Preference, Renamer, InPlace, Presets, Version };

// One item of an enumerated setting: its stored code, the name a menu shows,
// and the words the command line takes for it (none when it takes the code).
struct SettingChoice {
    int code = 0;
    QString displayName;
    QStringList words;
};

// One key of the settings store: its type, owner, default and the values it
// may hold. Every reader of settings (the store, preset files, the command
// line) checks values through this, so they all refuse the same values with
// the same message.
struct SettingKey {
    QString key;
    SettingType type = SettingType::Int;
    SettingGroup group = SettingGroup::Processing;
    // Bounds of an Int, or of every entry of an IntList.
    int min = INT_MIN;
    int max = INT_MAX;
    // When not empty, the only codes an Int (or an IntList entry) may take.
    QList<SettingChoice> choices;
    // Longest String, or most entries of a list; 0 for no bound.
    qsizetype maxLength = 0;
    // Whether the store answers the default for a key it does not hold. A
    // record key may have a default in the reset record without being
    // registered ("Name").
    bool registered = false;
    QVariant fixedDefault;
    // For defaults that depend on the machine (home folders), computed when read.
    QVariant (*computedDefault)() = nullptr;

    // The default in its stored type, or an invalid QVariant for none.
    QVariant defaultValue() const;
    bool hasDefault() const { return computedDefault || fixedDefault.isValid(); }

    // Whether n is a value of this Int key (or an entry of this IntList).
    bool allows(int n) const;
    // The value in its own type (int, bool, QString, colour text, QVariantList
    // of int, QStringList, ...) when it is one this key may hold; nothing
    // otherwise. Takes the text forms an INI file hands back ("80", "true",
    // "1, 2", a one-entry list as plain text).
    std::optional<QVariant> checked(const QVariant& value) const;

    // A copy that takes no less than min: an option that sets a size asks
    // for one, where the stored key also holds 0 for an emptied field.
    SettingKey withMinimum(int minimum) const;

    // What the key holds, as a message says it: "a whole number from 0 to
    // 100", "one of 101 (JPEG), 102 (PNG), 103 (TIFF)", "true or false", ...
    QString expectation() const;
    // The one refusal form: "JpegQuality" must be <expectation>, not <shown>.
    QString refusal(const QString& shown) const;
    QString refusal(const QVariant& value) const { return refusal(shownValue(value)); }
    // A value as a message quotes it, cut short when long.
    static QString shownValue(const QVariant& value);

    // The command-line words of the choices, in table order.
    QStringList words() const;
    // The code of a command-line word (any case), or nothing.
    std::optional<int> codeOfWord(const QString& word) const;
    // "Rotation" must be one of none, cw, ..., not <given>.
    QString wordRefusal(const QString& given) const;
    const SettingChoice* choice(int code) const;
};

} // namespace quillet
