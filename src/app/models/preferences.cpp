#include "app/models/preferences.h"

#include "settings/settingsschema.h"
#include "settings/userdefaults.h"

namespace quillet {

namespace {

namespace S = StoreKey;

QString key(const char* name) {
    return QLatin1String(name);
}

} // namespace

Preferences Preferences::read(const UserDefaults& defaults) {
    Preferences p;
    p.singleFile = defaults.intValue(key(S::SingleFile));
    p.revealFolder = defaults.boolValue(key(S::RevealFolder));
    p.hideOnDeactivate = defaults.boolValue(key(S::HideOnDeactivate));
    p.hideToolTips = defaults.boolValue(key(S::HideToolTips));
    p.brushMetal = defaults.boolValue(key(S::BrushMetal));
    p.onTheFlyFolder = defaults.boolValue(key(S::OnTheFlyFolder));
    return p;
}

void Preferences::write(UserDefaults& defaults) const {
    defaults.setInt(key(S::SingleFile), singleFile);
    defaults.setBool(key(S::RevealFolder), revealFolder);
    defaults.setBool(key(S::HideOnDeactivate), hideOnDeactivate);
    defaults.setBool(key(S::HideToolTips), hideToolTips);
    defaults.setBool(key(S::BrushMetal), brushMetal);
    defaults.setBool(key(S::OnTheFlyFolder), onTheFlyFolder);
}

} // namespace quillet
