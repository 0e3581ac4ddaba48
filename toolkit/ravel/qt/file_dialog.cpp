// Qt's own file dialog, without the system's, as the content of a card.
#include "toolkit/ravel/file_dialog.h"

#include "toolkit/ravel/qt/window_stack.h"
#include "toolkit/ravel/window_manager.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

namespace {

constexpr QSize card_size{760, 500};
constexpr int edge = 24, gap = 8;
constexpr uint32_t quit_chosen = 1;

constexpr const char* text_no_file = "没有这个文件";
constexpr const char* text_no_folder = "没有这个文件夹";
constexpr const char* text_exists = "%1 已存在，要替换它吗？";

class file_card final : public QFileDialog {
  public:
    file_card(QWidget* parent, const file_question& question, bool save);
    /// Makes what a script may name known, once the card is a dialog of the stack's.
    void adopt();
    /// Puts the keyboard into the name, once the card is shown.
    void begin();

    file_answer answer;

  protected:
    void accept() override;
    void reject() override { quit(0); }
    void done(int result) override { quit(result == Accepted ? quit_chosen : 0); }

  private:
    void quit(uint32_t code) { dialog_quit(handle_of(state_around(this)), code); }
    void columns() const;
    void build_foot();
    void notice(const QString& text, bool replace);
    QString with_extension(QString name) const;
    void filter_changed();
    template <class T>
    T* part(const char* name) const {
        return findChild<T*>(QLatin1String(name));
    }

    const file_question& question_;
    const bool save_;
    QWidget* foot_ = nullptr;
    QLabel* notice_ = nullptr;
    QPushButton* replace_ = nullptr;
    QLineEdit* name_ = nullptr;
    QString agreed_; ///< the path that may be replaced
};

QString filter_text(const file_filter& filter) {
    const QString pattern = filter.extension.empty()
                                ? QStringLiteral("*")
                                : QStringLiteral("*.") + QString::fromStdString(filter.extension);
    return QStringLiteral("%1 (%2)").arg(QString::fromStdString(filter.text), pattern);
}

file_card::file_card(QWidget* parent, const file_question& question, bool save)
    : QFileDialog(parent), question_(question), save_(save) {
    setWindowFlags(Qt::Widget);
    setAttribute(Qt::WA_Moved); // the card places it
    setOption(DontUseNativeDialog);
    setOption(DontConfirmOverwrite);        // asked in the card
    setOption(DontUseCustomDirectoryIcons); // they are slow to come from a network
    setOption(ReadOnly, !save);
    setAcceptMode(save ? AcceptSave : AcceptOpen);
    setFileMode(AnyFile);
    setLabelText(Accept, save ? QStringLiteral("保存(&S)") : QStringLiteral("打开(&O)"));
    QStringList filters;
    for (const file_filter& filter : question.filters) filters += filter_text(filter);
    if (!filters.isEmpty()) setNameFilters(filters);
    if (question.filter < question.filters.size()) selectNameFilter(filters[qsizetype(question.filter)]);
    const QString folder = QString::fromStdString(question.folder);
    setDirectory(!folder.isEmpty() && QDir(folder).exists() ? folder : QDir::currentPath());
    name_ = part<QLineEdit>("fileNameEdit");
    name_->setCompleter(nullptr); // its list would take the Enter key
    if (save) name_->setText(with_extension(QString::fromStdString(question.name)));
    for (QAbstractItemView* view : findChildren<QAbstractItemView*>())
        view->setContextMenuPolicy(Qt::NoContextMenu);
    setSizeGripEnabled(false);
    for (QAbstractButton* button : part<QDialogButtonBox>("buttonBox")->buttons()) button->setIcon(QIcon());
    setLabelText(Reject, QStringLiteral("取消(&C)"));
    columns();
    if (QLayout* own = layout()) own->setContentsMargins(0, 0, 0, 0);
    connect(this, &QFileDialog::filterSelected, this, [this] { filter_changed(); });
    build_foot();
}

/// Name, size and time; what kind a file is says its name.
void file_card::columns() const {
    constexpr int size_column = 1, kind_column = 2, time_column = 3;
    QHeaderView* header = part<QTreeView>("treeView")->header();
    header->setSectionHidden(kind_column, true);
    header->setStretchLastSection(false);
    header->setSectionResizeMode(0, QHeaderView::Stretch);
    for (const int column : {size_column, time_column})
        header->setSectionResizeMode(column, QHeaderView::ResizeToContents);
}

void file_card::build_foot() {
    foot_ = new QWidget(parentWidget());
    auto* row = new QHBoxLayout(foot_);
    row->setContentsMargins(0, 0, 0, 0);
    notice_ = new QLabel(foot_);
    notice_->setProperty("state", "warning");
    replace_ = new QPushButton(QStringLiteral("替换(&R)"), foot_);
    replace_->setToolTip(QStringLiteral("用新的内容替换这个文件"));
    replace_->setAutoDefault(false);
    row->addWidget(notice_, 1);
    row->addWidget(replace_);
    foot_->hide();
    connect(replace_, &QPushButton::clicked, this, [this] {
        answer.path = agreed_.toStdString();
        quit(quit_chosen);
    });
    connect(name_, &QLineEdit::textChanged, foot_, &QWidget::hide);
    parentWidget()->layout()->addWidget(foot_);
}

void file_card::adopt() {
    widget_state* card = state_around(this);
    adopt_widget(name_, widget_kind::edit, QStringLiteral("file_name"), card);
    adopt_widget(part<QComboBox>("fileTypeCombo"), widget_kind::combo_box, QStringLiteral("file_type"), card);
    adopt_widget(part<QToolButton>("toParentButton"), widget_kind::button, QStringLiteral("to_parent"), card);
    auto* buttons = part<QDialogButtonBox>("buttonBox");
    adopt_widget(buttons->button(save_ ? QDialogButtonBox::Save : QDialogButtonBox::Open), widget_kind::button,
                 QStringLiteral("ok"), card);
    adopt_widget(buttons->button(QDialogButtonBox::Cancel), widget_kind::button, QStringLiteral("cancel"), card);
    adopt_widget(notice_, widget_kind::label, QStringLiteral("notice"), card);
    adopt_widget(replace_, widget_kind::button, QStringLiteral("replace"), card);
}

void file_card::begin() {
    name_->setFocus(Qt::OtherFocusReason);
    name_->selectAll();
}

void file_card::notice(const QString& text, bool replace) {
    notice_->setText(text);
    replace_->setVisible(replace);
    foot_->show();
    if (replace) replace_->setFocus();
}

QString file_card::with_extension(QString name) const {
    const std::size_t chosen = std::size_t(qMax(0, int(nameFilters().indexOf(selectedNameFilter()))));
    if (chosen >= question_.filters.size() || name.isEmpty() || !QFileInfo(name).suffix().isEmpty()) return name;
    const std::string& extension = question_.filters[chosen].extension;
    return extension.empty() ? name : name + QLatin1Char('.') + QString::fromStdString(extension);
}

/// A name with another filter's extension gets that of the one chosen now.
void file_card::filter_changed() {
    const QString suffix = QFileInfo(name_->text()).suffix();
    if (!save_ || suffix.isEmpty()) return;
    for (const file_filter& filter : question_.filters) {
        if (suffix != QString::fromStdString(filter.extension)) continue;
        name_->setText(with_extension(name_->text().chopped(suffix.size() + 1)));
        return;
    }
}

void file_card::accept() {
    const QString typed = name_->text().trimmed();
    if (typed.isEmpty()) return;
    QString path = QDir::cleanPath(directory().absoluteFilePath(typed));
    if (QFileInfo(path).isDir()) {
        setDirectory(path);
        name_->clear();
        return;
    }
    if (save_) path = with_extension(path);
    const bool there = QFileInfo::exists(path);
    if (!save_ && !there) return notice(QString::fromUtf8(text_no_file), false);
    if (save_ && !QFileInfo(path).dir().exists()) return notice(QString::fromUtf8(text_no_folder), false);
    answer.filter = std::size_t(qMax(0, int(nameFilters().indexOf(selectedNameFilter()))));
    if (save_ && there) {
        agreed_ = path;
        return notice(QString::fromUtf8(text_exists).arg(QFileInfo(path).fileName()), true);
    }
    answer.path = path.toStdString();
    quit(quit_chosen);
}

std::optional<file_answer> ask(const file_question& question, bool save) {
    if (!tk_check_gui_thread(__func__) || native_window() == nullptr || loops_ended()) return std::nullopt;
    QWidget* root = make_root(true);
    root->setProperty("class", "dialog");
    root->setProperty("layout_size", card_size);
    auto* column = new QVBoxLayout(root);
    column->setContentsMargins(edge, edge, edge, edge);
    column->setSpacing(gap);
    auto* title = new QLabel(QString::fromStdString(question.title), root);
    title->setProperty("class", "title");
    column->addWidget(title);
    auto* card = new file_card(root, question, save);
    column->insertWidget(1, card, 1);
    widget_state* state =
        adopt_widget(root, widget_kind::dialog, QStringLiteral("file_dialog"), state_of(native_window()));
    adopt_widget(title, widget_kind::label, QStringLiteral("title"), state);
    card->adopt();
    card->show();
    push_window(state);
    card->begin();
    const QPointer<file_card> alive(card);
    // The card is kept until the loop that called this goes on.
    const uint32_t code = dialog_modal(handle_of(state));
    const file_card* const answered = alive.data();
    if (code != quit_chosen || answered == nullptr) return std::nullopt;
    return answered->answer;
}

} // namespace

std::optional<file_answer> file_dialog_open(const file_question& question) { return ask(question, false); }
std::optional<file_answer> file_dialog_save(const file_question& question) { return ask(question, true); }
