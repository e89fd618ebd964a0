// The XMP filter: properties cut out by namespace and name, in attribute and
// element form, the rest of the packet left byte for byte.

#include "metadata/xmpfilter.h"

#include <QXmlStreamReader>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

const QByteArray packet = R"(<?xpacket begin="" id="W5M0MpCehiHzreSzNTczkc9d"?>
<x:xmpmeta xmlns:x="adobe:ns:meta/">
 <rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#">
  <rdf:Description rdf:about=""
    xmlns:exif="http://ns.adobe.com/exif/1.0/"
    xmlns:aux="http://ns.adobe.com/exif/1.0/aux/"
    xmlns:tiff="http://ns.adobe.com/tiff/1.0/"
    xmlns:photoshop="http://ns.adobe.com/photoshop/1.0/"
    xmlns:dc="http://purl.org/dc/elements/1.1/"
    xmlns:xmpNote="http://ns.adobe.com/xmp/note/"
    xmlns:crs="http://ns.adobe.com/camera-raw-settings/1.0/"
    exif:GPSLatitude="47,22.5N" tiff:Orientation="6" aux:SerialNumber="SN-998877"
    crs:Exposure="-0.50" xmpNote:HasExtendedXMP="0123456789ABCDEF0123456789ABCDEF">
   <photoshop:Headline>Grüezi</photoshop:Headline>
   <photoshop:City>Zürich</photoshop:City>
   <exif:GPSLongitude>8,32.6E</exif:GPSLongitude>
   <exif:DateTimeOriginal>2020-01-02T03:04:05</exif:DateTimeOriginal>
   <dc:rights><rdf:Alt><rdf:li xml:lang="x-default">© Ann</rdf:li></rdf:Alt></dc:rights>
   <dc:subject><rdf:Bag><rdf:li>lake</rdf:li></rdf:Bag></dc:subject>
  </rdf:Description>
 </rdf:RDF>
</x:xmpmeta>
<?xpacket end="w"?>)";

bool wellFormed(const QByteArray& xml) {
    QXmlStreamReader reader(xml);
    while (!reader.atEnd())
        reader.readNext();
    return !reader.hasError();
}

TEST(XmpFilter, NoLocationCutsPlaceAndSerialsAndLeavesTheRestAsItWas) {
    const XmpFilter::Result out = XmpFilter::filter(packet, MetadataPolicy::NoLocation);
    ASSERT_TRUE(wellFormed(out.packet)) << out.packet.constData();
    for (const char* gone : {"47,22.5N", "8,32.6E", "Zürich", "SN-998877", "HasExtendedXMP"})
        EXPECT_FALSE(out.packet.contains(gone)) << gone;
    // Text before and after a cut, non-ASCII included, is untouched.
    for (const char* kept :
         {"<photoshop:Headline>Grüezi</photoshop:Headline>\n   <exif:DateTimeOriginal>",
          "tiff:Orientation=\"6\"", "crs:Exposure=\"-0.50\"", "© Ann", "<?xpacket end=\"w\"?>"})
        EXPECT_TRUE(out.packet.contains(kept)) << kept;
    EXPECT_EQ(out.removed.location, 3);
    EXPECT_EQ(out.removed.identifying, 1);
    EXPECT_EQ(out.removed.other, 1);
}

TEST(XmpFilter, MinimalKeepsOrientationDateAndRights) {
    const XmpFilter::Result out = XmpFilter::filter(packet, MetadataPolicy::Minimal);
    ASSERT_TRUE(wellFormed(out.packet));
    for (const char* kept : {"tiff:Orientation=\"6\"", "2020-01-02T03:04:05", "© Ann"})
        EXPECT_TRUE(out.packet.contains(kept)) << kept;
    for (const char* gone : {"Grüezi", "lake", "-0.50", "Zürich", "SN-998877"})
        EXPECT_FALSE(out.packet.contains(gone)) << gone;
    EXPECT_EQ(out.removed.location, 3);
    EXPECT_EQ(out.removed.other, 4); // exposure, extension, headline, subject
}

TEST(XmpFilter, KeepNoneAndBrokenPackets) {
    EXPECT_EQ(XmpFilter::filter(packet, MetadataPolicy::Keep).packet, packet);
    const XmpFilter::Result none = XmpFilter::filter(packet, MetadataPolicy::None);
    EXPECT_TRUE(none.packet.isEmpty());
    EXPECT_EQ(none.removed.location, 3);
    EXPECT_EQ(none.removed.identifying, 1);
    EXPECT_EQ(none.removed.other, 7);
    // Cut short, or with a prefix nobody declared: dropped whole.
    for (const QByteArray& broken : {packet.left(packet.size() / 2), QByteArray("<a><b:c>x</b:c></a>")}) {
        const XmpFilter::Result out = XmpFilter::filter(broken, MetadataPolicy::NoLocation);
        EXPECT_TRUE(out.packet.isEmpty());
        EXPECT_EQ(out.removed.other, 1);
    }
}

} // namespace
