#include "cli/commands.h"
#include "metadata/jpegcontext.h"
#include "metadata/kvimageinfo.h"
#include "metadata/metadatanotes.h"

#include <QByteArray>
#include <QString>

#include <charconv>
#include <cstdio>
#include <string>

namespace quillet {

namespace {

const char infoUsage[] = "Usage: quillet info [--json] FILE...\n"
                         "\n"
                         "Shows each picture's metadata record, one block per file. A file that\n"
                         "gives no record is named on standard error and makes the exit status 1;\n"
                         "the others are still shown.\n"
                         "\n"
                         "  --json   one JSON object per line instead, with the keys:\n"
                         "             path, name, kind (strings); width, height, size (bytes),\n"
                         "             orientation (1..8, 0 unknown) (integers); cameraMake,\n"
                         "             cameraModel (trailing blanks dropped), creationDate (the EXIF\n"
                         "             capture date text) (strings);\n"
                         "             exposureTime (seconds), aperture (f-number), focalLength,\n"
                         "             focalLength35 (millimetres; 35 mm equivalent), (numbers);\n"
                         "             iso (integer); flash (boolean); distance (metres),\n"
                         "             exposureBias (EV) (numbers); comment (string).\n"
                         "             Missing numbers are 0, missing texts empty.\n";

// EXIF pads texts with blanks to a fixed width; the listing drops them.
QString trimmedRight(QString text) {
    while (text.endsWith(QLatin1Char(' ')))
        text.chop(1);
    return text;
}

// Shortest text that reads back as the same float.
std::string number(float value) {
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    std::string text(buffer, result.ptr);
    if (text == "inf" || text == "-inf" || text == "nan" || text == "-nan")
        return "0"; // JSON has no such numbers
    return text;
}

std::string jsonString(const QString& text) {
    std::string out = "\"";
    for (const char ch : text.toUtf8().toStdString()) {
        const auto byte = static_cast<unsigned char>(ch);
        switch (ch) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            if (byte < 0x20) {
                char escaped[8];
                std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
                out += escaped;
            } else {
                out += ch;
            }
        }
    }
    return out + "\"";
}

std::string jsonLine(const KVImageInfo& info) {
    std::string s = "{";
    const auto key = [&s](const char* name) {
        if (s.size() > 1)
            s += ',';
        s += '"';
        s += name;
        s += "\":";
    };
    key("path"), s += jsonString(info.path());
    key("name"), s += jsonString(info.name());
    key("kind"), s += jsonString(info.kind());
    key("width"), s += std::to_string(info.width());
    key("height"), s += std::to_string(info.height());
    key("size"), s += std::to_string(info.size());
    key("orientation"), s += std::to_string(info.orientation());
    key("cameraMake"), s += jsonString(trimmedRight(info.cameraMake()));
    key("cameraModel"), s += jsonString(trimmedRight(info.cameraModel()));
    key("creationDate"), s += jsonString(info.creationDateString());
    key("exposureTime"), s += number(info.exposureTimeFloat());
    key("aperture"), s += number(info.apertureFloat());
    key("focalLength"), s += number(info.focalLengthFloat());
    key("focalLength35"), s += number(info.focalLength35Float());
    key("iso"), s += std::to_string(info.isoInt());
    key("flash"), s += info.flashUsedBool() ? "true" : "false";
    key("distance"), s += number(info.distanceFloat());
    key("exposureBias"), s += number(info.exposureBias());
    key("comment"), s += jsonString(info.comment());
    return s + "}\n";
}

std::string textBlock(const KVImageInfo& info) {
    QString s;
    const auto line = [&s](const char* label, const QString& value) {
        s += QStringLiteral("  %1 %2\n").arg(QLatin1String(label), -15).arg(value);
    };
    s += info.path() + QLatin1Char('\n');
    line("name:", info.name());
    line("kind:", info.kind());
    line("width:", QString::number(info.width()));
    line("height:", QString::number(info.height()));
    line("size:", QString::number(info.size()));
    line("orientation:", QString::number(info.orientation()));
    line("camera make:", trimmedRight(info.cameraMake()));
    line("camera model:", trimmedRight(info.cameraModel()));
    line("date:", info.creationDateString());
    line("exposure:", info.exposureTime());
    line("aperture:", info.aperture());
    line("focal length:", info.focalLength());
    line("35 mm focal:", info.focalLength35());
    line("iso:", info.iso());
    line("flash:", info.flashUsed());
    line("distance:", info.distance());
    line("exposure bias:", QString::asprintf("%.2f", double(info.exposureBias())));
    line("comment:", info.comment());
    return s.toStdString();
}

} // namespace

int runInfo(const QStringList& args) {
    bool json = false;
    QStringList files;
    bool optionsDone = false;
    for (const QString& arg : args) {
        if (!optionsDone && arg == QLatin1String("--json")) {
            json = true;
        } else if (!optionsDone && (arg == QLatin1String("-h") || arg == QLatin1String("--help"))) {
            std::fputs(infoUsage, stdout);
            return 0;
        } else if (!optionsDone && arg == QLatin1String("--")) {
            optionsDone = true;
        } else if (!optionsDone && arg.startsWith(QLatin1Char('-'))) {
            std::fprintf(stderr, "quillet info: unknown option '%s'\n\n%s", qPrintable(arg), infoUsage);
            return 2;
        } else {
            files.append(arg);
        }
    }
    if (files.isEmpty()) {
        std::fputs(infoUsage, stderr);
        return 2;
    }

    // Anything the reader prints goes to stderr, so that stdout holds only
    // records; its notes are kept per file and only damage is shown.
    setMetadataMessageStreams(stderr, stderr);
    int status = 0;
    bool first = true;
    for (const QString& file : files) {
        MetadataNotes notes;
        const std::optional<KVImageInfo> info = KVImageInfo::fromFile(file, true, false, &notes);
        for (const MetadataNotes::Note& note : notes.notes())
            if (note.damage)
                std::fprintf(stderr, "quillet info: '%s': %s\n", qPrintable(file),
                             qPrintable(note.text.trimmed()));
        if (!info) {
            std::fprintf(stderr, "quillet info: '%s' gives no image record (not a picture, or unreadable)\n",
                         qPrintable(file));
            status = 1;
            continue;
        }
        if (!json && !first)
            std::fputc('\n', stdout);
        first = false;
        const std::string out = json ? jsonLine(*info) : textBlock(*info);
        std::fwrite(out.data(), 1, out.size(), stdout);
    }
    return status;
}

} // namespace quillet
