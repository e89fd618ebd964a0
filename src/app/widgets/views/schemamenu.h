#pragma once

#include <QString>

class QComboBox;

namespace quillet {

// A menu of a setting's choices as the settings schema lists them: each
// item's data is its code.
QComboBox* schemaMenu(const char* key, const QString& objectName);
// Shows the item of a code without telling the menu's listeners; a code the
// menu lacks shows no item.
void selectCode(QComboBox* menu, int code);

} // namespace quillet
