// Edits of whole numbers in a range. For toolkit/ravel only. GUI thread only.
#pragma once

#include <QLineEdit>
#include <QValidator>

/// Lets nothing be typed that cannot become a number of the range.
class int_limit final : public QValidator {
  public:
    int_limit(QObject* parent, int min, int max, int step)
        : QValidator(parent), min_(min), max_(max), step_(step) {}
    /// The limit of an edit; null when it has none.
    static const int_limit* of(const QWidget* w);

    State validate(QString& text, int& cursor) const override;
    /// The number a text stands for, held to the range; `before` when it stands for none.
    QString settled(const QString& text, const QString& before) const;
    /// What `steps` steps from a text lead to.
    QString stepped(const QString& text, int steps) const;

  private:
    const int min_;
    const int max_;
    const int step_;
};
