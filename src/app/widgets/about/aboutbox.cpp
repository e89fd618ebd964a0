#include "app/widgets/about/aboutbox.h"

#include "app/models/desktopservices.h"
#include "app/models/libraryversions.h"
#include "app/models/website.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFile>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

// Resources of a static library are registered by name from the global
// namespace.
static void registerAboutResources() {
    Q_INIT_RESOURCE(about);
}

namespace quillet {

AboutBox::AboutBox(const UserDefaults& defaults, DesktopServices& desktop, QWidget* parent)
    : QDialog(parent) {
    registerAboutResources();
    setObjectName(QStringLiteral("aboutBox"));
    setWindowTitle(tr("About Quillet"));

    auto* icon = new QLabel(this);
    icon->setPixmap(QApplication::windowIcon().pixmap(96, 96));
    icon->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
    auto* name = new QLabel(QStringLiteral("<h2>Quillet</h2>"), this);
    auto* version = new QLabel(tr("Version %1").arg(QStringLiteral(QUILLET_VERSION)), this);
    version->setObjectName(QStringLiteral("aboutVersion"));
    version->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* summary =
        new QLabel(tr("Converts, resizes, rotates, watermarks and renames many pictures at once."), this);
    summary->setWordWrap(true);

    auto* libraries = new QFormLayout;
    libraries->setObjectName(QStringLiteral("aboutLibraries"));
    for (const LibraryVersions::Library& library : LibraryVersions::all()) {
        auto* text = new QLabel(library.version, this);
        text->setObjectName(QStringLiteral("library-") + library.name);
        text->setTextInteractionFlags(Qt::TextSelectableByMouse);
        libraries->addRow(library.name + QLatin1Char(':'), text);
    }

    // The file's lines are broken for a terminal; the box rewraps its paragraphs.
    QStringList paragraphs = licenceText().split(QStringLiteral("\n\n"));
    for (QString& paragraph : paragraphs)
        paragraph = paragraph.simplified();
    auto* licence = new QPlainTextEdit(paragraphs.join(QStringLiteral("\n\n")), this);
    licence->setObjectName(QStringLiteral("aboutLicence"));
    licence->setReadOnly(true);
    licence->setMinimumHeight(150);

    auto* texts = new QVBoxLayout;
    texts->addWidget(name);
    texts->addWidget(version);
    texts->addWidget(summary);
    texts->addSpacing(6);
    texts->addWidget(new QLabel(tr("Built on:"), this));
    texts->addLayout(libraries);
    auto* top = new QHBoxLayout;
    top->addWidget(icon);
    top->addLayout(texts, 1);

    auto* buttons = new QDialogButtonBox(this);
    const Website site(defaults);
    const QUrl mail = site.mailTo();
    const QUrl home = site.homePage();
    if (!mail.isEmpty()) {
        QPushButton* send = buttons->addButton(tr("Send Mail"), QDialogButtonBox::ActionRole);
        send->setObjectName(QStringLiteral("sendMailButton"));
        send->setToolTip(mail.path());
        connect(send, &QPushButton::clicked, this, [&desktop, mail] { desktop.openUrl(mail); });
    }
    if (!home.isEmpty()) {
        QPushButton* visit = buttons->addButton(tr("Visit Website"), QDialogButtonBox::ActionRole);
        visit->setObjectName(QStringLiteral("visitWebsiteButton"));
        visit->setToolTip(home.toString());
        connect(visit, &QPushButton::clicked, this, [&desktop, home] { desktop.openUrl(home); });
    }
    QPushButton* close = buttons->addButton(QDialogButtonBox::Close);
    close->setDefault(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(new QLabel(tr("Licence:"), this));
    layout->addWidget(licence, 1);
    layout->addWidget(buttons);
    resize(520, 520);
}

QString AboutBox::licenceText() {
    registerAboutResources();
    QFile file(QStringLiteral(":/about/LICENSE"));
    if (!file.open(QIODevice::ReadOnly))
        return tr("MIT License");
    return QString::fromUtf8(file.readAll());
}

void AboutBox::showCentred() {
    const QRect area = parentWidget() ? parentWidget()->window()->frameGeometry()
                                      : (screen() ? screen()->availableGeometry() : QRect());
    if (area.isValid())
        move(area.center() - rect().center());
    show();
    raise();
    activateWindow();
}

} // namespace quillet
