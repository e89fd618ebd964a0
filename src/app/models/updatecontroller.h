#pragma once

#include "app/models/versionchecker.h"

#include <QObject>

namespace quillet {

class DesktopServices;
class Questions;
class UserDefaults;

// The update check as the window runs it: on its own when due at start, and
// from Help > Check for Updates. The server is the setting "UpdateServer";
// without one nothing is ever asked. Answers come while the window goes on
// working, and the alert that follows may open the product's web page.
class UpdateController : public QObject {
    Q_OBJECT
  public:
    UpdateController(UserDefaults& defaults, Questions& questions, DesktopServices& desktop,
                     QObject* parent = nullptr);

    VersionChecker& checker() { return m_checker; }

    // When a server is set and the check is due, asks it and offers a newer
    // release; says nothing otherwise.
    void checkAtStart();
    // Asks at once (or takes the answer already found, or that of the check
    // under way) and says either way.
    void checkNow();
    // A request is under way.
    bool isChecking() const { return m_checking; }
    // Opens the product's page on the maker's site.
    void visitWebsite();

  Q_SIGNALS:
    // A check has ended, after its alert (if any) was answered.
    void checkEnded();

  private:
    void ask(bool manual);
    void offerNewer(unsigned latest);
    void sayLatest();

    UserDefaults& m_defaults;
    Questions& m_questions;
    DesktopServices& m_desktop;
    VersionChecker m_checker;
    bool m_checking = false;
    bool m_manual = false;
};

} // namespace quillet
