#include "engine/batch/batchshard.h"
#include "engine/batch/batchtree.h"

#include "engine/batch/imageprocessor.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using namespace quillet;

namespace {

TEST(BatchShardTest, OnlyKOfNWithKFromOneToNIsAShard) {
    for (const char* good : {"1/1", "3/3", " 2 / 7 ", "1/100000"})
        EXPECT_TRUE(BatchShard::parse(QString::fromLatin1(good))) << good;
    for (const char* bad : {"0/3", "4/3", "1/0", "-1/3", "1/-3", "2", "1/2/3", "a/b", "1.5/3", "", "/"})
        EXPECT_FALSE(BatchShard::parse(QString::fromLatin1(bad))) << bad;
    const auto shard = BatchShard::parse(QStringLiteral("2/5"));
    ASSERT_TRUE(shard);
    EXPECT_EQ(std::pair(shard->index, shard->count), std::pair(2, 5));
}

TEST(BatchShardTest, WorkersSharingAnOutputFolderRunInOnePartAndPartsStayBalanced) {
    const auto files = [](int n) {
        QStringList paths;
        for (int i = 0; i < n; ++i)
            paths.append(QStringLiteral("/in/%1.jpg").arg(i));
        return paths;
    };
    // Two dropped folders of the same name write into one output folder.
    const std::vector<ImageProcessorHelper> helpers = {
        {files(1), "/out"},   {files(9), "/out/a"}, {files(2), "/out/a/s"}, {files(0), "/out/e"},
        {files(9), "/out/a"}, {files(7), "/out/b"}, {files(6), "/out/c"},   {files(5), "/out/d"}};
    const std::vector<int> owners = BatchShard{1, 3}.owners(helpers);
    EXPECT_EQ(owners[1], owners[4]);
    std::vector<int> load(3, 0);
    for (size_t i = 0; i < helpers.size(); ++i)
        load[size_t(owners[i] - 1)] += helpers[i].numFiles();
    EXPECT_EQ(load, (std::vector<int>{18, 10, 11}));
    // More parts than folders: the spare parts get nothing, and no folder is lost.
    const std::vector<int> spread = BatchShard{1, 20}.owners(helpers);
    EXPECT_EQ(std::set<int>(spread.begin(), spread.end()).size(), 7U);
}

TEST(BatchShardTest, DestinationAndInputsMustNotContainOneAnother) {
    const auto tmp = testsupport::scratchDir(QStringLiteral("shard"));
    const QString root = tmp->path();
    batchtree::text(root + "/in/a.txt");
    batchtree::text(root + "/loose.txt");
    batchtree::text(root + "/out/x.txt");
    ASSERT_TRUE(QFile::link(root + "/in", root + "/via-link"));
    EXPECT_FALSE(BatchShard::overlaps({root + "/in", root + "/loose.txt"}, root + "/out"));
    EXPECT_FALSE(BatchShard::overlaps({root + "/in"}, root + "/input")); // a shared prefix is not inside
    EXPECT_TRUE(BatchShard::overlaps({root + "/in"}, root + "/in/new/out"));
    EXPECT_TRUE(BatchShard::overlaps({root + "/in"}, root + "/via-link/out"));
    EXPECT_TRUE(BatchShard::overlaps({root + "/out/x.txt", root + "/in"}, root + "/out/"));
    EXPECT_TRUE(BatchShard::overlaps({root + "/in"}, root + "/in"));
    EXPECT_TRUE(BatchShard::overlaps({root}, root + "/out"));
}

// A batch with folders of different sizes, same-named dropped folders,
// sequence names, questions, copies and corrupt files, run whole and in parts.
class ShardedBatchTest : public ::testing::Test {
  protected:
    void SetUp() override {
        batchtree::picture(p("loose1.jpg"), 300, 200, 30);
        batchtree::text(p("loose.txt"));
        for (int i = 0; i < 6; ++i)
            batchtree::picture(p(QStringLiteral("x/shots/p%1.jpg").arg(i)), 200 + 30 * i, 150, 20 * i);
        batchtree::picture(p("x/shots/deep/a.png"), 90, 120, 9);
        batchtree::text(p("x/shots/deep/.hidden"), "x");
        batchtree::text(p("x/shots/cut.jpg"), "\xff\xd8\xff\xe0 broken");
        batchtree::picture(p("y/shots/p0.jpg"), 120, 80, 200);
        batchtree::picture(p("y/shots/p9.tif"), 100, 100, 70);
        for (int i = 0; i < 4; ++i)
            batchtree::picture(p(QStringLiteral("z/level/%1.gif").arg(i)), 40, 30 + i, 50 * i);
        QDir().mkpath(p("z/empty/inner"));
        for (const char* name : {"Canon_40D.jpg", "orientation-portrait_6.jpg", "corrupted.jpg"})
            QFile::copy(testsupport::samplePath(name), p("z/camera/") + name);
        paths = {p("loose1.jpg"), p("loose.txt"), p("x/shots"), p("y/shots"), p("z")};
    }
    // Runs the batch (or one part of it) into `into`: its calls with the folder written as <out>.
    QStringList run(const QString& into, BatchShard shard) {
        RecordingShell recorder;
        recorder.answer = [](const QString& path) {
            return path.contains("0002") ? int(BatchShell::Replace) : int(BatchShell::Skip);
        };
        Renamer names;
        names.setType(Renamer::Sequence);
        names.setPrefix(QStringLiteral("s"));
        names.setDigits(4);
        ProcessingParams settings = ProcessingParams::defaults();
        settings.setBool(ParamKey::PreserveHeader, true);
        settings.setInt(ParamKey::Rotation, Rotation::Automatic);
        settings.setInt(ParamKey::ScaleType, ScaleType::Fit);
        settings.setInt(ParamKey::Width, 64);
        settings.setInt(ParamKey::Height, 64);
        BatchOptions options;
        options.copyNonImageFiles = true;
        options.renderThreads = 2;
        options.shard = shard;
        ImageProcessor job(recorder, names);
        job.processFiles(paths, ProcessingRequest::fromRecord(settings), into, 0, options);
        job.waitForFinished();
        return recorder.calls().replaceInStrings(into, "<out>");
    }
    QString p(const QString& relative) const { return tmp->path() + "/in/" + relative; }

    std::unique_ptr<QTemporaryDir> tmp = testsupport::scratchDir(QStringLiteral("shards"));
    QStringList paths;
};

// The per-file lines of a log: everything but the progress sheet and the final count.
QStringList fileLines(const QStringList& calls) {
    QStringList lines = calls;
    lines.removeIf([](const QString& line) {
        return line.startsWith("begin ") || line.startsWith("total ") || line == "end" ||
               line.startsWith("done ");
    });
    return lines;
}

bool isSubsequence(const QStringList& part, const QStringList& whole) {
    qsizetype at = 0;
    for (const QString& line : part) {
        while (at < whole.size() && whole[at] != line)
            ++at;
        if (at++ == whole.size())
            return false;
    }
    return true;
}

TEST_F(ShardedBatchTest, ThreePartsInAnyOrderWriteTheTreeAndTheLinesOfOneRun) {
    const QString whole = tmp->path() + "/whole";
    const QString sharded = tmp->path() + "/sharded";
    // An output there already, so that a question comes up in both.
    for (const QString& out : {whole, sharded})
        batchtree::text(out + "/shots/s0002.jpg", "old");
    const QStringList wholeCalls = run(whole, {});

    QStringList partLines;
    int processed = 0, total = 0;
    for (const int k : {3, 1, 2}) {
        const QStringList calls = run(sharded, {k, 3});
        EXPECT_TRUE(isSubsequence(fileLines(calls), fileLines(wholeCalls))) << "part " << k;
        EXPECT_FALSE(fileLines(calls).filter("log \tFilename: ").isEmpty()) << "part " << k << " idle";
        partLines += fileLines(calls);
        const QStringList done = calls.filter("done ");
        ASSERT_EQ(done.size(), 1);
        const QStringList counts = done.first().split(' ');
        processed += counts[1].toInt();
        total += counts[3].toInt();
    }
    EXPECT_EQ(batchtree::entries(sharded), batchtree::entries(whole));
    EXPECT_EQ(batchtree::checksums(sharded), batchtree::checksums(whole));
    QStringList wholeLines = fileLines(wholeCalls);
    wholeLines.sort();
    partLines.sort();
    EXPECT_EQ(partLines, wholeLines);
    EXPECT_EQ(wholeCalls.last(), QStringLiteral("done %1 of %2").arg(processed).arg(total));
    // The run did real work: several levels, questions (the two "shots" folders meet) and copies.
    EXPECT_GE(wholeLines.filter("log \tFilename: ").size(), 12);
    EXPECT_GE(wholeLines.filter("confirm ").size(), 2);
    EXPECT_GE(wholeLines.filter("log Copying ").size(), 2);
    EXPECT_TRUE(batchtree::entries(whole).contains("z/empty/inner"));
}

} // namespace
