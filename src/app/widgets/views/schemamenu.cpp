#include "app/widgets/views/schemamenu.h"

#include "settings/settingsschema.h"

#include <QComboBox>
#include <QObject>
#include <QSignalBlocker>

namespace quillet {

QComboBox* schemaMenu(const char* key, const QString& objectName) {
    auto* menu = new QComboBox;
    menu->setObjectName(objectName);
    if (const SettingKey* entry = SettingsSchema::find(QLatin1String(key)))
        for (const SettingChoice& choice : entry->choices)
            menu->addItem(QObject::tr(choice.displayName.toUtf8().constData()), choice.code);
    return menu;
}

void selectCode(QComboBox* menu, int code) {
    const QSignalBlocker block(menu);
    menu->setCurrentIndex(menu->findData(code));
}

} // namespace quillet
