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
class UserDefaults {
  public:
    explicit UserDefaults(QSettings& store) : m_store(store) {}

    QSettings& store() const { return m_store; }

    // The stored value, else the registered default; an invalid QVariant for
    // a key that has neither.
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

  private:
    QSettings& m_store;
};

} // namespace quillet
