// Text of table cells, painted from pictures of its characters: a table shows hundreds of texts that are new with
// every filling, and drawing a character's picture costs a tenth of drawing the character. GUI thread only.
#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QPainter>

#include <unordered_map>
#include <vector>

/// The pictures of one font in one colour at one scale.
class cell_glyphs {
  public:
    cell_glyphs(const QFont& font, const QColor& color, qreal scale);

    /// Whether it has pictures for all of a text (ASCII and Chinese, whose characters stand for themselves wherever
    /// they stand); others are left to the painter.
    static bool can_show(const QString& text);
    /// Width in pixels of a text that it can show.
    int width(const QString& text);
    /// Pixels that a text needs, to be drawn uncut.
    int room(const QString& text);
    /// As much of a text as `room` pixels hold; "…" ends one that is cut.
    QString cut(const QString& text, int room);
    /// Draws such a text with its base line at `at`.
    void draw(QPainter* painter, QPoint at, const QString& text);

  private:
    struct glyph {
        QImage picture; ///< null until it is needed
        qreal advance = 0;
    };
    glyph& of(QChar character);
    qreal exact_width(const QString& text);
    void make(QChar character, glyph* into) const;

    QFont font_;
    const QColor color_;
    const qreal scale_;
    int ascent_ = 0;
    int height_ = 0;
    std::vector<glyph> glyphs_;                  ///< of the printable characters of ASCII
    std::unordered_map<char16_t, glyph> others_; ///< of those of the others that came up
};

/// The pictures for a font and colour; kept for as long as the program runs.
cell_glyphs& cell_glyphs_of(const QFont& font, const QColor& color, qreal scale);
