#pragma once

#include <QList>
#include <QString>
#include <QUrl>

namespace quillet {

// The help pages installed with the application (share/quillet/help), opened
// by topic in the web browser.
class HelpBook {
  public:
    struct Topic {
        QString page;  // file name in the help folder
        QString title; // as the Help menu shows it
    };

    // The front page first, then one topic a page.
    static QList<Topic> topics();
    // The folder that holds the pages: beside the program when installed
    // (<prefix>/bin and <prefix>/share/quillet/help), the source tree's for
    // a program run from its build folder, else the system's data folders.
    // Empty when none has them.
    static QString folder();
    // The page's file address; empty when the pages are not there.
    static QUrl url(const QString& page);
};

} // namespace quillet
