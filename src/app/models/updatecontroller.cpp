#include "app/models/updatecontroller.h"

#include "app/models/desktopservices.h"
#include "app/models/questions.h"
#include "app/models/updateschedule.h"
#include "app/models/versionnumber.h"
#include "app/models/website.h"
#include "settings/settingsschema.h"
#include "settings/userdefaults.h"

#include <utility>

namespace quillet {

UpdateController::UpdateController(UserDefaults& defaults, Questions& questions, DesktopServices& desktop,
                                   QObject* parent)
    : QObject(parent), m_defaults(defaults), m_questions(questions), m_desktop(desktop),
      m_checker(defaults.stringValue(QLatin1String(StoreKey::UpdateServer)), QStringLiteral("quillet"),
                VersionNumber::fromString(QStringLiteral(QUILLET_VERSION)), this) {}

void UpdateController::checkAtStart() {
    if (m_checker.address().isEmpty() || !UpdateSchedule(m_defaults).needsCheck())
        return;
    ask(false);
}

void UpdateController::checkNow() {
    if (m_checker.address().isEmpty()) {
        m_questions.runMessageSheet(tr("No Update Server"),
                                    tr("Quillet has no update server to ask. The setting \"%1\" names one.")
                                        .arg(QLatin1String(StoreKey::UpdateServer)));
        Q_EMIT checkEnded();
        return;
    }
    ask(true);
}

void UpdateController::ask(bool manual) {
    // A manual check while the start check runs takes its answer, and says
    // it as a manual check does.
    m_manual = m_manual || manual;
    if (m_checking)
        return;
    m_checking = true;
    m_checker.latestVersion([this](unsigned latest) {
        m_checking = false;
        const bool manual = std::exchange(m_manual, false);
        if (m_checker.isNewer(latest))
            offerNewer(latest);
        else if (manual)
            sayLatest();
        Q_EMIT checkEnded();
    });
}

void UpdateController::sayLatest() {
    // A server that cannot be reached says nothing newer either.
    const int answer =
        m_questions.runPromptSheet(tr("Latest Version"),
                                   tr("You are currently running Quillet %1, the latest version available.")
                                       .arg(VersionNumber::toString(m_checker.version())),
                                   tr("Okay"), tr("Visit Website"), QString());
    if (answer == 0)
        visitWebsite();
}

void UpdateController::offerNewer(unsigned latest) {
    const int answer = m_questions.runPromptSheet(
        tr("New Version Available!"),
        tr("Quillet %1 is now available for download.").arg(VersionNumber::toString(latest)),
        tr("Visit Website"), tr("Later"), QString());
    if (answer == 1)
        visitWebsite();
}

void UpdateController::visitWebsite() {
    const QUrl page = Website(m_defaults).productPage(Website::QuilletProductId);
    if (!page.isEmpty())
        m_desktop.openUrl(page);
}

} // namespace quillet
