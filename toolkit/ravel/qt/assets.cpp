#include "toolkit/ravel/qt/assets.h"

#include "toolkit/ravel/qt/detail.h"
#include "toolkit/ravel/ravel.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFontDatabase>
#include <QHash>
#include <QPalette>
#include <QRegularExpression>

#include <optional>
#include <utility>

namespace {

constexpr int body_pixels = 14;

QString theme_dir;
QHash<QString, QString> style_names; // "accent" -> "#1B6EC2"
QString sheet;
bool fonts_brought = false;
bool dark = false;
std::optional<bool> system_dark; ///< as it was before any of ours

/// Registers the fonts that the theme brings along; a theme without any uses the system's.
void bring_fonts() {
    if (fonts_brought) return;
    fonts_brought = true;
    const QDir dir(theme_dir + QStringLiteral("/fonts"));
    for (const QString& name : dir.entryList({QStringLiteral("*.otf")}, QDir::Files, QDir::Name))
        QFontDatabase::addApplicationFont(dir.filePath(name));
}

/// Splits "@name: value;" lines off the sheet's text into style_names.
QString take_names(const QString& text) {
    static const QRegularExpression definition(QStringLiteral("^@([a-z][a-z0-9-]*)\\s*:\\s*([^;]+);\\s*$"));
    QString rules;
    for (const QString& line : text.split(u'\n')) {
        const QRegularExpressionMatch match = definition.match(line.trimmed());
        if (match.hasMatch()) {
            style_names[match.captured(1)] = match.captured(2).trimmed();
        } else {
            rules += line + u'\n';
        }
    }
    return rules;
}

/// The sheet with every @name replaced by its value.
QString with_values(const QString& rules) {
    static const QRegularExpression use(QStringLiteral("@([a-z][a-z0-9-]*)"));
    QString text;
    qsizetype from = 0;
    for (auto match = use.globalMatch(rules); match.hasNext();) {
        const QRegularExpressionMatch name = match.next();
        text += QStringView(rules).mid(from, name.capturedStart() - from);
        text += style_names.value(name.captured(1), QStringLiteral("magenta"));
        from = name.capturedEnd();
    }
    text += QStringView(rules).mid(from);
    return text;
}

/// The text of a file in styles/; empty when it is missing.
QString style_text(const char* name) {
    QFile file(theme_dir + QStringLiteral("/styles/") + QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The rules stand in default.qss alone; the dark sheet has other values for the names.
bool read_sheet() {
    if (!sheet.isEmpty()) return true;
    const QString light = style_text("default.qss");
    const QString other = dark ? style_text("dark.qss") : QString();
    if (light.isEmpty() || (dark && other.isEmpty())) return false;
    style_names.clear();
    const QString rules = take_names(light);
    take_names(other);
    style_names[QStringLiteral("images")] = theme_dir + QLatin1String(dark ? "/images/dark" : "/images");
    sheet = with_values(rules);
    return !sheet.isEmpty();
}

/// The base style's own drawing follows the sheet's colours where no rule speaks.
void apply_palette() {
    struct role_color {
        QPalette::ColorRole role;
        const char* name;
    };
    constexpr role_color colors[] = {
        {QPalette::Window, "surface"},
        {QPalette::Base, "card"},
        {QPalette::Button, "card"},
        {QPalette::WindowText, "text"},
        {QPalette::Text, "text"},
        {QPalette::ButtonText, "text"},
        {QPalette::Highlight, "select"},
        {QPalette::HighlightedText, "text"},
        {QPalette::PlaceholderText, "hint"},
        {QPalette::Link, "accent"},
        {QPalette::ToolTipBase, "text"},
        {QPalette::ToolTipText, "card"},
    };
    system_info_is_dark();
    QPalette palette = QApplication::palette();
    for (const role_color& row : colors) palette.setColor(row.role, style_color(row.name));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, style_color("off-text"));
    QApplication::setPalette(palette);
}

} // namespace

bool set_resource_root(const QString& root) {
    const QString dir = QDir(root + QStringLiteral("/default")).absolutePath();
    if (!QDir(dir).exists()) return false;
    theme_dir = dir;
    sheet.clear();
    fonts_brought = false;
    dark = false;
    return true;
}

QString layout_path(const QString& name) {
    return theme_dir + QStringLiteral("/ui/") + name + QStringLiteral(".ui");
}
QString strings_path(const QString& locale) {
    return theme_dir + QStringLiteral("/strings/") + locale + QStringLiteral(".ts");
}
QString image_path(const QString& name) {
    const QString file = name + QStringLiteral(".png");
    const QString of_dark = theme_dir + QStringLiteral("/images/dark/") + file;
    if (dark && QFile::exists(of_dark)) return of_dark;
    return theme_dir + QStringLiteral("/images/") + file;
}

QColor style_color(const char* name) {
    const QColor color(style_names.value(QString::fromLatin1(name)));
    return color.isValid() ? color : QColor(Qt::black);
}

QStringList style_families(const char* name) {
    QStringList families;
    for (const QString& part : style_names.value(QString::fromLatin1(name)).split(u',')) {
        QString family = part.trimmed();
        family.remove(u'"');
        if (!family.isEmpty()) families += family;
    }
    return families;
}

bool apply_style_sheet() {
    if (!read_sheet()) return false;
    apply_palette();
    if (qApp->styleSheet() != sheet) qApp->setStyleSheet(sheet);
    return true;
}

bool apply_font(const QString& family) {
    read_sheet();
    bring_fonts();
    const QStringList wanted = family == QLatin1String("default") ? style_families("fonts") : QStringList(family);
    QStringList chosen; // the first draws, the others only what it has no picture for
    for (const QString& candidate : wanted)
        if (QFontDatabase::hasFamily(candidate)) chosen += candidate;
    QFont font = QApplication::font();
    if (!chosen.isEmpty()) font.setFamilies(chosen);
    font.setPixelSize(body_pixels);
    QApplication::setFont(font);
    return !chosen.isEmpty();
}

ret_t assets_manager_set_theme(const char* theme) {
    if (theme == nullptr) return RET_BAD_PARAMS;
    return assets_has_theme(theme) ? RET_OK : RET_NOT_IMPL;
}

bool assets_has_theme(const char* name) {
    RETURN_IF_NOT(name != nullptr, "name != NULL", __func__, false);
    return qstrcmp(name, "default") == 0;
}

ret_t assets_manager_preload_style() {
    if (!tk_check_gui_thread(__func__) || qApp == nullptr) return RET_BAD_PARAMS;
    return apply_style_sheet() ? RET_OK : RET_FAIL;
}

bool palette_is_dark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

bool system_info_is_dark() {
    if (!tk_check_gui_thread(__func__) || qApp == nullptr) return false;
    if (!system_dark.has_value()) system_dark = palette_is_dark(QApplication::palette());
    return *system_dark;
}

bool theme_is_dark() { return dark; }

bool use_sheet(bool dark_one) {
    const bool before = std::exchange(dark, dark_one);
    sheet.clear();
    if (apply_style_sheet()) return true;
    dark = before;
    sheet.clear();
    return false;
}

ret_t tk_init_assets() { return theme_dir.isEmpty() ? RET_FAIL : RET_OK; }

ret_t system_info_set_default_font(const char* name) {
    if (!tk_check_gui_thread(__func__) || name == nullptr || qApp == nullptr) return RET_BAD_PARAMS;
    return apply_font(QString::fromUtf8(name)) ? RET_OK : RET_FAIL;
}
