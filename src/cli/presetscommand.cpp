#include "cli/commands.h"
#include "settings/presetjson.h"
#include "settings/presetstore.h"
#include "support/settingsstore.h"

#include <QFile>
#include <QSettings>

#include <cstdio>

namespace quillet {

namespace {

const char usage[] = "Usage: quillet presets list\n"
                     "       quillet presets show NAME\n"
                     "       quillet presets export NAME FILE   (FILE '-' writes to standard output)\n"
                     "       quillet presets import FILE        (FILE '-' reads standard input)\n"
                     "       quillet presets delete NAME\n"
                     "\n"
                     "Presets are shared as JSON files; see docs/presets.md for the form.\n"
                     "Importing a name that is taken stores the preset under a copy name.\n";

int badUsage(const char* why) {
    std::fprintf(stderr, "quillet presets: %s\n\n%s", why, usage);
    return 2;
}

int fail(const QString& message) {
    std::fprintf(stderr, "quillet presets: %s\n", qPrintable(message));
    return 1;
}

void print(const QByteArray& bytes) {
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
}

// By name, or by the menu title of a nameless preset ("Untitled 0").
int findPreset(const PresetStore& store, const QString& name) {
    const int index = store.indexOfName(name);
    if (index >= 0)
        return index;
    return int(store.menuTitles().indexOf(name, 1)) - 1;
}

int list(const PresetStore& store) {
    const QStringList titles = store.menuTitles().mid(1);
    for (const QString& title : titles)
        std::printf("%s\n", qPrintable(title));
    return 0;
}

int show(const PresetStore& store, const QString& name, const QString& file) {
    const int index = findPreset(store, name);
    if (index < 0)
        return fail(QStringLiteral("no preset named '%1'").arg(name));
    const ProcessingParams& preset = store.presets().at(index);
    if (file.isEmpty() || file == QLatin1String("-")) {
        print(PresetJson::toJson(preset));
        return 0;
    }
    try {
        PresetJson::writeFile(file, preset);
    } catch (const PresetFileError& e) {
        return fail(QString::fromStdString(e.what()));
    }
    return 0;
}

ProcessingParams readPreset(const QString& file) {
    if (file != QLatin1String("-"))
        return PresetJson::readFile(file);
    QFile in;
    if (!in.open(stdin, QIODevice::ReadOnly))
        throw PresetFileError("cannot read standard input");
    return PresetJson::read(in);
}

int import(PresetStore& store, QSettings& settings, const QString& file) {
    ProcessingParams preset;
    try {
        preset = readPreset(file);
    } catch (const PresetFileError& e) {
        return fail(QStringLiteral("%1; nothing was imported").arg(QString::fromStdString(e.what())));
    }
    const int index = store.importPreset(preset);
    if (!store.save(settings))
        return fail(QStringLiteral("cannot write the settings store; nothing was imported"));
    std::printf("Imported preset '%s'\n", qPrintable(store.names().at(index)));
    return 0;
}

int remove(PresetStore& store, QSettings& settings, const QString& name) {
    const int index = findPreset(store, name);
    if (index < 0)
        return fail(QStringLiteral("no preset named '%1'").arg(name));
    store.removePreset(index);
    if (!store.save(settings))
        return fail(QStringLiteral("cannot write the settings store"));
    return 0;
}

} // namespace

int runPresets(const QStringList& args) {
    if (args.isEmpty())
        return badUsage("a subcommand is needed");
    const QString command = args.first();
    if (command == QLatin1String("-h") || command == QLatin1String("--help")) {
        std::fputs(usage, stdout);
        return 0;
    }
    const qsizetype operands = args.size() - 1;
    const auto expect = [&](qsizetype n) { return operands == n; };
    if (command == QLatin1String("list") && !expect(0))
        return badUsage("'list' takes no arguments");
    if ((command == QLatin1String("show") || command == QLatin1String("delete")) && !expect(1))
        return badUsage("a preset name is needed");
    if (command == QLatin1String("export") && !expect(2))
        return badUsage("'export' needs a preset name and a file");
    if (command == QLatin1String("import") && !expect(1))
        return badUsage("'import' needs one file");

    const auto settings = SettingsStore::open();
    PresetStore store = PresetStore::load(*settings);
    for (const QString& problem : store.problems())
        std::fprintf(stderr, "quillet presets: %s\n", qPrintable(problem));
    if (command == QLatin1String("list"))
        return list(store);
    if (command == QLatin1String("show"))
        return show(store, args.at(1), QString());
    if (command == QLatin1String("export"))
        return show(store, args.at(1), args.at(2));
    if (command == QLatin1String("import"))
        return import(store, *settings, args.at(1));
    if (command == QLatin1String("delete"))
        return remove(store, *settings, args.at(1));
    return badUsage("unknown subcommand");
}

} // namespace quillet
