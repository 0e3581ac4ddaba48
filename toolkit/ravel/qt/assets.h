// Files of the theme, the style sheet's named colours and fonts, and the strings. For toolkit/ only. GUI thread
// only.
#pragma once

#include <QColor>
#include <QPalette>
#include <QString>
#include <QStringList>

/// Takes layouts, styles, strings and images from `root`/default from now on. False when there is no such folder.
bool set_resource_root(const QString& root);

QString layout_path(const QString& name);
QString strings_path(const QString& locale);
/// The 1x picture of a name; the 2x one stands beside it. In the dark theme that of images/dark, where there is
/// one.
QString image_path(const QString& name);

/// A colour by its name in the style sheet; black when the sheet has no such name.
QColor style_color(const char* name);
/// Whether a palette has light text on a dark ground.
bool palette_is_dark(const QPalette& palette);
/// The families that the sheet lists under a name ("fonts", "mono"), wanted ones first.
QStringList style_families(const char* name);

/// Reads the theme's style sheet, replaces the names by their values and applies it. False when it is missing.
bool apply_style_sheet();
/// The application font: `family` if it is installed, else ("default") the first installed one of the sheet.
bool apply_font(const QString& family);

/// Takes strings/LANGUAGE_COUNTRY.ts. False when it is missing or malformed; keys then stand for themselves.
bool load_strings(const QString& language, const QString& country);
void drop_strings();
/// The text of a key in the language chosen; the key itself when there is none.
QString translated(const QString& key);
/// Reads and applies the light or the dark sheet. False, and the one before stays, when it cannot be read.
bool use_sheet(bool dark_one);
