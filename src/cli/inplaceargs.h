#pragma once

#include <QStringList>

#include <optional>

namespace quillet {

// The arguments of an in-place command: one optional flag and the words that
// follow it. -h/--help and unknown options are answered here; `exitStatus` is
// then set and the command returns it.
struct InplaceArgs {
    bool flag = false;
    QStringList words;
    std::optional<int> exitStatus;
};

InplaceArgs parseInplaceArgs(const QStringList& args, const char* command, const char* usage,
                             const QString& flag);

} // namespace quillet
