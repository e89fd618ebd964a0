#include "app/models/desktopservices.h"

#include <QClipboard>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QMimeData>
#include <QUrl>

#include <vips/vips8>

namespace quillet {

namespace {

void openFolder(const QString& folder) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
}

class StandardDesktopServices final : public DesktopServices {
  public:
    void revealFolder(const QString& folder) override {
        QDBusConnection bus = QDBusConnection::sessionBus();
        if (!bus.isConnected()) {
            openFolder(folder);
            return;
        }
        QDBusMessage call = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
            QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
        call << QStringList{QUrl::fromLocalFile(folder).toString()} << QString();
        // Asynchronous: a bus without a file manager answers with an error
        // after a while, and the window must not wait for it.
        auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, 5000));
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, [folder](QDBusPendingCallWatcher* w) {
            if (w->isError())
                openFolder(folder);
            w->deleteLater();
        });
    }

    void openFile(const QString& path) override { QDesktopServices::openUrl(QUrl::fromLocalFile(path)); }

    void copyToClipboard(const QString& path) override {
        if (QMimeData* data = clipboardData(path))
            QGuiApplication::clipboard()->setMimeData(data);
    }
};

} // namespace

void DesktopServices::openUrl(const QUrl& url) {
    QDesktopServices::openUrl(url);
}

DesktopServices& DesktopServices::standard() {
    static StandardDesktopServices services;
    return services;
}

QMimeData* DesktopServices::clipboardData(const QString& path) {
    QByteArray tiff;
    try {
        const vips::VImage image = vips::VImage::new_from_file(path.toLocal8Bit().constData());
        VipsBlob* blob = image.tiffsave_buffer();
        size_t size = 0;
        const void* bytes = vips_blob_get(blob, &size);
        tiff = QByteArray(static_cast<const char*>(bytes), qsizetype(size));
        vips_area_unref(VIPS_AREA(blob));
    } catch (const vips::VError&) {
        return nullptr;
    }
    auto* data = new QMimeData;
    data->setData(QStringLiteral("image/tiff"), tiff);
    data->setText(path);
    data->setUrls({QUrl::fromLocalFile(path)});
    return data;
}

} // namespace quillet
