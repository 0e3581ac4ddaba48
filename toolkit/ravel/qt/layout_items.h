// The builder behind layout_reader.h, and its part that makes box, grid and form layouts. For toolkit/ravel only.
#pragma once

#include "toolkit/ravel/qt/detail.h"
#include "toolkit/ravel/qt/ui_file.h"

#include <QLayout>

#include <memory>
#include <utility>
#include <vector>

/// Builds the widgets of one Designer file (and, through builders of their own, of those it includes).
class layout_builder {
  public:
    layout_builder(QString file, int depth, const layout_builder* outer);

    widget_state* build_root(const QString& name);
    widget_state* build_part(const ui_element& ui, QWidget* parent, widget_state* parent_state);
    QWidget* build_widget(const ui_element& element, QWidget* parent, widget_state* parent_state);

    const QString& file() const { return file_; }
    [[noreturn]] void refuse(int line, const QString& reason) const;

  private:
    struct buddy_of {
        QWidget* label;
        QString name;
        int line;
    };
    const ui_element& root_widget(const ui_element& ui) const;
    void apply_properties(QWidget* w, const ui_element& element) const;
    void fill(QWidget* w, widget_state* state, const ui_element& element);
    void attach(QWidget* parent, QWidget* w) const;
    void include(QWidget* w, widget_state* state, const ui_element& element, const QString& name);
    void fill_included(QWidget* w, widget_state* state, const ui_element& ui,
                       const std::vector<QString>& own_properties);
    void finish(const widget_state* root, const ui_element& ui) const;
    QWidget* named(const widget_state* root, const QString& name, int line) const;
    QString renamed(QString name) const;

    QString file_;
    int depth_;
    std::vector<std::pair<QString, QString>> renames_; ///< of names, from the includes around
    std::vector<buddy_of> buddies_;
};

/// Builds the <layout> of one widget, layouts inside it included.
class layout_items {
  public:
    layout_items(layout_builder& builder, QWidget* owner, widget_state* state)
        : builder_(builder), owner_(owner), state_(state) {}
    /// Makes it the owner's layout.
    void build(const ui_element& element);

  private:
    std::unique_ptr<QLayout> make(const ui_element& element, QWidget* parent) const;
    void set_properties(QLayout* layout, const ui_element& element) const;
    void set_stretches(QLayout* layout, const ui_element& element) const;
    void add_items(QLayout* layout, const ui_element& element);
    void add_item(QLayout* layout, const ui_element& item);
    void place(QLayout* layout, const ui_element& item, std::unique_ptr<QLayoutItem> spacer, QWidget* w,
               std::unique_ptr<QLayout> inner) const;
    std::unique_ptr<QLayoutItem> spacer(const ui_element& element) const;

    layout_builder& builder_;
    QWidget* owner_;
    widget_state* state_;
};
