#include "frontend/desktop/dialogs.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFontDatabase>
#include <QFontDialog>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QScreen>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <map>

#include "convergence/graph_memory.h"
#include "frontend/commands.h"
#include "frontend/desktop/chart_painter.h"
#include "frontend/desktop/desktop.h"
#include "frontend/desktop/help_viewer.h"
#include "frontend/desktop/main_window.h"
#include "frontend/desktop/menus.h"
#include "frontend/graph_options.h"
#include "frontend/panel.h"
#include "frontend/start_dialogs.h"
#include "frontend/system_information.h"
#include "model/problem_model.h"
#include "run/messages.h"

namespace kaldra {

namespace {

QString Text(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

// A drop-down list of steps: its columns stand under those of its heading.
QComboBox* NewStepList(QWidget& dialog, const char* name) {
    auto* const list = new QComboBox(&dialog);
    list->setObjectName(name);
    list->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    list->setMaxVisibleItems(15);
    list->setStyleSheet("QComboBox { combobox-popup: 0; }");  // a list with a scroll bar, not one as high as the screen
    return list;
}

QLabel* NewListHeading(QWidget& dialog, const QString& text) {
    constexpr int listMargin = 5;  // pixels between a list's edge and its text
    auto* const heading = new QLabel(text, &dialog);
    heading->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    heading->setTextFormat(Qt::PlainText);
    heading->setIndent(listMargin);
    return heading;
}

// To the middle of the main window, but on the screen.
void Centre(QWidget& dialog) {
    dialog.adjustSize();
    const QWidget* const client = desktop.panel;
    const QPoint origin = client->mapToGlobal(QPoint(0, 0));
    const QRect screen = client->screen()->availableGeometry();
    const ScreenPoint at = CentreOnMain({origin.x(), origin.y(), client->width(), client->height()},
                                        {0, 0, dialog.width(), dialog.height()},
                                        {screen.x(), screen.y(), screen.width(), screen.height()});
    dialog.move(at.x, at.y);
}

void NameDialog(QDialog& dialog, const QString& title, const char* name, int helpId) {
    dialog.setWindowTitle(title);
    dialog.setObjectName(name);
    dialog.setProperty(helpDialogProperty, helpId);
}

QDialogButtonBox* AddButtons(QDialog& dialog, QLayout& layout, QDialogButtonBox::StandardButtons buttons) {
    auto* const box = new QDialogButtonBox(buttons, &dialog);
    box->button(QDialogButtonBox::Ok)->setText("OK");
    if (QPushButton* const cancel = box->button(QDialogButtonBox::Cancel)) cancel->setText("Cancel");
    QObject::connect(box, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout.addWidget(box);
    return box;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Start Time

void RunStartTime(QWidget* owner) {
    StartTimeList list;
    {
        const WaitCursor wait;
        list = ListStartTimes();
    }
    QDialog dialog(owner);
    NameDialog(dialog, "Start Time", "startTimeDialog", 104);
    auto* const layout = new QVBoxLayout(&dialog);
    const QStringList names = Text(startTimeHeading).trimmed().split(QRegularExpression("  +"));
    auto* const heading = NewListHeading(
        dialog, QString("%1 %2 %3      %4").arg(names[0], 2).arg(names[1], 20).arg(names[2], 20).arg(names[3]));
    auto* const combo = NewStepList(dialog, "steps");
    for (const std::string& row : list.rows) combo->addItem(Text(row));
    combo->setCurrentIndex(list.selected);
    layout->addWidget(heading);
    layout->addWidget(combo);
    auto* const buttons = AddButtons(dialog, *layout, QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, [&] {
        if (combo->currentIndex() >= 0) ChooseStartTime(combo->currentIndex() + 1);
        dialog.accept();
    });
    Centre(dialog);
    dialog.exec();
}

// ---------------------------------------------------------------------------------------------------------------------
// Open Initial Conditions

namespace {

// The file dialog stays open for as long as the picked file is refused.
class InitialFileDialog : public QFileDialog {
public:
    InitialFileDialog(QWidget* owner, InitialFiles& files) : QFileDialog(owner, Text(StringText(1078))), files_(files) {
        QStringList filters;
        for (const FileFilter& filter : FileFilters(1079)) filters << Text(filter.name);
        setNameFilters(filters);
        setFileMode(ExistingFile);
        setOption(DontUseNativeDialog);
        setDirectory(QFileInfo(Text(model.dataFileName)).absolutePath());
        setProperty(helpDialogProperty, 21102);
    }

    void accept() override {
        const QString picked = selectedFiles().value(0);
        if (QFileInfo(picked).isDir()) return QFileDialog::accept();
        if (PickInitialFile(files_, picked.toStdString())) QDialog::accept();
    }

private:
    InitialFiles& files_;
};

}  // namespace

void RunInitialConditions(QWidget* owner) {
    InitialFiles files;
    if (!BeginInitialFiles(files)) return;
    QDialog dialog(owner);
    NameDialog(dialog, "Open Initial Conditions", "initialConditionsDialog", 21102);
    auto* const layout = new QVBoxLayout(&dialog);
    auto* const grid = new QGridLayout;
    layout->addLayout(grid);
    auto* const typeLabel = new QLabel("&Type:", &dialog);
    auto* const type = new QComboBox(&dialog);
    type->addItem(Text(StringText(350)));
    typeLabel->setBuddy(type);
    grid->addWidget(typeLabel, 0, 0);
    grid->addWidget(type, 0, 1);
    const auto addName = [&](int row, int id, int label) {
        auto* const name = new QLabel(&dialog);
        name->setObjectName(QString("label%1").arg(id));
        name->setMinimumWidth(220);
        grid->addWidget(new QLabel(Text(StringText(label)), &dialog), row, 0);
        grid->addWidget(name, row, 1);
        return name;
    };
    QLabel* const temperatures = addName(1, 610, 1057);
    QLabel* const conductivities = addName(2, 612, 1059);
    const auto showNames = [&] {
        temperatures->setText(Text(FileLabel(files.temperatures)));
        conductivities->setText(Text(FileLabel(files.conductivities)));
    };
    const auto addButton = [&](int row, const char* text, const char* name, auto pressed) {
        auto* const button = new QPushButton(text, &dialog);
        button->setObjectName(name);
        button->setAutoDefault(false);
        grid->addWidget(button, row, 2);
        QObject::connect(button, &QPushButton::clicked, &dialog, pressed);
    };
    addButton(0, "&Open...", "open", [&] {
        const QString folder = QDir::currentPath();
        InitialFileDialog(&dialog, files).exec();
        QDir::setCurrent(folder);
        showNames();
    });
    const auto clear = [&] {
        ClearInitialFiles(files);
        showNames();
    };
    addButton(1, "&Clear", "clear", clear);
    addButton(2, "Clear &All", "clearAll", clear);
    auto* const buttons = AddButtons(dialog, *layout, QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, [&] {
        AcceptInitialFiles(files);
        dialog.accept();
    });
    showNames();
    Centre(dialog);
    dialog.exec();
}

// ---------------------------------------------------------------------------------------------------------------------
// Graph Options

namespace {

class GraphOptionsDialog : public QDialog {
public:
    explicit GraphOptionsDialog(QWidget* owner) : QDialog(owner), options_(BeginGraphOptions()) {
        NameDialog(*this, "Graph Options", "graphOptionsDialog", 102);
        auto* const layout = new QVBoxLayout(this);
        AddStep(*layout);
        AddRange(*layout);
        AddUpdate(*layout);
        AddLook(*layout);
        auto* const buttons = AddButtons(*this, *layout, QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
        buttons->button(QDialogButtonBox::Ok)->setText("&OK");
        connect(buttons, &QDialogButtonBox::accepted, this, [this] { Accept(); });
        Show();
        Focus(optionsStart);
    }

private:
    void AddStep(QVBoxLayout& layout) {
        steps_ = NewStepList(*this, "field205");
        layout.addWidget(NewListHeading(*this, Text(optionsStepHeading)));
        layout.addWidget(steps_);
        connect(steps_, &QComboBox::activated, this, [this](int entry) {
            Read();
            SelectGraphStep(options_, static_cast<std::size_t>(entry));
            Show();
        });
    }

    QLineEdit* AddField(QGridLayout& grid, int row, const char* text, int id) {
        auto* const label = new QLabel(text, this);
        auto* const field = new QLineEdit(this);
        field->setObjectName(QString("field%1").arg(id));
        field->setMaximumWidth(90);
        label->setBuddy(field);
        grid.addWidget(label, row, 0);
        grid.addWidget(field, row, 1, Qt::AlignLeft);
        fields_[id] = field;
        return field;
    }

    void AddRange(QVBoxLayout& layout) {
        auto* const grid = new QGridLayout;
        AddField(*grid, 0, "&Starting Iteration:", optionsStart);
        AddField(*grid, 1, "&Ending Iteration:", optionsEnd);
        grid->setColumnStretch(1, 1);
        layout.addLayout(grid);
    }

    void AddUpdate(QVBoxLayout& layout) {
        update_ = new QGroupBox("Update Graph", this);
        auto* const grid = new QGridLayout(update_);
        manually_ = new QRadioButton("&Manually", update_);
        automatically_ = new QRadioButton("&Automatically", update_);
        auto* const every = new QLabel("E&very", update_);
        auto* const interval = new QLineEdit(update_);
        interval->setObjectName(QString("field%1").arg(optionsInterval));
        interval->setMaximumWidth(60);
        every->setBuddy(interval);
        fields_[optionsInterval] = interval;
        grid->addWidget(manually_, 0, 0);
        grid->addWidget(automatically_, 1, 0);
        grid->addWidget(every, 1, 1);
        grid->addWidget(interval, 1, 2);
        grid->addWidget(new QLabel("iteration(s)", update_), 1, 3);
        grid->setColumnStretch(4, 1);
        layout.addWidget(update_);
        const auto changed = [this] {
            options_.updateMode = automatically_->isChecked() ? graphAutomatically : graphManually;
            fields_[optionsInterval]->setEnabled(IntervalEnabled(options_));
        };
        connect(manually_, &QRadioButton::clicked, this, changed);
        connect(automatically_, &QRadioButton::clicked, this, changed);
    }

    void AddLook(QVBoxLayout& layout) {
        auto* const row = new QHBoxLayout;
        symbols_ = new QCheckBox("S&ymbols", this);
        colour_ = new QCheckBox("&Color", this);
        thick_ = new QCheckBox("&Thick Lines", this);
        for (QCheckBox* const box : {symbols_, colour_, thick_}) row->addWidget(box);
        layout.addLayout(row);
        auto* const fontRow = new QHBoxLayout;
        auto* const button = new QPushButton("&Font...", this);
        button->setAutoDefault(false);
        fontLabel_ = new QLabel(this);
        fontRow->addWidget(button);
        fontRow->addWidget(fontLabel_, 1);
        layout.addLayout(fontRow);
        connect(button, &QPushButton::clicked, this, [this] { ChooseFont(); });
    }

    void ChooseFont() {
        QFont present(Text(options_.fontName));
        present.setBold((options_.fontStyle & graphBold) != 0);
        present.setItalic((options_.fontStyle & graphItalic) != 0);
        present.setPixelSize(std::max(1, FontPixels(options_.fontSize, ScreenTextHeight())));
        bool chosen = false;
        const QFont font = QFontDialog::getFont(&chosen, present, this);
        if (!chosen) return;
        const QFontInfo info(font);
        const std::string style = info.styleName().toStdString();
        const FontFacts facts{true, static_cast<int>(font.weight()), font.italic(), false, false, style};
        ChooseGraphFont(options_, font.family().toStdString(), facts, info.pixelSize(), ScreenTextHeight());
        fontLabel_->setText(Text(FontLabel(options_)));
    }

    void Show() {
        steps_->clear();
        for (const std::string& step : options_.steps) steps_->addItem(Text(step));
        steps_->setCurrentIndex(options_.steps.empty() ? -1 : static_cast<int>(options_.selectedStep));
        steps_->setEnabled(options_.stepsEnabled);
        fields_[optionsStart]->setText(Text(options_.startText));
        fields_[optionsEnd]->setText(Text(options_.endText));
        fields_[optionsInterval]->setText(Text(options_.intervalText));
        update_->setEnabled(options_.updateEnabled);
        (options_.updateMode == graphManually ? manually_ : automatically_)->setChecked(true);
        fields_[optionsInterval]->setEnabled(IntervalEnabled(options_));
        symbols_->setChecked(options_.symbols);
        colour_->setChecked(options_.colour);
        thick_->setChecked(options_.thickLines);
        fontLabel_->setText(Text(FontLabel(options_)));
    }

    void Read() {
        options_.startText = fields_[optionsStart]->text().toStdString();
        options_.endText = fields_[optionsEnd]->text().toStdString();
        options_.intervalText = fields_[optionsInterval]->text().toStdString();
        options_.updateMode = automatically_->isChecked() ? graphAutomatically : graphManually;
        options_.symbols = symbols_->isChecked();
        options_.colour = colour_->isChecked();
        options_.thickLines = thick_->isChecked();
    }

    void Focus(int id) {
        fields_[id]->setFocus();
        fields_[id]->selectAll();
    }

    void Accept() {
        Read();
        const int wrong = AcceptGraphOptions(options_);
        wrong == 0 ? accept() : Focus(wrong);
    }

    GraphOptions options_;
    QComboBox* steps_ = nullptr;
    std::map<int, QLineEdit*> fields_;
    QGroupBox* update_ = nullptr;
    QRadioButton* manually_ = nullptr;
    QRadioButton* automatically_ = nullptr;
    QCheckBox* symbols_ = nullptr;
    QCheckBox* colour_ = nullptr;
    QCheckBox* thick_ = nullptr;
    QLabel* fontLabel_ = nullptr;
};

}  // namespace

void RunGraphOptions(QWidget* owner) { GraphOptionsDialog(owner).exec(); }

// ---------------------------------------------------------------------------------------------------------------------
// About and System Information

namespace {

// Lines of a name and a value, separated by a tab.
QTreeWidget* NewList(QWidget* parent, const std::vector<std::string>& lines, const char* name) {
    auto* const list = new QTreeWidget(parent);
    list->setObjectName(name);
    list->setColumnCount(2);
    list->setHeaderHidden(true);
    list->setRootIsDecorated(false);
    for (const std::string& line : lines) new QTreeWidgetItem(list, Text(line).trimmed().split('\t'));
    list->resizeColumnToContents(0);
    list->resizeColumnToContents(1);
    list->setSelectionMode(QAbstractItemView::NoSelection);
    list->setFocusPolicy(Qt::NoFocus);
    constexpr std::ptrdiff_t mostRows = 8;  // the others by the scroll bar
    const int rows = static_cast<int>(std::min(std::ssize(lines), mostRows));
    list->setMinimumWidth(list->columnWidth(0) + list->columnWidth(1) + 30);
    list->setFixedHeight(list->sizeHintForRow(0) * std::max(rows, 1) + 2 * list->frameWidth());
    return list;
}

void RunSystemInformation(QWidget* owner) {
    const SystemFigures figures = GatherSystemFigures();
    QDialog dialog(owner);
    NameDialog(dialog, "System Information", "systemInformationDialog", 3096);
    auto* const layout = new QVBoxLayout(&dialog);
    layout->addWidget(new QLabel(Text(UserLine(figures)), &dialog));
    layout->addWidget(NewList(&dialog, SystemLines(figures), "systemLines"));
    layout->addWidget(NewList(&dialog, VolumeLines(figures), "volumeLines"));
    auto* const buttons = AddButtons(dialog, *layout, QDialogButtonBox::Ok);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    Centre(dialog);
    dialog.exec();
}

}  // namespace

void RunAbout(QWidget* owner) {
    QDialog dialog(owner);
    NameDialog(dialog, "About KALDRA SOLVE", "aboutDialog", 101);
    auto* const layout = new QVBoxLayout(&dialog);
    auto* const row = new QHBoxLayout;
    auto* const picture = new QLabel(&dialog);
    picture->setPixmap(QApplication::windowIcon().pixmap(64, 64));
    row->addWidget(picture);
    row->addWidget(new QLabel(Text(AboutText()), &dialog), 1);
    layout->addLayout(row);
    auto* const buttons = AddButtons(dialog, *layout, QDialogButtonBox::Ok);
    QPushButton* const system = buttons->addButton("&System Information", QDialogButtonBox::ActionRole);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(system, &QPushButton::clicked, &dialog, [&] {
        dialog.setEnabled(false);
        RunSystemInformation(owner);
        dialog.setEnabled(true);
    });
    Centre(dialog);
    dialog.exec();
}

}  // namespace kaldra
