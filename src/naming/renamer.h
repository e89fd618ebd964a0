#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <atomic>
#include <optional>

class QSettings;

namespace quillet {

class KVImageInfo;

// The renaming scheme: how the base name of each output file is made from the
// input name, the file's position in its folder and, for date naming, the
// picture's capture date. The renamer adds no extension and builds no path.
//
// nameFromInputName() and conflictResolverForIndex() may be called from
// several batch threads at once; they only read the scheme, except that the
// latter may reset an out-of-range conflict tag (atomically). Editing the
// scheme while a batch runs is not guarded.
class Renamer {
  public:
    enum Type : int { KeepName = 0, Sequence = 1, PrefixSuffix = 2, Date = 3 };

    // The user-defaults keys of the scheme. "DateFallbackTag" has no "Rename"
    // in front; stored settings use it so.
    static constexpr char TypeKey[] = "SelectedRename";
    static constexpr char PrefixKey[] = "RenamePrefix";
    static constexpr char SuffixKey[] = "RenameSuffix";
    static constexpr char DigitsKey[] = "RenameDigits";
    static constexpr char StartFromKey[] = "RenameStartFrom";
    static constexpr char DateFormatTagKey[] = "RenameDateFormatTag";
    static constexpr char ConflictFormatTagKey[] = "RenameConflictFormatTag";
    static constexpr char DateFallbackTagKey[] = "DateFallbackTag";

    // A scheme of type 0 with empty texts and the "DateFormats" list.
    Renamer();
    // The scheme as stored in the given settings (readFromDefaults).
    explicit Renamer(QSettings& settings);
    Renamer(const Renamer& other);
    Renamer& operator=(const Renamer& other);

    // The output base name, or nothing for an unknown type. info may be null.
    std::optional<QString> nameFromInputName(const QString& name, const KVImageInfo* info, int index) const;
    // The text appended to a clashing date name: the separator of the
    // conflict tag ("-", "_", " ") and n. An out-of-range tag is reset to 0.
    QString conflictResolverForIndex(int n) const;
    int renameType() const { return m_type; }
    // "infile1"'s and "infile2"'s names joined by ", ", or nothing for type 0.
    // The date samples share one date, so the second gets the clash suffix.
    std::optional<QString> examples() const;
    // "e.g. <examples> ...", or empty for type 0: the panel's example line.
    QString examplesLine() const;

    // Loads the scheme from the settings store. Digits and start are read only
    // when the saved type is 1, prefix and suffix only when it is not 0; the
    // other fields keep their values, as the panel's other tabs do.
    void readFromDefaults(QSettings& settings);
    // Writes all eight keys, whatever the type.
    void writeToDefaults(QSettings& settings) const;
    // The panel's OK (store) or Cancel (reload from the store).
    void acceptChanges(bool accept, QSettings& settings);

    QString prefix() const { return m_prefix; }
    QString suffix() const { return m_suffix; }
    int digits() const { return m_digits; }
    int startFrom() const { return m_startFrom; }
    int dateFormatTag() const { return m_dateFormatTag; }
    int conflictFormatTag() const { return m_conflictFormatTag.load(); }
    int dateFallbackTag() const { return m_dateFallbackTag; }
    const QStringList& dateFormats() const { return m_dateFormats; }
    // The fixed date the examples and the format titles use:
    // 14 February 2005, 15:32:47, local time.
    static QDateTime sampleDate();
    // Each date format rendered on the sample date: the format menu's titles.
    QStringList dateFormatTitles() const;

    void setType(int type) { m_type = type; }
    void setPrefix(const QString& prefix) { m_prefix = prefix; }
    void setSuffix(const QString& suffix) { m_suffix = suffix; }
    void setDigits(int digits) { m_digits = digits; }
    void setStartFrom(int start) { m_startFrom = start; }
    void setDateFormatTag(int tag) { m_dateFormatTag = tag; }
    void setConflictFormatTag(int tag) { m_conflictFormatTag.store(tag); }
    void setDateFallbackTag(int tag) { m_dateFallbackTag = tag; }

  private:
    QString sequenceName(int index) const;
    // The date name, or nothing when there is no record, format or date.
    std::optional<QString> dateName(const KVImageInfo* info) const;

    int m_type = KeepName;
    QString m_prefix;
    QString m_suffix;
    int m_digits = 0;
    int m_startFrom = 0;
    int m_dateFormatTag = 0;
    // Mutable: the conflict text resets an out-of-range tag while reading.
    mutable std::atomic<int> m_conflictFormatTag{0};
    int m_dateFallbackTag = 0;
    QStringList m_dateFormats;
};

} // namespace quillet
