#include "engine/watermark/textwatermarkrenderer.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace quillet {

using vips::VImage;

namespace {

// libvips crops a rendered text to its ink, which would lose leading and
// trailing blanks and the line's ascent and descent. Framing the text with
// two full blocks that Pango still measures but paints fully transparent
// keeps the line box: the blocks span ascent to descent, and the text's
// advance is the framed width minus that of the two blocks alone.
const QString kStrut = QStringLiteral("<span alpha=\"1\">\u2588</span>");

constexpr int kStandardSize = 13;

QString fontDescription(int pixelSize) {
    return QStringLiteral("DejaVu Sans,sans-serif %1px").arg(pixelSize);
}

QString oneLine(const QString& text) {
    QString line = text;
    for (QChar& c : line) {
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator)
            c = QLatin1Char(' ');
    }
    return line;
}

} // namespace

TextWatermarkRenderer::TextWatermarkRenderer(int fontSize)
    : m_pixelSize(fontSize >= 1 ? fontSize : kStandardSize) {
    const VImage frame = renderMarkup(kStrut + kStrut);
    m_strutWidth = frame.width();
    m_lineHeight = frame.height();
}

StyledText TextWatermarkRenderer::render(const QString& text, const TextWatermarkStyle& style) const {
    StyledText out;
    out.text = text;
    out.style = style;
    out.height = m_lineHeight;
    const QString line = oneLine(text);
    if (!line.isEmpty())
        renderRuns(line, out);
    return out;
}

void TextWatermarkRenderer::renderRuns(const QString& text, StyledText& out) const {
    try {
        const VImage mask = renderMarkup(kStrut + text.toHtmlEscaped() + kStrut);
        const int advance = std::max(0, mask.width() - m_strutWidth);
        // The run starts where the text so far ends; its mask begins one block earlier.
        out.runs.push_back({mask, out.width - m_strutWidth / 2.0});
        out.width += advance;
        out.height = std::max(out.height, mask.height());
        return;
    } catch (const vips::VError&) {
        // Mostly a text wider than a cairo surface may be (32767 pixels).
    }
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    std::vector<qsizetype> cuts;
    for (qsizetype at = finder.toNextBoundary(); at > 0 && at < text.size(); at = finder.toNextBoundary())
        cuts.push_back(at);
    if (cuts.empty())
        return; // a single cluster that will not render: leave it out
    const qsizetype middle = cuts[cuts.size() / 2];
    renderRuns(text.left(middle), out);
    renderRuns(text.mid(middle), out);
}

VImage TextWatermarkRenderer::renderMarkup(const QString& markup) const {
    const QByteArray utf8 = markup.toUtf8();
    const QByteArray font = fontDescription(m_pixelSize).toUtf8();
    return VImage::text(utf8.constData(), VImage::option()->set("font", font.constData())->set("dpi", 72));
}

} // namespace quillet
