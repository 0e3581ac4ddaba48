#include "toolkit/table_view/table_view.h"

#include "toolkit/core/log.h"
#include "toolkit/ravel/qt/detail.h"
#include "toolkit/ravel/qt/layout_reader.h"

#include <QAbstractScrollArea>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace {

constexpr const char* row_index_property = "table_row";
constexpr int fallback_row_height = 28;
constexpr uint32_t rows_max = std::numeric_limits<int>::max() - 1;

class table_widget final : public QAbstractScrollArea {
  public:
    explicit table_widget(QWidget* parent) : QAbstractScrollArea(parent) {
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        refill_.setSingleShot(true);
        QObject::connect(&refill_, &QTimer::timeout, this, [this] { fill(); });
    }

    void set_rows(uint32_t count) {
        count_ = std::min(count, rows_max);
        refill_.start(0);
    }
    uint32_t rows() const { return count_; }
    void show_row(uint32_t index) {
        wanted_ = static_cast<int>(std::min(index, rows_max));
        refill_.start(0);
    }

    table_row_handler load;
    table_row_handler create;

  protected:
    void resizeEvent(QResizeEvent*) override { refill_.start(0); }
    void showEvent(QShowEvent*) override { refill_.start(0); }
    void scrollContentsBy(int, int) override {
        if (!filling_) refill_.start(0);
    }

  private:
    void fill() {
        const int visible = viewport()->height() / row_height_ + 2;
        const int last = static_cast<int>(count_) - viewport()->height() / row_height_;
        verticalScrollBar()->setPageStep(std::max(1, visible - 2));
        filling_ = true; // a bar that moves here is looked at below
        verticalScrollBar()->setRange(0, std::max(0, last));
        if (wanted_ >= 0) verticalScrollBar()->setValue(std::exchange(wanted_, -1));
        filling_ = false;
        const uint32_t first = static_cast<uint32_t>(verticalScrollBar()->value());
        const uint32_t shown = std::min(count_ - std::min(first, count_), static_cast<uint32_t>(visible));
        while (pool_.size() < shown && add_row(first + static_cast<uint32_t>(pool_.size()))) {
        }
        for (uint32_t i = 0; i < pool_.size(); ++i) place(pool_[i], first, i, i < shown);
    }

    bool add_row(uint32_t index) {
        std::string why;
        widget_state* row = load_part(property("row_layout").toString(), viewport(), state_of(this), &why);
        if (row == nullptr) {
            log_write(LOG_LEVEL_ERROR, "table row: " + why + "\n");
            return false;
        }
        row_height_ = row->w->minimumHeight() > 0 ? row->w->minimumHeight() : fallback_row_height;
        pool_.push_back(row);
        if (create) create(index, handle_of(row));
        return true;
    }

    void place(widget_state* row, uint32_t first, uint32_t position, bool shown) {
        row->w->setVisible(shown);
        row->w->setProperty(row_index_property, shown ? QVariant(first + position) : QVariant());
        if (!shown) return;
        row->w->setGeometry(0, static_cast<int>(position) * row_height_, viewport()->width(), row_height_);
        if (load) load(first + position, handle_of(row));
    }

    std::vector<widget_state*> pool_;
    QTimer refill_;
    uint32_t count_ = 0;
    int row_height_ = fallback_row_height;
    int wanted_ = -1; ///< row that goes to the top at the next filling; -1: none
    bool filling_ = false;
};

QWidget* make_table(QWidget* parent) { return new table_widget(parent); }

} // namespace

ret_t table_view_register() {
    register_layout_class("table_client", "table_client", make_table);
    return RET_OK;
}

ret_t table_client_set_rows(widget* table, uint32_t rows) {
    auto* t = live_as<table_widget>(table);
    if (t == nullptr) return RET_BAD_PARAMS;
    t->set_rows(rows);
    return RET_OK;
}

uint32_t table_client_get_rows(const widget* table) {
    const auto* t = live_as<table_widget>(table);
    return t == nullptr ? 0 : t->rows();
}

ret_t table_client_show_row(widget* table, uint32_t index) {
    auto* t = live_as<table_widget>(table);
    if (t == nullptr) return RET_BAD_PARAMS;
    t->show_row(index);
    return RET_OK;
}

ret_t table_client_set_on_load_data(widget* table, table_row_handler handler) {
    auto* t = live_as<table_widget>(table);
    if (t == nullptr) return RET_BAD_PARAMS;
    t->load = std::move(handler);
    return RET_OK;
}

ret_t table_client_set_on_create_row(widget* table, table_row_handler handler) {
    auto* t = live_as<table_widget>(table);
    if (t == nullptr) return RET_BAD_PARAMS;
    t->create = std::move(handler);
    return RET_OK;
}

widget* table_row_cast(widget* w) {
    for (widget_state* state = live(w); state != nullptr; state = state->parent)
        if (state->parent != nullptr && dynamic_cast<table_widget*>(state->parent->w) != nullptr)
            return handle_of(state);
    return nullptr;
}

int64_t table_row_index(const widget* row) {
    const widget_state* state = live(row);
    if (state == nullptr || !state->w->property(row_index_property).isValid()) return -1;
    return state->w->property(row_index_property).toLongLong();
}
