#include "settings/presetnames.h"

#include <gtest/gtest.h>

namespace {

QStringList list(std::initializer_list<const char*> names) {
    QStringList out;
    for (const char* n : names)
        out.append(QString::fromUtf8(n));
    return out;
}

TEST(PresetNames, AcceptanceRefusesEmptyNoneAndTakenNames) {
    const QStringList existing = list({"Trip", "Web"});
    EXPECT_TRUE(PresetNames::isAcceptable(QStringLiteral("Print"), existing));
    EXPECT_TRUE(PresetNames::isAcceptable(QStringLiteral("trip"), existing)); // case matters
    EXPECT_TRUE(PresetNames::isAcceptable(QStringLiteral("None copy"), existing));
    for (const QString& refused :
         {QString(), QStringLiteral(""), QStringLiteral("None"), QStringLiteral("Trip")})
        EXPECT_FALSE(PresetNames::isAcceptable(refused, existing)) << refused.toStdString();
}

struct DuplicateCase {
    const char* name;
    const char* existing; // names joined by '|'
    const char* expected;
};

void PrintTo(const DuplicateCase& c, std::ostream* os) {
    *os << c.name << " -> " << c.expected;
}

class PresetDuplicateNames : public testing::TestWithParam<DuplicateCase> {};

TEST_P(PresetDuplicateNames, FollowTheCopyRule) {
    const DuplicateCase& c = GetParam();
    EXPECT_EQ(
        PresetNames::duplicateName(QString::fromUtf8(c.name),
                                   QString::fromUtf8(c.existing).split(QLatin1Char('|'), Qt::SkipEmptyParts)),
        QString::fromUtf8(c.expected));
}

// The counter has moved on by the time "A copy" is found taken, so a plain
// name skips "copy 1"; a name already ending in " copy" starts at 1.
INSTANTIATE_TEST_SUITE_P(CopyNames, PresetDuplicateNames,
                         testing::Values(DuplicateCase{"Trip", "Trip", "Trip copy"},
                                         DuplicateCase{"Trip", "Trip|Trip copy", "Trip copy 2"},
                                         DuplicateCase{"Trip", "Trip|Trip copy|Trip copy 2", "Trip copy 3"},
                                         DuplicateCase{"Trip copy", "Trip|Trip copy", "Trip copy 1"},
                                         DuplicateCase{"Trip copy", "Trip copy|Trip copy 1", "Trip copy 2"},
                                         DuplicateCase{"None", "", "None copy"},
                                         DuplicateCase{"", "", " copy"},
                                         DuplicateCase{"", " copy", " copy copy"}));

TEST(PresetNames, MenuTitlesCountOnlyNamelessPresetsFromZero) {
    EXPECT_EQ(PresetNames::menuTitles(list({"A", "", "B", ""})),
              list({"None", "A", "Untitled 0", "B", "Untitled 1"}));
    EXPECT_EQ(PresetNames::menuTitles({}), list({"None"}));
}

} // namespace
