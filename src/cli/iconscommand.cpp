#include "cli/commands.h"

#include "cli/consolereport.h"

#include <cstdio>

namespace quillet {

namespace {

const char usage[] = "Usage: quillet icons add|remove FILE...\n"
                     "\n"
                     "add gives each file a custom icon made from its own picture (the\n"
                     "thumbnail file managers show); remove takes it away again.\n";

} // namespace

int runIcons(const QStringList& args) {
    if (args.contains(QLatin1String("-h")) || args.contains(QLatin1String("--help"))) {
        std::fputs(usage, stdout);
        return 0;
    }
    if (args.size() < 2 ||
        (args.first() != QLatin1String("add") && args.first() != QLatin1String("remove"))) {
        std::fputs(usage, stderr);
        return 2;
    }
    const InplaceAction action =
        args.first() == QLatin1String("add") ? InplaceAction::AddIcons : InplaceAction::RemoveIcons;
    return ConsoleReport::run(action, args.mid(1), false, false);
}

} // namespace quillet
