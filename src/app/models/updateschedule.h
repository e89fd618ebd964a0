#pragma once

#include <QDate>

namespace quillet {

class UserDefaults;

// When the automatic update check is due: every 45 days, counted in days of
// the common era and kept in "NextCheckVersion".
class UpdateSchedule {
  public:
    static constexpr int IntervalDays = 45;

    explicit UpdateSchedule(UserDefaults& defaults) : m_defaults(defaults) {}

    // Days since the start of the common era; 1 January of year 1 is day 1.
    static int dayOfCommonEra(const QDate& date);

    // True when a check is due today. Once the due day is reached the next
    // one is set 45 days on, whatever the answer; the very first call (no
    // day stored) only sets it, so a fresh install does not check at once.
    bool needsCheck(int today);
    bool needsCheck() { return needsCheck(dayOfCommonEra(QDate::currentDate())); }

  private:
    UserDefaults& m_defaults;
};

} // namespace quillet
