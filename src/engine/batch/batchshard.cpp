#include "engine/batch/batchshard.h"

#include "engine/batch/imageprocessorhelper.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <map>
#include <numeric>

namespace quillet {

namespace {

// The path with links resolved as far as it exists, so that a destination
// reached through a link is still recognised.
QString resolved(const QString& path) {
    QString absolute = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    QString missing;
    for (QString at = absolute; !at.isEmpty(); at = QFileInfo(at).path()) {
        const QString canonical = QFileInfo(at).canonicalFilePath();
        if (!canonical.isEmpty())
            return QDir::cleanPath(canonical + missing);
        missing.prepend(QLatin1Char('/') + QFileInfo(at).fileName());
        if (at == QFileInfo(at).path())
            break;
    }
    return absolute;
}

bool within(const QString& path, const QString& folder) {
    return path == folder || path.startsWith(folder.endsWith(QLatin1Char('/')) ? folder : folder + '/');
}

} // namespace

std::optional<BatchShard> BatchShard::parse(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral("^\\s*(\\d{1,9})\\s*/\\s*(\\d{1,9})\\s*$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const BatchShard shard{match.captured(1).toInt(), match.captured(2).toInt()};
    if (shard.count < 1 || shard.index < 1 || shard.index > shard.count)
        return std::nullopt;
    return shard;
}

std::vector<int> BatchShard::owners(const std::vector<ImageProcessorHelper>& helpers) const {
    std::vector<int> owner(helpers.size(), 1);
    if (isWhole())
        return owner;
    // Output folders in order of first appearance, with their files.
    std::map<QString, int> unitOf;
    std::vector<qint64> files;
    std::vector<int> unit(helpers.size());
    for (size_t i = 0; i < helpers.size(); ++i) {
        const auto [found, added] = unitOf.emplace(helpers[i].outputDir(), int(files.size()));
        if (added)
            files.push_back(0);
        unit[i] = found->second;
        files[size_t(found->second)] += helpers[i].numFiles();
    }
    std::vector<int> order(files.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](int a, int b) { return files[size_t(a)] > files[size_t(b)]; });
    std::vector<qint64> load(size_t(count), 0);
    std::vector<int> unitOwner(files.size());
    for (const int u : order) {
        const auto least = std::min_element(load.begin(), load.end());
        *least += files[size_t(u)];
        unitOwner[size_t(u)] = int(least - load.begin()) + 1;
    }
    for (size_t i = 0; i < helpers.size(); ++i)
        owner[i] = unitOwner[size_t(unit[i])];
    return owner;
}

std::vector<ImageProcessorHelper> BatchShard::select(std::vector<ImageProcessorHelper> helpers) const {
    if (isWhole())
        return helpers;
    const std::vector<int> owner = owners(helpers);
    std::vector<ImageProcessorHelper> mine;
    for (size_t i = 0; i < helpers.size(); ++i)
        if (owner[i] == index)
            mine.push_back(std::move(helpers[i]));
    return mine;
}

bool BatchShard::overlaps(const QStringList& paths, const QString& outputDir) {
    const QString destination = resolved(outputDir);
    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (!info.exists())
            continue;
        const QString input = resolved(path);
        if (within(input, destination) || (info.isDir() && within(destination, input)))
            return true;
    }
    return false;
}

} // namespace quillet
