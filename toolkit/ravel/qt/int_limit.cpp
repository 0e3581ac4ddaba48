#include "toolkit/ravel/qt/int_limit.h"

#include <algorithm>

namespace {

constexpr int digits_max = 10; ///< of a 32-bit number

} // namespace

const int_limit* int_limit::of(const QWidget* w) {
    const auto* edit = dynamic_cast<const QLineEdit*>(w);
    return edit == nullptr ? nullptr : dynamic_cast<const int_limit*>(edit->validator());
}

QValidator::State int_limit::validate(QString& text, int&) const {
    const bool negative = text.startsWith(u'-');
    if (negative && min_ >= 0) return Invalid;
    const QString digits = text.mid(negative ? 1 : 0);
    const bool whole = std::all_of(digits.begin(), digits.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
    if (!whole || digits.size() > digits_max) return Invalid;
    if (digits.isEmpty()) return Intermediate;
    // The numbers from nearest to furthest are what `more` further digits can make of it.
    qint64 nearest = digits.toLongLong();
    qint64 furthest = nearest;
    for (qsizetype more = 0; digits.size() + more <= digits_max; ++more) {
        const qint64 low = negative ? -furthest : nearest;
        const qint64 high = negative ? -nearest : furthest;
        if (high >= min_ && low <= max_) return more == 0 ? Acceptable : Intermediate;
        nearest *= 10;
        furthest = furthest * 10 + 9;
    }
    return Invalid;
}

QString int_limit::settled(const QString& text, const QString& before) const {
    QString copy = text;
    int cursor = 0;
    if (validate(copy, cursor) == Acceptable) return text;
    bool ok = false;
    const qint64 number = text.toLongLong(&ok);
    return ok ? QString::number(std::clamp<qint64>(number, min_, max_)) : before;
}

QString int_limit::stepped(const QString& text, int steps) const {
    if (step_ == 0) return text;
    return QString::number(std::clamp<qint64>(text.toLongLong() + qint64{steps} * step_, min_, max_));
}
