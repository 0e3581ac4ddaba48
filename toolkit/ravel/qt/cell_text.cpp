#include "toolkit/ravel/qt/cell_text.h"

#include "toolkit/ravel/qt/assets.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

namespace {

constexpr char16_t first_char = 0x20;
constexpr char16_t last_char = 0x7E;
constexpr int overhang = 2; ///< pixels that a character may reach beyond its advance, on both sides

bool is_ascii(char16_t c) { return c >= first_char && c <= last_char; }
/// Ideographs, and the signs that stand between them.
bool is_chinese(char16_t c) {
    return (c >= 0x4E00 && c <= 0x9FFF) || (c >= 0x3000 && c <= 0x303F) || (c >= 0xFF00 && c <= 0xFF60);
}

int channel_of(QRgb pixel, int shift) { return static_cast<int>(pixel >> shift & 0xFF); }

/// How much of `ink` a pixel is that was drawn on `paper`. Text is blended along a curve that depends on what is
/// under it; read back from a picture on the tables' own paper, the cover comes out as it shows there.
QRgb cover_of(QRgb pixel, QRgb paper, QRgb ink) {
    int span = 0;
    int there = 0;
    for (const int shift : {0, 8, 16}) {
        const int whole = channel_of(ink, shift) - channel_of(paper, shift);
        if (std::abs(whole) <= std::abs(span)) continue;
        span = whole;
        there = channel_of(pixel, shift) - channel_of(paper, shift);
    }
    const int alpha = span == 0 ? 0 : std::clamp(there * 255 / span, 0, 255);
    return qPremultiply(qRgba(qRed(ink), qGreen(ink), qBlue(ink), alpha));
}

} // namespace

cell_glyphs::cell_glyphs(const QFont& font, const QColor& color, qreal scale)
    : font_(font), color_(color), scale_(scale), glyphs_(last_char - first_char + 1) {
    font_.setResolveMask(QFont::AllPropertiesResolved); // what a widget inherits counts on a picture too
    const QFontMetricsF metrics(font);
    ascent_ = static_cast<int>(std::ceil(metrics.ascent()));
    height_ = ascent_ + static_cast<int>(std::ceil(metrics.descent()));
    for (char16_t c = first_char; c <= last_char; ++c)
        glyphs_[c - first_char].advance = metrics.horizontalAdvance(QChar(c));
}

bool cell_glyphs::can_show(const QString& text) {
    return std::all_of(text.begin(), text.end(),
                       [](QChar c) { return is_ascii(c.unicode()) || is_chinese(c.unicode()); });
}

cell_glyphs::glyph& cell_glyphs::of(QChar character) {
    if (is_ascii(character.unicode())) return glyphs_[character.unicode() - first_char];
    const auto [at, fresh] = others_.try_emplace(character.unicode());
    if (fresh) at->second.advance = QFontMetricsF(font_).horizontalAdvance(character);
    return at->second;
}

qreal cell_glyphs::exact_width(const QString& text) {
    qreal sum = 0;
    for (const QChar c : text) sum += of(c).advance;
    return sum;
}

int cell_glyphs::width(const QString& text) { return static_cast<int>(std::lround(exact_width(text))); }

int cell_glyphs::room(const QString& text) { return static_cast<int>(std::ceil(exact_width(text))); }

QString cell_glyphs::cut(const QString& text, int room) {
    const QChar dots(u'…');
    qreal sum = 0;
    qsizetype fits = 0; // with the dots behind
    for (qsizetype i = 0; i < text.size(); ++i) {
        sum += of(text[i]).advance;
        if (sum + of(dots).advance <= room) fits = i + 1;
        if (sum > room) return text.left(fits) + dots;
    }
    return text;
}

void cell_glyphs::make(QChar character, glyph* into) const {
    const QSize size(static_cast<int>(std::ceil(into->advance)) + 2 * overhang, height_);
    QImage picture(size * scale_, QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(scale_);
    QColor paper = style_color("card");
    if (paper.rgb() == color_.rgb()) paper = Qt::white;
    if (paper.rgb() == color_.rgb()) paper = Qt::black;
    picture.fill(paper);
    {
        QPainter painter(&picture);
        painter.setFont(font_);
        painter.setPen(color_);
        painter.drawText(overhang, ascent_, character);
    }
    for (int y = 0; y < picture.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < picture.width(); ++x) line[x] = cover_of(line[x], paper.rgb(), color_.rgb());
    }
    into->picture = picture;
}

void cell_glyphs::draw(QPainter* painter, QPoint at, const QString& text) {
    qreal x = at.x() - overhang;
    for (const QChar c : text) {
        glyph& one = of(c);
        if (one.picture.isNull()) make(c, &one);
        if (c != u' ') painter->drawImage(QPointF(std::round(x * scale_) / scale_, at.y() - ascent_), one.picture);
        x += one.advance;
    }
}

cell_glyphs& cell_glyphs_of(const QFont& font, const QColor& color, qreal scale) {
    static auto& all = *new std::map<std::tuple<QString, QRgb, qreal>, cell_glyphs>; // outlives the library
    const std::tuple key(font.key(), color.rgb(), scale);
    const auto found = all.find(key);
    return found != all.end() ? found->second : all.emplace(key, cell_glyphs(font, color, scale)).first->second;
}
