#include "app/guitest.h"
#include "app/models/helpbook.h"
#include "app/models/updatecontroller.h"
#include "app/versionserver.h"
#include "app/widgets/about/aboutbox.h"
#include "app/widgets/main/mainwindow.h"

#include <QAbstractButton>
#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>

using namespace quillet;
using namespace quillet::guitest;

namespace {

class HelpMenuTest : public GuiTest {
  protected:
    void SetUp() override {
        GuiTest::SetUp();
        models->defaults().setValue(QStringLiteral("UpdateServer"), server.address());
        server.beSilent();
    }
    void TearDown() override {
        window.reset();
        GuiTest::TearDown();
    }
    void open() {
        window = std::make_unique<MainWindow>(*controller, *models, sheets);
        window->show();
    }
    VersionServer server;
    std::unique_ptr<MainWindow> window;
};

TEST_F(HelpMenuTest, ABatchRunsWhileTheUpdateServerKeepsSilent) {
    models->defaults().setInt("NextCheckVersion", 1); // due
    QElapsedTimer clock;
    clock.start();
    open();
    window->updates()->checker().setTimeout(3000);
    EXPECT_LT(clock.elapsed(), 1000);
    ASSERT_TRUE(waitFor([this] { return server.requests() == 1; }, 5000));
    EXPECT_TRUE(window->updates()->isChecking());

    // The window takes a batch from start to end while the request waits.
    ASSERT_TRUE(runBatch(makePictures(in(), 3)));
    EXPECT_TRUE(window->updates()->isChecking());
    EXPECT_TRUE(QFileInfo::exists(o("pic02.jpg")));
    // At the time-out the start check says nothing: there is nothing newer.
    ASSERT_TRUE(waitFor([this] { return !window->updates()->isChecking(); }, 10000));
    EXPECT_TRUE(asked.isEmpty());
}

TEST_F(HelpMenuTest, EveryHelpTopicOpensAnInstalledPage) {
    open();
    ASSERT_FALSE(HelpBook::folder().isEmpty()) << "help pages not found";
    window->findChild<QAction*>("actionHelp")->trigger();
    QMenu* topics = nullptr;
    for (QMenu* menu : window->menuBar()->findChildren<QMenu*>())
        if (menu->title() == QLatin1String("Help &Topics"))
            topics = menu;
    ASSERT_TRUE(topics);
    for (QAction* topic : topics->actions())
        topic->trigger();
    ASSERT_EQ(desktop.urls.size(), HelpBook::topics().size());
    for (const QUrl& url : std::as_const(desktop.urls))
        EXPECT_TRUE(url.isLocalFile() && QFileInfo::exists(url.toLocalFile())) << qPrintable(url.toString());
    EXPECT_TRUE(desktop.urls.first().toLocalFile().endsWith("/index.html"));
    EXPECT_TRUE(asked.isEmpty());
}

TEST_F(HelpMenuTest, TheAboutBoxShowsTheVersionLicenceAndLibrariesAndWritesToTheMaker) {
    models->defaults().setValue(QStringLiteral("ContactAddress"), QStringLiteral("help@maker.example"));
    models->defaults().setValue(QStringLiteral("HomePage"), QStringLiteral("https://maker.example"));
    open();
    window->findChild<QAction*>("actionAbout")->trigger();
    auto* about = window->findChild<AboutBox*>("aboutBox");
    ASSERT_TRUE(about);
    EXPECT_TRUE(about->isVisible());
    EXPECT_FALSE(about->isModal());
    EXPECT_TRUE(about->findChild<QLabel*>("aboutVersion")->text().contains(QUILLET_VERSION));
    EXPECT_TRUE(about->findChild<QPlainTextEdit*>("aboutLicence")->toPlainText().startsWith("MIT License\n"));
    EXPECT_EQ(about->findChild<QLabel*>("library-Qt")->text(), QString::fromLatin1(qVersion()));
    for (const char* library : {"library-libvips", "library-libjpeg-turbo", "library-libheif"}) {
        const QString version = about->findChild<QLabel*>(library)->text();
        EXPECT_TRUE(!version.isEmpty() && version.front().isDigit())
            << library << ": " << qPrintable(version);
    }
    about->findChild<QAbstractButton*>("sendMailButton")->click();
    about->findChild<QAbstractButton*>("visitWebsiteButton")->click();
    EXPECT_EQ(desktop.urls, (QList<QUrl>{QUrl("mailto:help@maker.example"), QUrl("https://maker.example")}));
    // One box: asked again, the same one comes to the front.
    window->findChild<QAction*>("actionAbout")->trigger();
    EXPECT_EQ(window->findChildren<AboutBox*>().size(), 1);
    // The product page is found under a home page set without its slash.
    window->updates()->visitWebsite();
    EXPECT_EQ(desktop.urls.last(), QUrl("https://maker.example/quillet/"));
}

} // namespace
