#pragma once

#include "settings/processingparams.h"

#include <QString>
#include <QStringList>
#include <QVariant>

class QSettings;

namespace quillet {

// The settings store as the program reads it: every key falls back to its
// registered default from the settings schema when the store holds no value
// (QSettings has no registration domain of its own). Both front ends read the
// store only through this, so the same store gives the same batch.
//
// A stored value of the wrong type or out of its range is refused where it is
// read: the reading gets the registered default (or nothing, for a key that
// has none) and problems() gains a message naming the key and its range.
// The store itself is left as it is, so nothing is lost by reading.
class UserDefaults {
  public:
    explicit UserDefaults(QSettings& store) : m_store(store) {}

    QSettings& store() const { return m_store; }

    // The stored value in its own type (ints as int even from an INI file),
    // else the registered default; an invalid QVariant for a key that has
    // neither. Keys the schema does not know come back as stored.
    QVariant value(const QString& key) const;
    bool boolValue(const QString& key) const;
    int intValue(const QString& key) const;
    QString stringValue(const QString& key) const;
    QStringList stringList(const QString& key) const;
    // Writes the value to the store.
    void setValue(const QString& key, const QVariant& value);
    void setBool(const QString& key, bool value) { setValue(key, value); }
    void setInt(const QString& key, int value) { setValue(key, value); }

    // The processing record the store holds: every processing key, stored or
    // registered default ("WatermarkPath" only when stored).
    ProcessingParams processingParams() const;
    // Writes every key of the record but "Name" and "Id" to the store.
    void setProcessingParams(const ProcessingParams& params);

    // The default the store answers for key, or an invalid QVariant when the
    // key is not registered.
    static QVariant registeredDefault(const QString& key);

    // One message per refused stored value read so far, in the order met,
    // for the front end to show: "JpegQuality" must be a whole number from 0
    // to 100, not 500.
    QStringList problems() const { return m_problems; }

  private:
    QSettings& m_store;
    mutable QStringList m_problems;
};

} // namespace quillet
