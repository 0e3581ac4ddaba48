// The read-only text box (mledit). For toolkit/ only. GUI thread only.
#pragma once

#include "toolkit/ravel/qt/detail.h"

#include <QPlainTextEdit>

/// Read-only text in monospace that wraps at blanks, with grounds behind parts of it, and the character under the
/// pointer. Places in the text are bytes of its UTF-8 form.
class text_widget final : public QPlainTextEdit {
  public:
    explicit text_widget(QWidget* parent);

    /// The scroll place stays; the marks go. What is chosen stays when the new text is as long as the old one.
    void show_text(const QString& text);
    void set_marks(const std::vector<text_mark>& marks);
    const std::vector<text_mark>& marks() const { return marks_; }
    /// The character under the pointer; -1: none.
    int32_t hovered() const { return hovered_; }
    /// The middle of a character, in the viewport; nothing for one that is no place in the text.
    QPoint spot_of(int32_t offset) const;

  protected:
    bool viewportEvent(QEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void changeEvent(QEvent* event) override;

  private:
    void replace_text(const QString& text);
    const std::vector<int32_t>& bytes_of_units() const;
    int unit_of(int32_t offset) const;
    int32_t offset_at(const QPoint& at) const;
    void hover(const QPoint& at);
    void hover_to(int32_t offset);
    void released(const QMouseEvent& mouse);
    void show_marks();

    std::vector<text_mark> marks_;
    mutable std::vector<int32_t> bytes_of_units_; ///< one more than units; empty: to be made
    int32_t hovered_ = -1;
    QPoint pointer_{-1, -1};
    bool clicking_ = false; ///< a single press that nothing has made a drag of
    QPoint pressed_at_;
};
