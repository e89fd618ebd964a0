#pragma once

#include "app/models/appcontroller.h"
#include "app/models/appmodels.h"
#include "app/models/desktopservices.h"
#include "app/partedit.h"
#include "app/widgets/sheets/sheets.h"
#include "support/settingsstore.h"
#include "testsupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <QUrl>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace quillet::guitest {

// Records what the application asks of the desktop instead of doing it.
struct RecordingDesktop final : DesktopServices {
    QStringList revealed, opened, copied;
    QList<QUrl> urls;
    void revealFolder(const QString& folder) override { revealed.append(folder); }
    void openUrl(const QUrl& url) override { urls.append(url); }
    void openFile(const QString& path) override { opened.append(path); }
    void copyToClipboard(const QString& path) override { copied.append(path); }
};

// Runs the event loop until `done` holds or `ms` have passed; returns `done()`.
inline bool waitFor(const std::function<bool()>& done, int ms = 20000) {
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(1);
    }
    return done();
}

// Tiny JPEGs of distinct colours, named pic00.jpg, pic01.jpg, ...
inline QStringList makePictures(const QString& folder, int count, int size = 24) {
    QDir().mkpath(folder);
    QStringList paths;
    for (int i = 0; i < count; ++i) {
        const QString path = QStringLiteral("%1/pic%2.jpg").arg(folder).arg(i, 2, 10, QLatin1Char('0'));
        testsupport::solidImage(size, size, 20 * i % 256, 100, 200)
            .extract_band(0, vips::VImage::option()->set("n", 3))
            .jpegsave(path.toLocal8Bit().constData());
        paths.append(path);
    }
    return paths;
}

// A controller on a scratch settings file whose batches go to a scratch
// folder, with the questions recorded; the store starts with "OnTheFlyFolder"
// off and the scratch folder as the only destination.
class GuiTest : public ::testing::Test {
  protected:
    void SetUp() override {
        SettingsStore::overridePath(scratch->filePath(QStringLiteral("settings.ini")));
        {
            auto store = SettingsStore::open();
            store->setValue(QStringLiteral("OnTheFlyFolder"), false);
            store->setValue(QStringLiteral("Destinations"), QStringList{out, QStringLiteral("/nowhere")});
            store->setValue(QStringLiteral("ScaleType"), 4);
            store->setValue(QStringLiteral("Width"), 16);
            store->setValue(QStringLiteral("Height"), 16);
            store->setValue(QStringLiteral("PreserveHeader"), false);
        }
        start();
        QObject::connect(&sheets, &Sheets::sheetShown,
                         [this](const QString& title, const QString&) { asked.append(title); });
    }
    void TearDown() override {
        controller.reset();
        models.reset();
        SettingsStore::overridePath({});
    }
    // Makes the models and the controller on the store, as a start does.
    void start() {
        models = std::make_unique<AppModels>();
        controller = std::make_unique<AppController>(*models, sheets, desktop);
    }
    // Quits and starts again on the same store.
    void restart() {
        controller.reset();
        models.reset();
        start();
    }
    // Starts a batch and waits for its end; false when it did not end in time.
    bool runBatch(const QStringList& paths) {
        controller->processFiles(paths);
        return waitForIdle();
    }
    bool waitForIdle(int ms = 20000) {
        return waitFor([this] { return !controller->isBatchRunning() && !controller->isProcessing(); }, ms) &&
               waitFor([] { return true; }, 50);
    }
    QString in(const QString& name = {}) const { return scratch->filePath(QStringLiteral("in/") + name); }
    QString o(const QString& name) const { return QDir(out).filePath(name); }

    std::unique_ptr<QTemporaryDir> scratch = testsupport::scratchDir(QStringLiteral("gui"));
    QString out = scratch->filePath(QStringLiteral("out"));
    Sheets sheets;
    RecordingDesktop desktop;
    std::unique_ptr<AppModels> models;
    std::unique_ptr<AppController> controller;
    QStringList asked;
};

} // namespace quillet::guitest
