#include "app/models/updateschedule.h"

#include "settings/settingsschema.h"
#include "settings/userdefaults.h"

namespace quillet {

int UpdateSchedule::dayOfCommonEra(const QDate& date) {
    return int(date.toJulianDay() - QDate(1, 1, 1).toJulianDay() + 1);
}

bool UpdateSchedule::needsCheck(int today) {
    const QString key = QLatin1String(StoreKey::NextCheckVersion);
    // An absent or refused value reads as 0.
    const int next = m_defaults.intValue(key);
    if (next > today)
        return false;
    m_defaults.setInt(key, today + IntervalDays);
    return next >= 1;
}

} // namespace quillet
