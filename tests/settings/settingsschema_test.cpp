#include "settings/settingsschema.h"

#include <gtest/gtest.h>

using namespace quillet;

namespace {

TEST(SettingsSchema, EveryDefaultIsAValueOfItsOwnKeyAndEveryWordNamesOneChoice) {
    for (const SettingKey& key : SettingsSchema::keys()) {
        const QVariant def = key.defaultValue();
        if (def.isValid()) {
            EXPECT_EQ(key.checked(def), def) << qPrintable(key.key);
        }
        EXPECT_EQ(SettingsSchema::find(key.key), &key) << "key listed twice: " << qPrintable(key.key);
        QStringList seen;
        for (const SettingChoice& c : key.choices) {
            EXPECT_TRUE(c.code >= key.min && c.code <= key.max) << qPrintable(key.key);
            for (const QString& word : c.words) {
                EXPECT_FALSE(seen.contains(word)) << qPrintable(key.key + u' ' + word);
                EXPECT_EQ(key.codeOfWord(word.toUpper()), c.code);
                seen.append(word);
            }
        }
    }
}

} // namespace
