#include "tests/toolkit/ravel/stage.h"

#include <QApplication>
#include <QFile>
#include <QFontDatabase>
#include <QFontInfo>
#include <QLabel>
#include <QRawFont>

#include <gmock/gmock.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

const fs::path top = VKT_SOURCE_TREE;

/// Characters of all texts that the program itself shows.
QString own_characters() {
    QString all;
    for (const char* room : {"res/default/ui", "res/default/strings", "app", "assistant", "dev_a", "dev_b",
                             "dev_generic", "edits", "f7", "fields", "monitor", "profile", "session", "shell"})
        for (const auto& entry : fs::recursive_directory_iterator(top / room)) {
            QFile file(QString::fromStdString(entry.path().string()));
            if (entry.is_regular_file() && file.open(QIODevice::ReadOnly)) all += QString::fromUtf8(file.readAll());
        }
    return all;
}

class Fonts : public stage, public testing::WithParamInterface<const char*> {};

TEST_P(Fonts, HoldEveryCharacterOfTheProgramsOwnTexts) {
    const QRawFont font(QString::fromStdString((top / "res/default/fonts" / GetParam()).string()), 14);
    ASSERT_TRUE(font.isValid());
    const QString text = own_characters();
    ASSERT_TRUE(text.contains(QStringLiteral("转换参数")));
    QString missing;
    for (const QChar& c : text)
        if (c >= u' ' && !font.supportsCharacter(c) && !missing.contains(c)) missing += c;
    EXPECT_EQ(missing.toStdString(), "") << "run tools/make_fonts.py";
}

INSTANTIATE_TEST_SUITE_P(Brought, Fonts, testing::Values("vkt_sans.otf", "vkt_sans_bold.otf", "vkt_mono.otf"),
                         [](const auto& each) {
                             const std::string file = each.param;
                             return file.substr(4, file.size() - 8);
                         });

class FontChoice : public stage {};

TEST_F(FontChoice, TheThemesOwnFontDrawsAndTheSystemsOneFillsItsGaps) {
    EXPECT_EQ(QFontInfo(QApplication::font()).family(), QStringLiteral("VKT Sans"));
    EXPECT_EQ(QFontInfo(QApplication::font()).pixelSize(), 14);
    const QChar rare(u'齉');
    const QRawFont own = QRawFont::fromFont(QApplication::font());
    ASSERT_FALSE(own.supportsCharacter(rare));
    QLabel label{QString(rare)};
    label.setFont(QApplication::font());
    label.resize(30, 30);
    QLabel unknown{QString(QChar(0xE123))};
    unknown.setFont(QApplication::font());
    unknown.resize(30, 30);
    EXPECT_NE(label.grab().toImage(), unknown.grab().toImage());
}

TEST_F(FontChoice, TitlesAreToldApartByTheirWeight) {
    settle(); // the window library posts a change of the application's font to itself
    open(ui_window(
        ui_widget("QLabel", "title", "10 10 200 30", ui_text("text", "转换") + ui_dynamic("class", "title")) +
        ui_widget("QLabel", "plain", "10 50 200 30", ui_text("text", "转换"))));
    const QFontInfo title(qwidget_of(at("title"))->font());
    const QFontInfo plain(qwidget_of(at("plain"))->font());
    EXPECT_EQ(title.family(), QStringLiteral("VKT Sans"));
    EXPECT_GE(title.weight(), int(QFont::Bold));
    EXPECT_EQ(plain.weight(), int(QFont::Normal));
    // A drawn one, not the plain one smeared.
    EXPECT_EQ(QRawFont::fromFont(qwidget_of(at("title"))->font()).weight(), int(QFont::Bold));
}

} // namespace
