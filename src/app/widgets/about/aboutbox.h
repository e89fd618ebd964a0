#pragma once

#include <QDialog>

namespace quillet {

class DesktopServices;
class UserDefaults;

// The about box: the version, the licence and the libraries in use with
// their versions, with buttons that write to the maker and open its site. It
// is a window of its own, not a question: the main window stays usable.
class AboutBox : public QDialog {
    Q_OBJECT
  public:
    AboutBox(const UserDefaults& defaults, DesktopServices& desktop, QWidget* parent = nullptr);

    // The licence as shipped with the program.
    static QString licenceText();
    // Centres the box on its parent (or the screen) and shows it in front.
    void showCentred();
};

} // namespace quillet
