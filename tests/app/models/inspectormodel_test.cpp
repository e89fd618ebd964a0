#include "app/guitest.h"
#include "app/models/imageandtext.h"
#include "app/models/inspectorcolumns.h"
#include "app/models/inspectormodel.h"
#include "app/models/renamingmodel.h"

#include <QFile>
#include <QMimeData>
#include <QSettings>
#include <QSignalSpy>
#include <QUrl>

#include <random>

using namespace quillet;
using namespace quillet::guitest;

namespace {

class InspectorModelTest : public ::testing::Test {
  protected:
    // Adds files at a row as a drop of their addresses would, and waits for them.
    void drop(const QStringList& paths, int row, const QModelIndex& on = {}) {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& path : paths)
            urls.append(QUrl::fromLocalFile(path));
        data.setUrls(urls);
        ASSERT_TRUE(model.dropMimeData(&data, Qt::CopyAction, row, 0, on));
        ASSERT_TRUE(waitFor([this] { return !model.isAdding(); }));
    }
    QStringList names() const {
        QStringList names;
        for (int row = 0; row < model.rowCount(); ++row)
            names.append(model.record(row).name());
        return names;
    }
    QString text(int row, const char* column) const {
        return model.index(row, InspectorColumns::indexOf(QLatin1String(column))).data().toString();
    }

    std::unique_ptr<QTemporaryDir> dir = testsupport::scratchDir(QStringLiteral("inspector"));
    QSettings store{dir->filePath(QStringLiteral("s.ini")), QSettings::IniFormat};
    RenamingModel renaming{store};
    InspectorModel model{renaming};
    QStringList pictures = makePictures(dir->filePath(QStringLiteral("p")), 6);
};

TEST_F(InspectorModelTest, FilesDroppedAtARowLandThereInReverseOrder) {
    drop(pictures.mid(0, 3), -1); // on the empty list: appended at row 0, reversed
    EXPECT_EQ(names(), QStringList({"pic02", "pic01", "pic00"}));
    const QStringList more = makePictures(dir->filePath(QStringLiteral("q")), 3);
    drop(more, 2); // between rows 1 and 2
    EXPECT_EQ(names(), QStringList({"pic02", "pic01", "pic02", "pic01", "pic00", "pic00"}));
    EXPECT_EQ(model.record(2).path(), more[2]);
    EXPECT_EQ(model.record(4).path(), more[0]);
    // Below the last row, and onto a row (lands above it).
    drop(pictures.mid(3, 2), -1);
    EXPECT_EQ(model.record(6).name(), "pic04");
    EXPECT_EQ(model.record(7).name(), "pic03");
    drop({pictures[5]}, -1, model.index(1, 3));
    EXPECT_EQ(model.record(1).name(), "pic05");
    EXPECT_EQ(model.rowCount(), 9);
    // A batch from the list goes in list order.
    EXPECT_EQ(model.paths().first(), pictures[2]);
    EXPECT_EQ(model.paths()[1], pictures[5]);
}

TEST_F(InspectorModelTest, FoldersAndFilesWithoutARecordAddNothingAndTheCountSaysSo) {
    QFile text(dir->filePath(QStringLiteral("notes.txt")));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write("not a picture");
    text.close();
    QSignalSpy adding(&model, &InspectorModel::addingChanged);
    drop({dir->filePath(QStringLiteral("p")), text.fileName(), dir->filePath(QStringLiteral("gone.jpg"))}, 0);
    EXPECT_EQ(model.rowCount(), 0);
    ASSERT_EQ(adding.size(), 2); // on while reading, off at the end though nothing came
    EXPECT_EQ(InspectorModel::summaryFor(model.rowCount()), "0 item");

    drop({pictures[0]}, 0);
    EXPECT_EQ(InspectorModel::summaryFor(model.rowCount()), "1 item");
    drop({pictures[1]}, 0);
    EXPECT_EQ(InspectorModel::summaryFor(model.rowCount()), "2 items");
}

TEST_F(InspectorModelTest, RowsMovedLandAfterTheNearestUnmovedRowAboveTheDrop) {
    drop(pictures.mid(0, 5), -1); // e d c b a
    ASSERT_EQ(names(), QStringList({"pic04", "pic03", "pic02", "pic01", "pic00"}));
    QSignalSpy moved(&model, &InspectorModel::rowsMovedTo);

    // Rows 0 and 1 dragged to between rows 2 and 3: after the old row 2.
    std::unique_ptr<QMimeData> dragged(
        model.mimeData({model.index(1, 2), model.index(0, 0), model.index(1, 0)}));
    ASSERT_TRUE(model.dropMimeData(dragged.get(), Qt::CopyAction, 3, 0, {}));
    EXPECT_EQ(names(), QStringList({"pic02", "pic04", "pic03", "pic01", "pic00"}));
    ASSERT_EQ(moved.size(), 1);
    EXPECT_EQ(moved[0], QVariantList({1, 2}));

    // The row just above the drop is itself moved: the anchor is further up.
    EXPECT_EQ(model.moveRows({1, 3}, 2), 1);
    EXPECT_EQ(names(), QStringList({"pic02", "pic04", "pic01", "pic03", "pic00"}));
    // Nothing above stays: to the top.
    EXPECT_EQ(model.moveRows({3, 4}, 0), 0);
    EXPECT_EQ(names(), QStringList({"pic03", "pic00", "pic02", "pic04", "pic01"}));
    // Dropped on their own place: unchanged.
    EXPECT_EQ(model.moveRows({1, 2}, 2), 1);
    EXPECT_EQ(names(), QStringList({"pic03", "pic00", "pic02", "pic04", "pic01"}));
}

TEST_F(InspectorModelTest, SortsByAColumnAscendingAndLeavesTheOrderForTheOutputName) {
    QStringList sized;
    for (const int side : {40, 10, 30, 20}) {
        const QString path = dir->filePath(QStringLiteral("w%1.png").arg(side));
        testsupport::solidImage(side, 8, 1, 2, 3).pngsave(path.toLocal8Bit().constData());
        sized.append(path);
    }
    drop(sized, -1);
    model.sortByColumn(InspectorColumns::indexOf("width"));
    EXPECT_EQ(names(), QStringList({"w10", "w20", "w30", "w40"}));
    EXPECT_EQ(text(0, "kind"), "PNG");
    model.sortByColumn(InspectorColumns::indexOf("outputFilename"));
    EXPECT_EQ(names(), QStringList({"w10", "w20", "w30", "w40"}));
    model.sortByColumn(InspectorColumns::indexOf("thumbnailedName"));
    EXPECT_EQ(names().first(), "w10");
}

// The file-date comparison sets one record's file date against the other's
// capture date, and a missing camera model sorts first against anything: no
// order at all. Sorting by them must keep every record.
TEST_F(InspectorModelTest, SortingByComparisonsThatAreNoOrderKeepsEveryRecord) {
    const QStringList many = makePictures(dir->filePath(QStringLiteral("many")), 60, 8);
    std::mt19937 random(7);
    for (const QString& path : many) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        file.setFileTime(QDateTime::fromSecsSinceEpoch(1000000000 + qint64(random() % 100000)),
                         QFileDevice::FileModificationTime);
    }
    drop(many, -1);
    for (const char* column : {"fileDate", "creationDate", "cameraModel", "kind", "flashUsed", "aperture"}) {
        model.sortByColumn(InspectorColumns::indexOf(QLatin1String(column)));
        QStringList sorted = model.paths();
        sorted.sort();
        EXPECT_EQ(sorted, many) << column;
    }
}

TEST_F(InspectorModelTest, OutputNamesFollowTheRenamingScheme) {
    drop(pictures.mid(0, 2), -1);
    EXPECT_EQ(text(0, "outputFilename"), "pic01");
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    renaming.beginEdit();
    renaming.renamer().setType(Renamer::Sequence);
    renaming.renamer().setPrefix("trip-");
    renaming.renamer().setDigits(3);
    renaming.renamer().setStartFrom(1);
    renaming.endEdit(true);
    ASSERT_FALSE(changed.isEmpty());
    const QModelIndex first = changed.last()[0].toModelIndex();
    EXPECT_EQ(first.column(), InspectorColumns::indexOf("outputFilename"));
    EXPECT_EQ(text(0, "outputFilename"), "trip-001");
    EXPECT_EQ(text(1, "outputFilename"), "trip-002");
}

TEST_F(InspectorModelTest, ThumbnailsComeLaterAndAreKeptByPathAndModificationTime) {
    drop({pictures[0]}, -1);
    const QModelIndex cell = model.index(0, InspectorColumns::indexOf("thumbnailedName"));
    EXPECT_EQ(cell.data().value<ImageAndText>().text(), "pic00");
    EXPECT_TRUE(cell.data().value<ImageAndText>().image().isNull());
    ASSERT_TRUE(waitFor([&] { return !cell.data().value<ImageAndText>().image().isNull(); }));
    EXPECT_EQ(cell.data().value<ImageAndText>().image().size(), QSize(32, 32));

    InspectorThumbnails& thumbnails = model.thumbnails();
    const QDateTime modified = model.record(0).fileDate();
    EXPECT_TRUE(thumbnails.contains(pictures[0], modified));
    // The same path changed on disk is another picture.
    EXPECT_TRUE(thumbnails.thumbnail(pictures[0], modified.addSecs(5)).isNull());
    ASSERT_TRUE(waitFor([&] { return thumbnails.contains(pictures[0], modified.addSecs(5)); }));
}

TEST(InspectorThumbnails, KeepOnlyTheMostRecentlyUsed) {
    auto dir = testsupport::scratchDir(QStringLiteral("thumbs"));
    const QStringList paths = makePictures(dir->filePath(QStringLiteral("p")), 4);
    InspectorThumbnails thumbnails(2);
    const QDateTime when = QDateTime::fromSecsSinceEpoch(1);
    for (const QString& path : paths)
        thumbnails.thumbnail(path, when);
    ASSERT_TRUE(waitFor([&] { return thumbnails.madeCount() == 4; }));
    EXPECT_EQ(thumbnails.cachedCount(), 2);
}

} // namespace
