#include "engine/batch/batchoptions.h"

#include "settings/userdefaults.h"

namespace quillet {

BatchOptions BatchOptions::fromDefaults(const UserDefaults& defaults) {
    BatchOptions options;
    options.copyNonImageFiles = defaults.boolValue(QStringLiteral("CopyNonImageFiles"));
    options.setCreationDate = defaults.boolValue(QStringLiteral("SetCreationDate"));
    options.setModificationDate = defaults.boolValue(QStringLiteral("SetModificationDate"));
    options.hideExtension = defaults.boolValue(QStringLiteral("HideExtension"));
    options.customIcon = defaults.boolValue(QStringLiteral("CustomIcon"));
    return options;
}

} // namespace quillet
