// Texts from Qt Linguist's source files, read as they are: no compiled copy has to be kept in step.
#include "toolkit/ravel/qt/assets.h"
#include "toolkit/ravel/qt/detail.h"
#include "toolkit/ravel/ravel.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QTranslator>
#include <QXmlStreamReader>

#include <memory>

namespace {

/// Also serves Qt's own texts (the menus of edits), which ask by context.
class string_table final : public QTranslator {
  public:
    bool read(const QString& path);
    bool isEmpty() const override { return texts_.isEmpty(); }
    QString translate(const char* context, const char* source, const char*, int) const override {
        return texts_.value(QString::fromUtf8(context) + u'\n' + QString::fromUtf8(source));
    }
    /// By key alone, whatever the context.
    QString find(const QString& key) const { return by_key_.value(key); }

  private:
    void read_message(QXmlStreamReader& xml, const QString& context);

    QHash<QString, QString> texts_;
    QHash<QString, QString> by_key_;
};

void string_table::read_message(QXmlStreamReader& xml, const QString& context) {
    QString source;
    QString text;
    while (xml.readNextStartElement()) {
        if (xml.name() == u"source") {
            source = xml.readElementText();
        } else if (xml.name() == u"translation") {
            text = xml.readElementText();
        } else {
            xml.skipCurrentElement();
        }
    }
    if (source.isEmpty() || text.isEmpty()) return;
    texts_.insert(context + u'\n' + source, text);
    if (!by_key_.contains(source)) by_key_.insert(source, text);
}

bool string_table::read(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return false;
    QXmlStreamReader xml(&file);
    if (!xml.readNextStartElement() || xml.name() != u"TS") return false;
    while (xml.readNextStartElement()) {
        if (xml.name() != u"context") {
            xml.skipCurrentElement();
            continue;
        }
        QString context;
        while (xml.readNextStartElement()) {
            if (xml.name() == u"name") {
                context = xml.readElementText();
            } else if (xml.name() == u"message") {
                read_message(xml, context);
            } else {
                xml.skipCurrentElement();
            }
        }
    }
    return !xml.hasError();
}

std::unique_ptr<string_table>& table() {
    static std::unique_ptr<string_table> current;
    return current;
}

} // namespace

void drop_strings() {
    if (table() != nullptr) QCoreApplication::removeTranslator(table().get());
    table().reset();
}

bool load_strings(const QString& language, const QString& country) {
    auto fresh = std::make_unique<string_table>();
    if (!fresh->read(strings_path(language + u'_' + country))) return false;
    drop_strings();
    table() = std::move(fresh);
    QCoreApplication::installTranslator(table().get());
    return true;
}

QString translated(const QString& key) {
    const QString text = table() == nullptr ? QString() : table()->find(key);
    return text.isEmpty() ? key : text;
}

ret_t locale_info_change(const char* language, const char* country) {
    if (!tk_check_gui_thread(__func__) || language == nullptr || country == nullptr) return RET_BAD_PARAMS;
    return load_strings(QString::fromUtf8(language), QString::fromUtf8(country)) ? RET_OK : RET_FAIL;
}

std::string locale_info_tr(const char* key) {
    return key == nullptr ? std::string() : translated(QString::fromUtf8(key)).toStdString();
}
