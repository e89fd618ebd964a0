#include "app/models/creatormenu.h"

#include "settings/userdefaults.h"

#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QVariantMap>

namespace quillet {

namespace {

Creator creatorFromVariant(const QVariant& value) {
    const QVariantMap map = value.toMap();
    Creator creator;
    creator.label = map.value(QStringLiteral("label")).toString();
    const QVariant code = map.value(QStringLiteral("code"));
    // The code is a number; a hand-edited store may hold the four characters.
    creator.code = code.typeId() == QMetaType::QString && code.toString().size() == 4
                       ? CreatorMenu::osTypeFromString(code.toString())
                       : code.toUInt();
    return creator;
}

// The keys of the [Desktop Entry] group; unlocalised values only.
QMap<QString, QString> desktopEntry(const QString& path) {
    QMap<QString, QString> keys;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text) || file.size() > 1024 * 1024)
        return keys;
    bool inEntry = false;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inEntry = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        const int equals = int(line.indexOf(QLatin1Char('=')));
        if (!inEntry || equals <= 0 || line.startsWith(QLatin1Char('#')))
            continue;
        const QString key = line.left(equals).trimmed();
        if (!keys.contains(key))
            keys.insert(key, line.mid(equals + 1).trimmed());
    }
    return keys;
}

} // namespace

CreatorMenu::CreatorMenu(UserDefaults& defaults) : m_defaults(defaults) {
    select(defaults.intValue(QLatin1String(SelectedKey)));
}

QList<Creator> CreatorMenu::creators() const {
    QList<Creator> list;
    for (const QVariant& item : m_defaults.value(QLatin1String(CreatorsKey)).toList())
        list.append(creatorFromVariant(item));
    return list;
}

void CreatorMenu::store(const QList<Creator>& creators) {
    QVariantList list;
    for (const Creator& creator : creators)
        list.append(
            QVariantMap{{QStringLiteral("label"), creator.label}, {QStringLiteral("code"), creator.code}});
    m_defaults.setValue(QLatin1String(CreatorsKey), list);
}

void CreatorMenu::select(int menuIndex) {
    const QList<Creator> list = creators();
    if (menuIndex >= 1 && menuIndex <= list.size()) {
        m_selected = menuIndex;
        m_code = list.at(menuIndex - 1).code;
    } else {
        m_selected = 0;
        m_code = 0;
    }
    m_defaults.setInt(QLatin1String(SelectedKey), m_selected);
}

void CreatorMenu::removeSelected() {
    QList<Creator> list = creators();
    if (m_selected > 0 && m_selected <= list.size()) {
        list.removeAt(m_selected - 1);
        store(list);
    }
    select(0);
}

void CreatorMenu::add(const Creator& creator) {
    QList<Creator> list = creators();
    list.prepend(creator);
    while (list.size() > MaxCreators)
        list.removeLast();
    store(list);
    select(1);
}

std::uint32_t CreatorMenu::osTypeFromString(const QString& text) {
    const QByteArray bytes = text.toLatin1();
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i)
        code = (code << 8) | (i < bytes.size() ? std::uint8_t(bytes.at(i)) : 0u);
    return code;
}

QString CreatorMenu::applicationName(const QString& desktopFile) {
    const QString name = desktopEntry(desktopFile).value(QStringLiteral("Name"));
    return name.isEmpty() ? QFileInfo(desktopFile).completeBaseName() : name;
}

std::optional<Creator> CreatorMenu::creatorWithPath(const QString& desktopFile) {
    if (!desktopFile.endsWith(QLatin1String(".desktop")))
        return std::nullopt;
    const QMap<QString, QString> entry = desktopEntry(desktopFile);
    if (entry.value(QStringLiteral("Type")) != QLatin1String("Application"))
        return std::nullopt;
    const QString signature = entry.value(QStringLiteral("X-Quillet-Creator"));
    if (signature.size() != 4 || signature == QLatin1String("????"))
        return std::nullopt;
    for (const QChar c : signature)
        if (c.unicode() < 0x20 || c.unicode() > 0x7e)
            return std::nullopt;
    return Creator{applicationName(desktopFile), osTypeFromString(signature)};
}

} // namespace quillet
