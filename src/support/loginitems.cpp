#include "support/loginitems.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>

namespace quillet {

namespace {

constexpr char HideKey[] = "X-Quillet-StartHidden";

QString lastComponent(const QString& path) {
    return QFileInfo(path).fileName();
}

// The "[Desktop Entry]" group's keys of a desktop file; later groups (actions)
// and localised keys are ignored.
QMap<QString, QString> entryKeys(const QByteArray& text) {
    QMap<QString, QString> keys;
    bool inEntry = false;
    for (const QByteArray& raw : text.split('\n')) {
        const QString line = QString::fromUtf8(raw).trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inEntry = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (!inEntry || line.startsWith(QLatin1Char('#')) || equals <= 0)
            continue;
        keys.insert(line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
    }
    return keys;
}

// The string escapes of a desktop file's values.
QString unescapeValue(const QString& value) {
    QString out;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value[i] != QLatin1Char('\\') || i + 1 == value.size()) {
            out += value[i];
            continue;
        }
        const QChar next = value[++i];
        out += next == QLatin1Char('s')   ? QChar(u' ')
               : next == QLatin1Char('n') ? QChar(u'\n')
               : next == QLatin1Char('t') ? QChar(u'\t')
               : next == QLatin1Char('r') ? QChar(u'\r')
                                          : next;
    }
    return out;
}

} // namespace

LoginItems::LoginItems(QString folder, FileSystem& fs) : m_folder(std::move(folder)), m_fs(fs) {}

QString LoginItems::standardFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart");
}

QString LoginItems::execValue(const QString& path) {
    // Quoted as the Exec key wants ("`$\ escaped by a backslash), then
    // escaped again as any value is (each backslash doubled); a % is doubled
    // so that it is not read as a field code.
    QString quoted;
    for (const QChar c : path) {
        if (c == QLatin1Char('"') || c == QLatin1Char('`') || c == QLatin1Char('$') || c == QLatin1Char('\\'))
            quoted += QLatin1Char('\\');
        quoted += c == QLatin1Char('%') ? QStringLiteral("%%") : QString(c);
    }
    quoted.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString LoginItems::programOf(const QString& exec) {
    const QString value = unescapeValue(exec).trimmed();
    QString word;
    if (value.startsWith(QLatin1Char('"'))) {
        for (qsizetype i = 1; i < value.size() && value[i] != QLatin1Char('"'); ++i) {
            if (value[i] == QLatin1Char('\\') && i + 1 < value.size())
                ++i;
            word += value[i];
        }
    } else {
        word = value.section(QLatin1Char(' '), 0, 0, QString::SectionSkipEmpty);
    }
    return word.replace(QStringLiteral("%%"), QStringLiteral("%"));
}

QList<LoginItems::Item> LoginItems::items() const {
    QList<Item> found;
    const QFileInfoList files =
        QDir(m_folder).entryInfoList({QStringLiteral("*.desktop")}, QDir::Files, QDir::Name);
    for (const QFileInfo& info : files) {
        QFile file(info.filePath());
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QMap<QString, QString> keys = entryKeys(file.read(1 << 20));
        const QString program = programOf(keys.value(QStringLiteral("Exec")));
        if (program.isEmpty() || keys.value(QStringLiteral("Hidden")) == QLatin1String("true"))
            continue;
        found.append({program, keys.value(QLatin1String(HideKey)) == QLatin1String("true"), info.filePath()});
    }
    return found;
}

bool LoginItems::add(const QString& path, bool hide) {
    const QString name = lastComponent(path);
    if (!removeNamed(name) || !m_fs.makePath(m_folder))
        return false;
    // Another program's entry may have the name already: it is left alone.
    QString file = QDir(m_folder).filePath(name + QStringLiteral(".desktop"));
    for (int n = 2; FileSystem::exists(file); ++n)
        file = QDir(m_folder).filePath(QStringLiteral("%1-%2.desktop").arg(name).arg(n));
    const QString text = QStringLiteral("[Desktop Entry]\nType=Application\nName=%1\nExec=%2\n%3=%4\n")
                             .arg(name, execValue(path), QLatin1String(HideKey),
                                  hide ? QStringLiteral("true") : QStringLiteral("false"));
    return m_fs.writeAtomically(file, text.toUtf8());
}

bool LoginItems::removeNamed(const QString& name) {
    return removeWhere([&name](const Item& item) { return lastComponent(item.path) == name; });
}

bool LoginItems::removeWithPath(const QString& path) {
    return removeWhere([&path](const Item& item) { return item.path == path; });
}

bool LoginItems::launches(const QString& name) const {
    const QList<Item> all = items();
    return std::any_of(all.begin(), all.end(),
                       [&name](const Item& item) { return lastComponent(item.path) == name; });
}

bool LoginItems::removeWhere(const std::function<bool(const Item&)>& match) {
    bool ok = true;
    for (const Item& item : items())
        if (match(item) && !m_fs.remove(QFile::encodeName(item.file)))
            ok = false;
    return ok;
}

} // namespace quillet
