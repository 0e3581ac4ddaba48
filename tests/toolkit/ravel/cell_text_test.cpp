// Texts of table cells: what has pictures, and what is cut where there is no room.
#include "tests/toolkit/ravel/stage.h"
#include "toolkit/ravel/qt/cell_text.h"

#include <QApplication>

namespace {

class cell_text : public stage {
  protected:
    static cell_glyphs& glyphs() { return cell_glyphs_of(QApplication::font(), Qt::black, 1); }
};

TEST_F(cell_text, ascii_and_chinese_have_pictures) {
    EXPECT_TRUE(cell_glyphs::can_show(QStringLiteral("0x7ff ~")));
    EXPECT_TRUE(cell_glyphs::can_show(QStringLiteral("扩展帧-canfd，（一）")));
    EXPECT_FALSE(cell_glyphs::can_show(QStringLiteral("a\tb")));
    EXPECT_FALSE(cell_glyphs::can_show(QStringLiteral("naïve")));
    EXPECT_FALSE(cell_glyphs::can_show(QString(QChar(0x05D0)))) << "its place depends on its neighbours";
}

TEST_F(cell_text, a_text_that_has_room_stays_whole) {
    const QString text = QStringLiteral("标准帧-can");
    EXPECT_EQ(glyphs().cut(text, glyphs().width(text) + 1), text);
    EXPECT_EQ(glyphs().cut(QString(), 0), QString());
}

TEST_F(cell_text, the_room_that_a_text_needs_is_enough_and_no_more) {
    QString text;
    for (int i = 0; i < 100; ++i) {
        text += QStringLiteral("0A iW标-")[i % 7];
        EXPECT_EQ(glyphs().cut(text, glyphs().room(text)), text);
        EXPECT_NE(glyphs().cut(text, glyphs().room(text) - 1), text);
    }
}

TEST_F(cell_text, a_text_that_has_none_ends_in_dots) {
    const QString text = QStringLiteral("0123456789");
    const int dots = glyphs().width(QStringLiteral("…"));
    for (int room = dots; room < glyphs().width(text); ++room) {
        const QString cut = glyphs().cut(text, room);
        ASSERT_TRUE(cut.endsWith(u'…')) << room;
        const QString kept = cut.chopped(1);
        EXPECT_TRUE(text.startsWith(kept));
        EXPECT_LE(glyphs().width(cut), room);
        EXPECT_GT(glyphs().width(text.left(kept.size() + 1) + u'…'), room - 1) << "no more would fit";
    }
    EXPECT_EQ(glyphs().cut(text, 0), QStringLiteral("…"));
}

} // namespace
