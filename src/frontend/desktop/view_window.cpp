#include "frontend/desktop/view_window.h"

#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QDBusConnection>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QDoubleValidator>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFormLayout>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QSpinBox>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>
#include <utility>

#include "frontend/desktop/help_viewer.h"
#include "frontend/desktop/menus.h"
#include "frontend/desktop/picture_painter.h"
#include "frontend/desktop/save_picture.h"
#include "frontend/help_topics.h"
#include "model/file_names.h"
#include "platform/files.h"
#include "run/front_end.h"
#include "run/messages.h"
#include "run/warnings.h"
#include "view/picture_file.h"

namespace kaldra {

namespace {

constexpr int playInterval = 350;    // milliseconds from step to step
constexpr int watchInterval = 1000;  // from one look at the folder to the next

// What the engine says while a file is opened belongs into the window, not into a box.
struct Gathered {
    bool on = false;
    QStringList texts;
};
Gathered gathered;

void ShowMessage(const MessageBox& box) {
    const QString text = QString::fromStdString(box.text);
    if (gathered.on) {
        gathered.texts << text;
        return;
    }
    QMessageBox dialog(QMessageBox::Warning, QString::fromStdString(box.caption), text, QMessageBox::Ok,
                       QApplication::activeWindow());
    dialog.setTextFormat(Qt::PlainText);
    dialog.setObjectName("messageBox");
    dialog.exec();
}

// Gathers messages for as long as it lives.
class Gathering {
public:
    Gathering() { gathered = {true, {}}; }
    ~Gathering() { gathered.on = false; }
    Gathering(const Gathering&) = delete;
    Gathering& operator=(const Gathering&) = delete;
};

FileStamp FolderStamp(const std::string& path) { return StampOf(path.substr(0, FileNameOffset(path)) + "."); }

QString NoFileText() {
    return QObject::tr(
        "No data file is open.\n\nOpen one with File > Open, or drop it here. What was computed beside it "
        "is shown with it.");
}

QString NoResultsText() {
    return QObject::tr(
        "No saved step with whole result files lies beside this file. Run it with kaldra-solve or "
        "kaldra-run: its results are shown here when the run has ended.");
}

}  // namespace

ViewWindow::ViewWindow() : view_(new GroundView), note_(new QLabel), probe_(new QLabel), step_(new QLabel) {
    frontEnd.ShowMessage = ShowMessage;
    frontEnd.Beep = [] { QApplication::beep(); };
    setObjectName("viewWindow");
    setAcceptDrops(true);
    auto* const middle = new QWidget;
    auto* const column = new QVBoxLayout(middle);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    note_->setObjectName("note");
    note_->setWordWrap(true);
    note_->setTextFormat(Qt::PlainText);
    note_->setStyleSheet("background: #fff4c2; color: #202020; padding: 5px;");
    column->addWidget(note_);
    column->addWidget(view_, 1);
    setCentralWidget(middle);
    probe_->setObjectName("probe");
    statusBar()->addWidget(probe_, 1);
    MakeFileMenu();
    MakeViewMenu();
    MakeToolsMenu();
    MakeStepBar();
    connect(view_, &GroundView::Pointed, this, &ViewWindow::ShowProbe);
    connect(view_, &GroundView::PointedNowhere, this, [this] {
        pointed_.reset();
        probe_->clear();
    });
    connect(view_, &GroundView::NodeAsked, this, &ViewWindow::ShowHistory);
    connect(view_, &GroundView::SectionDrawn, this, &ViewWindow::ShowSection);
    connect(view_, &GroundView::ThawAsked, this, &ViewWindow::ShowThaw);
    connect(&reading_, &QTimer::timeout, this, &ViewWindow::ReadOneAhead);
    connect(&playing_, &QTimer::timeout, this,
            [this] { slider_->setValue((slider_->value() + 1) % (slider_->maximum() + 1)); });
    connect(&watching_, &QTimer::timeout, this, &ViewWindow::WatchFolder);
    QDBusConnection::sessionBus().connect({}, "/org/kaldra/Solve", "org.kaldra.Solve", "ProblemRefresh", this,
                                          SLOT(Refresh()));
    watching_.start(watchInterval);
    ShowOpened(false);
    resize(1080, 720);
}

ViewWindow::~ViewWindow() {
    CloseHelp();
    CloseCurves();
    (void)FreeModel();
}

// ---------------------------------------------------------------------------------------------------------------------
// Menus

static QAction* AddCommand(QMenu& menu, const QString& name, const QString& text, const QKeySequence& keys = {}) {
    QAction* const action = menu.addAction(text);
    action->setObjectName(name);
    action->setShortcut(keys);
    return action;
}

void ViewWindow::MakeFileMenu() {
    QMenu& menu = *menuBar()->addMenu(tr("&File"));
    const auto add = [&](const QString& name, const QString& text, const QKeySequence& keys, auto command) {
        connect(AddCommand(menu, name, text, keys), &QAction::triggered, this, command);
    };
    add("open", tr("&Open..."), QKeySequence::Open, [this] { ChooseFile(); });
    add("refresh", tr("&Refresh"), QKeySequence(Qt::Key_F5), [this] { Refresh(); });
    menu.addSeparator();
    add("savePicture", tr("&Save Picture..."), QKeySequence::Save,
        [this] { SavePictureAs(this, view_->CurrentPicture(2)); });
    add("saveAnimation", tr("Save &Animation..."), {}, [this] { AskForAnimation(); });
    add("copy", tr("&Copy Picture"), QKeySequence::Copy, [this] { CopyPicture(); });
    menu.addSeparator();
    add("exit", tr("E&xit"), QKeySequence::Quit, [this] { close(); });
}

QAction* ViewWindow::AddToggle(QMenu& menu, const QString& name, const QString& text, bool GroundLook::*field) {
    QAction* const action = AddCommand(menu, name, text);
    action->setCheckable(true);
    action->setChecked(view_->look.*field);
    connect(action, &QAction::toggled, this, [this, field](bool on) {
        view_->look.*field = on;
        view_->Redraw();
    });
    return action;
}

void ViewWindow::MakeViewMenu() {
    QMenu& menu = *menuBar()->addMenu(tr("&View"));
    connect(AddCommand(menu, "fit", tr("&Fit"), QKeySequence("Ctrl+0")), &QAction::triggered, view_, &GroundView::Fit);
    connect(AddCommand(menu, "zoomIn", tr("Zoom &In"), QKeySequence("Ctrl++")), &QAction::triggered, this,
            [this] { view_->Zoom(1.5); });
    connect(AddCommand(menu, "zoomOut", tr("Zoom &Out"), QKeySequence("Ctrl+-")), &QAction::triggered, this,
            [this] { view_->Zoom(1 / 1.5); });
    menu.addSeparator();
    const auto go = [this](int by) { slider_->setValue(slider_->value() + by); };
    connect(AddCommand(menu, "nextStep", tr("Ne&xt Step"), QKeySequence(Qt::Key_Right)), &QAction::triggered, this,
            [go] { go(1); });
    connect(AddCommand(menu, "previousStep", tr("&Previous Step"), QKeySequence(Qt::Key_Left)), &QAction::triggered,
            this, [go] { go(-1); });
    menu.addSeparator();
    auto* const fills = new QActionGroup(this);
    const auto addFill = [&](const QString& name, const QString& text, GroundFill fill) {
        QAction* const action = AddCommand(menu, name, text);
        action->setCheckable(true);
        action->setChecked(view_->look.fill == fill);
        fills->addAction(action);
        connect(action, &QAction::triggered, this, [this, fill] {
            view_->look.fill = fill;
            view_->Redraw();
        });
    };
    addFill("temperature", tr("&Temperature"), GroundFill::Temperature);
    addFill("materials", tr("&Materials"), GroundFill::Materials);
    addFill("noFill", tr("&No Colours"), GroundFill::Nothing);
    menu.addSeparator();
    AddToggle(menu, "isotherm", tr("Freezing &Isotherm"), &GroundLook::isotherm);
    AddToggle(menu, "mesh", tr("M&esh"), &GroundLook::mesh);
    AddToggle(menu, "arrows", tr("Flux &Arrows"), &GroundLook::arrows);
    AddToggle(menu, "boundaryNodes", tr("&Boundary Nodes"), &GroundLook::boundaryNodes);
    AddToggle(menu, "sections", tr("Flux &Sections"), &GroundLook::sections);
    menu.addSeparator();
    QAction* const fixed = AddCommand(menu, "fixedScale", tr("Same Co&lours in All Steps"));
    fixed->setCheckable(true);
    fixed->setChecked(choice_.fixedOverSteps);
    connect(fixed, &QAction::toggled, this, [this](bool on) {
        choice_.fixedOverSteps = on;
        UpdateColours();
    });
    connect(AddCommand(menu, "scale", tr("&Colour Scale...")), &QAction::triggered, this, [this] { ChooseScale(); });
}

void ViewWindow::MakeToolsMenu() {
    QMenu& menu = *menuBar()->addMenu(tr("&Tools"));
    auto* const bar = addToolBar(tr("Tools"));
    bar->setMovable(false);
    auto* const tools = new QActionGroup(this);
    const auto add = [&](const QString& name, const QString& text, const QString& tip, GroundTool tool) {
        QAction* const action = AddCommand(menu, name, text);
        action->setCheckable(true);
        action->setChecked(tool == GroundTool::Look);
        action->setToolTip(tip);
        action->setStatusTip(tip);
        tools->addAction(action);
        bar->addAction(action);
        connect(action, &QAction::triggered, this, [this, tool] { view_->SetTool(tool); });
    };
    add("look", tr("&Look"), tr("Drag to move; click a node for its temperature against time"), GroundTool::Look);
    add("sectionLine", tr("&Section Line"), tr("Drag a line for the temperature along it"), GroundTool::Section);
    add("thawDepth", tr("&Thaw Depth"), tr("Click for the depth of thaw and the trumpet curve there"),
        GroundTool::Thaw);
    bar->addSeparator();
    for (const char* const name : {"fit", "mesh", "arrows", "boundaryNodes"}) bar->addAction(&Command(name));
    QMenu& help = *menuBar()->addMenu(tr("&Help"));
    connect(AddCommand(help, "help", tr("&Looking at Results"), QKeySequence::HelpContents), &QAction::triggered, this,
            [] { ShowHelpForView(); });
}

void ViewWindow::MakeStepBar() {
    auto* const bar = new QToolBar(tr("Steps"));
    addToolBar(Qt::BottomToolBarArea, bar);
    bar->setMovable(false);
    play_ = bar->addAction(tr("&Play"));
    play_->setObjectName("play");
    play_->setCheckable(true);
    play_->setShortcut(QKeySequence(Qt::Key_Space));
    connect(play_, &QAction::toggled, this, &ViewWindow::Play);
    slider_ = new QSlider(Qt::Horizontal);
    slider_->setObjectName("steps");
    slider_->setPageStep(1);
    slider_->setTickPosition(QSlider::TicksBelow);
    connect(slider_, &QSlider::valueChanged, this, &ViewWindow::ShowStepAt);
    bar->addWidget(slider_);
    step_->setObjectName("step");
    step_->setMinimumWidth(220);
    step_->setIndent(10);
    bar->addWidget(step_);
}

// ---------------------------------------------------------------------------------------------------------------------
// Files

void ViewWindow::OpenFile(const QString& path) {
    const WaitCursor wait;
    const Gathering gathering;
    play_->setChecked(false);
    view_->look.window = {};
    const std::string full = TruePath(path.toStdString());
    CloseCurves();
    folder_ = FolderStamp(full);
    if (!FileExists(full)) {
        session_ = {};
        ShowOpened(false);
        view_->ShowInstead(tr("There is no such file:\n\n%1").arg(path));
        return;
    }
    ShowOpened(OpenView(session_, full) == 1);
}

void ViewWindow::Refresh() {
    if (session_.path.empty()) return;
    const Gathering gathering;
    ShowOpened(RefreshView(session_) == 1);
}

// The window after a file was read, or not.
void ViewWindow::ShowOpened(bool opened) {
    QStringList notes;
    for (const std::string& text : TakeWarnings()) notes << QString::fromStdString(text);
    if (opened) {
        if (session_.set.steps.empty()) notes.prepend(NoResultsText());
        if (!session_.set.remark.empty()) notes.prepend(QString::fromStdString(session_.set.remark) + ".");
        view_->ShowScene(&session_.scene);
    } else {
        const QString name = QString::fromStdString(session_.path.substr(FileNameOffset(session_.path)));
        view_->ShowInstead(session_.path.empty()
                               ? NoFileText()
                               : tr("%1 cannot be shown:\n\n%2").arg(name, gathered.texts.join("\n")));
    }
    note_->setText(notes.mid(0, 3).join("\n"));
    note_->setVisible(!notes.isEmpty());
    for (const char* const name : {"savePicture", "copy", "fit", "zoomIn", "zoomOut"}) Command(name).setEnabled(opened);
    Command("refresh").setEnabled(!session_.path.empty());
    setWindowTitle(session_.path.empty() ? "KALDRA VIEW"
                                         : "KALDRA VIEW - " + QString::fromStdString(
                                                                  session_.path.substr(FileNameOffset(session_.path))));
    UpdateStepBar();
    UpdateColours();
    if (pointed_) ShowProbe(pointed_->x, pointed_->y);
    reading_.start(0);
}

void ViewWindow::ChooseFile() {
    QFileDialog dialog(this, tr("Open Data File"));
    dialog.setObjectName("openDataFile");
    dialog.setNameFilters({tr("Data files (*.kdr)"), tr("All files (*)")});
    dialog.setFileMode(QFileDialog::ExistingFile);
    if (dialog.exec() == QDialog::Accepted) OpenFile(dialog.selectedFiles().value(0));
}

void ViewWindow::dragEnterEvent(QDragEnterEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.size() == 1 && urls[0].isLocalFile()) event->acceptProposedAction();
}

void ViewWindow::dropEvent(QDropEvent* event) {
    event->acceptProposedAction();
    OpenFile(event->mimeData()->urls().value(0).toLocalFile());
}

// kaldra-run tells of its end by nothing but what it does to the folder: a marker while it goes on, and files. A run
// that is over between two looks has changed it too.
void ViewWindow::WatchFolder() {
    if (session_.path.empty()) return;
    const bool stood = std::exchange(markerStood_, FileExists(ReplaceExtension(session_.path, StringText(1089))));
    const FileStamp now = FolderStamp(session_.path);
    if (markerStood_ || (now == folder_ && !stood)) return;
    folder_ = now;
    Refresh();
}

// ---------------------------------------------------------------------------------------------------------------------
// Steps

void ViewWindow::UpdateStepBar() {
    const auto count = static_cast<int>(session_.isOpen ? session_.set.steps.size() : 0);
    const QSignalBlocker blocker(slider_);
    slider_->setRange(0, std::max(count - 1, 0));
    slider_->setValue(session_.shown == noStep ? 0 : static_cast<int>(session_.shown));
    slider_->setEnabled(count > 1);
    play_->setEnabled(count > 1);
    if (count <= 1) play_->setChecked(false);
    Command("saveAnimation").setEnabled(count > 0);
    step_->setText(QString::fromStdString(StepText(session_)));
    view_->look.title = session_.isOpen ? TitleOf(session_) : std::string();
}

void ViewWindow::ShowStepAt(int index) {
    {
        const Gathering gathering;
        if (ShowStep(session_, static_cast<std::size_t>(index)) == 1) {
            UpdateStepBar();
            UpdateColours();
            RenewCurves();
            if (pointed_) ShowProbe(pointed_->x, pointed_->y);
            return;
        }
    }
    play_->setChecked(false);
    Refresh();  // a run has taken the step away
}

void ViewWindow::Play(bool on) {
    play_->setText(on ? tr("&Stop") : tr("&Play"));
    on ? playing_.start(playInterval) : playing_.stop();
}

void ViewWindow::UpdateColours() {
    if (session_.isOpen) view_->look.colours = ScaleOf(session_, choice_);
    view_->Redraw();
}

void ViewWindow::ReadOneAhead() {
    const Gathering gathering;
    const std::size_t before = session_.set.steps.size();
    if (session_.isOpen && ReadAhead(session_)) {
        statusBar()->showMessage(tr("Reading the results of %1 steps: %2").arg(before).arg(session_.readAhead));
        return;
    }
    reading_.stop();
    statusBar()->clearMessage();
    if (session_.isOpen && choice_.fixedOverSteps) UpdateColours();
    RenewCurves();
}

// ---------------------------------------------------------------------------------------------------------------------
// Answers to the mouse

void ViewWindow::ShowProbe(double x, double y) {
    pointed_ = {x, y};
    probe_->setText(session_.isOpen ? QString::fromStdString(ProbeText(session_, x, y)) : QString());
}

void ViewWindow::ShowCurves(QPointer<CurveWindow>& window, const CurveSheet& sheet) {
    if (window) {
        window->SetSheet(sheet);
    } else {
        window = new CurveWindow(sheet, this);
        connect(window, &QObject::destroyed, this, &ViewWindow::UpdateMarks, Qt::QueuedConnection);
    }
    window->show();
    window->raise();
    UpdateMarks();
}

// A node and a place are marked as long as their curves can be seen.
void ViewWindow::UpdateMarks() {
    view_->marks = {};
    if (section_) view_->marks.section = asked_.section;
    if (history_) view_->marks.node = asked_.node;
    if (depth_ || trumpet_) view_->marks.vertical = asked_.vertical;
    view_->update();
}

static bool HasPoints(const CurveSheet& sheet) {
    return std::ranges::any_of(sheet.curves, [](const Curve& curve) {
        return std::ranges::any_of(curve.pieces, [](const auto& piece) { return !piece.empty(); });
    });
}

// The curves that can be seen follow the step and the files. Those that have nothing to tell any more go.
void ViewWindow::RenewCurves() {
    const auto renew = [](QPointer<CurveWindow>& window, const CurveSheet& sheet) {
        if (window) HasPoints(sheet) ? window->SetSheet(sheet) : delete window.data();
    };
    if (!session_.isOpen) return CloseCurves();
    if (section_) renew(section_, SectionSheet(session_, asked_.section->first, asked_.section->second));
    if (history_) renew(history_, node_ <= model.nodeCount ? HistorySheet(session_, node_) : CurveSheet());
    if (!depth_ && !trumpet_) return;
    CurveSheet depth;
    CurveSheet trumpet;
    (void)ThawSheets(session_, *asked_.vertical, depth, trumpet);
    renew(depth_, depth);
    renew(trumpet_, trumpet);
}

void ViewWindow::CloseCurves() {
    for (CurveWindow* const window : {section_.data(), history_.data(), depth_.data(), trumpet_.data()}) delete window;
}

void ViewWindow::ShowHistory(double x, double y, double reach) {
    const std::int32_t node = NearestNode(session_.scene, x, y, reach);
    if (node == 0) return;
    if (session_.readAhead == 0)
        return statusBar()->showMessage(tr("Node %1: there are no results yet").arg(node), 4000);
    node_ = node;
    const NodeRec& record = model.nodes[IndexOf(node)];
    asked_.node = {record.x, record.y};
    ShowCurves(history_, HistorySheet(session_, node));
}

void ViewWindow::ShowSection(double x1, double y1, double x2, double y2) {
    const CurveSheet sheet = SectionSheet(session_, {x1, y1}, {x2, y2});
    if (!HasPoints(sheet)) return statusBar()->showMessage(tr("The line meets no temperatures"), 4000);
    asked_.section = {{x1, y1}, {x2, y2}};
    ShowCurves(section_, sheet);
}

void ViewWindow::ShowThaw(double x) {
    CurveSheet depth;
    CurveSheet trumpet;
    if (!ThawSheets(session_, x, depth, trumpet)) {
        return statusBar()->showMessage(tr("No temperatures lie on the vertical at x = %1").arg(x, 0, 'g', 4), 4000);
    }
    asked_.vertical = x;
    ShowCurves(depth_, depth);
    ShowCurves(trumpet_, trumpet);
}

// ---------------------------------------------------------------------------------------------------------------------
// Dialogs and pictures

void ViewWindow::ChooseScale() {
    QDialog dialog(this);
    dialog.setObjectName("colourScale");
    dialog.setWindowTitle(tr("Colour Scale"));
    auto* const form = new QFormLayout(&dialog);
    const ColourScale& now = view_->look.colours;
    auto* const low = new QLineEdit(choice_.given ? QString::number(choice_.low) : QString());
    auto* const high = new QLineEdit(choice_.given ? QString::number(choice_.high) : QString());
    auto* const bands = new QSpinBox;
    for (QLineEdit* const line : {low, high}) line->setValidator(new QDoubleValidator(line));
    low->setPlaceholderText(QString::number(now.low));
    high->setPlaceholderText(QString::number(now.high));
    low->setObjectName("low");
    high->setObjectName("high");
    bands->setObjectName("bands");
    bands->setRange(0, mostBands);
    bands->setSpecialValueText(tr("automatic"));
    bands->setValue(choice_.bands);
    form->addRow(tr("&From:"), low);
    form->addRow(tr("&To:"), high);
    form->addRow(tr("&Bands:"), bands);
    form->addRow(new QLabel(tr("Without From and To the scale fits the results.")));
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    if (dialog.exec() != QDialog::Accepted) return;
    const bool given = !low->text().isEmpty() || !high->text().isEmpty();
    const double from = low->text().isEmpty() ? now.low : low->text().toDouble();
    const double to = high->text().isEmpty() ? now.high : high->text().toDouble();
    if (given && from >= to) {
        return statusBar()->showMessage(tr("From has to lie below To: the scale stays as it is"), 6000);
    }
    choice_ = {choice_.fixedOverSteps, given, from, to, bands->value()};
    UpdateColours();
}

void ViewWindow::CopyPicture() {
    if (!session_.isOpen) return;
    const double scale = 2 * devicePixelRatioF();
    QGuiApplication::clipboard()->setImage(PictureImage(view_->CurrentPicture(scale), scale));
}

int ViewWindow::SaveAnimation(const QString& name) {
    const QString stem = name.endsWith(".png", Qt::CaseInsensitive) ? name.chopped(4) : name;
    while (choice_.fixedOverSteps && ReadAhead(session_)) continue;  // or the scale would widen on the way
    const std::size_t shown = session_.shown;
    int written = 0;
    for (std::size_t i = 0; i < session_.set.steps.size(); ++i) {
        if (!ShowStep(session_, i)) break;
        view_->look.title = TitleOf(session_);
        view_->look.colours = ScaleOf(session_, choice_);
        const QString file = QString("%1-%2.png").arg(stem).arg(session_.set.steps[i].step, 4, 10, QChar('0'));
        constexpr double scale = 1;
        if (!WritePicture(view_->CurrentPicture(scale), file.toStdString(), PictureFormat::Png, scale)) break;
        ++written;
    }
    ShowStepAt(static_cast<int>(shown));
    return written;
}

void ViewWindow::AskForAnimation() {
    play_->setChecked(false);
    const QString name =
        AskForPictureName(this, tr("Save Animation as NAME-0001.png, NAME-0002.png, ..."), {"PNG (*.png)"});
    if (name.isEmpty()) return;
    const WaitCursor wait;
    const int written = SaveAnimation(name);
    statusBar()->showMessage(tr("%1 pictures were written to %2").arg(written).arg(QFileInfo(name).path()), 8000);
}

}  // namespace kaldra
