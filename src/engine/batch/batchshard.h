#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace quillet {

class ImageProcessorHelper;

// The K-th of N parts of a batch, so that one batch can be spread over runs
// on several machines. A part is made of whole output folders: the workers of
// one folder level (and any other worker writing into the same folder) always
// run together, so sequence numbers, replace answers and date suffixes come
// out as in a single run. Every part lists the whole input tree and picks its
// folders from that listing alone, so the parts agree without talking.
struct BatchShard {
    int index = 1; // K, from 1
    int count = 1; // N

    bool isWhole() const { return count <= 1; }

    // "K/N" with 1 <= K <= N; none for anything else.
    static std::optional<BatchShard> parse(const QString& text);

    // For each worker (in batch order), the part from 1 to `count` that runs
    // it. Output folders go, the largest first, to the part with the fewest
    // files so far (ties to the lowest part), which keeps the parts of a
    // batch within one folder's files of each other.
    std::vector<int> owners(const std::vector<ImageProcessorHelper>& helpers) const;
    // The workers this part runs, in batch order.
    std::vector<ImageProcessorHelper> select(std::vector<ImageProcessorHelper> helpers) const;

    // Whether the destination lies inside one of the inputs or an input
    // inside the destination. A part run after another would then list the
    // other's outputs as inputs, so parts refuse such a batch.
    static bool overlaps(const QStringList& paths, const QString& outputDir);
};

} // namespace quillet
