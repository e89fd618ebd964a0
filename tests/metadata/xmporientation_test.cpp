#include "metadata/xmporientation.h"

#include <gtest/gtest.h>

using namespace quillet;

namespace {

struct Case {
    const char* name;
    QByteArray packet;
    QByteArray expected; // the packet itself when nothing is to change
};

void PrintTo(const Case& c, std::ostream* os) {
    *os << c.name;
}

class XmpOrientationTest : public ::testing::TestWithParam<Case> {};

const QByteArray Rdf("<rdf:Description rdf:about='' xmlns:tiff='http://ns.adobe.com/tiff/1.0/'");

TEST_P(XmpOrientationTest, TurnedValuesBecomeUprightInPlace) {
    QByteArray packet = GetParam().packet;
    EXPECT_EQ(XmpOrientation::resetToUpright(packet), GetParam().expected != GetParam().packet);
    EXPECT_EQ(packet, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Forms, XmpOrientationTest,
    ::testing::Values(
        Case{"Attribute", Rdf + "\n tiff:Orientation=\"6\"\n tiff:ImageWidth=\"64\"/>",
             Rdf + "\n tiff:Orientation=\"1\"\n tiff:ImageWidth=\"64\"/>"},
        Case{"AttributeSpacedSingleQuoted", Rdf + " tiff:Orientation = '8'/>",
             Rdf + " tiff:Orientation = '1'/>"},
        Case{"Element", Rdf + "><tiff:Orientation>3</tiff:Orientation></rdf:Description>",
             Rdf + "><tiff:Orientation>1</tiff:Orientation></rdf:Description>"},
        Case{"ElementWithBlanks", Rdf + ">\n <tiff:Orientation>\n  5\n </tiff:Orientation>",
             Rdf + ">\n <tiff:Orientation>\n  1\n </tiff:Orientation>"},
        // Two descriptions, one per form, as merged packets have them.
        Case{"BothForms", Rdf + " tiff:Orientation='6'/>" + Rdf + "><tiff:Orientation>6</tiff:Orientation>",
             Rdf + " tiff:Orientation='1'/>" + Rdf + "><tiff:Orientation>1</tiff:Orientation>"},
        Case{"OtherPrefix",
             "<rdf:Description xmlns:t=\"http://ns.adobe.com/tiff/1.0/\" t:Orientation=\"7\"/>",
             "<rdf:Description xmlns:t=\"http://ns.adobe.com/tiff/1.0/\" t:Orientation=\"1\"/>"},
        Case{"TwoDigits", Rdf + " tiff:Orientation=\"06\"/>", Rdf + " tiff:Orientation=\"1\"/>"},
        // Left alone: already upright, another namespace's property, a
        // longer name, an empty element, and text that merely mentions it.
        Case{"Upright", Rdf + " tiff:Orientation=\"1\"/>", Rdf + " tiff:Orientation=\"1\"/>"},
        Case{
            "ForeignNamespace",
            "<rdf:Description xmlns:crs='http://ns.adobe.com/camera-raw-settings/1.0/' crs:Orientation='6'/>",
            "<rdf:Description xmlns:crs='http://ns.adobe.com/camera-raw-settings/1.0/' "
            "crs:Orientation='6'/>"},
        Case{"LongerName", Rdf + " tiff:OrientationHint=\"6\"/>", Rdf + " tiff:OrientationHint=\"6\"/>"},
        Case{"EmptyElement", Rdf + "><tiff:Orientation/><dc:x>6</dc:x>",
             Rdf + "><tiff:Orientation/><dc:x>6</dc:x>"},
        Case{"MentionedInText", Rdf + "><dc:description>was tiff:Orientation=\"6\"</dc:description>",
             Rdf + "><dc:description>was tiff:Orientation=\"6\"</dc:description>"}),
    [](const ::testing::TestParamInfo<Case>& info) { return info.param.name; });

} // namespace
